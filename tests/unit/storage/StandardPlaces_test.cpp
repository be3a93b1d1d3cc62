#include "storage/StandardPlaces.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <optional>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using testing::ElementsAre;

/// Starts each test with only HOME set, and puts the variables back after it.
class StandardPlacesTest : public testing::Test {
 protected:
  void SetUp() override {
    for (std::size_t i = 0; i < variables.size(); ++i) {
      if (qEnvironmentVariableIsSet(variables[i])) m_saved[i] = qgetenv(variables[i]);
      qunsetenv(variables[i]);
    }
    qputenv("HOME", "/home/me");
  }
  void TearDown() override {
    for (std::size_t i = 0; i < variables.size(); ++i) {
      if (m_saved[i]) {
        qputenv(variables[i], *m_saved[i]);
      } else {
        qunsetenv(variables[i]);
      }
    }
  }

 private:
  static constexpr std::array variables{"HOME", "XDG_CONFIG_HOME", "XDG_CONFIG_DIRS",
                                        "XDG_STATE_HOME"};
  std::array<std::optional<QByteArray>, 4> m_saved;
};

TEST_F(StandardPlacesTest, WithoutVariablesThePlacesAreInTheHomeFolder) {
  EXPECT_EQ(places::settingsFile(), u"/home/me/.config/vemo/settings.json"_s);
  EXPECT_EQ(places::logFolder(), u"/home/me/.local/state/Logs/Vemo"_s);
  EXPECT_THAT(places::deploymentConfigurationCandidates(),
              ElementsAre(u"/home/me/.config/vemo/vemo.conf"_s, u"/etc/xdg/vemo/vemo.conf"_s));
}

TEST_F(StandardPlacesTest, TheVariablesMoveThem) {
  qputenv("XDG_CONFIG_HOME", "/c");
  qputenv("XDG_STATE_HOME", "/s");
  qputenv("XDG_CONFIG_DIRS", "/one::relative:/two");
  EXPECT_EQ(places::settingsFile(), u"/c/vemo/settings.json"_s);
  EXPECT_EQ(places::logFolder(), u"/s/Logs/Vemo"_s);
  EXPECT_THAT(
      places::deploymentConfigurationCandidates(),
      ElementsAre(u"/c/vemo/vemo.conf"_s, u"/one/vemo/vemo.conf"_s, u"/two/vemo/vemo.conf"_s));
}

TEST_F(StandardPlacesTest, AVariableThatIsNoAbsolutePathCountsAsUnset) {
  qputenv("XDG_CONFIG_HOME", "relative");
  qputenv("XDG_STATE_HOME", "");
  EXPECT_EQ(places::settingsFile(), u"/home/me/.config/vemo/settings.json"_s);
  EXPECT_EQ(places::logFolder(), u"/home/me/.local/state/Logs/Vemo"_s);
}

TEST_F(StandardPlacesTest, WithoutAHomeFolderThereIsNoPlace) {
  qunsetenv("HOME");
  EXPECT_EQ(places::settingsFile(), QString());
  EXPECT_EQ(places::logFolder(), QString());
  EXPECT_THAT(places::deploymentConfigurationCandidates(),
              ElementsAre(u"/etc/xdg/vemo/vemo.conf"_s));
}

}  // namespace
}  // namespace vemo
