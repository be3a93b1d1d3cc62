#include "telemetry/TelemetryBodies.h"

#include <gmock/gmock.h>

namespace vemo::service {
namespace {

std::string eventWith(const std::string& name, const std::string& props, const std::string& at) {
  return R"({"events":[{"name":)" + name + R"(,"props":)" + props + R"(,"at":)" + at + "}]}";
}

bool isGood(const std::string& name, const std::string& props = "{}",
            const std::string& at = R"("2026-03-09T12:00:00Z")") {
  return readEvents(eventWith(name, props, at)).has_value();
}

TEST(TelemetryBodiesTest, AnEventKeepsItsNamePropertiesAndTime) {
  const auto events = readEvents(eventWith(R"("dictation_completed")",
                                           R"({"seconds": 1.5,"words":3,"chunked":false})",
                                           R"("1970-01-02T00:00:01Z")"));
  ASSERT_TRUE(events);
  ASSERT_EQ(events->size(), 1U);
  EXPECT_EQ(events->front().name, "dictation_completed");
  EXPECT_EQ(events->front().props, R"({"seconds":1.5E0,"words":3,"chunked":false})");
  EXPECT_EQ(events->front().at, Moment(std::chrono::seconds(86'401)));
}

TEST(TelemetryBodiesTest, WhatIsNoObjectWithAListIsRefused) {
  for (const auto* body : {"", "{", "[]", "null", "7", "{}", R"({"events":{}})",
                           R"({"events":null})", R"({"events":[7]})", R"({"events":[[]]})"})
    EXPECT_FALSE(readEvents(body)) << body;
}

TEST(TelemetryBodiesTest, NamesAreWordsOfUpTo64Letters) {
  EXPECT_TRUE(isGood('"' + std::string(64, 'n') + '"'));
  EXPECT_FALSE(isGood('"' + std::string(65, 'n') + '"'));
  for (const auto* name : {"\"\"", "\"a b\"", "\"a\\n\"", "\"é\"", "7", "null", "\"a\\u0000\""})
    EXPECT_FALSE(isGood(name)) << name;
}

TEST(TelemetryBodiesTest, PropertiesAreFlatAndBounded) {
  EXPECT_TRUE(isGood("\"n\"", R"({"a":1,"b":-1.5,"c":true,"d":"text é"})"));
  for (const auto* props : {"[]", "null", "7", R"({"a":null})", R"({"a":{}})", R"({"a":[]})",
                            R"({"":1})", R"({"a b":1})", R"({"a":1e999})", R"({"a":-1e999})"})
    EXPECT_FALSE(isGood("\"n\"", props)) << props;
  const auto text = [](std::size_t length) {
    return R"({"a":")" + std::string(length, 't') + "\"}";
  };
  EXPECT_TRUE(isGood("\"n\"", text(512)));
  EXPECT_FALSE(isGood("\"n\"", text(513)));
  const auto many = [](int count) {
    std::string props = "{\"p0\":0";
    for (int index = 1; index < count; ++index) props += ",\"p" + std::to_string(index) + "\":0";
    return props + "}";
  };
  EXPECT_TRUE(isGood("\"n\"", many(32)));
  EXPECT_FALSE(isGood("\"n\"", many(33)));
}

TEST(TelemetryBodiesTest, TimesAreOfOneForm) {
  EXPECT_TRUE(isGood("\"n\"", "{}", R"("2028-02-29T23:59:59Z")"));
  for (const auto* at :
       {R"("2026-03-09T12:00:00")", R"("2026-03-09 12:00:00Z")", R"("2026-13-09T12:00:00Z")",
        R"("2026-03-09T12:00:00+00:00")", R"("2026-3-09T12:00:00ZZ")", "0", "null", "\"\"",
        R"("2026-03-09T25:00:00Z")"})
    EXPECT_FALSE(isGood("\"n\"", "{}", at)) << at;
}

TEST(TelemetryBodiesTest, ADeviceReportHoldsFactsAndListsOfTexts) {
  EXPECT_EQ(readDeviceReport(R"({ "chip" : "c", "displayCount":2,"languages":["en","de"]})"),
            R"({"chip":"c","displayCount":2,"languages":["en","de"]})");
  for (const auto* body : {"", "[]", "{}", R"({"a":null})", R"({"a":{}})", R"({"a":[1]})",
                           R"({"a":[["b"]]})", R"({"a b":1})"})
    EXPECT_FALSE(readDeviceReport(body)) << body;
}

TEST(TelemetryBodiesTest, HeadersAreCutAndCleaned) {
  boost::beast::http::fields headers;
  headers.set("x-device-id", "d-1");
  headers.set("x-app-version", std::string(200, 'v'));
  headers.set("x-os-version", "Debian \xC3\xA9\x01");
  const auto installation = readInstallation(headers);
  ASSERT_TRUE(installation);
  EXPECT_EQ(installation->appVersion, std::string(128, 'v'));
  EXPECT_EQ(installation->osVersion, "Debian ???");
  EXPECT_FALSE(installation->locale);
  EXPECT_EQ(installation->model, "");
}

}  // namespace
}  // namespace vemo::service
