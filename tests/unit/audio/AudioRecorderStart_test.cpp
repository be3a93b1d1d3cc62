// How a recording fails to start.

#include "audio/AudioRecorderFixture.h"

namespace vemo {
namespace {

class AudioRecorderStartTest : public AudioRecorderFixture {};

TEST_F(AudioRecorderStartTest, WithoutASampleRateThereIsNoMicrophone) {
  input.formats = {{0, 1, SampleType::Float32}, {0, 1, SampleType::Float32}};
  const auto started = recorder->start();
  ASSERT_FALSE(started);
  EXPECT_EQ(started.error().reason, AudioError::NoInputDevice);
  EXPECT_EQ(started.error().errorDescription, u"No microphone available"_s);
  EXPECT_FALSE(recorder->isRecording());
  EXPECT_EQ(input.startCount, 0);
}

TEST_F(AudioRecorderStartTest, WithoutChannelsThereIsNoMicrophone) {
  input.formats = {{48000, 0, SampleType::Float32}, {48000, 0, SampleType::Float32}};
  EXPECT_EQ(recorder->start().error().reason, AudioError::NoInputDevice);
}

TEST_F(AudioRecorderStartTest, AnotherHardwareRateIsAFormatMismatch) {
  input.formats = {{48000, 2, SampleType::Float32}, {44100, 2, SampleType::Float32}};
  const auto started = recorder->start();
  ASSERT_FALSE(started);
  EXPECT_EQ(started.error().reason, AudioError::FormatMismatch);
  EXPECT_EQ(started.error().errorDescription, u"Microphone changed — try again"_s);
  EXPECT_TRUE(
      logText().contains(u"audio: format mismatch — hw 44100Hz/2ch vs node 48000Hz/2ch\n"_s));
  EXPECT_FALSE(recorder->isRecording());
}

TEST_F(AudioRecorderStartTest, AnotherHardwareChannelCountIsAFormatMismatch) {
  input.formats = {{48000, 1, SampleType::Float32}, {48000, 2, SampleType::Float32}};
  EXPECT_EQ(recorder->start().error().reason, AudioError::FormatMismatch);
}

TEST_F(AudioRecorderStartTest, AnotherHardwareSampleTypeIsNone) {
  input.formats = {{48000, 1, SampleType::Float32}, {48000, 1, SampleType::Int16}};
  EXPECT_TRUE(recorder->start());
}

TEST_F(AudioRecorderStartTest, AfterAMismatchTheNextAttemptStartsAfresh) {
  input.formats.hardware.sampleRate = 44100;
  ASSERT_FALSE(recorder->start());
  input.formats.hardware = input.formats.node;
  ASSERT_TRUE(recorder->start());
  EXPECT_EQ(input.prepareCount, 2);
  record(10);
  EXPECT_TRUE(recorder->stop());
}

TEST_F(AudioRecorderStartTest, AFormatThatCantBeConvertedIsSaid) {
  input.formats = {{5, 1, SampleType::Float32}, {5, 1, SampleType::Float32}};
  const auto started = recorder->start();
  ASSERT_FALSE(started);
  EXPECT_EQ(started.error().reason, AudioError::ConverterUnavailable);
  EXPECT_EQ(started.error().errorDescription, u"Could not create the audio converter."_s);
}

TEST_F(AudioRecorderStartTest, TheTextForAMissingTargetFormatStands) {
  EXPECT_EQ(errorDescription(AudioError::FormatUnavailable),
            u"Could not create the target audio format."_s);
}

TEST_F(AudioRecorderStartTest, ThePlatformsWordsForAFailedPrepareReachTheCaller) {
  input.prepareError = u"out of sockets"_s;
  const auto started = recorder->start();
  ASSERT_FALSE(started);
  EXPECT_FALSE(started.error().reason);
  EXPECT_EQ(started.error().errorDescription, u"out of sockets"_s);
  EXPECT_FALSE(recorder->isRecording());
}

TEST_F(AudioRecorderStartTest, AFailedStartOfTheCaptureLeavesNothingRunning) {
  input.startError = u"device busy"_s;
  const auto started = recorder->start();
  ASSERT_FALSE(started);
  EXPECT_EQ(started.error().errorDescription, u"device busy"_s);
  EXPECT_FALSE(recorder->isRecording());
  EXPECT_EQ(input.stopCount, 1);
  clock.advance(1s);
  EXPECT_THAT(levels, IsEmpty());
  EXPECT_EQ(clock.sleeperCount(), 0U);
  EXPECT_FALSE(recorder->stop());

  input.startError.reset();
  EXPECT_TRUE(recorder->start());
}

TEST_F(AudioRecorderStartTest, AFailedStartForgetsTheRecordingBefore) {
  ASSERT_TRUE(recorder->start());
  input.deliver(Samples(4096, 32767));
  recorder->stop();
  EXPECT_EQ(recorder->peakLevel(), 1.0F);
  input.prepareError = u"gone"_s;
  ASSERT_FALSE(recorder->start());
  EXPECT_EQ(recorder->peakLevel(), 0.0F);
}

}  // namespace
}  // namespace vemo
