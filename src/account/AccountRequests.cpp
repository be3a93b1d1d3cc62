#include "account/AccountRequests.h"

#include <QUrl>

#include "base/Json.h"
#include "base/Text.h"
#include "ports/SystemInformation.h"
#include "storage/DeploymentConfiguration.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto requestTimeout = 60s;
constexpr auto accountDeletionTimeout = 30s;

void setJson(HttpRequest& request, const QJsonObject& body) {
  request.headers.emplace_back("Content-Type"_ba, "application/json"_ba);
  request.body = compactJson(body);
}

}  // namespace

HttpRequest AccountRequests::request(const QByteArray& method, const QString& path) const {
  return {.method = method,
          .url = m_configuration.api(path),
          .headers = {},
          .body = {},
          .timeout = requestTimeout};
}

HttpRequest AccountRequests::authorized(const QByteArray& method, const QString& path,
                                        const QString& token, const QByteArray& platform) const {
  const QString& version = m_system.applicationVersion;
  HttpRequest result = request(method, path);
  result.headers = {{"Authorization"_ba, "Bearer " + headerValue(token)},
                    {"x-platform"_ba, platform},
                    {"x-app-version"_ba, version.isEmpty() ? "1.0"_ba : headerValue(version)}};
  return result;
}

HttpRequest AccountRequests::signIn(const QString& idToken, const QString& deviceId) const {
  HttpRequest result = request("POST"_ba, u"desktop/auth/google"_s);
  result.headers = {{"x-platform"_ba, "macos"_ba},
                    {"x-app-version"_ba, headerValue(m_system.versionLabel())},
                    {"x-device-id"_ba, headerValue(deviceId)},
                    {"x-os-version"_ba, headerValue(m_system.systemVersionText)}};
  setJson(result, {{u"idToken"_s, idToken}});
  return result;
}

HttpRequest AccountRequests::profile(const QString& token) const {
  return authorized("GET"_ba, u"desktop/auth/profile"_s, token, "macos"_ba);
}

HttpRequest AccountRequests::nameChange(const QString& name, const QString& token) const {
  HttpRequest result = authorized("PATCH"_ba, u"auth/profile"_s, token, "mac"_ba);
  setJson(result, {{u"name"_s, name}});
  return result;
}

HttpRequest AccountRequests::accountDeletion(const QString& token) const {
  HttpRequest result = authorized("DELETE"_ba, u"desktop/auth/account"_s, token, "macos"_ba);
  result.timeout = accountDeletionTimeout;
  return result;
}

HttpRequest AccountRequests::languages(const QString& token) const {
  HttpRequest result = request("GET"_ba, u"languages"_s);
  if (!token.isEmpty())
    result.headers.emplace_back("Authorization"_ba, "Bearer " + headerValue(token));
  return result;
}

HttpRequest AccountRequests::dictionary(const QString& token) const {
  return authorized("GET"_ba, u"dictionary"_s, token, "mac"_ba);
}

HttpRequest AccountRequests::dictionaryAddition(const QString& phrase, const QString& replacement,
                                                const QString& token) const {
  HttpRequest result = authorized("POST"_ba, u"dictionary"_s, token, "mac"_ba);
  setJson(result, {{u"phrase"_s, phrase}, {u"replacement"_s, replacement}});
  return result;
}

HttpRequest AccountRequests::dictionaryDeletion(const QString& id, const QString& token) const {
  const QString segment = QString::fromLatin1(QUrl::toPercentEncoding(id));
  return authorized("DELETE"_ba, u"dictionary/"_s + segment, token, "mac"_ba);
}

}  // namespace vemo
