// Posts the paste shortcut through XTest: Control+V, or Control+Shift+V where a terminal emulator
// is in front.
//
// Main thread only; one for the program, made in the composition root. A keystroke keeps what it
// needs and may outlive the poster.
#pragma once

#include "platform/x11/X11Keyboard.h"
#include "ports/KeyPoster.h"

namespace vemo {

class X11KeyPoster : public KeyPoster {
 public:
  /// Null without a server, or with one that lacks XTest, XInput 2.2 or XKB.
  static std::unique_ptr<X11KeyPoster> create(const QByteArray& displayName = {});

  ModifierFlags heldModifiers() const override;
  std::unique_ptr<PasteKeystroke> makePaste() override;
  bool canPost() const override;

  /// What it posts with; the keys are announced at its connection's window.
  const std::shared_ptr<X11Keyboard>& keyboard() const { return m_keyboard; }

 private:
  explicit X11KeyPoster(std::shared_ptr<X11Keyboard> keyboard) : m_keyboard(std::move(keyboard)) {}

  std::shared_ptr<X11Keyboard> m_keyboard;
};

/// Whether the X server lets this program hear and post keys: it has XInput 2.2, XTest and XKB.
bool canX11HearAndPostKeys(const QByteArray& displayName = {});

}  // namespace vemo
