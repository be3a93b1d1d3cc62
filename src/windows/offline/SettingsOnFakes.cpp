#include "windows/offline/SettingsOnFakes.h"

#include <memory>

#include "desktop/VirtualKeys.h"

namespace vemo {

using namespace std::chrono_literals;

namespace {

const QString accountPath = u"/desktop/auth/account"_s;
const QString namePath = u"/auth/profile"_s;
constexpr std::int64_t keyF8 = 100;
/// 32 bytes in Base64.
const QString updateKey = u"AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8="_s;

}  // namespace

using Window = SettingsOnFakes;

std::span<const Window::State> Window::table() {
  static constexpr auto nothing = [](Window&) {};
  static const State rows[] = {
      {u"settings-account", nothing, nothing},
      {u"settings-signed-out", [](Window& w) { w.signOut(); }, nothing},
      {u"settings-signing-in", [](Window& w) { w.signOut(); },
       [](Window& w) { w.m_model->account()->signIn(); }},
      {u"settings-sign-in-failed", [](Window& w) { w.signOut(); },
       [](Window& w) { w.auth->setLastError(u"Can't reach the server"_s); }},
      {u"settings-saving", nothing,
       [](Window& w) {
         w.accountHttp.neverAnswer(namePath);
         w.m_model->account()->setLastName(u"Bose"_s);
         w.m_model->account()->save();
       }},
      {u"settings-email-copied", nothing, [](Window& w) { w.m_model->account()->copyEmail(); }},
      {u"settings-delete-dialog", nothing, [](Window& w) { w.m_model->account()->askToDelete(); }},
      {u"settings-deleting", nothing,
       [](Window& w) {
         w.accountHttp.neverAnswer(accountPath);
         w.deleteAccount();
       }},
      {u"settings-deleted", nothing,
       [](Window& w) {
         w.accountHttp.answer(accountPath, 200, "{}");
         w.deleteAccount();
       }},
      {u"settings-not-deleted", nothing,
       [](Window& w) {
         w.accountHttp.fail(accountPath, UrlError::NotConnectedToInternet);
         w.deleteAccount();
       }},
      {u"settings-system", nothing, [](Window& w) { w.showSystem(); }},
      {u"settings-custom-keys",
       [](Window& w) {
         w.storage.settings.set(keys::pushToTalkHotkeyChoice, u"custom"_s);
         w.storage.settings.set(
             keys::customPushToTalkShortcutData,
             encodeShortcut({.keyCode = keyF8, .modifierFlagsRaw = ControlFlag | ShiftFlag}));
         w.storage.settings.set(keys::dictationPillColor, u"teal"_s);
         w.storage.settings.set(keys::dictationLanguage, u"hi"_s);
       },
       [](Window& w) { w.showSystem(); }},
      {u"settings-no-permissions",
       [](Window& w) {
         w.system.microphoneAuthorization = MicrophoneAuthorization::Denied;
         w.system.isTrusted = false;
       },
       [](Window& w) { w.showSystem(); }},
      {u"settings-updates-off", [](Window& w) { w.configuration.updateFeedPublicKey.clear(); },
       [](Window& w) { w.showSystem(); }},
      {u"settings-update-ready", nothing,
       [](Window& w) {
         w.showSystem();
         w.m_updates->willInstallUpdateOnQuit(
             {.displayVersion = u"1.4.0"_s, .buildVersion = u"140"_s, .notes = {}}, [] {});
       }},
      {u"settings-recorder", nothing,
       [](Window& w) {
         w.showSystem();
         w.m_model->recorder()->openForPushToTalk();
       }},
      {u"settings-recorded", nothing,
       [](Window& w) {
         w.showSystem();
         w.m_model->recorder()->openForToggle();
         w.m_keys.strike({KeyEvent::Type::KeyDown, kSpace, CommandFlag | ShiftFlag});
         w.m_keys.strike({KeyEvent::Type::KeyUp, kSpace, CommandFlag | ShiftFlag});
       }},
      {u"settings-slack", nothing,
       [](Window& w) {
         w.showSystem();
         w.m_model->slack()->open();
       }},
  };
  return rows;
}

QStringList Window::states() {
  QStringList names;
  for (const auto& state : table()) names.append(QString::fromUtf16(state.name));
  return names;
}

Window::SettingsOnFakes(const QString& name) : SessionOnFakes(mainThread, clock) {
  for (const auto& state : table()) {
    if (QString::fromUtf16(state.name) != name) continue;
    configuration.updateFeedPublicKey = updateKey;
    state.prepare(*this);
    start();
    state.act(*this);
    pass(0s);
    return;
  }
  qFatal("There is no such state of the settings window.");
}

void Window::start() {
  configuration.websiteURL = QUrl(u"https://vemo.example"_s);
  configuration.googleClientId = u"offline.accounts.example"_s;
  configuration.googleAuthorizationEndpoint = QUrl(u"https://accounts.example/auth"_s);
  configuration.googleTokenEndpoint = QUrl(u"https://accounts.example/token"_s);
  storage.settings.set(keys::authEmail, u"asha.rao@example.org"_s);
  storage.settings.set(keys::authDisplayName, u"Asha Rao"_s);
  startUp();
  m_folderChooser.emplace(mainThread);
  m_workspace.emplace(WorkspaceIndexer::Neighbours{.mainThread = mainThread,
                                                   .diskReader = m_diskReader,
                                                   .settings = storage.settings,
                                                   .focusedApplication = applications,
                                                   .folderChooser = &*m_folderChooser,
                                                   .configFolder = u"/nonexistent"_s,
                                                   .fallbackRoots = {}});
  startUpdates();
  m_model.emplace(SettingsModel::With{.mainThread = mainThread,
                                      .clock = clock,
                                      .settings = storage.settings,
                                      .debugLog = storage.debugLog,
                                      .telemetry = telemetry,
                                      .appState = *appState,
                                      .auth = *auth,
                                      .permissions = *permissions,
                                      .hotkey = hotkey,
                                      .slackManager = *slack,
                                      .workspaceIndexer = *m_workspace,
                                      .folderChooser = *m_folderChooser,
                                      .updates = *m_updates,
                                      .clipboard = clipboard,
                                      .localKeyMonitor = m_keys,
                                      .loginItem = m_loginItem,
                                      .windows = windows,
                                      .configuration = configuration,
                                      .locale = QLocale(u"en_US"_s)});
  pass(0s);
}

void Window::startUpdates() {
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
  m_updates->start();
}

void Window::signOut() {
  secrets.items.clear();
}

void Window::showSystem() {
  m_model->navigation()->setTab(SettingsTab::System);
}

void Window::deleteAccount() {
  m_model->account()->askToDelete();
  m_model->account()->confirmDelete();
  pass(1s);
}

}  // namespace vemo
