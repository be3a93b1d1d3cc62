// Bodies that account and telemetry endpoints read, and the headers of an installation.
#include <algorithm>
#include <cstdlib>

#include "accounts/AccountBodies.h"
#include "http/JsonBody.h"
#include "telemetry/TelemetryBodies.h"

using namespace vemo::service;

namespace {

void require(bool good) {
  if (!good) std::abort();
}

void readAccountBodies(std::string_view body) {
  if (const auto signIn = readSignIn(body)) require(!signIn->idToken.empty());
  if (const auto name = readName(body)) require(!name->empty() && !name->contains('\0'));
  if (const auto words = readDictionaryWords(body)) require(!words->phrase.empty());
}

void readReports(std::string_view body) {
  if (const auto events = readEvents(body)) {
    require(!events->empty() && events->size() <= mostEvents);
    for (const auto& event : *events) require(jsonObjectIn(event.props).has_value());
  }
  // What is stored is a report again.
  if (const auto report = readDeviceReport(body)) require(readDeviceReport(*report).has_value());
}

void readHeaders(std::string_view text) {
  boost::beast::http::fields headers;
  const auto half = text.substr(0, text.size() / 2);
  const auto isField = [](char letter) { return letter != '\r' && letter != '\n'; };
  if (!std::ranges::all_of(text, isField)) return;
  headers.set("x-device-id", half);
  headers.set("x-app-version", text);
  const auto installation = readInstallation(headers);
  if (!installation) return;
  require(installation->device == std::string(headers["x-device-id"]));
  for (const char letter : installation->appVersion) require(letter >= ' ' && letter <= '~');
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  readAccountBodies(text);
  readReports(text);
  readHeaders(text);
  return 0;
}
