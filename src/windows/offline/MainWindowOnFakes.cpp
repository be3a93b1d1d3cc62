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

QStringList Window::states() {
  QStringList names;
  for (const auto& state : table()) names.append(QString::fromUtf16(state.name));
  return names;
}

Window::MainWindowOnFakes(const QString& name) : SessionOnFakes(mainThread, clock) {
  for (const auto& state : table()) {
    if (QString::fromUtf16(state.name) != name) continue;
    storage.settings.set(keys::authEmail, u"asha.rao@example.org"_s);
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

QString Window::copiedText() {
  return clipboard.writes().empty() ? QString() : plainTextOf(clipboard.writes().back());
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

void Window::fillHistoryWithLongTexts() {
  std::vector<DictationItem> items;
  for (const auto& text : {longSentence.repeated(4), QString(1000, u'm'), u"a\n\n\n\n\nb"_s})
    items.push_back({QUuid::createUuid(), text, clock.wallTime() - 24h * 3000});
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

void Window::downloadUpdate(const QString& notes) {
  m_updates->willInstallUpdateOnQuit(
      {.displayVersion = u"1.5.0"_s, .buildVersion = u"61"_s, .notes = notes}, [] {});
}

void Window::answerSlack() {
  http.answer(u"/api/auth.test"_s, 200, R"({"team":"Example Ltd."})");
  http.answer(u"/api/users.list"_s, 200, R"({"members":[]})");
  http.answer(u"/api/conversations.list"_s, 200, R"({"channels":[]})");
}

void Window::connectSlack() {
  m_model->slack()->open();
  m_model->slack()->setToken(u"xoxp-0000"_s);
  m_model->slack()->connectAndSync();
}

}  // namespace vemo
