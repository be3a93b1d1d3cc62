// What the tests of SlackManager start from: an empty disk and keyring, and a scripted Slack.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>

#include "base/SerialQueue.h"
#include "base/TaskScope.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeHttpSession.h"
#include "fakes/FakeSecretBackend.h"
#include "fakes/TestStorage.h"
#include "integrations/SlackManager.h"
#include "storage/DeploymentConfiguration.h"
#include "storage/SecureTokenStore.h"

namespace vemo {

inline const QString authTest = u"/api/auth.test"_s;
inline const QString usersList = u"/api/users.list"_s;
inline const QString conversationsList = u"/api/conversations.list"_s;

class SlackManagerTest : public testing::Test {
 protected:
  SlackManagerTest() { startAnew(); }

  /// Another start of the program, on the same disk and keyring.
  void startAnew() {
    tokens =
        std::make_unique<SecureTokenStore>(std::vector<SecretBackend*>{&secrets}, storage.debugLog);
    makeSlack();
  }

  void makeSlack() {
    slack = std::make_unique<SlackManager>(
        SlackManager::Neighbours{.tokens = *tokens,
                                 .settings = storage.settings,
                                 .debugLog = storage.debugLog,
                                 .session = http,
                                 .configuration = configuration,
                                 .reader = SlackManager::Reader{reader, mainThread}});
  }

  StartedTask beginConnect(const QString& token) {
    result.reset();
    auto task = scope.start([this, token](std::stop_token stop) {
      return keep(&result, slack->connect(token, std::move(stop)));
    });
    mainThread.drain();
    return task;
  }

  bool connect(const QString& token) {
    beginConnect(token);
    EXPECT_TRUE(result.has_value());
    return result.value_or(false);
  }

  void answerAll() {
    http.answer(authTest, 200, R"({"ok":true,"team":"Ours"})");
    http.answer(usersList, 200, R"({"ok":true,"members":[{"id":"U1","name":"maria"}]})");
    http.answer(conversationsList, 200, R"({"ok":true,"channels":[{"id":"C1","name":"general"}]})");
  }

  static Task<> keep(std::optional<bool>* result, Task<bool> connecting) {
    *result = co_await std::move(connecting);
  }

  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  TestStorage storage{clock};
  FakeSecretBackend secrets;
  FakeHttpSession http{mainThread, clock};
  SerialQueue reader{"slack reader"};
  const DeploymentConfiguration configuration = DeploymentConfiguration::builtIn();
  std::unique_ptr<SecureTokenStore> tokens;
  std::unique_ptr<SlackManager> slack;
  std::optional<bool> result;
  TaskScope scope{mainThread};
};

}  // namespace vemo
