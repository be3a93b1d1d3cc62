#include "session/DictationSounds.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fakes/FakeClock.h"
#include "fakes/FakeSounds.h"
#include "fakes/TestStorage.h"
#include "storage/SettingsKeys.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DictationSoundsTest : public testing::Test {
 protected:
  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  TestStorage storage{clock};
  FakeSounds sounds;
  DictationSounds dictationSounds{sounds, storage.settings};
};

TEST_F(DictationSoundsTest, TheProgramsOwnSoundsPlayAndAreLoadedOnce) {
  sounds.resources = {u"vemo_start"_s, u"vemo_stop"_s};
  dictationSounds.playStart();
  dictationSounds.playStop();
  dictationSounds.playStart();
  EXPECT_THAT(sounds.played, ElementsAre(u"vemo_start"_s, u"vemo_stop"_s, u"vemo_start"_s));
  EXPECT_THAT(sounds.resourcesLoaded, ElementsAre(u"vemo_start"_s, u"vemo_stop"_s));
  EXPECT_THAT(sounds.systemSoundsLoaded, IsEmpty());
}

TEST_F(DictationSoundsTest, AMissingSoundFallsBackToTheSystemsWhichIsKeptToo) {
  sounds.systemSounds = {u"Tink"_s, u"Pop"_s};
  dictationSounds.playStart();
  dictationSounds.playStart();
  dictationSounds.playStop();
  EXPECT_THAT(sounds.played, ElementsAre(u"Tink"_s, u"Tink"_s, u"Pop"_s));
  EXPECT_THAT(sounds.systemSoundsLoaded, ElementsAre(u"Tink"_s, u"Pop"_s));
}

TEST_F(DictationSoundsTest, WithNeitherSoundThereIsSilenceAndTheNextTimeIsAnotherTry) {
  dictationSounds.playStart();
  EXPECT_THAT(sounds.played, IsEmpty());
  sounds.resources = {u"vemo_start"_s};
  dictationSounds.playStart();
  EXPECT_THAT(sounds.played, ElementsAre(u"vemo_start"_s));
}

TEST_F(DictationSoundsTest, OnlyASwitchThatIsPresentAndOffSilences) {
  sounds.resources = {u"vemo_start"_s};
  storage.settings.set(keys::dictationSounds, false);
  dictationSounds.playStart();
  EXPECT_THAT(sounds.played, IsEmpty());
  storage.settings.set(keys::dictationSounds, true);
  dictationSounds.playStart();
  storage.settings.remove(keys::dictationSounds);
  dictationSounds.playStart();
  EXPECT_EQ(sounds.played.size(), 2);
}

}  // namespace
}  // namespace vemo
