// The static vocabulary of the program: languages, output modes, and how settings name them.
//
// Nothing here fails: an unknown language code is English, a record that doesn't decode is none.
// Main thread, like the settings that it reads.
#pragma once

#include <QString>
#include <optional>
#include <span>

#include "storage/CustomKeyShortcut.h"
#include "storage/Settings.h"

namespace vemo {

class DebugLog;

struct DictationLanguage {
  QString code;        ///< stable identifier, stored in the setting dictationLanguage
  QString name;        ///< English name
  QString nativeName;  ///< the language's own name
  QString model;       ///< speech model, sent as the query item `model`
  std::optional<QString> backendCode;  ///< code for the service where it differs from `code`

  friend bool operator==(const DictationLanguage&, const DictationLanguage&) = default;
};
std::size_t qHash(const DictationLanguage& language, std::size_t seed = 0);

struct OutputMode {
  QString value;          ///< stored, and sent as the query item `mode`
  QString selectedRow;    ///< picker row when selected
  QString unselectedRow;  ///< picker row otherwise; its blanks line up with the check mark
  QString shortLabel;
};

/// The format mode of every request. Not a setting.
inline constexpr auto smartFormatMode = u"smart";

namespace config {

/// All languages, in the order of the picker.
std::span<const DictationLanguage> languages();

/// The row of exactly this code, else English.
const DictationLanguage& language(const QString& code);

/// The row that the setting names.
const DictationLanguage& currentLanguage(const Settings& settings);

/// What the service is told: backendCode where there is one, else code.
QString effectiveLanguageCode(const DictationLanguage& language);

/// The three output modes, in the order of the picker.
std::array<OutputMode, 3> outputModes();

/// "Mixed (Codemix)" for every value that is not one of the other two.
QString outputModeShortLabel(const QString& value);

/// The output mode that requests carry: "transcribe" until the picker has been used.
QString requestOutputMode(const Settings& settings);

/// The output mode that windows show as selected: "translit" until the picker has been used.
QString displayedOutputMode(const Settings& settings);

std::optional<CustomKeyShortcut> customPushToTalkShortcut(const Settings& settings);
void setCustomPushToTalkShortcut(Settings& settings, const std::optional<CustomKeyShortcut>&);
std::optional<CustomKeyShortcut> customToggleShortcut(const Settings& settings);
void setCustomToggleShortcut(Settings& settings, const std::optional<CustomKeyShortcut>&);

/// Replaces, once in the life of an installation, a toggle key that older versions had as default.
void migrateToggleHotkeyIfNeeded(Settings& settings, DebugLog& debugLog);

}  // namespace config

}  // namespace vemo
