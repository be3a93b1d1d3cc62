#include "desktop/HotkeyChoices.h"

#include <QCoreApplication>

#include <algorithm>

#include "desktop/ShortcutNames.h"
#include "desktop/VirtualKeys.h"
#include "storage/Config.h"
#include "storage/SettingsKeys.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr auto customChoice = u"custom";

CustomKeyShortcut modifier(const QString& presetId, std::int64_t keyCode, ModifierFlags flags) {
  return {keyCode, flags, true, presetId};
}

CustomKeyShortcut chord(const QString& presetId, std::int64_t keyCode, ModifierFlags flags) {
  return {keyCode, flags, false, presetId};
}

// clang-format off
const std::array<ShortcutPreset, 7>& presetTable() {
  // "eitherOption" has the key of the left side; the hotkeys match it by its id.
  static const std::array<ShortcutPreset, 7> table{{
      {modifier(u"eitherOption"_s, kLeftOption, OptionFlag),
       QT_TRANSLATE_NOOP("Keys", "Either Option (⌥)"), "⌥"},
      {modifier(u"rightOption"_s, kRightOption, OptionFlag),
       QT_TRANSLATE_NOOP("Keys", "Right Option (⌥)"), QT_TRANSLATE_NOOP("Keys", "Right ⌥")},
      {modifier(u"leftOption"_s, kLeftOption, OptionFlag),
       QT_TRANSLATE_NOOP("Keys", "Left Option (⌥)"), QT_TRANSLATE_NOOP("Keys", "Left ⌥")},
      {modifier(u"rightCommand"_s, kRightCommand, CommandFlag),
       QT_TRANSLATE_NOOP("Keys", "Right Command (⌘)"), QT_TRANSLATE_NOOP("Keys", "Right ⌘")},
      {modifier(u"fnGlobe"_s, kFnKey, 0),
       QT_TRANSLATE_NOOP("Keys", "Fn / Globe"), QT_TRANSLATE_NOOP("Keys", "fn")},
      {chord(u"controlSpace"_s, kSpace, ControlFlag),
       QT_TRANSLATE_NOOP("Keys", "Control + Space (⌃␣)"), "⌃␣"},
      {chord(u"optionSpace"_s, kSpace, OptionFlag),
       QT_TRANSLATE_NOOP("Keys", "Option + Space (⌥␣)"), "⌥␣"},
  }};
  return table;
}
// clang-format on

/// What tells the two triggers apart.
struct TriggerRow {
  const keys::String& choiceKey;
  std::optional<CustomKeyShortcut> (*recorded)(const Settings&);
  void (*setRecorded)(Settings&, const std::optional<CustomKeyShortcut>&);
  const ShortcutPreset& defaultPreset;
  const char* confirmation;
  const char* hint;
};

const TriggerRow& row(HotkeyTrigger trigger) {
  static const TriggerRow pushToTalk{
      keys::pushToTalkHotkeyChoice,
      config::customPushToTalkShortcut,
      config::setCustomPushToTalkShortcut,
      *shortcutPreset(u"eitherOption"_s),
      QT_TRANSLATE_NOOP("HotkeyChoices", "Push-to-Talk set to %1"),
      QT_TRANSLATE_NOOP("HotkeyChoices",
                        "Press any key, modifier, or combination to hold while speaking."),
  };
  static const TriggerRow toggle{
      keys::toggleHotkeyChoice,
      config::customToggleShortcut,
      config::setCustomToggleShortcut,
      *shortcutPreset(u"fnGlobe"_s),
      QT_TRANSLATE_NOOP("HotkeyChoices", "Start / Stop set to %1"),
      QT_TRANSLATE_NOOP("HotkeyChoices",
                        "Press any key, modifier, or combination to tap to start/stop."),
  };
  return trigger == HotkeyTrigger::PushToTalk ? pushToTalk : toggle;
}

}  // namespace

std::span<const ShortcutPreset> shortcutPresets() {
  return presetTable();
}

const ShortcutPreset* shortcutPreset(const QString& presetId) {
  const auto& table = presetTable();
  const auto found = std::ranges::find_if(
      table, [&](const ShortcutPreset& preset) { return preset.shortcut.presetId == presetId; });
  return found == table.end() ? nullptr : &*found;
}

const ShortcutPreset& defaultPreset(HotkeyTrigger trigger) {
  return row(trigger).defaultPreset;
}

CustomKeyShortcut chosenShortcut(const Settings& settings, HotkeyTrigger trigger) {
  const TriggerRow& of = row(trigger);
  const auto choice = settings.get(of.choiceKey);
  if (!choice) return of.defaultPreset.shortcut;
  if (*choice == customChoice) {
    if (auto recorded = of.recorded(settings)) return *std::move(recorded);
  }
  const auto* preset = shortcutPreset(*choice);
  return preset ? preset->shortcut : of.defaultPreset.shortcut;
}

CustomKeyShortcut pushToTalkChoice(const Settings& settings) {
  return chosenShortcut(settings, HotkeyTrigger::PushToTalk);
}

CustomKeyShortcut toggleChoice(const Settings& settings) {
  return chosenShortcut(settings, HotkeyTrigger::Toggle);
}

QString saveShortcut(Settings& settings, HotkeyTrigger trigger, const CustomKeyShortcut& shortcut) {
  const TriggerRow& of = row(trigger);
  if (shortcut.presetId) {
    settings.set(of.choiceKey, *shortcut.presetId);
  } else {
    of.setRecorded(settings, shortcut);
    settings.set(of.choiceKey, QString::fromUtf16(customChoice));
  }
  return QCoreApplication::translate("HotkeyChoices", of.confirmation).arg(displayName(shortcut));
}

void removeRecordedShortcut(Settings& settings, HotkeyTrigger trigger) {
  row(trigger).setRecorded(settings, std::nullopt);
}

QString captureHint(HotkeyTrigger trigger) {
  return QCoreApplication::translate("HotkeyChoices", row(trigger).hint);
}

}  // namespace vemo
