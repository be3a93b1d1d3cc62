#include "platform/x11/X11KeyPoster.h"

#include <xkbcommon/xkbcommon-keysyms.h>

#include "platform/x11/TerminalEmulators.h"

namespace vemo {

namespace {

class X11PasteKeystroke : public PasteKeystroke {
 public:
  X11PasteKeystroke(std::shared_ptr<X11Keyboard> keyboard, KeyChord chord)
      : m_keyboard(std::move(keyboard)), m_chord(std::move(chord)) {}
  ~X11PasteKeystroke() override { X11PasteKeystroke::release(); }

  void press() override {
    if (std::exchange(m_isStruck, true)) return;
    m_keyboard->strikeChord(m_chord);
  }

  void release() override {
    if (!std::exchange(m_isStruck, false)) return;
    m_keyboard->giveModifiersBack();
  }

 private:
  std::shared_ptr<X11Keyboard> m_keyboard;
  const KeyChord m_chord;
  bool m_isStruck = false;  ///< and the user's modifiers haven't been given back
};

bool isTerminalInFront(X11Connection& connection) {
  X11Windows windows(connection);
  const auto windowClass = windows.windowClass(windows.active());
  return windowClass && isTerminalEmulator(*windowClass);
}

std::optional<X11Keymap::Key> findEither(X11Keymap& keymap, xkb_keysym_t left, xkb_keysym_t right) {
  const auto key = keymap.findKey(left, 0);
  return key ? key : keymap.findKey(right, 0);
}

}  // namespace

std::unique_ptr<X11KeyPoster> X11KeyPoster::create(const QByteArray& displayName) {
  auto keyboard = X11Keyboard::create(displayName);
  if (!keyboard) return nullptr;
  return std::unique_ptr<X11KeyPoster>(new X11KeyPoster(std::move(keyboard)));
}

ModifierFlags X11KeyPoster::heldModifiers() const {
  return m_keyboard->heldModifiers();
}

bool X11KeyPoster::canPost() const {
  return m_keyboard->connection().isAlive();
}

std::unique_ptr<PasteKeystroke> X11KeyPoster::makePaste() {
  X11Connection& connection = m_keyboard->connection();
  connection.processEvents();
  X11Keymap& keymap = m_keyboard->keymap();
  KeyChord chord;

  const auto control = findEither(keymap, XKB_KEY_Control_L, XKB_KEY_Control_R);
  if (!control) return nullptr;
  chord.modifiers.push_back(control->code);
  chord.modifierMask |= XCB_MOD_MASK_CONTROL;
  if (isTerminalInFront(connection)) {
    const auto shift = findEither(keymap, XKB_KEY_Shift_L, XKB_KEY_Shift_R);
    if (!shift) return nullptr;
    chord.modifiers.push_back(shift->code);
    chord.modifierMask |= XCB_MOD_MASK_SHIFT;
  }

  const X11Keymap::Group group = m_keyboard->locks().group;
  auto key = keymap.findKey(XKB_KEY_v, group);
  if (!key) key = keymap.lendKey(XKB_KEY_v, XKB_KEY_V, group);
  if (!key || !connection.isAlive()) return nullptr;
  chord.key = *key;
  return std::make_unique<X11PasteKeystroke>(m_keyboard, std::move(chord));
}

bool canX11HearAndPostKeys(const QByteArray& displayName) {
  return X11Keyboard::create(displayName) != nullptr;
}

}  // namespace vemo
