// The three requests of a dictation as they are on the wire, byte for byte.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonDocument>
#include <optional>

#include "RecordingServer.h"
#include "base/TaskScope.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeFocusedApplication.h"
#include "fakes/FakeInputDevice.h"
#include "fakes/FakeSecretBackend.h"
#include "fakes/QtTestLoop.h"
#include "fakes/TelemetryOnFakes.h"
#include "fakes/TestStorage.h"
#include "platform/qt/QtHttpSession.h"
#include "platform/qt/QtMainThread.h"
#include "ports/SystemInformation.h"
#include "storage/DeploymentConfiguration.h"
#include "storage/SecureTokenStore.h"
#include "storage/SettingsKeys.h"
#include "transcription/TranscriptionClient.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::MatchesRegex;

enum class Operation { Transcribe, Chunk, Finalize };

class DictationWireTest : public testing::Test {
 protected:
  DictationWireTest() {
    configuration.apiBaseURL = server.url(u"/v1"_s);
    tokens.write(u"t0ken"_s, QString::fromUtf16(authTokenAccount));
    storage.settings.set(keys::telemetryInstallId, u"device-1"_s);
    inputDevice.setTransport(InputTransport::Usb);
    desktop.setFrontmost(
        RunningApplication{.identifier = u"org.xfce.mousepad"_s, .name = u"Mousepad"_s});
  }

  Task<TranscriptionClient::Result> call(Operation operation, std::stop_token stop) {
    switch (operation) {
      case Operation::Transcribe:
        return client.transcribe(wav, stop);
      case Operation::Chunk:
        return client.transcribeChunk(wav, u"S-1"_s, u"en"_s, u"m:1"_s, u"transcribe"_s, 3, stop);
      case Operation::Finalize:
        return client.finalizeDictation(u"S-1"_s, u"raw \"text\" é"_s, u"en"_s, u"m:1"_s,
                                        u"smart"_s, 31.5, stop);
    }
    std::unreachable();
  }

  Task<> keep(Task<TranscriptionClient::Result> running) { result = co_await std::move(running); }

  /// Starts it; virtual time passes only as the test says.
  void start(Operation operation) {
    result.reset();
    server.requests.clear();
    scope.start([&](std::stop_token stop) { return keep(call(operation, stop)); });
  }

  bool runUntilFinished() {
    return QtTestLoop::runUntil([this] {
      clockQueue.drain();
      return result.has_value();
    });
  }

  /// Time passes in the pauses between attempts alone, however long an attempt takes.
  bool runUntilFinishedOverPauses() {
    static constexpr std::chrono::seconds delayOfSecondCopy{5};
    return QtTestLoop::runUntil([this] {
      clockQueue.drain();
      const auto due = clock.nextDue();
      const auto wait = due ? *due - clock.monotonicTime() : delayOfSecondCopy;
      if (wait < delayOfSecondCopy) clock.advance(wait);
      return result.has_value();
    });
  }

  bool runUntilRequests(std::size_t count) {
    return QtTestLoop::runUntil([&] { return server.requests.size() == count; });
  }

  /// One answered request.
  RecordingServer::Request requestOf(Operation operation) {
    server.statuses = {200};
    start(operation);
    EXPECT_TRUE(runUntilFinished());
    EXPECT_EQ(server.requests.size(), 1u);
    EXPECT_TRUE(result && *result && **result == u"text"_s);
    return server.requests.empty() ? RecordingServer::Request() : server.requests.front();
  }

  static std::vector<std::string> strings(const QList<QByteArray>& lines) {
    std::vector<std::string> result;
    for (const QByteArray& line : lines) result.push_back(line.toStdString());
    return result;
  }

  static QByteArray startTime(const RecordingServer::Request& request) {
    return request.ownHeaders().last();
  }

  static QList<QByteArray> withoutStartTime(const RecordingServer::Request& request) {
    QList<QByteArray> headers = request.ownHeaders();
    headers.removeLast();
    return headers;
  }

  QtTestLoop loop;
  QtMainThread mainThread;
  FakeMainThread clockQueue;
  FakeClock clock{clockQueue};
  RecordingServer server;
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
  QtHttpSession session{mainThread};
  QtHttpSession hedgeSession{mainThread};
  TranscriptionClient client{
      {.session = session,
       .hedgeSession = hedgeSession,
       .clock = clock,
       .mainThread = mainThread,
       .telemetry = telemetry,
       .debugLog = storage.debugLog,
       .sources = {storage.settings, tokens, configuration, desktop, inputDevice, system}}};
  const QByteArray wav = "RIFF" + QByteArray("\0\r\n\r\n\xff", 6).repeated(6'000);
  std::optional<TranscriptionClient::Result> result;
  TaskScope scope{mainThread};
};

TEST_F(DictationWireTest, AWholeRecordingIsOnTheWireAsAgreed) {
  const auto request = requestOf(Operation::Transcribe);
  EXPECT_THAT(request.line.toStdString(),
              MatchesRegex("POST /v1/desktop/dictate\\?mode=transcribe&timestamps=false&"
                           "format_mode=smart&language=en&model=[^& ]+ HTTP/1.1"));
  EXPECT_THAT(strings(request.ownHeaders()),
              ElementsAre("Content-Type: audio/wav", "Authorization: Bearer t0ken",
                          "x-platform: macos", "x-os-version: 12.8.0", "x-app-version: 1.2.0",
                          "x-device-id: device-1", "x-mic-type: usb", "x-target-app-name: Mousepad",
                          "x-target-bundle-id: org.xfce.mousepad",
                          MatchesRegex("x-dictation-id: [0-9A-F-]{36}"),
                          MatchesRegex("x-client-start-time: [0-9]{13}")));
  EXPECT_TRUE(request.body == wav);
}

TEST_F(DictationWireTest, AChunkIsOnTheWireAsAgreed) {
  const auto request = requestOf(Operation::Chunk);
  EXPECT_EQ(request.line,
            "POST /v1/desktop/dictate/chunk?mode=transcribe&timestamps=false&language=en&model=m:1"
            "&chunk_index=3&session_id=S-1 HTTP/1.1");
  EXPECT_THAT(strings(request.ownHeaders()),
              ElementsAre("Content-Type: audio/wav", "Authorization: Bearer t0ken",
                          "x-platform: macos", "x-os-version: 12.8.0", "x-app-version: 1.2.0",
                          "x-device-id: device-1", "x-mic-type: usb", "x-session-id: S-1",
                          "x-target-app-name: Mousepad", "x-target-bundle-id: org.xfce.mousepad",
                          MatchesRegex("x-client-start-time: [0-9]{13}")));
  EXPECT_TRUE(request.body == wav);
}

TEST_F(DictationWireTest, AFinalizeIsOnTheWireAsAgreed) {
  const auto request = requestOf(Operation::Finalize);
  EXPECT_EQ(request.line, "POST /v1/desktop/dictate/finalize HTTP/1.1");
  EXPECT_THAT(strings(request.ownHeaders()),
              ElementsAre("Content-Type: application/json", "Authorization: Bearer t0ken",
                          "x-platform: macos", "x-os-version: 12.8.0", "x-app-version: 1.2.0",
                          "x-device-id: device-1", "x-mic-type: usb", "x-session-id: S-1",
                          "x-target-app-name: Mousepad", "x-target-bundle-id: org.xfce.mousepad",
                          MatchesRegex("x-client-start-time: [0-9]{13}")));
  const QJsonObject expected{
      {u"sessionId"_s, u"S-1"_s},     {u"rawTranscript"_s, u"raw \"text\" é"_s},
      {u"format_mode"_s, u"smart"_s}, {u"language"_s, u"en"_s},
      {u"model"_s, u"m:1"_s},         {u"totalDuration"_s, 31.5},
      {u"appName"_s, u"Mousepad"_s},  {u"bundleId"_s, u"org.xfce.mousepad"_s}};
  EXPECT_EQ(QJsonDocument::fromJson(request.body).object(), expected);
}

TEST_F(DictationWireTest, WithoutUsageStatisticsNoMicrophoneIsNamed) {
  storage.settings.set(keys::shareUsageStatistics, false);
  for (const Operation operation : {Operation::Transcribe, Operation::Chunk, Operation::Finalize})
    for (const auto& header : requestOf(operation).headers)
      EXPECT_FALSE(header.toLower().startsWith("x-mic-type")) << header.toStdString();
}

TEST_F(DictationWireTest, ASecondCopyIsEqualToTheFirst) {
  for (const Operation operation : {Operation::Transcribe, Operation::Chunk, Operation::Finalize}) {
    start(operation);
    ASSERT_TRUE(runUntilRequests(1));
    clock.advance(4'999ms);
    EXPECT_EQ(server.requests.size(), 1u);
    server.statuses = {200};
    clock.advance(1ms);
    ASSERT_TRUE(runUntilFinished());
    ASSERT_EQ(server.requests.size(), 2u);
    EXPECT_TRUE(server.requests[0] == server.requests[1]);
  }
}

TEST_F(DictationWireTest, EachAttemptHasItsOwnStartTimeAndElseTheSameBytes) {
  for (const Operation operation : {Operation::Transcribe, Operation::Chunk, Operation::Finalize}) {
    server.statuses = {503, 503, 503};
    start(operation);
    ASSERT_TRUE(runUntilFinishedOverPauses());
    ASSERT_EQ(server.requests.size(), 3u);
    for (std::size_t i = 1; i < 3; ++i) {
      EXPECT_NE(startTime(server.requests[i]), startTime(server.requests[i - 1]));
      EXPECT_EQ(server.requests[i].line, server.requests[0].line);
      EXPECT_TRUE(server.requests[i].body == server.requests[0].body);
      EXPECT_EQ(withoutStartTime(server.requests[i]), withoutStartTime(server.requests[0]));
    }
  }
}

}  // namespace
}  // namespace vemo
