// A target window with the focus, a user at the keyboard, and the poster between them.
#pragma once

#include <gmock/gmock.h>
#include <xkbcommon/xkbcommon-keysyms.h>

#include <algorithm>
#include <optional>

#include "contract/x11/EventLoop.h"
#include "contract/x11/TestWindow.h"
#include "contract/x11/VirtualUser.h"
#include "platform/x11/X11KeyPoster.h"

namespace vemo {

class KeyPosterFixture : public testing::Test {
 protected:
  static constexpr unsigned int shiftMask = 1;
  static constexpr unsigned int lockMask = 2;
  static constexpr unsigned int controlMask = 4;
  static constexpr unsigned int numLockMask = 16;

  void openTarget(const QByteArray& className = "Editor") {
    target.emplace(className);
    ASSERT_TRUE(EventLoop::runUntil([this] { return target->hasFocus(); }));
  }

  /// Presses and releases a paste; the target then has seen its key-down and key-up.
  void paste() {
    const auto keystroke = poster->makePaste();
    ASSERT_TRUE(keystroke);
    keystroke->press();
    keystroke->release();
    ASSERT_TRUE(waitForKeyUp());
  }

  bool waitForKeyDown() {
    return EventLoop::runUntil([this] { return find(true).has_value(); });
  }
  bool waitForKeyUp() {
    return EventLoop::runUntil([this] { return find(false).has_value(); });
  }

  /// The target's event of the key that was V when it went down.
  std::optional<TestWindow::KeyEvent> find(bool isPress) const {
    const auto& events = target->keyEvents();
    const auto down = std::ranges::find_if(
        events, [](const auto& event) { return event.isPress && event.symbol == XKB_KEY_v; });
    if (down == events.end()) return std::nullopt;
    const auto found = std::find_if(down, events.end(), [&](const auto& event) {
      return event.isPress == isPress && event.code == down->code;
    });
    return found == events.end() ? std::nullopt : std::optional(*found);
  }
  /// How many times the target saw the key go down.
  std::ptrdiff_t pasteCount() const {
    return std::ranges::count_if(target->keyEvents(), [](const auto& event) {
      return event.isPress && event.symbol == XKB_KEY_v;
    });
  }
  /// The modifiers with which the target saw the key go down.
  unsigned int pasteModifiers() const {
    const auto event = find(true);
    return event ? event->modifiers : ~0U;
  }

  EventLoop loop;
  VirtualUser user;
  std::unique_ptr<X11KeyPoster> poster = X11KeyPoster::create();
  std::optional<TestWindow> target;
};

}  // namespace vemo
