#include "telemetry/TelemetryApi.h"

#include "support/AccountServiceTest.h"
#include "telemetry/TelemetrySummary.h"

namespace vemo::service {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using namespace std::chrono_literals;

constexpr std::string_view headers =
    "x-platform: macos\r\nx-device-id: E621E1F8-C36C\r\nx-app-version: 1.2.3 (45)\r\n"
    "x-os-version: Debian 12\r\n";

std::string batch(int count) {
  std::string events;
  for (int index = 0; index < count; ++index)
    events += std::string(index > 0 ? "," : "") +
              R"({"name":"app_launched","props":{"launchedAtLogin":true},)"
              R"("at":"2026-03-09T12:00:00Z"})";
  return R"({"events":[)" + events + "]}";
}

class TelemetryApiTest : public AccountServiceTest {
 protected:
  RawAnswer send(std::string_view path, const std::string& token, std::string_view body,
                 std::string_view more = headers) {
    return ask("POST", path, token, body, more);
  }
  int sendEvents(const std::string& token, std::string_view body) {
    return send("/desktop/events", token, body).status;
  }
  long long countOf(const std::string& table) {
    Database database(m_settings.accounts.database);
    long long count = -1;
    database.session() << "SELECT count(*) FROM " << table, soci::into(count);
    return count;
  }
  std::string valueOf(const std::string& question) {
    Database database(m_settings.accounts.database);
    std::string value;
    database.session() << question, soci::into(value);
    return value;
  }
};
INSTANTIATE_TEST_SUITE_P(Each, TelemetryApiTest, everyDeployment, deploymentName);

TEST_P(TelemetryApiTest, EventsOfAnAccountAreKeptUntilItEnds) {
  const auto token = signIn();
  EXPECT_EQ(sendEvents(token, batch(50)), 202);
  EXPECT_EQ(countOf("events"), 50);
  EXPECT_EQ(valueOf("SELECT props FROM events LIMIT 1"), R"({"launchedAtLogin":true})");
  EXPECT_EQ(valueOf("SELECT app_version FROM events LIMIT 1"), "1.2.3 (45)");
  EXPECT_EQ(sendEvents(operatorsToken(), batch(1)), 202);
  ask("DELETE", "/desktop/auth/account", token);
  EXPECT_EQ(countOf("events"), 1);
}

TEST_P(TelemetryApiTest, EventsNeedAToken) {
  EXPECT_EQ(sendEvents("", batch(1)), 401);
  EXPECT_EQ(sendEvents(std::string(43, 'A'), batch(1)), 401);
}

TEST_P(TelemetryApiTest, ABatchTakes200EventsAndNotOneMore) {
  const auto token = signIn();
  EXPECT_EQ(sendEvents(token, batch(0)), 400);
  EXPECT_EQ(sendEvents(token, batch(200)), 202);
  EXPECT_EQ(sendEvents(token, batch(201)), 400);
}

TEST_P(TelemetryApiTest, AMalformedBatchIsRefusedWholeAndALongOneUnread) {
  const auto token = signIn();
  EXPECT_EQ(sendEvents(token, R"({"events":[{"name":"n","props":{},"at":"today"}]})"), 400);
  EXPECT_EQ(sendEvents(token, ""), 400);
  EXPECT_EQ(sendEvents(token, std::string(64 * 1024, ' ')), 400);
  EXPECT_EQ(sendEvents(token, std::string(64 * 1024 + 1, ' ')), 413);
  EXPECT_EQ(send("/desktop/events", token, batch(1), "").status, 400);
  EXPECT_EQ(countOf("events"), 0);
}

TEST_P(TelemetryApiTest, AnInstallationIsCountedOnceAndItsStartsWithoutAnyToken) {
  const auto more = std::string(headers) + "x-device-model: Board 7\r\nx-locale: en_GB\r\n";
  EXPECT_EQ(send("/telemetry/install", "", "", more).status, 202);
  EXPECT_EQ(valueOf("SELECT locale FROM installations"), "en_GB");
  EXPECT_EQ(send("/telemetry/install", "", "").status, 202);
  EXPECT_EQ(countOf("installations"), 1);
  EXPECT_EQ(countOf("installations WHERE starts = 2 AND locale IS NULL"), 1);
  EXPECT_EQ(countOf("installations WHERE os_version = 'Debian 12' AND platform = 'macos'"), 1);
}

TEST_P(TelemetryApiTest, AnInstallationWithoutAnIdentifierIsRefused) {
  for (const auto* more : {"", "x-device-id: \r\n", "x-device-id: a b\r\n", "x-device-id: '\r\n"})
    EXPECT_EQ(send("/telemetry/install", "", "", more).status, 400) << more;
  const auto named = [](std::size_t length) {
    return "x-device-id: " + std::string(length, 'd') + "\r\n";
  };
  EXPECT_EQ(send("/telemetry/install", "", "", named(64)).status, 202);
  EXPECT_EQ(send("/telemetry/install", "", "", named(65)).status, 400);
  EXPECT_EQ(send("/telemetry/install", "", "body").status, 413);
}

TEST_P(TelemetryApiTest, ADeviceReportBelongsToAnAccountAndReplacesTheOneBefore) {
  const auto token = signIn();
  EXPECT_EQ(send("/desktop/device", token, R"({"chip":"one"})").status, 202);
  EXPECT_EQ(send("/desktop/device", token, R"({"chip":"two","languages":["en"]})").status, 202);
  EXPECT_EQ(valueOf("SELECT report FROM device_reports"), R"({"chip":"two","languages":["en"]})");
  EXPECT_EQ(send("/desktop/device", "", R"({"chip":"one"})").status, 401);
  EXPECT_EQ(send("/desktop/device", operatorsToken(), R"({"chip":"one"})").status, 403);
  EXPECT_EQ(send("/desktop/device", token, "[]").status, 400);
  EXPECT_EQ(send("/desktop/device", token, std::string(16 * 1024 + 1, ' ')).status, 413);
  ask("DELETE", "/desktop/auth/account", token);
  EXPECT_EQ(countOf("device_reports"), 0);
}

TEST_P(TelemetryApiTest, TheSixtiethReportOfAMinuteIsTakenAndTheNextIsNot) {
  const auto token = signIn();
  for (int report = 1; report <= 60; ++report) EXPECT_EQ(sendEvents(token, batch(1)), 202);
  EXPECT_EQ(sendEvents(token, batch(1)), 429);
  EXPECT_EQ(sendEvents(signIn("bob"), batch(1)), 202);
  advance(60s);
  EXPECT_EQ(sendEvents(token, batch(1)), 202);
  EXPECT_EQ(countOf("events"), 62);
}

TEST_P(TelemetryApiTest, ReportsCanBeTurnedOff) {
  m_settings.telemetry.enabled = false;
  EXPECT_EQ(send("/telemetry/install", "", "").status, 404);
  EXPECT_EQ(sendEvents(operatorsToken(), batch(1)), 404);
}

TEST_P(TelemetryApiTest, ASummaryTellsNumbersAndNobodysName) {
  const auto token = signIn();
  send("/telemetry/install", "", "");
  sendEvents(token, batch(3));
  ask("POST", "/desktop/dictate", token, wavOf(std::vector<std::int16_t>(60 * sampleRate, 1)));
  const auto summary = telemetrySummary(m_settings.accounts, now());
  ASSERT_TRUE(summary);
  EXPECT_EQ(*summary,
            "Installations: 1, of them started in the last 30 days: 1, in the last 7: 1\n"
            "Accounts: 1, of them dictating in the last 30 days: 1\n"
            "Dictations: 1, words: 2, minutes of speech: 1\n"
            "Versions of the installations of the last 30 days:\n"
            "  1.2.3 (45): 1\n"
            "Events of the last 7 days:\n"
            "  app_launched: 3\n");
  EXPECT_THAT(telemetrySummary(m_settings.accounts, now() + 31 * 24h).value(),
              AllOf(HasSubstr("last 30 days: 0, in the last 7: 0\n"), Not(HasSubstr("app_"))));
}

}  // namespace
}  // namespace vemo::service
