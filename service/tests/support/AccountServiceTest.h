// The fixture of tests that speak HTTP to a running service with accounts, on either database, with
// an identity provider and a clock of the test's own.
#pragma once

#include <gmock/gmock.h>

#include <atomic>
#include <boost/json.hpp>

#include "support/DatabaseTest.h"
#include "support/Eventually.h"
#include "support/IdTokens.h"
#include "support/RunningService.h"
#include "support/WavFile.h"

namespace vemo::service {

/// Problems of ID tokens have names, too.
inline std::string databaseName(const testing::TestParamInfo<DatabaseAddress::Kind>& kind) {
  return nameOf(kind);
}

class AccountServiceTest : public testing::TestWithParam<DatabaseAddress::Kind> {
 protected:
  AccountServiceTest() {
    m_settings.accounts.enabled = true;
    m_settings.accounts.database = emptyDatabase(GetParam(), m_folder);
    m_settings.providers = {{.rules = {.issuers = {"https://issuer"}, .audiences = {"our-client"}},
                             .keys = [this](const std::string&) { return m_keys; }}};
    m_settings.now = [this] { return Moment(std::chrono::seconds(m_seconds)); };
  }

  RunningService& service() {
    if (!m_service) m_service = std::make_unique<RunningService>(m_script, m_settings);
    return *m_service;
  }
  Moment now() const { return m_settings.now(); }
  void advance(std::chrono::seconds time) { m_seconds += time.count(); }

  /// One request on a connection of its own; status 0 when there was no answer.
  RawAnswer ask(std::string_view method, std::string_view target, std::string_view token,
                std::string_view body = "", std::string_view headers = "") {
    auto request = std::string(method) + " " + std::string(target) + " HTTP/1.1\r\nHost: x\r\n" +
                   std::string(headers);
    if (!token.empty()) request += "Authorization: Bearer " + std::string(token) + "\r\n";
    request += "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + std::string(body);
    return RawClient(service().port()).exchange(request).value_or(RawAnswer{});
  }
  RawAnswer askToSignIn(const std::string& idToken, std::string_view headers = "") {
    const auto body = boost::json::serialize(boost::json::object{{"idToken", idToken}});
    return ask("POST", "/desktop/auth/google", "", body, headers);
  }
  /// Every one is another text, as providers issue them.
  std::string idToken(const std::string& subject = "ada") {
    return providerKey().sign(Claims(now()).with("sub", boost::json::string(subject)).with("jti", ++m_idTokens).text());
  }
  std::string signIn(const std::string& subject = "ada") {
    const auto answer = askToSignIn(idToken(subject));
    EXPECT_EQ(answer.status, 200) << answer.body;
    return answer.status == 200 ? std::string(objectIn(answer).at("token").as_string())
                                : std::string();
  }
  static boost::json::object objectIn(const RawAnswer& answer) {
    boost::system::error_code error;
    const auto value = boost::json::parse(answer.body, error);
    return value.is_object() ? value.get_object() : boost::json::object();
  }
  boost::json::object profile(const std::string& token) {
    const auto answer = objectIn(ask("GET", "/desktop/auth/profile", token));
    const auto* user = answer.if_contains("user");
    return user ? user->as_object() : boost::json::object();
  }
  boost::json::object consumption(const std::string& token) {
    return profile(token).at("consumption").as_object();
  }

  TemporaryFolder m_folder;
  EngineScript m_script;
  RunningService::Settings m_settings;
  std::optional<std::vector<JsonWebKey>> m_keys = std::vector{providerKey()};
  std::atomic<std::int64_t> m_seconds = noon.time_since_epoch().count();
  std::int64_t m_idTokens = 0;
  std::unique_ptr<RunningService> m_service;
};

}  // namespace vemo::service
