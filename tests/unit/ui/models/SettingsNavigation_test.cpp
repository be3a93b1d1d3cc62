#include "ui/models/SettingsNavigation.h"

#include "session/SessionFixture.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SettingsNavigationTest : public SessionFixture {
 protected:
  SettingsNavigationTest() {
    startUp();
    QObject::connect(&navigation, &SettingsNavigation::changed, [this] { ++changes; });
  }

  int changes = 0;
  SettingsNavigation navigation{telemetry};
};

TEST_F(SettingsNavigationTest, TheAccountTabIsShownFirst) {
  EXPECT_EQ(navigation.tab(), SettingsTab::Account);
  EXPECT_EQ(navigation.tabName(), u"account"_s);
  EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(SettingsNavigationTest, ChangingTheTabReportsItsName) {
  navigation.setTabName(u"system"_s);
  navigation.setTabName(u"account"_s);
  EXPECT_THAT(takeEvents(), ElementsAre(R"(tab_opened {"tab":"settings_system"})",
                                        R"(tab_opened {"tab":"settings_account"})"));
  EXPECT_EQ(changes, 2);
}

TEST_F(SettingsNavigationTest, SelectingTheSelectedTabReportsNothing) {
  navigation.setTab(SettingsTab::Account);
  EXPECT_THAT(takeEvents(), IsEmpty());
  EXPECT_EQ(changes, 0);
}

TEST_F(SettingsNavigationTest, ATabThatDoesNotExistChangesNothing) {
  navigation.setTabName(u"billing"_s);
  EXPECT_EQ(navigation.tab(), SettingsTab::Account);
  EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(SettingsNavigationTest, OpeningTheWindowReportsTheTabThatItShows) {
  navigation.setTab(SettingsTab::System);
  takeEvents();
  navigation.windowOpened();
  EXPECT_THAT(takeEvents(), ElementsAre(R"(tab_opened {"tab":"settings_system"})"));
}

}  // namespace
}  // namespace vemo
