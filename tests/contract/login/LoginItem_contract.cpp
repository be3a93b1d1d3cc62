// What every login item promises, held to the fake and to the real one.
#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include "fakes/FakeLoginItem.h"
#include "platform/xdg/AutostartEntry.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

struct OnFake {
  FakeLoginItem item;
  bool isRegistered() const { return item.isRegistered(); }
  void refuse() { item.fail(u"no"_s); }
};

struct OnDesktop {
  QTemporaryDir home;
  AutostartEntry item{u"/opt/vemo"_s, home.filePath(u"autostart"_s), {}};
  bool isRegistered() const {
    return QFileInfo(home.filePath(u"autostart/brelmox.Vemo.desktop"_s)).isFile();
  }
  void refuse() {
    // A folder stands where the entry belongs, which not even root can write over.
    QDir(home.path()).mkpath(u"autostart/brelmox.Vemo.desktop/inside"_s);
  }
};

template <class On>
class LoginItemContract : public testing::Test {
 protected:
  On on;
};

using Kinds = testing::Types<OnFake, OnDesktop>;
TYPED_TEST_SUITE(LoginItemContract, Kinds);

TYPED_TEST(LoginItemContract, RegisteringLastsUntilItIsUndone) {
  ASSERT_TRUE(this->on.item.registerItem());
  EXPECT_TRUE(this->on.isRegistered());
  EXPECT_TRUE(this->on.item.isRegistered());
  ASSERT_TRUE(this->on.item.unregisterItem());
  EXPECT_FALSE(this->on.isRegistered());
  EXPECT_FALSE(this->on.item.isRegistered());
}

TYPED_TEST(LoginItemContract, DoingWhatIsDoneAlreadySucceeds) {
  EXPECT_TRUE(this->on.item.unregisterItem());
  EXPECT_TRUE(this->on.item.registerItem());
  EXPECT_TRUE(this->on.item.registerItem());
  EXPECT_TRUE(this->on.isRegistered());
}

TYPED_TEST(LoginItemContract, NothingIsRegisteredBeforeItWasAskedFor) {
  EXPECT_FALSE(this->on.item.isRegistered());
}

TYPED_TEST(LoginItemContract, WhatWasRefusedIsNotRegistered) {
  this->on.refuse();
  EXPECT_FALSE(this->on.item.registerItem());
  EXPECT_FALSE(this->on.item.isRegistered());
}

TYPED_TEST(LoginItemContract, ARefusalIsOneLine) {
  this->on.refuse();
  for (const auto& outcome : {this->on.item.registerItem(), this->on.item.unregisterItem()}) {
    ASSERT_FALSE(outcome);
    EXPECT_FALSE(outcome.error().isEmpty());
    EXPECT_FALSE(outcome.error().contains(u'\n'));
  }
}

}  // namespace
}  // namespace vemo
