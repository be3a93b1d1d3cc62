// The ping of the installation and the report on the device.
#include "TelemetryFixture.h"

namespace vemo {
namespace {

using testing::SizeIs;

using Headers = std::vector<std::pair<QByteArray, QByteArray>>;

class TelemetryReportsTest : public TelemetryFixture {
 protected:
  TelemetryReportsTest() {
    settings.set(keys::telemetryInstallId, u"INSTALLATION"_s);
    with.device.facts = {.displayCount = 2,
                         .mainDisplay = u"1920x1080"_s,
                         .appearance = u"dark"_s,
                         .inApplicationsFolder = true,
                         .languages = {u"de-DE"_s, u"en-GB"_s},
                         .localeIdentifier = u"de_DE"_s,
                         .localeRegion = u"DE"_s,
                         .timeZone = u"Europe/Berlin"_s,
                         .inputSources = {u"de"_s, u"us(dvorak)"_s},
                         .microphoneType = u"usb"_s};
  }

  void sendDeviceReport(Urgency urgency) {
    with.http.answer(devicePath, 200);
    telemetry.sendDeviceReport(urgency);
    settle();
  }

  std::size_t deviceReportCount() const { return requestsTo(devicePath).size(); }
};

TEST_F(TelemetryReportsTest, ThePingOfAnInstallationNeedsNoAccount) {
  with.http.answer(installPath, 200);
  telemetry.sendInstallReport();
  settle();
  ASSERT_THAT(with.http.requests(), SizeIs(1));
  const auto& request = with.http.requests()[0];
  EXPECT_EQ(request.method, "POST");
  EXPECT_EQ(request.timeout, 60s);
  EXPECT_TRUE(request.body.isEmpty());
  EXPECT_EQ(request.headers, (Headers{{"Content-Type", "application/json"},
                                      {"x-platform", "macos"},
                                      {"x-device-id", "INSTALLATION"},
                                      {"x-app-version", "1.2.0 (34)"},
                                      {"x-os-version", "Debian GNU/Linux 12 (bookworm)"},
                                      {"x-device-model", "Workbench 9"},
                                      {"x-locale", "de_DE"},
                                      {"x-timezone", "Europe/Berlin"}}));
}

TEST_F(TelemetryReportsTest, WithSharingOffThePingHasNeitherLocaleNorTimeZone) {
  settings.set(keys::shareUsageStatistics, false);
  with.system.deviceModel.reset();
  with.http.answer(installPath, 200);
  telemetry.sendInstallReport();
  settle();
  const auto& headers = with.http.requests()[0].headers;
  ASSERT_THAT(headers, SizeIs(6));
  EXPECT_EQ(headers[5], (Headers::value_type{"x-device-model", "unknown"}));
  EXPECT_EQ(with.device.readCount(), 0) << "nothing is read that isn't sent";
}

TEST_F(TelemetryReportsTest, ThePingLeavesOutALocaleAndATimeZoneThatCantBeRead) {
  with.device.facts = {};
  with.http.answer(installPath, 200);
  telemetry.sendInstallReport();
  settle();
  EXPECT_THAT(with.http.requests()[0].headers, SizeIs(6));
}

TEST_F(TelemetryReportsTest, SignedOutThePingIsSentAtLaunchAndNoDeviceReport) {
  with.http.answer(installPath, 500);
  telemetry.start(false);
  clock.advance(10min);
  EXPECT_THAT(requestsTo(installPath), SizeIs(1)) << "nothing retries it";
  EXPECT_EQ(deviceReportCount(), 0);
}

TEST_F(TelemetryReportsTest, TheDeviceReportHoldsTheFactsOfTheDevice) {
  signIn();
  settings.set(keys::launchAtLogin, false);
  sendDeviceReport(Urgency::IfDue);
  ASSERT_THAT(with.http.requests(), SizeIs(1));
  const auto& request = with.http.requests()[0];
  EXPECT_EQ(request.timeout, 60s);
  EXPECT_EQ(request.headers, (Headers{{"Authorization", "Bearer token"},
                                      {"Content-Type", "application/json"},
                                      {"x-platform", "macos"},
                                      {"x-device-id", "INSTALLATION"},
                                      {"x-app-version", "1.2.0 (34)"},
                                      {"x-os-version", "Debian GNU/Linux 12 (bookworm)"}}));
  EXPECT_EQ(parseJsonObject(request.body),
            (QJsonObject{{u"macModel"_s, u"Workbench 9"_s},
                         {u"cpuArchitecture"_s, u"x86_64"_s},
                         {u"osVersion"_s, u"Debian GNU/Linux 12 (bookworm)"_s},
                         {u"appVersion"_s, u"1.2.0"_s},
                         {u"appBuild"_s, u"34"_s},
                         {u"versionLabel"_s, u"1.2.0 (34)"_s},
                         {u"shareUsageStatistics"_s, true},
                         {u"chip"_s, u"Fast Processor"_s},
                         {u"displayCount"_s, 2},
                         {u"mainDisplay"_s, u"1920x1080"_s},
                         {u"appearance"_s, u"dark"_s},
                         {u"launchAtLogin"_s, false},
                         {u"inApplicationsFolder"_s, true},
                         {u"languages"_s, QJsonArray{u"de-DE"_s, u"en-GB"_s}},
                         {u"localeRegion"_s, u"DE"_s},
                         {u"timeZone"_s, u"Europe/Berlin"_s},
                         {u"inputSources"_s, QJsonArray{u"de"_s, u"us(dvorak)"_s}},
                         {u"micType"_s, u"usb"_s}}));
}

TEST_F(TelemetryReportsTest, WithSharingOffTheDeviceReportHasOnlyTheBasicKeys) {
  signIn();
  settings.set(keys::shareUsageStatistics, false);
  sendDeviceReport(Urgency::IfDue);
  EXPECT_EQ(
      parseJsonObject(with.http.requests()[0].body)->keys(),
      (QStringList{u"appBuild"_s, u"appVersion"_s, u"chip"_s, u"cpuArchitecture"_s, u"macModel"_s,
                   u"osVersion"_s, u"shareUsageStatistics"_s, u"versionLabel"_s}));
}

TEST_F(TelemetryReportsTest, WhatCantBeReadIsLeftOut) {
  signIn();
  with.system.deviceModel.reset();
  with.system.processorName.reset();
  with.device.facts = {};
  sendDeviceReport(Urgency::IfDue);
  const auto report = *parseJsonObject(with.http.requests()[0].body);
  for (const auto key : {u"macModel", u"chip", u"displayCount", u"mainDisplay", u"appearance",
                         u"languages", u"localeRegion", u"timeZone", u"inputSources", u"micType"})
    EXPECT_FALSE(report.contains(QStringView(key))) << QStringView(key).toString().toStdString();
}

TEST_F(TelemetryReportsTest, TwoOccasionsInADayWithNoChangeSendOneReport) {
  signIn();
  sendDeviceReport(Urgency::IfDue);
  sendDeviceReport(Urgency::IfDue);
  EXPECT_EQ(deviceReportCount(), 1);
}

TEST_F(TelemetryReportsTest, AnOccasionWhileTheSameReportIsUnderWaySendsNoSecond) {
  signIn();
  with.http.answer(devicePath, 500, {}, 10s);
  telemetry.sendDeviceReport(Urgency::IfDue);
  settle();
  telemetry.sendDeviceReport(Urgency::IfDue);
  settle();
  EXPECT_EQ(deviceReportCount(), 1);
  clock.advance(10s);
  sendDeviceReport(Urgency::IfDue);
  EXPECT_EQ(deviceReportCount(), 2);
}

TEST_F(TelemetryReportsTest, AChangeWhileAReportIsUnderWayGoesOutAtTheNextOccasion) {
  signIn();
  with.http.answer(devicePath, 200, {}, 10s);
  telemetry.sendDeviceReport(Urgency::IfDue);
  settle();
  with.device.facts.displayCount = 1;
  sendDeviceReport(Urgency::IfDue);
  EXPECT_EQ(deviceReportCount(), 2);
}

TEST_F(TelemetryReportsTest, TheNextDayAnUnchangedReportIsDueAgain) {
  signIn();
  sendDeviceReport(Urgency::IfDue);
  clock.setWallTime(clock.wallTime() + 23h + 59min);
  sendDeviceReport(Urgency::IfDue);
  EXPECT_EQ(deviceReportCount(), 1);
  clock.setWallTime(clock.wallTime() + 1min);
  sendDeviceReport(Urgency::IfDue);
  EXPECT_EQ(deviceReportCount(), 2);
}

TEST_F(TelemetryReportsTest, AChangeOfTheDeviceGoesOutAtTheNextOccasion) {
  signIn();
  sendDeviceReport(Urgency::IfDue);
  with.device.facts.displayCount = 1;
  sendDeviceReport(Urgency::IfDue);
  EXPECT_EQ(deviceReportCount(), 2);
}

TEST_F(TelemetryReportsTest, AForcedReportGoesOutUnchanged) {
  signIn();
  sendDeviceReport(Urgency::IfDue);
  sendDeviceReport(Urgency::Forced);
  EXPECT_EQ(deviceReportCount(), 2);
}

TEST_F(TelemetryReportsTest, AChangeOfTheSharingSettingSendsAReportAtOnceInBothDirections) {
  signIn();
  sendDeviceReport(Urgency::IfDue);
  for (const bool enabled : {false, true}) {
    with.http.answer(devicePath, 200);
    telemetry.setShareUsageStatistics(enabled);
    settle();
    const auto report = *parseJsonObject(requestsTo(devicePath).back().body);
    EXPECT_EQ(report.value(u"shareUsageStatistics"), enabled);
  }
  EXPECT_EQ(deviceReportCount(), 3);
}

TEST_F(TelemetryReportsTest, AFailedReportIsTriedAgainAtTheNextOccasion) {
  signIn();
  with.http.answer(devicePath, 500);
  telemetry.sendDeviceReport(Urgency::IfDue);
  settle();
  EXPECT_FALSE(settings.contains(keys::telemetryDeviceReport));
  sendDeviceReport(Urgency::IfDue);
  EXPECT_EQ(deviceReportCount(), 2);
  EXPECT_TRUE(settings.get(keys::telemetryDeviceReport)->startsWith(u"2026-03-14{"));
}

}  // namespace
}  // namespace vemo
