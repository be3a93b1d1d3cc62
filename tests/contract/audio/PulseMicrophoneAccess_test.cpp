#include "platform/pulse/PulseMicrophoneAccess.h"

#include <gmock/gmock.h>

#include <QFile>
#include <QTcpServer>
#include <QTemporaryDir>
#include <chrono>

#include "SoundServer.h"
#include "fakes/OnceWithin.h"

using namespace Qt::Literals::StringLiterals;

namespace vemo {
namespace {

class PulseMicrophoneAccessTest : public testing::Test {
 protected:
  /// Asks as the program does, again and again; false when the answer doesn't come.
  bool becomes(MicrophoneAuthorization expected) {
    const auto deadline = PulseServer::within(std::chrono::seconds(20));
    while (access.authorization() != expected) {
      if (std::chrono::steady_clock::now() > deadline) return false;
      std::this_thread::yield();
    }
    return true;
  }

  /// A secret of the size that PulseAudio asks for; returns where it stands.
  static QByteArray writeCookie(const QString& path, char filling) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(256, filling));
    return QFile::encodeName(path);
  }

  static QString freePort() {
    QTcpServer probe;
    EXPECT_TRUE(probe.listen(QHostAddress::LocalHost));
    return QString::number(probe.serverPort());
  }

  PulseServer server{"Vemo", "brelmox.Vemo"};
  PulseMicrophoneAccess access{server};
};

TEST_F(PulseMicrophoneAccessTest, BeforeTheServersFirstAnswerNothingIsDetermined) {
  SoundServer soundServer;
  soundServer.start();
  soundServer.freeze();
  EXPECT_EQ(access.authorization(), MicrophoneAuthorization::NotDetermined);
  soundServer.thaw();
  EXPECT_TRUE(becomes(MicrophoneAuthorization::Granted));
}

TEST_F(PulseMicrophoneAccessTest, AMonitorAloneIsNoMicrophone) {
  SoundServer soundServer(SoundServer::monitorAlone());
  soundServer.start();
  EXPECT_TRUE(becomes(MicrophoneAuthorization::Denied));
}

TEST_F(PulseMicrophoneAccessTest, AMicrophoneThatComesAndGoesIsNoticed) {
  SoundServer soundServer(SoundServer::monitorAlone());
  soundServer.start();
  ASSERT_TRUE(becomes(MicrophoneAuthorization::Denied));
  const QString module =
      soundServer.load(u"module-remap-source master=speakers.monitor source_name=virtmic"_s);
  EXPECT_TRUE(becomes(MicrophoneAuthorization::Granted));
  soundServer.control({u"unload-module"_s, module});
  EXPECT_TRUE(becomes(MicrophoneAuthorization::Denied));
}

TEST_F(PulseMicrophoneAccessTest, AMicrophoneMadeByRemappingCounts) {
  SoundServer soundServer({u"module-null-sink sink_name=speakers norewinds=1"_s,
                           u"module-remap-source master=speakers.monitor source_name=virtmic"_s});
  soundServer.start();
  EXPECT_TRUE(becomes(MicrophoneAuthorization::Granted));
}

TEST_F(PulseMicrophoneAccessTest, AServerThatRefusesTheClientDeniesUntilItLetsItIn) {
  SoundServer soundServer;
  soundServer.start();
  const QTemporaryDir folder;
  const QByteArray itsCookie = writeCookie(folder.filePath(u"its"_s), 'a');
  const QByteArray anotherCookie = writeCookie(folder.filePath(u"another"_s), 'b');
  // By its socket it lets in everybody who runs as the same user.
  const QString port = freePort();
  ASSERT_FALSE(
      soundServer
          .load(u"module-native-protocol-tcp listen=127.0.0.1 port=%1 auth-cookie=%2"_s.arg(
              port, QString::fromUtf8(itsCookie)))
          .isEmpty());
  qputenv("PULSE_SERVER", "tcp:127.0.0.1:" + port.toUtf8());

  qputenv("PULSE_COOKIE", anotherCookie);
  EXPECT_TRUE(becomes(MicrophoneAuthorization::Denied));
  for (int i = 0; i < 20; ++i) EXPECT_NE(access.authorization(), MicrophoneAuthorization::Granted);
  qputenv("PULSE_COOKIE", itsCookie);
  EXPECT_TRUE(becomes(MicrophoneAuthorization::Granted));
  qunsetenv("PULSE_COOKIE");
}

TEST_F(PulseMicrophoneAccessTest, AskingAgainAndAgainCostsNoMeasurableTime) {
  SoundServer soundServer;
  soundServer.start();
  ASSERT_TRUE(becomes(MicrophoneAuthorization::Granted));
  constexpr int polls = 1000;
  EXPECT_TRUE(isOnceWithin(
      std::chrono::milliseconds(100),
      [&] {
        for (int i = 0; i < polls; ++i) static_cast<void>(access.authorization());
      },
      10));
}

TEST_F(PulseMicrophoneAccessTest, WithoutAServerAccessIsDeniedUntilThereIsOne) {
  SoundServer soundServer;
  EXPECT_TRUE(becomes(MicrophoneAuthorization::Denied));
  soundServer.start();
  EXPECT_TRUE(becomes(MicrophoneAuthorization::Granted));
  soundServer.kill();
  EXPECT_TRUE(becomes(MicrophoneAuthorization::Denied));
  soundServer.start();
  EXPECT_TRUE(becomes(MicrophoneAuthorization::Granted));
}

}  // namespace
}  // namespace vemo
