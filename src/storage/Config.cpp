#include "storage/Config.h"

#include <QCoreApplication>
#include <QHash>
#include <algorithm>
#include <array>

#include "storage/DebugLog.h"
#include "storage/SettingsKeys.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

std::size_t qHash(const DictationLanguage& language, std::size_t seed) {
  return qHashMulti(seed, language.code, language.name, language.nativeName, language.model,
                    language.backendCode.value_or(QString()));
}

namespace config {

namespace {

constexpr std::size_t englishRow = 1;

// clang-format off
const std::array<DictationLanguage, 25>& languageTable() {
  static const std::array<DictationLanguage, 25> table{{
      {u"multi"_s, u"Auto Detect"_s, u"Multilingual"_s, u"saaras:v4"_s, {}},
      {u"en"_s, u"English"_s, u"English (India / Global)"_s, u"saaras:v4"_s, {}},
      // Mixed speech, which the older model writes best when it is told to expect English.
      {u"hinglish"_s, u"Hinglish"_s, u"Hindi + English"_s, u"saaras:v3"_s, u"en"_s},
      {u"hi"_s, u"Hindi"_s, u"हिन्दी"_s, u"saaras:v4"_s, {}},
      {u"bn"_s, u"Bengali"_s, u"বাংলা"_s, u"saaras:v4"_s, {}},
      {u"gu"_s, u"Gujarati"_s, u"ગુજરાતી"_s, u"saaras:v4"_s, {}},
      {u"kn"_s, u"Kannada"_s, u"ಕನ್ನಡ"_s, u"saaras:v4"_s, {}},
      {u"ml"_s, u"Malayalam"_s, u"മലയാളം"_s, u"saaras:v4"_s, {}},
      {u"mr"_s, u"Marathi"_s, u"मराठी"_s, u"saaras:v4"_s, {}},
      {u"or"_s, u"Odia"_s, u"ଓଡ଼ିଆ"_s, u"saaras:v4"_s, {}},
      {u"pa"_s, u"Punjabi"_s, u"ਪੰਜਾਬੀ"_s, u"saaras:v4"_s, {}},
      {u"ta"_s, u"Tamil"_s, u"தமிழ்"_s, u"saaras:v4"_s, {}},
      {u"te"_s, u"Telugu"_s, u"తెలుగు"_s, u"saaras:v4"_s, {}},
      {u"as"_s, u"Assamese"_s, u"অসমীয়া"_s, u"saaras:v4"_s, {}},
      {u"ur"_s, u"Urdu"_s, u"اردو"_s, u"saaras:v4"_s, {}},
      {u"ne"_s, u"Nepali"_s, u"नेपाली"_s, u"saaras:v4"_s, {}},
      {u"sa"_s, u"Sanskrit"_s, u"संस्कृतम्"_s, u"saaras:v4"_s, {}},
      {u"brx"_s, u"Bodo"_s, u"बड़ो"_s, u"saaras:v4"_s, {}},
      {u"doi"_s, u"Dogri"_s, u"डोगरी"_s, u"saaras:v4"_s, {}},
      {u"kok"_s, u"Konkani"_s, u"कोंकणी"_s, u"saaras:v4"_s, {}},
      {u"ks"_s, u"Kashmiri"_s, u"کٲشُر"_s, u"saaras:v4"_s, {}},
      {u"mai"_s, u"Maithili"_s, u"मैथिली"_s, u"saaras:v4"_s, {}},
      {u"mni"_s, u"Manipuri"_s, u"মৈতৈলোন্"_s, u"saaras:v4"_s, {}},
      {u"sat"_s, u"Santali"_s, u"ᱥᱟᱱᱛᱟᱲᱤ"_s, u"saaras:v4"_s, {}},
      {u"sd"_s, u"Sindhi"_s, u"سنڌي"_s, u"saaras:v4"_s, {}},
  }};
  return table;
}

/// A new one each time: the language of the windows may change.
std::array<OutputMode, 3> outputModeTable() {
  const auto words = [](const char* source) {
    return QCoreApplication::translate("OutputModes", source);
  };
  return {{
      {u"translit"_s,
       words(QT_TRANSLATE_NOOP("OutputModes", "✓ English Script (Translit)")),
       words(QT_TRANSLATE_NOOP("OutputModes", "   English Script (Translit)")),
       words(QT_TRANSLATE_NOOP("OutputModes", "English (Translit)"))},
      {u"transcribe"_s,
       words(QT_TRANSLATE_NOOP("OutputModes", "✓ Native Script (Transcribe)")),
       words(QT_TRANSLATE_NOOP("OutputModes", "   Native Script (Transcribe)")),
       words(QT_TRANSLATE_NOOP("OutputModes", "Native Script"))},
      {u"codemix"_s,
       words(QT_TRANSLATE_NOOP("OutputModes", "✓ Mixed (Codemix)")),
       words(QT_TRANSLATE_NOOP("OutputModes", "   Mixed (Codemix)")),
       words(QT_TRANSLATE_NOOP("OutputModes", "Mixed (Codemix)"))},
  }};
}
// clang-format on

std::optional<CustomKeyShortcut> shortcutIn(const Settings& settings, const keys::Data& key) {
  const auto json = settings.get(key);
  return json ? decodeShortcut(*json) : std::nullopt;
}

void setShortcutIn(Settings& settings, const keys::Data& key,
                   const std::optional<CustomKeyShortcut>& shortcut) {
  // Flag bits beyond the integers of JSON don't come back; such a record is none.
  if (shortcut && decodeShortcut(encodeShortcut(*shortcut)) == shortcut) {
    settings.set(key, encodeShortcut(*shortcut));
  } else {
    settings.remove(key);
  }
}

}  // namespace

std::span<const DictationLanguage> languages() {
  return languageTable();
}

const DictationLanguage& language(const QString& code) {
  const auto& table = languageTable();
  const auto row = std::ranges::find(table, code, &DictationLanguage::code);
  return row == table.end() ? table[englishRow] : *row;
}

const DictationLanguage& currentLanguage(const Settings& settings) {
  return language(settings.get(keys::dictationLanguage, u"en"_s));
}

QString effectiveLanguageCode(const DictationLanguage& language) {
  return language.backendCode.value_or(language.code);
}

std::array<OutputMode, 3> outputModes() {
  return outputModeTable();
}

QString outputModeShortLabel(const QString& value) {
  const auto table = outputModeTable();
  const auto row = std::ranges::find(table, value, &OutputMode::value);
  return row == table.end() ? table.back().shortLabel : row->shortLabel;
}

QString requestOutputMode(const Settings& settings) {
  return settings.get(keys::dictateOutputMode, u"transcribe"_s);
}

QString displayedOutputMode(const Settings& settings) {
  return settings.get(keys::dictateOutputMode, u"translit"_s);
}

std::optional<CustomKeyShortcut> customPushToTalkShortcut(const Settings& settings) {
  return shortcutIn(settings, keys::customPushToTalkShortcutData);
}

void setCustomPushToTalkShortcut(Settings& settings,
                                 const std::optional<CustomKeyShortcut>& shortcut) {
  setShortcutIn(settings, keys::customPushToTalkShortcutData, shortcut);
}

std::optional<CustomKeyShortcut> customToggleShortcut(const Settings& settings) {
  return shortcutIn(settings, keys::customToggleShortcutData);
}

void setCustomToggleShortcut(Settings& settings, const std::optional<CustomKeyShortcut>& shortcut) {
  setShortcutIn(settings, keys::customToggleShortcutData, shortcut);
}

void migrateToggleHotkeyIfNeeded(Settings& settings, DebugLog& debugLog) {
  if (settings.get(keys::toggleHotkeyLegacyMigrationDone, false)) return;
  // The marker comes first, so that the step runs once whatever it finds.
  settings.set(keys::toggleHotkeyLegacyMigrationDone, true);
  if (settings.get(keys::toggleHotkeyChoice) != u"controlSpace"_s) return;
  settings.set(keys::toggleHotkeyChoice, u"fnGlobe"_s);
  debugLog(u"config: migrated legacy controlSpace toggle hotkey to fnGlobe"_s);
}

}  // namespace config

}  // namespace vemo
