// How long a chunk of 15 s keeps the main thread from anything else.
//
// The recorder is fed on a thread of its own, as a microphone feeds it, and builds the WAV there.
// What is left for the main thread is counted per event: taking the chunk over, building its
// request, and handing it to a real connection until the answer is in. Limit: 5 ms of the thread's
// own processor time for each event. Exit status 1 when it is missed.
#include <QCoreApplication>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <thread>
#include <vector>

#include "audio/AudioRecorder.h"
#include "fakes/FakeAudioInput.h"
#include "fakes/FakeFocusedApplication.h"
#include "fakes/FakeInputDevice.h"
#include "fakes/FakeSecretBackend.h"
#include "fakes/TelemetryOnFakes.h"
#include "fakes/TestStorage.h"
#include "platform/qt/QtClock.h"
#include "platform/qt/QtHttpSession.h"
#include "platform/qt/QtMainThread.h"
#include "ports/SystemInformation.h"
#include "storage/DeploymentConfiguration.h"
#include "storage/SecureTokenStore.h"
#include "storage/SettingsKeys.h"
#include "transcription/TranscriptionClient.h"

using namespace vemo;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int chunkCount = 40;

double processorMilliseconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

/// Counts what each event of the main thread takes; events within events count to the outer one.
class TimedApplication : public QCoreApplication {
 public:
  using QCoreApplication::QCoreApplication;

  bool notify(QObject* receiver, QEvent* event) override {
    if (QThread::currentThread() != thread() || m_depth > 0)
      return QCoreApplication::notify(receiver, event);
    ++m_depth;
    const double start = processorMilliseconds();
    const bool result = QCoreApplication::notify(receiver, event);
    longest = std::max(longest, processorMilliseconds() - start);
    --m_depth;
    return result;
  }

  double longest = 0;

 private:
  int m_depth = 0;
};

/// Reads uploads and answers each, on a thread of its own.
class Service {
 public:
  Service() {
    m_worker->moveToThread(&m_thread);
    QObject::connect(&m_thread, &QThread::finished, m_worker, &QObject::deleteLater);
    m_thread.start();
    QMetaObject::invokeMethod(m_worker, [this] { listen(); }, Qt::BlockingQueuedConnection);
  }
  ~Service() {
    m_thread.quit();
    m_thread.wait();
  }
  quint16 port = 0;

 private:
  void listen() {
    auto* server = new QTcpServer(m_worker);
    QObject::connect(server, &QTcpServer::newConnection, server, [server] {
      QTcpSocket* const socket = server->nextPendingConnection();
      QObject::connect(socket, &QTcpSocket::readyRead, socket, [socket] {
        const QByteArray received = socket->peek(socket->bytesAvailable());
        const qsizetype headEnd = received.indexOf("\r\n\r\n");
        constexpr qsizetype bodySize = AudioRecorder::chunkSize + 44;
        if (headEnd < 0 || received.size() < headEnd + 4 + bodySize) return;
        socket->skip(headEnd + 4 + bodySize);
        socket->write(
            "HTTP/1.1 200 OK\r\nContent-Length: 36\r\n\r\n"
            R"({"status":"ok","transcription":"ab"})");
      });
    });
    server->listen(QHostAddress::LocalHost);
    port = server->serverPort();
  }

  QThread m_thread;
  QObject* m_worker = new QObject;
};

}  // namespace

int main(int argumentCount, char** arguments) {
  TimedApplication application(argumentCount, arguments);
  const Service service;
  QtMainThread mainThread;
  QtClock clock(mainThread);
  TestStorage storage{clock};
  FakeSecretBackend secrets;
  SecureTokenStore tokens{{&secrets}, storage.debugLog};
  tokens.write(u"token"_s, QString::fromUtf16(authTokenAccount));
  DeploymentConfiguration configuration;
  configuration.apiBaseURL = QUrl(u"http://127.0.0.1:%1"_s.arg(service.port));
  FakeFocusedApplication desktop;
  FakeInputDevice inputDevice;
  inputDevice.setTransport(InputTransport::Usb);
  const SystemInformation system{u"12.8.0"_s, u"1.2.0"_s, u"34"_s};
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
  FakeAudioInput input;
  AudioRecorder recorder(input, mainThread, clock, storage.debugLog);
  TaskScope uploads(mainThread);
  int answered = 0;
  int ended = 0;
  const auto upload = [](Task<TranscriptionClient::Result> task, int* good, int* all) -> Task<> {
    const auto result = co_await std::move(task);
    if (result) ++*good;
    if (++*all == chunkCount) QCoreApplication::quit();
  };
  recorder.onAudioChunk = [&](const QByteArray& wav, int index) {
    uploads.start([&](std::stop_token stop) {
      return upload(
          client.transcribeChunk(wav, u"S"_s, u"en"_s, u"m"_s, u"transcribe"_s, index, stop),
          &answered, &ended);
    });
  };
  if (!recorder.start()) return 1;
  std::thread microphone([&input] {
    const std::vector<std::int16_t> block(1'600, 5'000);
    for (int i = 0; i < chunkCount * 150; ++i) input.deliver(block);
  });
  application.exec();
  microphone.join();
  recorder.stop();
  const bool isWithin = answered == chunkCount && application.longest <= 5;
  std::fprintf(stderr,
               "%d of %d chunks answered; the longest event of the main thread took %.2f ms "
               "(limit 5)%s\n",
               answered, chunkCount, application.longest, isWithin ? "" : "  MISSED");
  return isWithin ? 0 : 1;
}
