// What clients report about themselves, read from hostile requests. Pure functions; the error of
// each is a sentence for the sender.
#pragma once

#include <boost/beast/http/fields.hpp>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "accounts/Accounts.h"

namespace vemo::service {

struct ReportedEvent {
  std::string name;
  std::string props;  ///< a flat JSON object
  Moment at;
};

/// Which installation sends, from the headers.
struct Installation {
  std::string device;
  std::string platform = {};
  std::string appVersion = {};
  std::string osVersion = {};
  std::string model = {};
  std::optional<std::string> locale = std::nullopt;
  std::optional<std::string> timeZone = std::nullopt;
};

/// The events of one batch: at least one, at most `mostEvents`.
inline constexpr std::size_t mostEvents = 200;
std::expected<std::vector<ReportedEvent>, std::string_view> readEvents(std::string_view body);

/// The report as compact JSON: texts, numbers, booleans and lists of texts under names.
std::expected<std::string, std::string_view> readDeviceReport(std::string_view body);

/// Characters beyond printable ASCII become "?", and what is long is cut.
std::expected<Installation, std::string_view> readInstallation(
    const boost::beast::http::fields& headers);

}  // namespace vemo::service
