#include "account/AuthManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fakes/FakeClock.h"
#include "fakes/TelemetryOnFakes.h"
#include "fakes/TestStorage.h"

namespace vemo {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

class AuthManagerTest : public testing::Test {
 protected:
  AuthManagerTest() { with.tokens.write(u"token"_s, QString::fromUtf16(authTokenAccount)); }

  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  TestStorage storage{clock};
  TelemetryOnFakes with{mainThread, clock, storage};
  AuthManager auth{with.tokens, storage.settings, with.telemetry};
};

TEST_F(AuthManagerTest, TheEventsOfAnAccountLeaveWithItsTokenWhenItSignsOut) {
  with.http.answer(u"/desktop/events"_s, 200);
  with.telemetry.track(TelemetryEvent::transcriptCopied());
  auth.signOut();
  EXPECT_THAT(with.telemetry.queue(), IsEmpty());
  mainThread.drain();
  ASSERT_THAT(with.http.requests(), SizeIs(1));
  EXPECT_EQ(with.http.requests()[0].headers.front().second, "Bearer token");
  EXPECT_FALSE(with.tokens.read(QString::fromUtf16(authTokenAccount)));
}

}  // namespace
}  // namespace vemo
