#include "ui/models/ToastModel.h"

#include <gtest/gtest.h>

#include "fakes/FakeClock.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

class ToastModelTest : public testing::Test {
 protected:
  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  ToastModel toast{clock, mainThread};
};

TEST_F(ToastModelTest, NothingIsShownAtFirst) {
  EXPECT_FALSE(toast.isShown());
}

TEST_F(ToastModelTest, AMessageGoesAwayAfterTwoSecondsAndNotBefore) {
  toast.show(u"saved"_s);
  EXPECT_TRUE(toast.isShown());
  EXPECT_EQ(toast.message(), u"saved"_s);
  clock.advance(1999ms);
  EXPECT_TRUE(toast.isShown());
  clock.advance(1ms);
  EXPECT_FALSE(toast.isShown());
  EXPECT_EQ(toast.message(), u"saved"_s) << "which the banner shows while it goes";
}

TEST_F(ToastModelTest, ANewMessageReplacesTheOldOneAndHasItsFullTime) {
  toast.show(u"first"_s);
  clock.advance(1500ms);
  toast.show(u"second"_s);
  EXPECT_EQ(toast.message(), u"second"_s);
  clock.advance(1999ms);
  EXPECT_TRUE(toast.isShown());
  clock.advance(1ms);
  EXPECT_FALSE(toast.isShown());
}

TEST_F(ToastModelTest, EveryChangeIsTold) {
  int changes = 0;
  QObject::connect(&toast, &ToastModel::changed, [&changes] { ++changes; });
  toast.show(u"saved"_s);
  EXPECT_EQ(changes, 1);
  clock.advance(2s);
  EXPECT_EQ(changes, 2);
  EXPECT_EQ(clock.sleeperCount(), 0u);
}

}  // namespace
}  // namespace vemo
