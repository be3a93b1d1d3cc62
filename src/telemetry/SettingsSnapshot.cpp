#include "telemetry/SettingsSnapshot.h"

#include <algorithm>
#include <iterator>
#include <variant>

#include "base/Json.h"
#include "base/Text.h"
#include "storage/SettingsKeys.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

const QString& dictionaryCountName() {
  static const QString name = u"dictionaryCount"_s;
  return name;
}

constexpr int mostDictionaryEvents = 10;

using MakeEvent = TelemetryEvent (*)(const QString& setting, const QString& from,
                                     const QString& to);

TelemetryEvent languageChanged(const QString&, const QString& from, const QString& to) {
  return TelemetryEvent::languageChanged(from, to);
}
TelemetryEvent outputModeChanged(const QString&, const QString& from, const QString& to) {
  return TelemetryEvent::outputModeChanged(from, to);
}
TelemetryEvent holdShortcutChanged(const QString&, const QString&, const QString& to) {
  return TelemetryEvent::shortcutChanged(u"hold", to);
}
TelemetryEvent toggleShortcutChanged(const QString&, const QString&, const QString& to) {
  return TelemetryEvent::shortcutChanged(u"toggle", to);
}
TelemetryEvent settingChanged(const QString& setting, const QString&, const QString&) {
  return TelemetryEvent::settingChanged(setting);
}

struct WatchedSetting {
  QStringView name;
  MakeEvent event;
};

constexpr WatchedSetting watchedSettings[] = {
    {keys::dictationLanguage.name, languageChanged},
    {keys::dictateOutputMode.name, outputModeChanged},
    {keys::pushToTalkHotkeyChoice.name, holdShortcutChanged},
    {keys::toggleHotkeyChoice.name, toggleShortcutChanged},
    {keys::showInDock.name, settingChanged},
    {keys::launchAtLogin.name, settingChanged},
    {keys::dictationSounds.name, settingChanged},
    {keys::dictationPillColor.name, settingChanged},
    {keys::integrationSlack.name, settingChanged},
    {keys::integrationVSCode.name, settingChanged},
    {keys::isEnabled.name, settingChanged},
    {keys::receiveBetaUpdates.name, settingChanged},
    {keys::showLiveDictationText.name, settingChanged},
    {keys::shareUsageStatistics.name, settingChanged},
};

QString plainText(const SettingValue& value) {
  struct Printer {
    QString operator()(bool value) const { return trueOrFalse(value); }
    QString operator()(const QString& value) const { return value; }
    QString operator()(const QByteArray& value) const {
      return QString::fromLatin1(value.toBase64());
    }
    QString operator()(const QDateTime& value) const { return value.toString(Qt::ISODateWithMs); }
    QString operator()(const QJsonValue& value) const {
      return QString::fromUtf8(compactJson(QJsonArray{value}));
    }
  };
  return std::visit(Printer(), value);
}

void addDictionaryChanges(std::vector<TelemetryEvent>& events, const SettingsSnapshot& before,
                          const SettingsSnapshot& after) {
  const auto countIn = [](const SettingsSnapshot& snapshot) {
    return snapshot.at(dictionaryCountName()).toLongLong();
  };
  const auto difference = countIn(after) - countIn(before);
  const auto event =
      difference > 0 ? TelemetryEvent::dictionaryWordAdded : TelemetryEvent::dictionaryWordRemoved;
  const auto count = std::min<qsizetype>(std::abs(difference), mostDictionaryEvents);
  std::generate_n(std::back_inserter(events), count, event);
}

}  // namespace

SettingsSnapshot takeSettingsSnapshot(const Settings& settings) {
  SettingsSnapshot snapshot;
  for (const auto& watched : watchedSettings) {
    const QString name = watched.name.toString();
    if (const auto* value = settings.find(name)) snapshot[name] = plainText(*value);
  }
  const auto dictionary = parseJsonArray(settings.get(keys::customDictionaryEntries, QByteArray()));
  snapshot[dictionaryCountName()] = QString::number(dictionary ? dictionary->size() : 0);
  return snapshot;
}

bool isInSettingsSnapshot(const QString& settingName) {
  return settingName == QStringView(keys::customDictionaryEntries.name) ||
         std::ranges::any_of(watchedSettings, [&](const WatchedSetting& watched) {
           return watched.name == settingName;
         });
}

std::vector<TelemetryEvent> changesBetween(const SettingsSnapshot& before,
                                           const SettingsSnapshot& after, SessionToken token) {
  std::vector<TelemetryEvent> events;
  for (const auto& watched : watchedSettings) {
    const QString name = watched.name.toString();
    const auto old = before.find(name);
    const auto current = after.find(name);
    if (old == before.end() || current == after.end() || old->second == current->second) continue;
    events.push_back(watched.event(name, old->second, current->second));
  }
  if (token == SessionToken::Present) addDictionaryChanges(events, before, after);
  return events;
}

}  // namespace vemo
