// What the program does to a text is what the plain reading of the rules does, byte for byte.
//
// The suite tries 20,000 transcripts. For a million, or as many as you like, from another
// beginning:
//   TRANSCRIPTS=1000000 FIRST_WORLD=7000 build/release/bin/shaping_fast_as_plain_tests
#include <gtest/gtest.h>

#include <memory>

#include "Transcripts.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeFocusedApplication.h"
#include "fakes/TestStorage.h"
#include "integrations/SlackDirectory.h"
#include "plain/PlainLookups.h"
#include "shaping/ContextProcessor.h"
#include "storage/SettingsKeys.h"

namespace vemo {
namespace {

constexpr int transcriptsInAWorld = 50;

class FastAsPlainTest : public testing::Test {
 protected:
  /// Tells of the first transcript that comes out differently.
  void tryWorld(std::uint32_t seed) {
    Transcripts transcripts(seed);
    const auto world = transcripts.world();
    store(keys::customDictionaryEntries, world.settings.dictionary);
    store(keys::customShortcutEntries, world.settings.shortcuts);
    storage.settings.set(keys::integrationVSCode, world.settings.tagsFiles);
    storage.settings.set(keys::integrationSlack, world.settings.mentionsPeople);
    applications.setFrontmost(RunningApplication{.identifier = world.bundleId, .name = u"App"_s});

    PlainFileTags files(world.fileNames);
    const PlainMentions plainDirectory(world.users, world.channels);
    const SlackDirectory directory(world.users, world.channels);
    ContextProcessor fast({.applications = applications,
                           .settings = storage.settings,
                           .files = files,
                           .directory = directory,
                           .clock = clock,
                           .debugLog = debugLog});
    PlainContextProcessor plain(files, plainDirectory, PlainPatterns::Keeping::Everything);
    for (int i = 0; i < transcriptsInAWorld; ++i) {
      const QString text = transcripts.transcript();
      const QString expected = plain.process(text, world.bundleId, u"App"_s, world.settings);
      const QString result = fast.process(text);
      ASSERT_EQ(result, expected) << "world " << seed << ", transcript " << i << ": "
                                  << text.toStdString();
      changedCount += result != text;
    }
  }

  void store(const keys::Data& key, const std::optional<QByteArray>& value) {
    if (value)
      storage.settings.set(key, *value);
    else
      storage.settings.remove(key);
  }

  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  TestStorage storage{clock};
  DebugLog debugLog{clock, QString()};
  FakeFocusedApplication applications;
  int changedCount = 0;
};

TEST_F(FastAsPlainTest, EveryTranscriptComesOutAsByThePlainReading) {
  const int count = qEnvironmentVariableIntValue("TRANSCRIPTS");
  const int wanted = count > 0 ? count : 20'000;
  const int first = qEnvironmentVariableIntValue("FIRST_WORLD");
  for (int world = 0; world < wanted / transcriptsInAWorld && !HasFatalFailure(); ++world)
    tryWorld(static_cast<std::uint32_t>(first + world));
  EXPECT_GT(changedCount, wanted / 2);
}

}  // namespace
}  // namespace vemo
