// Dictation by key events alone: HotkeyManager and AppState together, on a keyboard in memory.

#include <algorithm>
#include <random>

#include "desktop/HotkeyChoices.h"
#include "desktop/VirtualKeys.h"
#include "session/SessionFixture.h"

namespace vemo {
namespace {

using testing::ElementsAre;

class HotkeyDictationTest : public SessionFixture {
 protected:
  void send(KeyEvent::Type type, std::int64_t keyCode, ModifierFlags held) {
    keySource.send({type, keyCode, held});
    mainThread.drain();
  }
  void flags(std::int64_t keyCode, ModifierFlags held) {
    send(KeyEvent::Type::FlagsChanged, keyCode, held);
  }
};

TEST_F(HotkeyDictationTest, HoldingRightOptionRecordsAndLettingGoSends) {
  startUp();
  http.answer(dictatePath, 200, success(u"hi"_s));
  flags(kRightOption, OptionFlag);
  EXPECT_EQ(appState->phase(), Phase::recording());
  hear(1.0);
  flags(kRightOption, 0);
  finishPaste();
  EXPECT_EQ(pastedTexts(), QStringList{u"hi"_s});
}

TEST_F(HotkeyDictationTest, AnInterruptedHoldEndsItsRecordingAsALettingGoWould) {
  startUp();
  http.answer(dictatePath, 200, success(u"hi"_s));
  flags(kRightOption, OptionFlag);
  hear(1.0);
  keySource.interrupt();
  mainThread.drain();
  finishPaste();
  EXPECT_EQ(pastedTexts(), QStringList{u"hi"_s});
}

TEST_F(HotkeyDictationTest, TrustLostDuringAHoldLetsTheRecordingRunUntilAToggle) {
  startUp();
  flags(kRightOption, OptionFlag);
  system.isTrusted = false;
  clock.advance(2s);
  EXPECT_FALSE(hotkey.isTapEnabled());
  flags(kRightOption, 0);
  clock.advance(1min);
  EXPECT_EQ(appState->phase(), Phase::recording());
  system.isTrusted = true;
  clock.advance(2s);
  flags(kFnKey, FnFlag);
  EXPECT_NE(appState->phase(), Phase::recording());
}

TEST_F(HotkeyDictationTest, TrustLostDuringAHoldLetsTheRecordingRunUntilTheCap) {
  startUp();
  flags(kRightOption, OptionFlag);
  system.isTrusted = false;
  clock.advance(7199s);
  EXPECT_EQ(appState->phase(), Phase::recording());
  clock.advance(1s);
  EXPECT_NE(appState->phase(), Phase::recording());
}

TEST_F(HotkeyDictationTest, WhileVemoIsDisabledNoKeyRecords) {
  startUp();
  appState->setEnabled(false);
  flags(kRightOption, OptionFlag);
  flags(kRightOption, 0);
  flags(kFnKey, FnFlag);
  EXPECT_EQ(appState->phase(), Phase::idle());
  EXPECT_EQ(audioInput.startCount, 0);
}

/// A keyboard that is mashed: keys go down and up at random, and while the source is interrupted
/// their events are lost.
class Masher {
 public:
  explicit Masher(unsigned seed) : m_random(seed) {}

  bool chance(int percent) { return below(100) < percent; }
  int below(int limit) { return std::uniform_int_distribution(0, limit - 1)(m_random); }

  /// One key goes down or comes up; the event that tells of it. Seldom are many down at once.
  KeyEvent next() {
    Key* chosen = &anyKey();
    for (int tries = 0; tries < 3 && !chosen->isDown; ++tries) chosen = &anyKey();
    Key& key = *chosen;
    key.isDown = !key.isDown;
    if (key.flag) return {KeyEvent::Type::FlagsChanged, key.code, flags()};
    return {key.isDown ? KeyEvent::Type::KeyDown : KeyEvent::Type::KeyUp, key.code, flags()};
  }

  bool isDown(std::int64_t keyCode) const {
    return std::ranges::any_of(m_keys,
                               [&](const Key& key) { return key.code == keyCode && key.isDown; });
  }

  ModifierFlags flags() const {
    ModifierFlags held = 0;
    for (const Key& key : m_keys) held |= key.isDown ? key.flag : 0;
    return held;
  }

 private:
  struct Key {
    std::int64_t code;
    ModifierFlags flag = 0;
    bool isDown = false;
  };

  Key& anyKey() { return m_keys[static_cast<std::size_t>(below(static_cast<int>(m_keys.size())))]; }

  std::mt19937 m_random;
  std::vector<Key> m_keys{
      {kLeftOption, OptionFlag},
      {kRightOption, OptionFlag},
      {kLeftShift, ShiftFlag},
      {kLeftControl, ControlFlag},
      {kRightCommand, CommandFlag},
      {kFnKey, FnFlag},
      {kSpace},
      {kEscape},
      {0},
      {96},
  };
};

class HotkeyMashTest : public HotkeyDictationTest {
 protected:
  /// Whether a recording runs that a held key began.
  bool isHoldRecording() const {
    if (appState->phase() != Phase::recording()) return false;
    const auto& events = telemetry.queue();
    const auto started = std::find_if(events.rbegin(), events.rend(), [](const auto& record) {
      return record.event.name() == u"dictation_started"_s;
    });
    return started != events.rend() && started->event.props()[u"mode"] == u"hold"_s;
  }

  /// Whether a key is down that may hold the chosen shortcut: its own, or one with the same flag.
  bool isShortcutDown(const Masher& masher) const {
    const auto shortcut = pushToTalkChoice(storage.settings);
    if (!shortcut.isModifierOnly) return masher.isDown(*shortcut.keyCode);
    return masher.flags() & (shortcut.keyCode == kFnKey ? FnFlag : ownFlag(*shortcut.keyCode));
  }

  void chooseAnyShortcuts(Masher& masher) {
    static const std::vector<QString> choices{
        u"eitherOption"_s, u"rightOption"_s,  u"leftOption"_s,  u"rightCommand"_s,
        u"fnGlobe"_s,      u"controlSpace"_s, u"optionSpace"_s, u"custom"_s};
    const auto any = [&] { return choices[static_cast<std::size_t>(masher.below(8))]; };
    storage.settings.set(keys::pushToTalkHotkeyChoice, any());
    storage.settings.set(keys::toggleHotkeyChoice, any());
  }
};

TEST_F(HotkeyMashTest, AfterEachOf100000KeyEventsAHoldRecordsOnlyWhileItsKeyIsDownAndCountsAsHeld) {
  storage.settings.set(keys::customPushToTalkShortcutData, encodeShortcut({.keyCode = 96}));
  startUp();
  Masher masher(20260314);
  int holds = 0;
  int interruptionsOfAHold = 0;
  for (int i = 0; i < 100'000; ++i) {
    const KeyEvent event = masher.next();
    if (masher.chance(2)) {
      // The event is lost, with some that follow it.
      for (int lost = masher.below(5); lost > 0; --lost) masher.next();
      keySource.missEventsUpTo(masher.flags());
      interruptionsOfAHold += hotkey.isPushToTalkKeyDown();
      keySource.interrupt();
      mainThread.drain();
      ASSERT_FALSE(isHoldRecording()) << "after event " << i;
    } else {
      const bool wasRecording = appState->phase() == Phase::recording();
      send(event.type, event.keyCode, event.flags);
      holds += !wasRecording && isHoldRecording();
    }
    // Now and then long enough for an error to leave the pill.
    if (masher.chance(30)) clock.advance(std::chrono::milliseconds(masher.below(400)));
    if (masher.chance(3)) clock.advance(3s);
    if (isHoldRecording()) {
      ASSERT_TRUE(hotkey.isPushToTalkKeyDown()) << "after event " << i;
      ASSERT_TRUE(isShortcutDown(masher)) << "after event " << i;
    }
    // A change of the choice leaves what is held to the key chosen before.
    if (i % 500 == 499 && masher.flags() == 0 && !hotkey.isPushToTalkKeyDown())
      chooseAnyShortcuts(masher);
  }
  EXPECT_GT(holds, 500);
  EXPECT_GT(interruptionsOfAHold, 100);
}

}  // namespace
}  // namespace vemo
