#include "telemetry/TelemetryEvent.h"

#include <utility>

#include "base/Text.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

QString text(TelemetryEvent::Literal literal) {
  return QString::fromUtf16(literal);
}

QString nameOf(Permission permission) {
  return permission == Permission::Microphone ? u"microphone"_s : u"accessibility"_s;
}

QString lengthBucket(double seconds) {
  if (seconds < 10) return u"lt10s"_s;
  if (seconds < 60) return u"10to60s"_s;
  if (seconds < 300) return u"1to5m"_s;
  return u"gt5m"_s;
}

QJsonObject version(const QString& version) {
  return {{u"version"_s, sanitisedText(version)}};
}

}  // namespace

TelemetryEvent::TelemetryEvent(Literal name, QJsonObject props, EventClass eventClass)
    : m_name(text(name)), m_props(std::move(props)), m_eventClass(eventClass) {}

TelemetryEvent TelemetryEvent::optional(Literal name, QJsonObject props) {
  return {name, std::move(props), EventClass::Optional};
}

TelemetryEvent TelemetryEvent::essential(Literal name, QJsonObject props) {
  return {name, std::move(props), EventClass::Essential};
}

TelemetryEvent TelemetryEvent::appLaunched(bool launchedAtLogin) {
  return optional(u"app_launched", {{u"launchedAtLogin"_s, launchedAtLogin}});
}

TelemetryEvent TelemetryEvent::sessionEnded(std::int64_t seconds) {
  return optional(u"session_ended", {{u"seconds"_s, qint64{seconds}}});
}

TelemetryEvent TelemetryEvent::appCrashed(const CrashDiagnostic& diagnostic) {
  QJsonObject props{{u"appVersion"_s, sanitisedText(diagnostic.applicationBuildVersion)}};
  if (diagnostic.exceptionType) props.insert(u"exceptionType"_s, qint64{*diagnostic.exceptionType});
  if (diagnostic.exceptionCode) props.insert(u"exceptionCode"_s, qint64{*diagnostic.exceptionCode});
  if (diagnostic.signal) props.insert(u"signal"_s, qint64{*diagnostic.signal});
  if (diagnostic.terminationReason)
    props.insert(u"terminationReason"_s, sanitisedText(*diagnostic.terminationReason));
  return essential(u"app_crashed", props);
}

TelemetryEvent TelemetryEvent::dictationStarted(const QString& mode, const QString& shortcut) {
  return optional(u"dictation_started", {{u"mode"_s, mode}, {u"shortcut"_s, shortcut}});
}

TelemetryEvent TelemetryEvent::dictationCompleted(const CompletedDictation& dictation) {
  return optional(u"dictation_completed", {
                                              {u"lengthBucket"_s, lengthBucket(dictation.seconds)},
                                              {u"seconds"_s, dictation.seconds},
                                              {u"words"_s, qint64{dictation.words}},
                                              {u"language"_s, dictation.language},
                                              {u"model"_s, dictation.model},
                                              {u"outputMode"_s, dictation.outputMode},
                                              {u"chunked"_s, dictation.isChunked},
                                              {u"streamed"_s, dictation.isStreamed},
                                              {u"latencyMs"_s, qint64{dictation.latencyMs}},
                                          });
}

TelemetryEvent TelemetryEvent::firstDictation(std::int64_t secondsSinceFirstLaunch) {
  return optional(u"first_dictation",
                  {{u"secondsSinceFirstLaunch"_s, qint64{secondsSinceFirstLaunch}}});
}

TelemetryEvent TelemetryEvent::dictationTooShort(double seconds, bool isChunked) {
  return optional(
      u"dictation_cancelled",
      {{u"reason"_s, u"too_short"_s}, {u"seconds"_s, seconds}, {u"chunked"_s, isChunked}});
}

TelemetryEvent TelemetryEvent::dictationDisabled(std::optional<double> seconds) {
  QJsonObject props{{u"reason"_s, u"disabled"_s}};
  if (seconds) props.insert(u"seconds"_s, *seconds);
  return optional(u"dictation_cancelled", props);
}

TelemetryEvent TelemetryEvent::dictationFailed(Literal reason, std::optional<bool> isChunked) {
  QJsonObject props{{u"reason"_s, text(reason)}};
  if (isChunked) props.insert(u"chunked"_s, *isChunked);
  return essential(u"dictation_failed", props);
}

TelemetryEvent TelemetryEvent::dictationStreamFallback(Literal reason) {
  return essential(u"dictation_stream_fallback", {{u"reason"_s, text(reason)}});
}

TelemetryEvent TelemetryEvent::textInsertionFailed(Literal reason) {
  return essential(u"text_insertion_failed", {{u"reason"_s, text(reason)}});
}

TelemetryEvent TelemetryEvent::transcriptCopied() {
  return optional(u"transcript_copied");
}

TelemetryEvent TelemetryEvent::requestFailed(const QString& endpoint, std::int64_t ms, int status) {
  return essential(u"request_failed",
                   {{u"endpoint"_s, endpoint}, {u"status"_s, status}, {u"ms"_s, qint64{ms}}});
}

TelemetryEvent TelemetryEvent::requestBroken(const QString& endpoint, std::int64_t ms,
                                             std::optional<int> error) {
  return essential(u"request_failed", {{u"endpoint"_s, endpoint},
                                       {u"error"_s, error ? u"url_%1"_s.arg(*error) : u"error"_s},
                                       {u"ms"_s, qint64{ms}}});
}

TelemetryEvent TelemetryEvent::requestSlow(const QString& endpoint, std::int64_t ms) {
  return essential(u"request_slow", {{u"endpoint"_s, endpoint}, {u"ms"_s, qint64{ms}}});
}

TelemetryEvent TelemetryEvent::signInStarted() {
  return optional(u"sign_in_started");
}

TelemetryEvent TelemetryEvent::signInCompleted() {
  return optional(u"sign_in_completed");
}

TelemetryEvent TelemetryEvent::signInFailed(Literal reason) {
  return optional(u"sign_in_failed", {{u"reason"_s, text(reason)}});
}

TelemetryEvent TelemetryEvent::signInRefused(int status) {
  return optional(u"sign_in_failed", {{u"reason"_s, u"http_%1"_s.arg(status)}});
}

TelemetryEvent TelemetryEvent::permissionPrompted(Permission permission) {
  return optional(u"permission_prompted", {{u"permission"_s, nameOf(permission)}});
}

TelemetryEvent TelemetryEvent::permissionGranted(Permission permission) {
  return optional(u"permission_granted", {{u"permission"_s, nameOf(permission)}});
}

TelemetryEvent TelemetryEvent::microphoneDenied() {
  return optional(u"permission_denied", {{u"permission"_s, nameOf(Permission::Microphone)}});
}

TelemetryEvent TelemetryEvent::tabOpened(const QString& tab) {
  return optional(u"tab_opened", {{u"tab"_s, tab}});
}

TelemetryEvent TelemetryEvent::languageChanged(const QString& from, const QString& to) {
  return optional(u"language_changed", {{u"from"_s, from}, {u"to"_s, to}});
}

TelemetryEvent TelemetryEvent::outputModeChanged(const QString& from, const QString& to) {
  return optional(u"output_mode_changed", {{u"from"_s, from}, {u"to"_s, to}});
}

TelemetryEvent TelemetryEvent::shortcutChanged(Literal action, const QString& shortcut) {
  return optional(u"shortcut_changed", {{u"action"_s, text(action)}, {u"shortcut"_s, shortcut}});
}

TelemetryEvent TelemetryEvent::settingChanged(const QString& setting) {
  return optional(u"setting_changed", {{u"setting"_s, setting}});
}

TelemetryEvent TelemetryEvent::dictionaryWordAdded() {
  return optional(u"dictionary_word_added");
}

TelemetryEvent TelemetryEvent::dictionaryWordRemoved() {
  return optional(u"dictionary_word_removed");
}

TelemetryEvent TelemetryEvent::updateInstalled(const QString& label, std::int64_t build) {
  return essential(u"update_installed", {{u"version"_s, label}, {u"build"_s, qint64{build}}});
}

TelemetryEvent TelemetryEvent::updateCheckManual() {
  return essential(u"update_check_manual");
}

TelemetryEvent TelemetryEvent::updateOffered(const QString& newVersion, std::int64_t build,
                                             bool isCritical) {
  return essential(u"update_offered", {{u"version"_s, sanitisedText(newVersion)},
                                       {u"build"_s, qint64{build}},
                                       {u"critical"_s, isCritical}});
}

TelemetryEvent TelemetryEvent::updateDownloaded(const QString& newVersion) {
  return essential(u"update_downloaded", version(newVersion));
}

TelemetryEvent TelemetryEvent::updateSkipped(const QString& newVersion) {
  return essential(u"update_skipped", version(newVersion));
}

TelemetryEvent TelemetryEvent::updatePostponed(const QString& newVersion) {
  return essential(u"update_postponed", version(newVersion));
}

TelemetryEvent TelemetryEvent::updateRestartClicked(const QString& newVersion) {
  return essential(u"update_restart_clicked", version(newVersion));
}

TelemetryEvent TelemetryEvent::updateFailed(const QString& errorDomain, std::int64_t code) {
  return essential(u"update_failed",
                   {{u"error"_s, sanitisedText(errorDomain)}, {u"code"_s, qint64{code}}});
}

QString sanitisedText(const QString& text) {
  constexpr qsizetype longest = 64;
  constexpr QStringView otherCharacters = u"._:+,-/";
  QString result;
  for (const char32_t character : text.toUcs4()) {
    const bool isFit = QChar::isLetterOrNumber(character) || QChar::isMark(character) ||
                       (character < 0x80 && otherCharacters.contains(QChar(char16_t(character))));
    result += isFit ? QString::fromUcs4(&character, 1) : u"_"_s;
  }
  return firstCharacters(result, longest);
}

}  // namespace vemo
