#include "telemetry/TelemetryApi.h"

#include "accounts/RateLimit.h"
#include "http/DatabaseAnswer.h"
#include "http/NetworkSource.h"
#include "telemetry/TelemetryStore.h"

namespace vemo::service {

namespace {

using boost::beast::http::verb;

constexpr std::size_t largestBatch = 64 * 1024;
constexpr std::size_t largestReport = 16 * 1024;

Answer accepted() {
  return {.status = 202, .body = R"({"status":"success"})"};
}

Answer tooMany() {
  auto answer = errorAnswer(429, "Too many reports. Try again in a minute.");
  answer.retryAfter = std::chrono::minutes(1);
  return answer;
}

/// Writes with `store` unless its source has written too often.
template <typename Write>
auto limited(std::string source, Moment now, Write write) {
  return [source = std::move(source), now, write = std::move(write)](Database& database) {
    return database.inTransaction([&] {
      if (!RateLimit(database).allow(source, TelemetryApi::reportsAMinute, now)) return tooMany();
      TelemetryStore store(database);
      write(store);
      return accepted();
    });
  };
}

/// Whoever shares the operator's tokens shares one limit a network.
std::string sourceOf(const Request& request, bool behindProxy) {
  if (request.caller.account) return "reports of " + std::to_string(*request.caller.account);
  return "reports from " + networkOf(request, behindProxy);
}

}  // namespace

void TelemetryApi::addTo(Router& router) {
  using Method = void (TelemetryApi::*)(const Request&, AnswerCompletion);
  const auto add = [this, &router](std::string_view path, Access access, std::size_t bodyLimit,
                                   Method handler) {
    router.add({verb::post, path, access, bodyLimit,
                [this, handler](const Request& request, std::stop_token, AnswerCompletion done) {
                  (this->*handler)(request, std::move(done));
                }});
  };
  add("/desktop/events", Access::AnyToken, largestBatch, &TelemetryApi::takeEvents);
  add("/telemetry/install", Access::Everybody, 0, &TelemetryApi::noteInstallation);
  add("/desktop/device", Access::Account, largestReport, &TelemetryApi::takeDeviceReport);
}

void TelemetryApi::takeEvents(const Request& request, AnswerCompletion done) {
  auto installation = readInstallation(request.headers);
  if (!installation) return done(errorAnswer(400, installation.error()));
  auto events = readEvents(request.body);
  if (!events) return done(errorAnswer(400, events.error()));
  answerFrom(m_database,
             limited(sourceOf(request, m_behindProxy), m_now(),
                     [account = request.caller.account, installation = *std::move(installation),
                      events = *std::move(events), now = m_now()](TelemetryStore& store) {
                       store.addEvents(account, installation, events, now);
                     }),
             std::move(done));
}

void TelemetryApi::noteInstallation(const Request& request, AnswerCompletion done) {
  auto installation = readInstallation(request.headers);
  if (!installation) return done(errorAnswer(400, installation.error()));
  answerFrom(m_database,
             limited(sourceOf(request, m_behindProxy), m_now(),
                     [installation = *std::move(installation), now = m_now()](
                         TelemetryStore& store) { store.noteStart(installation, now); }),
             std::move(done));
}

void TelemetryApi::takeDeviceReport(const Request& request, AnswerCompletion done) {
  auto installation = readInstallation(request.headers);
  if (!installation) return done(errorAnswer(400, installation.error()));
  auto report = readDeviceReport(request.body);
  if (!report) return done(errorAnswer(400, report.error()));
  answerFrom(m_database,
             limited(sourceOf(request, m_behindProxy), m_now(),
                     [account = *request.caller.account, device = installation->device,
                      report = *std::move(report), now = m_now()](TelemetryStore& store) {
                       store.putDeviceReport(account, device, report, now);
                     }),
             std::move(done));
}

}  // namespace vemo::service
