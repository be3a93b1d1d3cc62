// The two triggers of a dictation and the shortcut that the user chose for each.
//
// A choice is the id of a preset, or "custom" for a chord that the user recorded. Nothing here
// fails: a choice that means nothing, or a record that doesn't decode, is the trigger's default.
// Main thread, like the settings.
#pragma once

#include <QString>
#include <array>
#include <optional>
#include <span>

#include "storage/CustomKeyShortcut.h"

namespace vemo {

class Settings;

enum class HotkeyTrigger { PushToTalk, Toggle };

struct ShortcutPreset {
  CustomKeyShortcut shortcut;  ///< with the preset's id
  const char* fullLabel;       ///< both to be translated, in the context "Keys"
  const char* shortLabel;
};

std::span<const ShortcutPreset> shortcutPresets();

/// The preset of this id; null when there is none.
const ShortcutPreset* shortcutPreset(const QString& presetId);

/// What the settings window offers at one click, in its order.
inline constexpr std::array quickPresetIds{u"fnGlobe", u"eitherOption", u"rightOption",
                                           u"controlSpace", u"optionSpace"};

const ShortcutPreset& defaultPreset(HotkeyTrigger trigger);

/// The shortcut in force. Cheap: this is asked for at every key event.
CustomKeyShortcut chosenShortcut(const Settings& settings, HotkeyTrigger trigger);
CustomKeyShortcut pushToTalkChoice(const Settings& settings);
CustomKeyShortcut toggleChoice(const Settings& settings);

/// Stores a shortcut for the trigger and returns the words that confirm it to the user. A preset
/// leaves an older recorded chord where it is.
QString saveShortcut(Settings& settings, HotkeyTrigger trigger, const CustomKeyShortcut& shortcut);

/// Forgets the recorded chord of the trigger.
void removeRecordedShortcut(Settings& settings, HotkeyTrigger trigger);

/// What the recorder asks the user to do.
QString captureHint(HotkeyTrigger trigger);

}  // namespace vemo
