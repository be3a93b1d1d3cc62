// A recorder of shortcuts, and the keys that its window hears.
#pragma once

#include <gtest/gtest.h>

#include "desktop/HotkeyFixture.h"
#include "fakes/FakeLocalKeyMonitor.h"
#include "ui/models/ShortcutRecorder.h"

namespace vemo {

inline constexpr std::int64_t kF8 = 100;

class ShortcutRecorderTest : public HotkeyFixture {
 protected:
  using Handling = LocalKeyMonitor::Handling;

  Handling flagsInWindow(std::int64_t keyCode, ModifierFlags held) {
    return keys.strike({KeyEvent::Type::FlagsChanged, keyCode, held});
  }
  Handling keyDownInWindow(std::int64_t keyCode, ModifierFlags held = 0) {
    return keys.strike({KeyEvent::Type::KeyDown, keyCode, held});
  }
  Handling keyUpInWindow(std::int64_t keyCode, ModifierFlags held = 0) {
    return keys.strike({KeyEvent::Type::KeyUp, keyCode, held});
  }

  void expectClosed() {
    EXPECT_FALSE(recorder.isOpen());
    EXPECT_FALSE(keys.isStarted());
    EXPECT_FALSE(hotkey.isSilent());
    EXPECT_FALSE(recorder.hasRecorded());
    EXPECT_EQ(recorder.recordedName(), QString());
  }

  QString pushToTalk() { return storage.settings.get(keys::pushToTalkHotkeyChoice, QString()); }
  QString toggle() { return storage.settings.get(keys::toggleHotkeyChoice, QString()); }

  FakeLocalKeyMonitor keys;
  QStringList toasts;
  ShortcutRecorder recorder{{.mainThread = mainThread,
                             .clock = clock,
                             .settings = storage.settings,
                             .hotkey = hotkey,
                             .keys = keys,
                             .showToast = [this](const QString& text) { toasts.append(text); }}};
};

}  // namespace vemo
