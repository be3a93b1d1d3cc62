#include "platform/pulse/PulseMicrophoneAccess.h"

#include <gmock/gmock.h>

#include <chrono>

#include "SoundServer.h"

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
