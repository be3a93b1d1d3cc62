#include "audio/PcmBuffer.h"

#include <gmock/gmock.h>

#include <vector>

namespace vemo {
namespace {

using Bytes = std::vector<std::byte>;

Bytes numberedBytes(std::size_t count, std::size_t first = 0) {
  Bytes bytes(count);
  for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<std::byte>((first + i) % 251);
  return bytes;
}

Bytes contentOf(const PcmBuffer& buffer, std::size_t offset, std::size_t length) {
  Bytes bytes(length);
  buffer.copyTo(bytes, offset);
  return bytes;
}

TEST(PcmBufferTest, ANewBufferIsEmpty) {
  EXPECT_EQ(PcmBuffer().size(), 0U);
}

TEST(PcmBufferTest, WhatIsAppendedComesBackInOrder) {
  PcmBuffer buffer;
  ASSERT_TRUE(buffer.append(numberedBytes(1000)));
  ASSERT_TRUE(buffer.append(numberedBytes(500, 1000)));
  EXPECT_EQ(contentOf(buffer, 0, 1500), numberedBytes(1500));
}

TEST(PcmBufferTest, AStretchAcrossSegmentsComesBackWhole) {
  PcmBuffer buffer;
  const std::size_t total = 2 * PcmBuffer::segmentSize + 7;
  ASSERT_TRUE(buffer.append(numberedBytes(total)));
  EXPECT_EQ(buffer.size(), total);
  EXPECT_EQ(contentOf(buffer, PcmBuffer::segmentSize - 3, PcmBuffer::segmentSize + 10),
            numberedBytes(PcmBuffer::segmentSize + 10, PcmBuffer::segmentSize - 3));
}

TEST(PcmBufferTest, ASegmentFilledToItsLastByteIsFollowedByTheNext) {
  PcmBuffer buffer;
  ASSERT_TRUE(buffer.append(numberedBytes(PcmBuffer::segmentSize)));
  ASSERT_TRUE(buffer.append(numberedBytes(1, PcmBuffer::segmentSize)));
  EXPECT_EQ(contentOf(buffer, 0, PcmBuffer::segmentSize + 1),
            numberedBytes(PcmBuffer::segmentSize + 1));
}

TEST(PcmBufferTest, AppendingNothingChangesNothing) {
  PcmBuffer buffer;
  ASSERT_TRUE(buffer.append({}));
  EXPECT_EQ(buffer.size(), 0U);
}

TEST(PcmBufferTest, AfterClearTheBytesAreThoseAppendedSince) {
  PcmBuffer buffer;
  ASSERT_TRUE(buffer.append(numberedBytes(PcmBuffer::segmentSize * 2)));
  buffer.clear();
  EXPECT_EQ(buffer.size(), 0U);
  ASSERT_TRUE(buffer.append(numberedBytes(9, 4)));
  EXPECT_EQ(contentOf(buffer, 0, 9), numberedBytes(9, 4));
}

}  // namespace
}  // namespace vemo
