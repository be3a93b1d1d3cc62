// A transcription client among fakes, in virtual time.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <utility>

#include "base/Json.h"
#include "base/TaskScope.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeFocusedApplication.h"
#include "fakes/FakeHttpSession.h"
#include "fakes/FakeInputDevice.h"
#include "fakes/FakeMainThread.h"
#include "fakes/FakeSecretBackend.h"
#include "fakes/TelemetryOnFakes.h"
#include "fakes/TestStorage.h"
#include "ports/SystemInformation.h"
#include "storage/DeploymentConfiguration.h"
#include "storage/SecureTokenStore.h"
#include "storage/SettingsKeys.h"
#include "transcription/TranscriptionClient.h"

namespace vemo {

using namespace std::chrono_literals;

inline const QString dictatePath = u"/v1/desktop/dictate"_s;
inline const QString chunkPath = u"/v1/desktop/dictate/chunk"_s;
inline const QString finalizePath = u"/v1/desktop/dictate/finalize"_s;

inline QByteArray successBody(const QString& text) {
  return compactJson(QJsonObject{{u"status"_s, u"ok"_s}, {u"transcription"_s, text}});
}

inline QByteArray failureBody(const QString& message) {
  return compactJson(QJsonObject{{u"status"_s, u"error"_s}, {u"error"_s, message}});
}

class TranscriptionFixture : public testing::Test {
 protected:
  using Result = TranscriptionClient::Result;
  using Kind = TranscriptionError::Kind;

  TranscriptionFixture() {
    configuration.apiBaseURL = QUrl(u"https://api.example.org/v1"_s);
    tokens.write(u"t0ken"_s, QString::fromUtf16(authTokenAccount));
    inputDevice.setTransport(InputTransport::Usb);
    desktop.setFrontmost(
        RunningApplication{.identifier = u"org.xfce.mousepad"_s, .name = u"Mousepad"_s});
  }

  /// Starts an operation; its result lands in `result`.
  template <typename MakeOperation>
  void start(MakeOperation makeOperation) {
    result.reset();
    task = scope.start(
        [this, makeOperation](std::stop_token stop) { return keepResult(makeOperation(stop)); });
    mainThread.drain();
  }

  void startTranscribe() {
    start([this](std::stop_token stop) { return client.transcribe(wav, stop); });
  }

  void startChunk(int index) {
    start([this, index](std::stop_token stop) {
      return client.transcribeChunk(wav, u"S-1"_s, u"en"_s, u"saaras:v4"_s, u"transcribe"_s, index,
                                    stop);
    });
  }

  void startFinalize(const QString& rawTranscript, double totalDuration) {
    start([this, rawTranscript, totalDuration](std::stop_token stop) {
      return client.finalizeDictation(u"S-1"_s, rawTranscript, u"en"_s, u"saaras:v4"_s, u"smart"_s,
                                      totalDuration, stop);
    });
  }

  void cancel() {
    task.cancel();
    mainThread.drain();
  }

  bool isFinished() const { return result.has_value(); }

  QString text() const { return result && result->has_value() ? result->value() : u"(no text)"_s; }

  std::optional<Kind> failure() const {
    return result && !result->has_value() ? std::optional(result->error().kind) : std::nullopt;
  }

  QString failureDescription() const {
    return failure() ? result->error().errorDescription() : u"(no failure)"_s;
  }

  static QByteArray header(const HttpRequest& request, const QByteArray& name) {
    for (const auto& [key, value] : request.headers)
      if (key == name) return value;
    return "(absent)"_ba;
  }

  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  TestStorage storage{clock};
  FakeSecretBackend secrets;
  SecureTokenStore tokens{{&secrets}, storage.debugLog};
  DeploymentConfiguration configuration;
  FakeFocusedApplication desktop;
  FakeInputDevice inputDevice;
  SystemInformation system{
      .systemVersion = u"12.8.0"_s, .applicationVersion = u"1.2.0"_s, .applicationBuild = u"34"_s};
  TelemetryOnFakes telemetryOnFakes{mainThread, clock, storage};
  Telemetry& telemetry = telemetryOnFakes.telemetry;
  FakeHttpSession session{mainThread, clock};
  FakeHttpSession hedgeSession{mainThread, clock};
  DictationRequestBuilder::Sources sources{storage.settings, tokens,      configuration,
                                           desktop,          inputDevice, system};
  TranscriptionClient client{{.session = session,
                              .hedgeSession = hedgeSession,
                              .clock = clock,
                              .mainThread = mainThread,
                              .telemetry = telemetry,
                              .debugLog = storage.debugLog,
                              .sources = sources}};
  const QByteArray wav = QByteArray("RIFF....WAVE") + QByteArray(32'000, '\x01');
  std::optional<Result> result;
  StartedTask task;
  TaskScope scope{mainThread};

 private:
  Task<> keepResult(Task<Result> operation) { result = co_await std::move(operation); }
};

}  // namespace vemo
