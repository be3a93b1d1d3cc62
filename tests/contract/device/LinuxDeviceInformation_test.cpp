// The facts of a device, with a settings portal of the test's own on a real session bus.
#include "platform/xdg/LinuxDeviceInformation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QScreen>

#include "SettingsPortal.h"
#include "fakes/FakeInputDevice.h"
#include "fakes/QtTestLoop.h"
#include "fakes/TestApplication.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

class LinuxDeviceInformationTest : public testing::Test,
                                   protected TestApplication<QGuiApplication> {
 protected:
  LinuxDeviceInformationTest() { inputDevice.setTransport(InputTransport::Bluetooth); }

  static bool comesToBe(const LinuxDeviceInformation& device, const QString& appearance) {
    return QtTestLoop::runUntil([&] { return device.read().appearance == appearance; });
  }

  FakeInputDevice inputDevice;
};

TEST_F(LinuxDeviceInformationTest, TheFactsAreThoseOfThisDesktop) {
  const LinuxDeviceInformation device(inputDevice, [] { return QStringList{u"de"_s}; });
  const DeviceFacts facts = device.read();
  EXPECT_EQ(facts.displayCount, 1);
  const QSize size = QGuiApplication::primaryScreen()->size();
  EXPECT_EQ(facts.mainDisplay, u"%1x%2"_s.arg(size.width()).arg(size.height()));
  EXPECT_FALSE(facts.inApplicationsFolder);
  EXPECT_FALSE(facts.languages.isEmpty());
  EXPECT_FALSE(facts.localeIdentifier.isEmpty());
  EXPECT_TRUE(facts.timeZone);
  EXPECT_EQ(facts.inputSources, QStringList{u"de"_s});
  EXPECT_EQ(facts.microphoneType, u"bluetooth"_s);
}

TEST_F(LinuxDeviceInformationTest, WithoutAPortalTheAppearanceIsUnknown) {
  const LinuxDeviceInformation device(inputDevice, [] { return QStringList(); });
  QCoreApplication::processEvents();
  EXPECT_EQ(device.read().appearance, std::nullopt);
}

TEST_F(LinuxDeviceInformationTest, TheAppearanceIsThePortalsAndFollowsItsChanges) {
  SettingsPortal portal(1U);
  const LinuxDeviceInformation device(inputDevice, [] { return QStringList(); });
  EXPECT_TRUE(comesToBe(device, u"dark"_s));
  portal.change(2U);
  EXPECT_TRUE(comesToBe(device, u"light"_s));
  portal.change(1U);
  EXPECT_TRUE(comesToBe(device, u"dark"_s));
}

TEST_F(LinuxDeviceInformationTest, APortalThatTalksNonsenseTellsNothing) {
  SettingsPortal portal(u"nonsense"_s);
  const LinuxDeviceInformation device(inputDevice, [] { return QStringList(); });
  EXPECT_TRUE(QtTestLoop::runUntil([&] {
    device.read();
    return portal.readCount() >= 3;
  }));
  EXPECT_EQ(device.read().appearance, std::nullopt);
}

TEST_F(LinuxDeviceInformationTest, ADesktopWithoutAPreferenceIsLight) {
  const SettingsPortal portal(0U);
  const LinuxDeviceInformation device(inputDevice, [] { return QStringList(); });
  EXPECT_TRUE(comesToBe(device, u"light"_s));
}

}  // namespace
}  // namespace vemo
