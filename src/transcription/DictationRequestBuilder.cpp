#include "transcription/DictationRequestBuilder.h"

#include <QUrl>
#include <QUuid>
#include <cmath>
#include <initializer_list>
#include <utility>

#include "base/Json.h"
#include "base/Text.h"
#include "ports/InputDevice.h"
#include "ports/SystemInformation.h"
#include "storage/Config.h"
#include "storage/DeploymentConfiguration.h"
#include "storage/SecureTokenStore.h"
#include "storage/SettingsKeys.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto requestTimeout = 60s;

using QueryItems = std::initializer_list<std::pair<QStringView, QString>>;

/// Percent-encodes each value as a whole, so that none can end its item or read as an escape.
void setQuery(QUrl& url, QueryItems items) {
  QByteArray query;
  for (const auto& [name, value] : items) {
    if (!query.isEmpty()) query += '&';
    query += name.toUtf8() + '=' + QUrl::toPercentEncoding(value, ":");
  }
  url.setQuery(QString::fromLatin1(query), QUrl::StrictMode);
}

void addTarget(HttpRequest& request, const TargetApplication& target) {
  request.headers.emplace_back("x-target-app-name"_ba, headerValue(target.name));
  request.headers.emplace_back("x-target-bundle-id"_ba, headerValue(target.identifier));
}

}  // namespace

std::optional<QString> DictationRequestBuilder::token() const {
  auto token = m_sources.tokens.read(QString::fromUtf16(authTokenAccount));
  if (token && token->isEmpty()) return std::nullopt;
  return token;
}

std::optional<DictationRequest> DictationRequestBuilder::dictate(const QString& token,
                                                                 const QByteArray& wavData) const {
  auto http = post(u"desktop/dictate"_s, "audio/wav"_ba, token);
  if (!http) return std::nullopt;
  const auto& language = config::currentLanguage(m_sources.settings);
  DictationRequest request{.http = std::move(*http),
                           .language = config::effectiveLanguageCode(language),
                           .model = language.model,
                           .mode = config::requestOutputMode(m_sources.settings),
                           .target = TargetApplication::current(m_sources.focusedApplication)};
  setQuery(request.http.url, {{u"mode", request.mode},
                              {u"timestamps", u"false"_s},
                              {u"format_mode", QString::fromUtf16(smartFormatMode)},
                              {u"language", request.language},
                              {u"model", request.model}});
  addTarget(request.http, request.target);
  request.http.headers.emplace_back(
      "x-dictation-id"_ba, QUuid::createUuid().toByteArray(QUuid::WithoutBraces).toUpper());
  request.http.body = wavData;
  return request;
}

std::optional<DictationRequest> DictationRequestBuilder::chunk(const QString& token,
                                                               const Chunk& chunk) const {
  auto http = post(u"desktop/dictate/chunk"_s, "audio/wav"_ba, token);
  if (!http) return std::nullopt;
  DictationRequest request{.http = std::move(*http),
                           .language = chunk.language,
                           .model = chunk.model,
                           .mode = chunk.mode,
                           .target = TargetApplication::current(m_sources.focusedApplication)};
  setQuery(request.http.url, {{u"mode", chunk.mode},
                              {u"timestamps", u"false"_s},
                              {u"language", chunk.language},
                              {u"model", chunk.model},
                              {u"chunk_index", QString::number(chunk.index)},
                              {u"session_id", chunk.sessionId}});
  request.http.headers.emplace_back("x-session-id"_ba, headerValue(chunk.sessionId));
  addTarget(request.http, request.target);
  request.http.body = chunk.wavData;
  return request;
}

std::optional<DictationRequest> DictationRequestBuilder::finalize(
    const QString& token, const Transcript& transcript) const {
  auto http = post(u"desktop/dictate/finalize"_s, "application/json"_ba, token);
  if (!http) return std::nullopt;
  DictationRequest request{.http = std::move(*http),
                           .language = transcript.language,
                           .model = transcript.model,
                           .mode = transcript.formatMode,
                           .target = TargetApplication::current(m_sources.focusedApplication)};
  request.http.headers.emplace_back("x-session-id"_ba, headerValue(transcript.sessionId));
  addTarget(request.http, request.target);
  // JSON has no number for infinity; a request without a body still tells the service of the end.
  if (std::isfinite(transcript.totalDuration)) {
    request.http.body = compactJson(QJsonObject{{u"sessionId"_s, transcript.sessionId},
                                                {u"rawTranscript"_s, transcript.rawText},
                                                {u"format_mode"_s, transcript.formatMode},
                                                {u"language"_s, transcript.language},
                                                {u"model"_s, transcript.model},
                                                {u"totalDuration"_s, transcript.totalDuration},
                                                {u"appName"_s, request.target.name},
                                                {u"bundleId"_s, request.target.identifier}});
  }
  return request;
}

std::optional<HttpRequest> DictationRequestBuilder::post(const QString& path,
                                                         const QByteArray& contentType,
                                                         const QString& token) const {
  HttpRequest request;
  request.method = "POST"_ba;
  request.url = m_sources.configuration.api(path);
  if (!request.url.isValid() || request.url.isRelative() || request.url.host().isEmpty())
    return std::nullopt;
  request.timeout = requestTimeout;
  const Settings& settings = m_sources.settings;
  const QString& applicationVersion = m_sources.system.applicationVersion;
  request.headers = {
      {"Content-Type"_ba, contentType},
      {"Authorization"_ba, "Bearer " + headerValue(token)},
      {"x-platform"_ba, "macos"_ba},
      {"x-os-version"_ba, headerValue(m_sources.system.systemVersion)},
      {"x-app-version"_ba,
       applicationVersion.isEmpty() ? "1.0"_ba : headerValue(applicationVersion)},
      {"x-device-id"_ba, headerValue(settings.get(keys::telemetryInstallId, QString()))},
  };
  if (settings.get(keys::shareUsageStatistics, true))
    request.headers.emplace_back("x-mic-type"_ba,
                                 wireName(m_sources.inputDevice.transport()).toLatin1());
  return request;
}

}  // namespace vemo
