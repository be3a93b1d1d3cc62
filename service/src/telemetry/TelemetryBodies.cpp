#include "telemetry/TelemetryBodies.h"

#include <time.h>

#include <algorithm>
#include <boost/json.hpp>
#include <cmath>

#include "http/JsonBody.h"

namespace vemo::service {

namespace {

namespace json = boost::json;

constexpr auto malformedEvent = "An event is not of the form that is expected.";
constexpr auto malformedReport = "The report is not of the form that is expected.";

constexpr std::size_t mostProperties = 32;
constexpr std::size_t mostListed = 64;
constexpr std::size_t longestName = 64;
constexpr std::size_t longestText = 512;
constexpr std::size_t longestHeader = 128;

bool isName(std::string_view text) {
  return !text.empty() && text.size() <= longestName && std::ranges::all_of(text, [](char letter) {
    return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
           (letter >= '0' && letter <= '9') || letter == '_';
  });
}

bool isText(const json::value& value) {
  return value.is_string() && value.get_string().size() <= longestText;
}

/// A number with a long exponent is read as infinity, which no JSON can say again.
bool isNumber(const json::value& value) {
  return value.is_double() ? std::isfinite(value.get_double()) : value.is_number();
}

bool isFact(const json::value& value) {
  return isNumber(value) || value.is_bool() || isText(value);
}

bool isListOfTexts(const json::value& value) {
  const auto* list = value.if_array();
  return list && list->size() <= mostListed && std::ranges::all_of(*list, isText);
}

template <typename Check>
bool isRecord(const json::object& object, Check isValue) {
  return object.size() <= mostProperties &&
         std::ranges::all_of(object, [&](const json::key_value_pair& pair) {
           return isName(pair.key()) && isValue(pair.value());
         });
}

/// "2026-03-09T12:00:00Z" and no other form.
std::optional<Moment> momentIn(const std::string& text) {
  constexpr std::string_view form = "dddd-dd-ddTdd:dd:ddZ";
  const bool hasForm = std::ranges::equal(text, form, [](char letter, char expected) {
    return expected == 'd' ? letter >= '0' && letter <= '9' : letter == expected;
  });
  std::tm parts = {};
  if (!hasForm || !::strptime(text.c_str(), "%Y-%m-%dT%H:%M:%SZ", &parts)) return std::nullopt;
  return Moment(std::chrono::seconds(::timegm(&parts)));
}

std::optional<ReportedEvent> eventIn(const json::value& value) {
  const auto* object = value.if_object();
  if (!object) return std::nullopt;
  auto name = textIn(*object, "name", {.least = 1, .most = longestName});
  const auto at = textIn(*object, "at", {.least = 1, .most = longestName});
  const auto moment = at ? momentIn(*at) : std::nullopt;
  const auto* props = object->if_contains("props");
  if (!name || !isName(*name) || !moment || !props || !props->is_object()) return std::nullopt;
  if (!isRecord(props->get_object(), isFact)) return std::nullopt;
  return ReportedEvent{.name = *std::move(name), .props = json::serialize(*props), .at = *moment};
}

std::string headerIn(const boost::beast::http::fields& headers, std::string_view name) {
  std::string value(headers[name]);
  value.resize(std::min(value.size(), longestHeader));
  std::ranges::replace_if(value, [](char letter) { return letter < ' ' || letter > '~'; }, '?');
  return value;
}

std::optional<std::string> optionalHeaderIn(const boost::beast::http::fields& headers,
                                            std::string_view name) {
  auto value = headerIn(headers, name);
  return value.empty() ? std::nullopt : std::optional(std::move(value));
}

}  // namespace

std::expected<std::vector<ReportedEvent>, std::string_view> readEvents(std::string_view body) {
  const auto object = jsonObjectIn(body);
  const auto* value = object ? object->if_contains("events") : nullptr;
  const auto* list = value ? value->if_array() : nullptr;
  if (!list) return std::unexpected("The body is not a JSON object with a list of events.");
  if (list->empty() || list->size() > mostEvents)
    return std::unexpected("A batch has 1 to 200 events.");
  std::vector<ReportedEvent> events;
  events.reserve(list->size());
  for (const auto& element : *list) {
    auto event = eventIn(element);
    if (!event) return std::unexpected(malformedEvent);
    events.push_back(*std::move(event));
  }
  return events;
}

std::expected<std::string, std::string_view> readDeviceReport(std::string_view body) {
  const auto report = jsonObjectIn(body);
  if (!report || report->empty()) return std::unexpected(malformedReport);
  const auto isValue = [](const json::value& value) {
    return isFact(value) || isListOfTexts(value);
  };
  if (!isRecord(*report, isValue)) return std::unexpected(malformedReport);
  return json::serialize(*report);
}

std::expected<Installation, std::string_view> readInstallation(
    const boost::beast::http::fields& headers) {
  const std::string device(headers["x-device-id"]);
  const bool isIdentifier = !device.empty() && device.size() <= longestName &&
                            std::ranges::all_of(device, [](char letter) {
                              return letter == '-' || isName({&letter, 1});
                            });
  if (!isIdentifier) return std::unexpected("The header x-device-id has no identifier.");
  return Installation{.device = device,
                      .platform = headerIn(headers, "x-platform"),
                      .appVersion = headerIn(headers, "x-app-version"),
                      .osVersion = headerIn(headers, "x-os-version"),
                      .model = headerIn(headers, "x-device-model"),
                      .locale = optionalHeaderIn(headers, "x-locale"),
                      .timeZone = optionalHeaderIn(headers, "x-timezone")};
}

}  // namespace vemo::service
