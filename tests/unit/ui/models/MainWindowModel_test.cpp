#include "ui/models/MainWindowModel.h"

#include "session/DictionaryList.h"
#include "session/SessionFixture.h"
#include "session/ShortcutList.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class MainWindowModelTest : public SessionFixture {
 protected:
  void startUp() {
    accountHttp.answerAlways(u"/dictionary"_s, 500);
    SessionFixture::startUp();
    dictionary.emplace(mainThread, storage.settings, *auth);
    shortcuts.emplace(storage.settings, *auth);
    model.emplace(MainWindowModel::With{.mainThread = mainThread,
                                        .clock = clock,
                                        .settings = storage.settings,
                                        .telemetry = telemetry,
                                        .appState = *appState,
                                        .auth = *auth,
                                        .permissions = *permissions,
                                        .slack = *slack,
                                        .dictionary = *dictionary,
                                        .shortcuts = *shortcuts,
                                        .configuration = configuration,
                                        .openSettings = [this] { ++settingsOpenings; }});
    QObject::connect(&*model, &MainWindowModel::changed, [this] { ++changes; });
    mainThread.drain();
  }

  void startSignedOut() {
    secrets.items.clear();
    configuration.googleClientId = u"77-abc.apps.accounts.example"_s;
    configuration.googleAuthorizationEndpoint = QUrl(u"https://accounts.example/auth"_s);
    configuration.googleTokenEndpoint = QUrl(u"https://tokens.example/token"_s);
    startUp();
  }

  int accountRequestCount(const QString& path) const {
    int count = 0;
    for (const auto& request : accountHttp.requests()) count += request.url.path() == path;
    return count;
  }

  std::optional<DictionaryList> dictionary;
  std::optional<ShortcutList> shortcuts;
  std::optional<MainWindowModel> model;
  int changes = 0;
  int settingsOpenings = 0;
};

TEST_F(MainWindowModelTest, NobodySignedInIsOfferedToSignIn) {
  startSignedOut();
  EXPECT_FALSE(model->isSignedIn());
  EXPECT_EQ(model->signInLabel(), u"Continue with Google"_s);
  EXPECT_EQ(model->errorText(), QString());
}

TEST_F(MainWindowModelTest, TheUserAgreesToTwoPagesOfTheWebsite) {
  configuration.websiteURL = QUrl(u"https://vemo.example"_s);
  startSignedOut();
  EXPECT_EQ(model->agreement(),
            u"By continuing you agree to the [Terms](https://vemo.example/terms) and [Privacy "
            u"Policy](https://vemo.example/privacy)"_s);
}

TEST_F(MainWindowModelTest, AWebsiteInAFolderKeepsItsFolder) {
  configuration.websiteURL = QUrl(u"https://example.org/vemo/"_s);
  startSignedOut();
  EXPECT_TRUE(model->agreement().contains(u"(https://example.org/vemo/terms)"_s));
}

TEST_F(MainWindowModelTest, ASignInRunsUntilItIsCancelled) {
  startSignedOut();
  model->signIn();
  mainThread.drain();
  EXPECT_TRUE(model->isSigningIn());
  EXPECT_EQ(model->signInLabel(), u"Signing in…"_s);
  EXPECT_GT(changes, 0);
  model->cancelSignIn();
  mainThread.drain();
  EXPECT_FALSE(model->isSigningIn());
  EXPECT_EQ(model->errorText(), QString()) << "which is no failure";
}

TEST_F(MainWindowModelTest, ASignInThatFailsSaysWhy) {
  startSignedOut();
  model->signIn();
  mainThread.drain();
  browser.fail({.kind = WebAuthenticationError::Kind::Failed, .description = u"no browser"_s});
  mainThread.drain();
  EXPECT_FALSE(model->isSigningIn());
  EXPECT_EQ(model->errorText(), *auth->lastError());
  EXPECT_FALSE(model->errorText().isEmpty());
}

TEST_F(MainWindowModelTest, AWindowBeginsWithHomeAndReportsNothing) {
  startUp();
  EXPECT_TRUE(model->isSignedIn());
  EXPECT_EQ(model->tab(), u"home"_s);
  EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(MainWindowModelTest, TheSidebarHasTheFourTabs) {
  startUp();
  QStringList rows;
  for (const auto& row : model->tabs()) {
    const auto tab = row.toMap();
    rows.append(u"%1 %2 %3"_s.arg(tab[u"name"_s].toString(), tab[u"label"_s].toString(),
                                  tab[u"symbol"_s].toString()));
  }
  EXPECT_THAT(rows, ElementsAre(u"home Home house"_s, u"stats Stats chart.bar.xaxis"_s,
                                u"dictionary Dictionary character.book.closed.fill"_s,
                                u"shortcuts Shortcuts command"_s));
}

TEST_F(MainWindowModelTest, SelectingATabShowsAndReportsIt) {
  startUp();
  int tabChanges = 0;
  QObject::connect(&*model, &MainWindowModel::tabChanged, [&tabChanges] { ++tabChanges; });
  for (const auto& tab : {u"stats"_s, u"dictionary"_s, u"shortcuts"_s, u"home"_s}) {
    model->selectTab(tab);
    EXPECT_EQ(model->tab(), tab);
  }
  EXPECT_EQ(tabChanges, 4);
  EXPECT_THAT(takeEvents(),
              ElementsAre(R"(tab_opened {"tab":"stats"})", R"(tab_opened {"tab":"dictionary"})",
                          R"(tab_opened {"tab":"shortcuts"})", R"(tab_opened {"tab":"home"})"));
}

TEST_F(MainWindowModelTest, TheTabThatIsShownAndOneThatDoesNotExistChangeNothing) {
  startUp();
  model->selectTab(u"home"_s);
  model->selectTab(u"nowhere"_s);
  EXPECT_EQ(model->tab(), u"home"_s);
  EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(MainWindowModelTest, TheSidebarsFooterOpensTheSettings) {
  startUp();
  model->openSettings();
  EXPECT_EQ(settingsOpenings, 1);
}

TEST_F(MainWindowModelTest, AWindowThatAppearsReadsTheProfileAndPullsTheDictionary) {
  startUp();
  const int profiles = accountRequestCount(u"/desktop/auth/profile"_s);
  model->windowShown();
  mainThread.drain();
  EXPECT_EQ(accountRequestCount(u"/desktop/auth/profile"_s), profiles + 1);
  EXPECT_EQ(accountRequestCount(u"/dictionary"_s), 1);
}

TEST_F(MainWindowModelTest, AWindowThatAppearsForNobodyAsksNothing) {
  startSignedOut();
  model->windowShown();
  mainThread.drain();
  EXPECT_EQ(accountRequestCount(u"/desktop/auth/profile"_s), 0);
  EXPECT_EQ(accountRequestCount(u"/dictionary"_s), 0);
}

TEST_F(MainWindowModelTest, ClosingAllSheetsDiscardsWhatWasTyped) {
  startUp();
  for (auto* sheet : {model->dictionary()->sheet(), model->shortcuts()->sheet()}) {
    EXPECT_FALSE(model->hasOpenSheet());
    sheet->open();
    sheet->setSpoken(u"spoken"_s);
    sheet->setWritten(u"written"_s);
    EXPECT_TRUE(model->hasOpenSheet());
    model->closeSheets();
    EXPECT_FALSE(sheet->isOpen());
  }
  EXPECT_FALSE(model->hasOpenSheet());
  EXPECT_THAT(dictionary->entries(), IsEmpty());
  EXPECT_THAT(shortcuts->entries(), IsEmpty());
  EXPECT_FALSE(storage.settings.contains(keys::customDictionaryEntries));
  EXPECT_FALSE(storage.settings.contains(keys::customShortcutEntries));
}

TEST_F(MainWindowModelTest, ClosingAllSheetsForgetsTheSlackToken) {
  startUp();
  model->slack()->open();
  model->slack()->setToken(u"xoxp-1"_s);
  EXPECT_TRUE(model->hasOpenSheet());
  model->closeSheets();
  EXPECT_FALSE(model->hasOpenSheet());
  EXPECT_EQ(model->slack()->token(), QString());
}

TEST_F(MainWindowModelTest, AWindowThatGoesTakesItsSheetsAlong) {
  startUp();
  model->windowShown();
  model->dictionary()->sheet()->open();
  model->windowHidden();
  EXPECT_FALSE(model->hasOpenSheet());
}

TEST_F(MainWindowModelTest, ASignOutClosesTheSheetsAndShowsTheSignInCard) {
  startUp();
  model->shortcuts()->sheet()->open();
  changes = 0;
  appState->clearLocalUserData();
  EXPECT_FALSE(model->isSignedIn());
  EXPECT_FALSE(model->hasOpenSheet());
  EXPECT_GT(changes, 0);
}

}  // namespace
}  // namespace vemo
