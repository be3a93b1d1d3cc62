// The fixture of tests that speak HTTP to a running service with accounts, in every deployment,
// with an identity provider and a clock of the test's own.
#pragma once

#include <gmock/gmock.h>

#include <atomic>
#include <boost/json.hpp>

#include "support/DatabaseTest.h"
#include "support/Eventually.h"
#include "support/IdTokens.h"
#include "support/NginxProxy.h"
#include "support/RunningService.h"
#include "support/WavFile.h"

namespace vemo::service {

/// How the service is run: alone on either database, or twice on one PostgreSQL behind nginx.
enum class Deployment { Sqlite, PostgreSql, TwoBehindNginx };

inline std::string deploymentName(const testing::TestParamInfo<Deployment>& deployment) {
  constexpr const char* names[] = {"Sqlite", "PostgreSql", "TwoBehindNginx"};
  return names[static_cast<int>(deployment.param)];
}

inline const auto everyDeployment =
    testing::Values(Deployment::Sqlite, Deployment::PostgreSql, Deployment::TwoBehindNginx);

class AccountServiceTest : public testing::TestWithParam<Deployment> {
 protected:
  AccountServiceTest() {
    m_settings.accounts.enabled = true;
    m_settings.accounts.database = emptyDatabase(databaseKind(), m_folder);
    m_settings.tokensFile = m_folder.path() / "tokens";
    m_settings.providers = {{.rules = {.issuers = {"https://issuer"}, .audiences = {"our-client"}},
                             .keys = [this](const std::string&) { return m_keys; }}};
    m_settings.now = [this] { return Moment(std::chrono::seconds(m_seconds)); };
  }

  void start() {
    if (!m_instances.empty()) return;
    const std::size_t count = GetParam() == Deployment::TwoBehindNginx ? 2 : 1;
    std::vector<std::uint16_t> ports;
    for (std::size_t index = 0; index < count; ++index) {
      m_instances.push_back(std::make_unique<RunningService>(m_script, m_settings));
      ports.push_back(m_instances.back()->port());
    }
    if (count > 1) m_proxy = std::make_unique<NginxProxy>(ports);
    m_port = m_proxy ? m_proxy->port() : ports.front();
  }
  /// Ends every instance; what they have logged.
  std::string stop() {
    std::string log;
    for (const auto& instance : m_instances) log += instance->stop();
    return log;
  }
  const std::string& operatorsToken() {
    start();
    return m_instances.front()->token();
  }
  /// Requests that wait for an answer which equal ones may share.
  std::size_t waitingForAnswers() {
    std::size_t count = 0;
    for (const auto& instance : m_instances) count += instance->waitingForAnswers();
    return count;
  }

  Moment now() const { return m_settings.now(); }
  void advance(std::chrono::seconds time) { m_seconds += time.count(); }

  /// One request on a connection of its own; status 0 when there was no answer.
  RawAnswer ask(std::string_view method, std::string_view target, std::string_view token,
                std::string_view body = "", std::string_view headers = "") {
    start();
    auto request = std::string(method) + " " + std::string(target) + " HTTP/1.1\r\nHost: x\r\n" +
                   std::string(headers);
    if (!token.empty()) request += "Authorization: Bearer " + std::string(token) + "\r\n";
    request += "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + std::string(body);
    return RawClient(m_port).exchange(request).value_or(RawAnswer{});
  }
  RawAnswer askToSignIn(const std::string& idToken, std::string_view headers = "") {
    const auto body = boost::json::serialize(boost::json::object{{"idToken", idToken}});
    return ask("POST", "/desktop/auth/google", "", body, headers);
  }
  /// Every one is another text, as providers issue them.
  std::string idToken(const std::string& subject = "ada") {
    return providerKey().sign(
        Claims(now()).with("sub", boost::json::string(subject)).with("jti", ++m_idTokens).text());
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
  std::vector<std::unique_ptr<RunningService>> m_instances;
  std::unique_ptr<NginxProxy> m_proxy;
  std::uint16_t m_port = 0;

 private:
  static DatabaseAddress::Kind databaseKind() {
    return GetParam() == Deployment::Sqlite ? DatabaseAddress::Kind::Sqlite
                                            : DatabaseAddress::Kind::PostgreSql;
  }
};

}  // namespace vemo::service
