// An AuthManager and its Google sign-in on fakes.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <vector>

#include "account/AuthManager.h"
#include "account/GoogleSignIn.h"
#include "base/Json.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeSecureRandom.h"
#include "fakes/FakeWebAuthentication.h"
#include "fakes/TelemetryOnFakes.h"
#include "fakes/TestStorage.h"
#include "storage/SettingsKeys.h"

namespace vemo {

using namespace std::chrono_literals;

inline const QString tokenPath = u"/token"_s;
inline const QString signInPath = u"/desktop/auth/google"_s;
inline const QString profilePath = u"/desktop/auth/profile"_s;
inline const QString namePath = u"/auth/profile"_s;
inline const QString accountPath = u"/desktop/auth/account"_s;
inline const QString languagesPath = u"/languages"_s;
inline const QString dictionaryPath = u"/dictionary"_s;

class AccountFixture : public testing::Test {
 protected:
  using Headers = std::vector<std::pair<QByteArray, QByteArray>>;

  AccountFixture() {
    configuration.googleClientId = u"77-abc.apps.accounts.example"_s;
    configuration.googleAuthorizationEndpoint =
        QUrl(u"https://accounts.example/o/oauth2/v2/auth"_s);
    configuration.googleTokenEndpoint = QUrl(u"https://tokens.example/token"_s);
    storage.settings.set(keys::telemetryInstallId, u"INSTALLATION"_s);
  }

  void holdToken(const QString& token = u"token"_s) { tokens().write(token, tokenAccount); }
  std::optional<QString> heldToken() { return tokens().read(tokenAccount); }

  /// Makes the manager and lets it read what it reads at its start.
  void startUp() {
    auth = std::make_unique<AuthManager>(AuthManager::Neighbours{.mainThread = mainThread,
                                                                 .clock = clock,
                                                                 .tokens = tokens(),
                                                                 .settings = storage.settings,
                                                                 .debugLog = storage.debugLog,
                                                                 .telemetry = with.telemetry,
                                                                 .session = http,
                                                                 .googleSignIn = googleSignIn,
                                                                 .configuration = configuration,
                                                                 .system = with.system});
    if (!tokens().isExpected(tokenAccount)) {
      if (heldToken()) http.answer(profilePath, 500);
      http.answer(languagesPath, 500);
    }
    settle();
  }

  void settle() { clock.advance(0s); }

  /// The result of an operation whose answers are scripted.
  template <typename T>
  T run(Task<T> operation) {
    std::optional<T> result;
    scope.start([&](std::stop_token) { return keep(std::move(operation), &result); });
    settle();
    EXPECT_TRUE(result) << "the operation has not ended";
    return result ? *std::move(result) : T();
  }
  void run(Task<> operation) {
    scope.start([&](std::stop_token) { return std::move(operation); });
    settle();
  }

  HttpRequest lastRequest() const { return http.requests().back(); }
  std::size_t requestCount() const { return http.requests().size(); }

  static QByteArray json(const QJsonObject& object) { return compactJson(object); }

  /// The events so far, as "name {props}".
  std::vector<std::string> events() const {
    std::vector<std::string> texts;
    for (const auto& [event, at] : with.telemetry.queue())
      texts.push_back(event.name().toStdString() + ' ' + compactJson(event.props()).toStdString());
    return texts;
  }

  SecureTokenStore& tokens() { return accountTokens; }

  const QString tokenAccount = QString::fromUtf16(authTokenAccount);
  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  TestStorage storage{clock};
  TelemetryOnFakes with{mainThread, clock, storage};
  FakeSecretBackend secrets;
  /// Not Telemetry's own, so that events stay where a test can see them.
  SecureTokenStore accountTokens{{&secrets}, storage.debugLog};
  FakeHttpSession http{mainThread, clock};
  FakeWebAuthentication browser{mainThread};
  FakeSecureRandom random;
  DeploymentConfiguration configuration = DeploymentConfiguration::builtIn();
  GoogleSignIn googleSignIn{
      {.browser = browser, .session = http, .random = random, .configuration = configuration}};
  std::unique_ptr<AuthManager> auth;
  TaskScope scope{mainThread};

 private:
  template <typename T>
  static Task<> keep(Task<T> operation, std::optional<T>* result) {
    *result = co_await std::move(operation);
  }
};

}  // namespace vemo
