#include "telemetry/TelemetryStore.h"

#include "support/DatabaseTest.h"

namespace vemo::service {
namespace {

using namespace std::chrono_literals;

class TelemetryStoreTest : public DatabaseTest {
 protected:
  void addEvent(Moment received) {
    const std::vector events = {ReportedEvent{.name = "n", .props = "{}", .at = noon}};
    TelemetryStore(database()).addEvents(std::nullopt, {.device = "d"}, events, received);
  }
};
INSTANTIATE_TEST_SUITE_P(Both, TelemetryStoreTest, bothDatabases, nameOf);

TEST_P(TelemetryStoreTest, WhatIsOlderThanTheLimitIsForgottenAndNotADayMore) {
  TelemetryStore store(database());
  for (const auto age : {0h, 24h, 48h}) {
    addEvent(noon - age);
    store.noteStart({.device = std::to_string(age.count())}, noon - age);
  }
  store.forgetBefore(noon - 24h);
  EXPECT_EQ(countOf("events"), 2);
  EXPECT_EQ(countOf("installations"), 2);
  EXPECT_EQ(countOf("installations WHERE device = '48'"), 0);
}

TEST_P(TelemetryStoreTest, AnInstallationThatStartsAgainIsNotForgotten) {
  TelemetryStore store(database());
  store.noteStart({.device = "d"}, noon - 48h);
  store.noteStart({.device = "d"}, noon);
  store.forgetBefore(noon - 24h);
  EXPECT_EQ(countOf("installations WHERE starts = 2 AND first_day < last_day"), 1);
}

TEST_P(TelemetryStoreTest, OfAnAccountsDevicesTheFiftyNewestAreKept) {
  const auto account = Accounts(database()).signIn({.issuer = "i", .subject = "s"}, noon).id;
  TelemetryStore store(database());
  for (int device = 0; device <= TelemetryStore::devicesAnAccount; ++device)
    store.putDeviceReport(account, std::to_string(device), "{}", noon + device * 1s);
  EXPECT_EQ(countOf("device_reports"), TelemetryStore::devicesAnAccount);
  EXPECT_EQ(countOf("device_reports WHERE device = '0'"), 0);
}

TEST_P(TelemetryStoreTest, AReportForAnAccountThatIsGoneIsDropped) {
  TelemetryStore(database()).putDeviceReport(12345, "d", "{}", noon);
  EXPECT_EQ(countOf("device_reports"), 0);
}

}  // namespace
}  // namespace vemo::service
