#include "platform/qt/QtSystemInformation.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <utility>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

class QtSystemInformationTest : public testing::Test {
 protected:
  void write(const QString& path, const QByteArray& content) const {
    const QString file = root.path() + path;
    QDir().mkpath(QFileInfo(file).path());
    QFile out(file);
    ASSERT_TRUE(out.open(QIODevice::WriteOnly));
    out.write(content);
  }

  QTemporaryDir root;
};

TEST_F(QtSystemInformationTest, TheSystemIsTheOneThatOsReleaseNames) {
  QFile osRelease(u"/etc/os-release"_s);
  ASSERT_TRUE(osRelease.open(QIODevice::ReadOnly));
  const auto information = readSystemInformation();
  EXPECT_TRUE(osRelease.readAll().contains("PRETTY_NAME=\"" +
                                           information.systemVersionText.toUtf8() + '"'));
  EXPECT_FALSE(information.processorArchitecture.isEmpty());
}

TEST_F(QtSystemInformationTest, ModelAndProcessorAreTheKernelsWords) {
  write(u"/sys/class/dmi/id/product_name"_s, "Workbench 9\n");
  write(u"/proc/cpuinfo"_s, "processor\t: 0\nmodel\t\t: 1\nmodel name\t: Fast: Processor\n");
  const auto information = readSystemInformation(root.path());
  EXPECT_EQ(information.deviceModel, u"Workbench 9"_s);
  EXPECT_EQ(information.processorName, u"Fast: Processor"_s);
}

TEST_F(QtSystemInformationTest, ABoardWithoutDmiIsNamedByItsDeviceTree) {
  write(u"/sys/class/dmi/id/product_name"_s, "\n");
  write(u"/sys/firmware/devicetree/base/model"_s, QByteArray("Small Board Rev 2\0", 18));
  EXPECT_EQ(readSystemInformation(root.path()).deviceModel, u"Small Board Rev 2"_s);
}

TEST_F(QtSystemInformationTest, WhatCantBeReadIsLeftOut) {
  const auto information = readSystemInformation(root.path());
  EXPECT_EQ(information.deviceModel, std::nullopt);
  EXPECT_EQ(information.processorName, std::nullopt);
}

TEST_F(QtSystemInformationTest, AVersionHasThreePartsWhateverTheSystemTells) {
  const std::pair<QString, QString> rows[] = {
      {u"12"_s, u"12.0.0"_s},       {u"22.04"_s, u"22.4.0"_s},   {u"12.8.1"_s, u"12.8.1"_s},
      {u"15.5.0.3"_s, u"15.5.0"_s}, {u"40-beta"_s, u"40.0.0"_s}, {u""_s, u"0.0.0"_s},
      {u"unknown"_s, u"0.0.0"_s},
  };
  for (const auto& [told, version] : rows) EXPECT_EQ(threePartVersion(told), version);
}

TEST_F(QtSystemInformationTest, ThisMachineAndThisBuildHaveVersions) {
  const auto information = readSystemInformation();
  static const QRegularExpression threeNumbers(u"^[0-9]+\\.[0-9]+\\.[0-9]+$"_s);
  EXPECT_TRUE(threeNumbers.match(information.systemVersion).hasMatch());
  EXPECT_TRUE(threeNumbers.match(information.applicationVersion).hasMatch());
  EXPECT_NE(information.applicationVersion, u"0.0.0"_s);
  EXPECT_GE(information.applicationBuild.toInt(), 1);
}

}  // namespace
}  // namespace vemo
