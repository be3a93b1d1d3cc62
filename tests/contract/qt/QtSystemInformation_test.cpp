#include "platform/qt/QtSystemInformation.h"

#include <gtest/gtest.h>

#include <QRegularExpression>
#include <utility>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

TEST(QtSystemInformationTest, AVersionHasThreePartsWhateverTheSystemTells) {
  const std::pair<QString, QString> rows[] = {
      {u"12"_s, u"12.0.0"_s},       {u"22.04"_s, u"22.4.0"_s},   {u"12.8.1"_s, u"12.8.1"_s},
      {u"15.5.0.3"_s, u"15.5.0"_s}, {u"40-beta"_s, u"40.0.0"_s}, {u""_s, u"0.0.0"_s},
      {u"unknown"_s, u"0.0.0"_s},
  };
  for (const auto& [told, version] : rows) EXPECT_EQ(threePartVersion(told), version);
}

TEST(QtSystemInformationTest, ThisMachineAndThisBuildHaveVersions) {
  const auto information = readSystemInformation();
  static const QRegularExpression threeNumbers(u"^[0-9]+\\.[0-9]+\\.[0-9]+$"_s);
  EXPECT_TRUE(threeNumbers.match(information.systemVersion).hasMatch());
  EXPECT_TRUE(threeNumbers.match(information.applicationVersion).hasMatch());
  EXPECT_NE(information.applicationVersion, u"0.0.0"_s);
  EXPECT_GE(information.applicationBuild.toInt(), 1);
}

}  // namespace
}  // namespace vemo
