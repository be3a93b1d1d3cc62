#include "session/ChunkTranscripts.h"

#include <gtest/gtest.h>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

TEST(ChunkTranscriptsTest, TextsAreJoinedInTheOrderOfTheirIndicesHoweverTheyCame) {
  ChunkTranscripts chunks;
  chunks.store(10, u"ten"_s);
  chunks.store(2, u"two"_s);
  chunks.store(0, u"zero"_s);
  EXPECT_EQ(chunks.stitched(), u"zero two ten"_s);
}

TEST(ChunkTranscriptsTest, TextsAreTrimmedAndEmptyOnesLeaveNoDoubleBlank) {
  ChunkTranscripts chunks;
  chunks.store(0, u"  one\n"_s);
  chunks.store(1, u" \n"_s);
  chunks.store(2, u""_s);
  chunks.store(3, u"\u3000two"_s);
  EXPECT_EQ(chunks.stitched(), u"one two"_s);
}

TEST(ChunkTranscriptsTest, NothingStitchesToNothing) {
  ChunkTranscripts chunks;
  EXPECT_EQ(chunks.stitched(), u""_s);
  chunks.store(0, u"one"_s);
  chunks.clear();
  EXPECT_EQ(chunks.stitched(), u""_s);
}

}  // namespace
}  // namespace vemo
