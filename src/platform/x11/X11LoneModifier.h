// Gives held modifiers the company of a key that no layout puts a symbol on, struck through XTest.
//
// Main thread only; one for the program. When the server goes, it does nothing.
#pragma once

#include <memory>

#include "platform/x11/X11Keyboard.h"
#include "ports/LoneModifier.h"

namespace vemo {

class X11LoneModifier : public LoneModifier {
 public:
  explicit X11LoneModifier(std::shared_ptr<X11Keyboard> keyboard)
      : m_keyboard(std::move(keyboard)) {}

  void accompany() override { m_keyboard->strikeMeaninglessKey(); }

 private:
  std::shared_ptr<X11Keyboard> m_keyboard;
};

}  // namespace vemo
