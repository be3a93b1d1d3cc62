#include "desktop/ShortcutCapture.h"

#include <algorithm>
#include <utility>

#include "desktop/HotkeyChoices.h"
#include "desktop/VirtualKeys.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

struct PresetKey {
  std::int64_t keyCode;
  const char16_t* presetId;
};

/// Modifier keys that are a preset; the others are recorded by their key.
constexpr PresetKey modifierPresets[] = {
    {kRightCommand, u"rightCommand"},
    {kLeftOption, u"leftOption"},
    {kRightOption, u"rightOption"},
};

struct PresetChord {
  std::int64_t keyCode;
  ModifierFlags flags;
  const char16_t* presetId;
};

constexpr PresetChord chordPresets[] = {
    {kSpace, OptionFlag, u"optionSpace"},
    {kSpace, ControlFlag, u"controlSpace"},
};

CustomKeyShortcut preset(const char16_t* id) {
  return shortcutPreset(QString::fromUtf16(id))->shortcut;
}

}  // namespace

ShortcutCapture::Handling ShortcutCapture::handle(const KeyEvent& event) {
  if (!m_isActive) return Handling::PassOn;
  switch (event.type) {
    case KeyEvent::Type::FlagsChanged:
      return handleFlagsChanged(event);
    case KeyEvent::Type::KeyDown:
      return handleKeyDown(event);
    case KeyEvent::Type::KeyUp:
      break;
  }
  return Handling::PassOn;
}

std::optional<CustomKeyShortcut> ShortcutCapture::confirm() {
  m_isActive = false;
  return std::exchange(m_pending, std::nullopt);
}

void ShortcutCapture::cancel() {
  m_isActive = false;
  m_pending.reset();
}

ShortcutCapture::Handling ShortcutCapture::handleFlagsChanged(const KeyEvent& event) {
  if (event.keyCode == kFnKey || event.flags & FnFlag) {
    // Fn is the desktop's own key as well: it is recorded, and the desktop still gets it.
    m_pending = preset(u"fnGlobe");
    return Handling::PassOn;
  }
  const auto* const row = std::ranges::find(modifierPresets, event.keyCode, &PresetKey::keyCode);
  if (row != std::end(modifierPresets)) {
    m_pending = preset(row->presetId);
    return Handling::Swallow;
  }
  const ModifierFlags flag = ownFlag(event.keyCode);
  if (!flag) return Handling::PassOn;
  m_pending = {.keyCode = event.keyCode, .modifierFlagsRaw = flag, .isModifierOnly = true};
  return Handling::Swallow;
}

ShortcutCapture::Handling ShortcutCapture::handleKeyDown(const KeyEvent& event) {
  const ModifierFlags flags = event.flags & allModifierFlags;
  if (event.keyCode == kEscape && !flags) {
    cancel();
    return Handling::Swallow;
  }
  const auto* const row = std::ranges::find_if(chordPresets, [&](const PresetChord& chord) {
    return chord.keyCode == event.keyCode && chord.flags == flags;
  });
  if (row != std::end(chordPresets)) {
    m_pending = preset(row->presetId);
  } else {
    m_pending = {.keyCode = event.keyCode, .modifierFlagsRaw = flags};
  }
  return Handling::Swallow;
}

}  // namespace vemo
