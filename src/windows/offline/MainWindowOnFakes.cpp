#include "windows/offline/MainWindowOnFakes.h"

#include <memory>
#include <utility>
#include <vector>

#include "fakes/FakeUpdater.h"
#include "session/DictationItem.h"
#include "shaping/CustomEntries.h"

namespace vemo {

using namespace std::chrono_literals;

namespace {

const QString longSentence =
    u"Let's move the review to Thursday at three. I still have to read the second half of the "
    u"document, and before that I would like to talk to Priya about the figures, because the ones "
    u"from March don't add up with what the team has told us, and nobody has looked at April."_s;

const QStringList sentences{
    u"Can you send me the notes from this morning?"_s,
    u"The build is green again, I'll merge it after lunch."_s,
    longSentence,
    u"git rebase --interactive HEAD~3"_s,
    u"Thanks, that was quick!"_s,
};

constexpr std::pair<const char16_t*, const char16_t*> words[] = {
    {u"btw", u"By the way"},
    {u"Worcester", u"Worcestershire"},
    {u"coober netties", u"Kubernetes"},
    {u"acme corp", u"ACME Corporation"},
    {u"jay son", u"JSON"},
    {u"post gress", u"PostgreSQL"},
};

constexpr std::pair<const char16_t*, const char16_t*> snippets[] = {
    {u"here's my calendar", u"You can book a time that suits you: https://calendar.example/me"},
    {u"my address", u"12 High Street\nSpringfield"},
    {u"sign off", u"Best regards,\nMaria\n\nProduct, Example Ltd."},
};

}  // namespace

using Window = MainWindowOnFakes;

std::span<const Window::State> Window::table() {
  static constexpr auto nothing = [](Window&) {};
  static const State rows[] = {
      {u"signed-out", [](Window& w) { w.signOut(); }, nothing},
      {u"signing-in", [](Window& w) { w.signOut(); }, [](Window& w) { w.m_model->signIn(); }},
      {u"sign-in-failed", [](Window& w) { w.signOut(); },
       [](Window& w) { w.auth->setLastError(u"Can't reach the server"_s); }},
      {u"home-empty", nothing, nothing},
      {u"home-full", [](Window& w) { w.fillHistory(); }, nothing},
      {u"home-recording", [](Window& w) { w.fillHistory(); },
       [](Window& w) { w.m_model->home()->toggleDictation(); }},
      {u"home-permissions",
       [](Window& w) {
         w.system.microphoneAuthorization = MicrophoneAuthorization::Denied;
         w.system.isTrusted = false;
       },
       nothing},
      {u"home-copied", [](Window& w) { w.fillHistory(); },
       [](Window& w) { w.m_model->home()->history()->copy(1); }},
      {u"stats-empty", nothing, [](Window& w) { w.m_model->selectTab(u"stats"_s); }},
      {u"stats-full",
       [](Window& w) {
         w.use(R"({"totalWordsTranscribed":184220,"totalMinutesTranscribed":1310.5,)"
               R"("totalUtterances":6142})");
       },
       [](Window& w) { w.m_model->selectTab(u"stats"_s); }},
      {u"stats-refreshing", nothing,
       [](Window& w) {
         w.m_model->selectTab(u"stats"_s);
         w.accountHttp.neverAnswer(u"/desktop/auth/profile"_s);
         w.m_model->stats()->refresh();
         w.pass(1s);
       }},
      {u"dictionary-empty", nothing, [](Window& w) { w.m_model->selectTab(u"dictionary"_s); }},
      {u"dictionary-loading", nothing,
       [](Window& w) {
         w.m_model->selectTab(u"dictionary"_s);
         w.accountHttp.neverAnswer(u"/dictionary"_s);
         w.accountHttp.neverAnswer(u"/dictionary"_s);
         w.m_model->windowShown();
       }},
      {u"dictionary-full", [](Window& w) { w.fillDictionary(6); },
       [](Window& w) { w.m_model->selectTab(u"dictionary"_s); }},
      {u"dictionary-long", [](Window& w) { w.fillWithLongTexts(); },
       [](Window& w) { w.m_model->selectTab(u"dictionary"_s); }},
      {u"dictionary-5000", [](Window& w) { w.fillDictionary(5000); },
       [](Window& w) { w.m_model->selectTab(u"dictionary"_s); }},
      {u"shortcuts-empty", nothing, [](Window& w) { w.m_model->selectTab(u"shortcuts"_s); }},
      {u"shortcuts-full", [](Window& w) { w.fillShortcuts(3); },
       [](Window& w) { w.m_model->selectTab(u"shortcuts"_s); }},
      {u"shortcuts-long", [](Window& w) { w.fillWithLongTexts(); },
       [](Window& w) { w.m_model->selectTab(u"shortcuts"_s); }},
      {u"shortcuts-5000", [](Window& w) { w.fillShortcuts(5000); },
       [](Window& w) { w.m_model->selectTab(u"shortcuts"_s); }},
      {u"sheet-word", nothing,
       [](Window& w) {
         w.m_model->selectTab(u"dictionary"_s);
         w.m_model->dictionary()->sheet()->open();
       }},
      {u"sheet-word-typed", [](Window& w) { w.fillDictionary(6); },
       [](Window& w) {
         w.m_model->selectTab(u"dictionary"_s);
         w.m_model->dictionary()->edit(u"1"_s);
       }},
      {u"sheet-shortcut", nothing,
       [](Window& w) {
         w.m_model->selectTab(u"shortcuts"_s);
         w.m_model->shortcuts()->sheet()->open();
       }},
      {u"sheet-slack", nothing, [](Window& w) { w.m_model->slack()->open(); }},
      {u"sheet-slack-connecting", nothing,
       [](Window& w) {
         w.http.neverAnswer(u"/api/auth.test"_s);
         w.connectSlack();
       }},
      {u"sheet-slack-failed", nothing,
       [](Window& w) {
         w.http.fail(u"/api/auth.test"_s, UrlError::NotConnectedToInternet);
         w.connectSlack();
       }},
      {u"update-ready", [](Window& w) { w.fillHistory(); }, [](Window& w) { w.downloadUpdate(); }},
      {u"update-notes", nothing,
       [](Window& w) {
         w.downloadUpdate();
         w.m_updateCard->toggleNotes();
       }},
      {u"update-waiting", nothing,
       [](Window& w) {
         w.downloadUpdate();
         w.m_model->home()->toggleDictation();
       }},
      {u"slack-connected", nothing,
       [](Window& w) {
         w.http.answer(u"/api/auth.test"_s, 200, R"({"team":"Example Ltd."})");
         w.http.answer(u"/api/users.list"_s, 200, R"({"members":[]})");
         w.http.answer(u"/api/conversations.list"_s, 200, R"({"channels":[]})");
         w.connectSlack();
         w.pass(3s);
       }},
  };
  return rows;
}

QStringList Window::states() {
  QStringList names;
  for (const auto& state : table()) names.append(QString::fromUtf16(state.name));
  return names;
}

Window::MainWindowOnFakes(const QString& name) : SessionOnFakes(mainThread, clock) {
  for (const auto& state : table()) {
    if (QString::fromUtf16(state.name) != name) continue;
    state.prepare(*this);
    start();
    state.act(*this);
    pass(0s);
    return;
  }
  qFatal("There is no such state of the main window.");
}

void Window::start() {
  configuration.googleClientId = u"offline.accounts.example"_s;
  configuration.googleAuthorizationEndpoint = QUrl(u"https://accounts.example/auth"_s);
  configuration.googleTokenEndpoint = QUrl(u"https://accounts.example/token"_s);
  accountHttp.answerAlways(u"/dictionary"_s, 500);
  accountHttp.answerAlways(u"/dictionary/1"_s, 204);
  accountHttp.answerAlways(u"/dictionary/2"_s, 204);
  startUp();
  m_dictionary.emplace(mainThread, storage.settings, *auth);
  m_shortcuts.emplace(storage.settings, *auth);
  m_updates.emplace(UpdateManager::Neighbours{
      .mainThread = mainThread,
      .clock = clock,
      .settings = storage.settings,
      .debugLog = storage.debugLog,
      .telemetry = telemetry,
      .windows = windows,
      .sheets = m_sheets,
      .configuration = configuration,
      .makeUpdater = [](auto&&...) { return std::make_unique<FakeUpdater>(); },
      .isDictationIdle = [this] { return appState->phase() == Phase::idle(); },
      .terminate = [] {}});
  m_updateCard.emplace(*m_updates, *appState);
  m_menu.emplace(MenuModel::With{.settings = storage.settings,
                                 .appState = *appState,
                                 .auth = *auth,
                                 .permissions = *permissions,
                                 .scenes = m_scenes,
                                 .updates = [] { return MenuUpdates(); },
                                 .restartToUpdate = [] {},
                                 .checkForUpdates = [] {},
                                 .quitClosingSheets = [this] { ++m_quits; }});
  m_model.emplace(MainWindowModel::With{.mainThread = mainThread,
                                        .clock = clock,
                                        .settings = storage.settings,
                                        .telemetry = telemetry,
                                        .appState = *appState,
                                        .auth = *auth,
                                        .permissions = *permissions,
                                        .slack = *slack,
                                        .dictionary = *m_dictionary,
                                        .shortcuts = *m_shortcuts,
                                        .configuration = configuration,
                                        .openSettings = [this] { m_scenes.open(Scene::Settings); },
                                        .menu = [this] { return m_menu->items(); },
                                        .update = &*m_updateCard,
                                        .locale = QLocale(u"en_US"_s)});
  pass(0s);
}

void Window::signOut() {
  secrets.items.clear();
}

void Window::fillHistory() {
  const Clock::WallTime::duration ages[] = {20s, 5min, 3h, 26h, 72h};
  std::vector<DictationItem> items;
  for (const auto& sentence : sentences)
    items.push_back({QUuid::createUuid(), sentence, clock.wallTime() - ages[items.size()]});
  storage.settings.set(keys::recentDictations, encodeDictations(items));
}

void Window::fillDictionary(int count) {
  std::vector<CustomDictionaryEntry> entries;
  for (int number = 0; number < count; ++number) {
    const auto& [spoken, written] = words[static_cast<std::size_t>(number) % std::size(words)];
    entries.push_back(
        {QString::number(number), QString::fromUtf16(spoken), QString::fromUtf16(written)});
  }
  storage.settings.set(keys::customDictionaryEntries, encodeDictionary(entries).value());
}

void Window::fillShortcuts(int count) {
  std::vector<CustomShortcutEntry> entries;
  for (int number = 0; number < count; ++number) {
    const auto& [trigger, text] = snippets[static_cast<std::size_t>(number) % std::size(snippets)];
    entries.push_back(
        {QString::number(number), QString::fromUtf16(trigger), QString::fromUtf16(text)});
  }
  storage.settings.set(keys::customShortcutEntries, encodeShortcuts(entries).value());
}

void Window::fillWithLongTexts() {
  const QString unbroken(400, u'm');
  storage.settings.set(
      keys::customDictionaryEntries,
      encodeDictionary({{u"1"_s, longSentence, longSentence}, {u"2"_s, unbroken, unbroken}})
          .value());
  storage.settings.set(
      keys::customShortcutEntries,
      encodeShortcuts({{u"1"_s, longSentence, longSentence}, {u"2"_s, unbroken, unbroken}})
          .value());
}

void Window::use(const QByteArray& consumption) {
  accountHttp.answerAlways(u"/desktop/auth/profile"_s, 200,
                           R"({"status":"ok","user":{"consumption":)" + consumption + "}}");
}

void Window::downloadUpdate() {
  m_updates->willInstallUpdateOnQuit(
      {.displayVersion = u"1.5.0"_s,
       .buildVersion = u"61"_s,
       .notes = u"# New\n- Dictate in **25** languages\n- The pill comes in `teal`\n\n# Fixed\n- A "
                u"long dictation keeps its last words\nThanks to everybody who has written."_s},
      [] {});
}

void Window::connectSlack() {
  m_model->slack()->open();
  m_model->slack()->setToken(u"xoxp-0000"_s);
  m_model->slack()->connectAndSync();
}

}  // namespace vemo
