// HotkeyManager on a keyboard in memory, with what it called back.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "desktop/HotkeyManager.h"
#include "desktop/VirtualKeys.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeKeyEventSource.h"
#include "fakes/FakeLoneModifier.h"
#include "fakes/FakeMainThread.h"
#include "fakes/TestStorage.h"
#include "storage/SettingsKeys.h"

namespace vemo {

class HotkeyFixture : public testing::Test {
 protected:
  HotkeyFixture() {
    hotkey.onPushToTalkDown = [this] { m_calls.push_back("down"); };
    hotkey.onPushToTalkUp = [this] { m_calls.push_back("up"); };
    hotkey.onToggleTrigger = [this] { m_calls.push_back("toggle"); };
    hotkey.installTap();
  }

  /// Both triggers; an empty choice leaves the default.
  void choose(const QString& pushToTalk, const QString& toggle = {}) {
    if (!pushToTalk.isEmpty()) storage.settings.set(keys::pushToTalkHotkeyChoice, pushToTalk);
    if (!toggle.isEmpty()) storage.settings.set(keys::toggleHotkeyChoice, toggle);
  }

  void choosePushToTalk(const CustomKeyShortcut& shortcut) {
    choose(u"custom"_s);
    storage.settings.set(keys::customPushToTalkShortcutData, encodeShortcut(shortcut));
  }

  void chooseToggle(const CustomKeyShortcut& shortcut) {
    choose({}, u"custom"_s);
    storage.settings.set(keys::customToggleShortcutData, encodeShortcut(shortcut));
  }

  // What is held after the event comes last.
  void flags(std::int64_t keyCode, ModifierFlags held) {
    source.send({KeyEvent::Type::FlagsChanged, keyCode, held});
  }
  void keyDown(std::int64_t keyCode, ModifierFlags held = 0) {
    source.send({KeyEvent::Type::KeyDown, keyCode, held});
  }
  void keyUp(std::int64_t keyCode, ModifierFlags held = 0) {
    source.send({KeyEvent::Type::KeyUp, keyCode, held});
  }

  /// The callbacks since the last time that this was asked.
  std::vector<std::string> takeCalls() {
    mainThread.drain();
    return std::exchange(m_calls, {});
  }

  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  TestStorage storage{clock};
  FakeKeyEventSource source;
  FakeLoneModifier loneModifier;
  HotkeyManager hotkey{source, loneModifier, clock, mainThread, storage.settings, storage.debugLog};

 private:
  std::vector<std::string> m_calls;
};

}  // namespace vemo
