// Notes what a key event source tells.
#pragma once

#include <gmock/gmock.h>

#include <vector>

#include "contract/x11/EventLoop.h"
#include "ports/KeyEventSource.h"

namespace vemo {

inline void PrintTo(const KeyEvent& event, std::ostream* out) {
  const char* types[] = {"KeyDown", "KeyUp", "FlagsChanged"};
  *out << types[static_cast<int>(event.type)] << " " << event.keyCode << " flags 0x" << std::hex
       << event.flags << std::dec;
}

class KeyListener {
 public:
  explicit KeyListener(KeyEventSource& source) : m_source(source) {
    source.onEvent = [this](const KeyEvent& event) { events.push_back(event); };
    source.onInterrupted = [this] { ++interruptions; };
  }

  /// Everything that has happened at the server so far has been told afterwards.
  void catchUp() {
    m_source.modifierFlags();
    QCoreApplication::processEvents();
  }
  bool waitForInterruptions(int count) {
    return EventLoop::runUntil([&] { return interruptions >= count; });
  }
  /// What was told since the last call.
  std::vector<KeyEvent> takeEvents() {
    catchUp();
    return std::exchange(events, {});
  }

  std::vector<KeyEvent> events;
  int interruptions = 0;

 private:
  KeyEventSource& m_source;
};

inline KeyEvent keyDown(std::int64_t code, ModifierFlags flags = 0) {
  return {KeyEvent::Type::KeyDown, code, flags};
}
inline KeyEvent keyUp(std::int64_t code, ModifierFlags flags = 0) {
  return {KeyEvent::Type::KeyUp, code, flags};
}
inline KeyEvent flagsChanged(std::int64_t code, ModifierFlags flags) {
  return {KeyEvent::Type::FlagsChanged, code, flags};
}

}  // namespace vemo
