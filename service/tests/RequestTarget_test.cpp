#include "http/RequestTarget.h"

#include <gtest/gtest.h>

namespace vemo::service {
namespace {

TEST(RequestTargetTest, TheClientsRequestLineIsUnderstood) {
  const auto target = parseTarget(
      "/desktop/dictate?mode=transcribe&timestamps=false&format_mode=smart&language=en&model=m:4");
  ASSERT_TRUE(target);
  EXPECT_EQ(target->route->endpoint, Endpoint::Dictate);
  EXPECT_EQ(target->format, TextFormat::Smart);
  EXPECT_EQ(target->language, "en");
}

TEST(RequestTargetTest, AChunkAndAFinalizeHaveTheirOwnRoutes) {
  EXPECT_EQ(parseTarget("/desktop/dictate/chunk?chunk_index=0&session_id=a")->route->endpoint,
            Endpoint::DictateChunk);
  EXPECT_EQ(parseTarget("/desktop/dictate/finalize")->route->endpoint, Endpoint::DictateFinalize);
}

TEST(RequestTargetTest, EveryFormatModeButSmartIsRaw) {
  EXPECT_EQ(parseTarget("/desktop/dictate")->format, TextFormat::Raw);
  EXPECT_EQ(parseTarget("/desktop/dictate?format_mode=raw")->format, TextFormat::Raw);
  EXPECT_EQ(parseTarget("/desktop/dictate?format_mode=Smart")->format, TextFormat::Raw);
  EXPECT_EQ(parseTarget("/desktop/dictate?format_mode")->format, TextFormat::Raw);
}

TEST(RequestTargetTest, OfANameThatComesTwiceTheFirstCounts) {
  EXPECT_EQ(parseTarget("/desktop/dictate?language=en&language=hi")->language, "en");
}

TEST(RequestTargetTest, EscapesAreDecodedInValues) {
  EXPECT_EQ(parseTarget("/desktop/dictate?language=e%6e")->language, "en");
}

TEST(RequestTargetTest, UnknownAndMalformedTargetsAreToldApart) {
  EXPECT_EQ(parseTarget("/desktop/dictate/").error(), TargetError::UnknownPath);
  EXPECT_EQ(parseTarget("/desktop//dictate").error(), TargetError::UnknownPath);
  EXPECT_EQ(parseTarget("/").error(), TargetError::UnknownPath);
  EXPECT_EQ(parseTarget("").error(), TargetError::Malformed);
  EXPECT_EQ(parseTarget("http://host/desktop/dictate").error(), TargetError::Malformed);
  EXPECT_EQ(parseTarget("/desktop/dictate?language=%zz").error(), TargetError::Malformed);
}

}  // namespace
}  // namespace vemo::service
