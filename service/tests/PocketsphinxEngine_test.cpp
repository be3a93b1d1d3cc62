#include "speech/PocketsphinxEngine.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>
#include <vector>

#include "support/TemporaryFolder.h"
#include "support/WavFile.h"

namespace vemo::service {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

const std::filesystem::path samples = "/usr/share/pocketsphinx/test/data";

/// Loading takes most of a second, so one engine serves all tests.
class PocketsphinxEngineTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    testing::internal::CaptureStderr();
    s_engine = std::make_unique<PocketsphinxEngine>(PocketsphinxModel{});
    s_loaded = s_engine->load();
    s_loadingOutput = testing::internal::GetCapturedStderr();
  }
  static void TearDownTestSuite() { s_engine.reset(); }
  void SetUp() override { ASSERT_TRUE(s_loaded) << s_loaded.error(); }

  static Recording wav(const std::string& name) {
    return *Recording::fromWav(readFile(samples / name));
  }
  static Recording raw(const std::string& name) {
    return *Recording::fromWav(WavFile{.pcm = readFile(samples / name)}.bytes());
  }
  static std::string heard(const Recording& recording, std::string language = "en") {
    return s_engine->transcribe(recording, {.language = std::move(language)}, {})
        .value_or("(none)");
  }

  static inline std::unique_ptr<PocketsphinxEngine> s_engine;
  static inline std::expected<void, std::string> s_loaded;
  static inline std::string s_loadingOutput;
};

TEST_F(PocketsphinxEngineTest, RecordedSpeechIsRecognised) {
  EXPECT_EQ(heard(raw("goforward.raw")), "go forward ten meters");
  EXPECT_EQ(heard(wav("cards/005.wav")), "eight of spades four of clubs seven of hearts");
  EXPECT_THAT(heard(wav("librivox/sense_and_sensibility_01_austen_64kb-0930.wav")),
              StartsWith("he might even have been made"));
}

TEST_F(PocketsphinxEngineTest, ARecordingIsHeardTheSameWhateverCameBefore) {
  const auto first = heard(raw("goforward.raw"));
  heard(wav("cards/001.wav"));
  EXPECT_EQ(heard(raw("goforward.raw")), first);
}

TEST_F(PocketsphinxEngineTest, ALongRecordingIsHeardToItsEnd) {
  const auto speech = readFile(samples / "goforward.raw");
  const std::string silence(sampleRate * 2, '\0');
  std::string pcm;
  for (int round = 0; round < 6; ++round) pcm += speech + silence + silence;
  const auto text = heard(*Recording::fromWav(WavFile{.pcm = pcm}.bytes()));
  EXPECT_THAT(text, AllOf(StartsWith("go forward ten meters"), testing::EndsWith("ten meters")));
}

TEST_F(PocketsphinxEngineTest, SilenceNoiseAndASingleSampleAreNoTrouble) {
  for (const std::size_t count : {1, 100, 399, 400, 401, 16'000}) {
    std::vector<std::int16_t> silence(count, 0);
    EXPECT_NE(heard(*Recording::fromWav(wavOf(silence))), "(none)") << count;
    for (std::size_t index = 0; index < count; ++index)
      silence[index] = index % 2 == 0 ? 32'767 : -32'768;
    EXPECT_NE(heard(*Recording::fromWav(wavOf(silence))), "(none)") << count;
  }
}

TEST_F(PocketsphinxEngineTest, LanguagesOtherThanEnglishAreRefusedRatherThanGuessed) {
  EXPECT_EQ(heard(raw("goforward.raw"), "multi"), "go forward ten meters");
  const auto result = s_engine->transcribe(raw("goforward.raw"), {.language = "hi"}, {});
  ASSERT_FALSE(result);
  EXPECT_EQ(result.error().kind, EngineError::Kind::Unsupported);
}

TEST_F(PocketsphinxEngineTest, AStopThatCameFirstMeansNoWork) {
  std::stop_source stop;
  stop.request_stop();
  const auto result = s_engine->transcribe(raw("goforward.raw"), {}, stop.get_token());
  ASSERT_FALSE(result);
  EXPECT_EQ(result.error().kind, EngineError::Kind::Cancelled);
}

TEST_F(PocketsphinxEngineTest, TheLibraryPrintsNothingOfWhatItHears) {
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  heard(raw("goforward.raw"));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(s_loadingOutput, "");
}

TEST(PocketsphinxModelTest, EnginesMayLoadAtOnce) {
  std::atomic<int> loadedCount = 0;
  {
    std::vector<std::jthread> threads;
    for (int i = 0; i < 6; ++i)
      threads.emplace_back([&] { loadedCount += PocketsphinxEngine({}).load().has_value(); });
  }
  EXPECT_EQ(loadedCount, 6);
}

TEST(PocketsphinxModelTest, AModelThatIsNotThereIsOneClearLine) {
  PocketsphinxEngine engine({.dictionary = "/absent/dictionary"});
  const auto loaded = engine.load();
  ASSERT_FALSE(loaded);
  EXPECT_THAT(loaded.error(), HasSubstr("/absent/dictionary"));
}

TEST(PocketsphinxModelTest, AModelThatIsDamagedIsAFailureOrALineButNoCrash) {
  const TemporaryFolder folder;
  PocketsphinxEngine engine({.languageModel = folder.write("model.lm.bin", "not a model")});
  EXPECT_FALSE(engine.load());
}

}  // namespace
}  // namespace vemo::service
