#include "windows/offline/SettingsOnFakes.h"

#include <memory>

namespace vemo {

using namespace std::chrono_literals;

namespace {

/// 32 bytes in Base64.
const QString updateKey = u"AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8="_s;

}  // namespace

using Window = SettingsOnFakes;

QStringList Window::states() {
  QStringList names;
  for (const auto& state : table()) names.append(QString::fromUtf16(state.name));
  return names;
}

Window::SettingsOnFakes(const QString& name) : SessionOnFakes(mainThread, clock) {
  for (const auto& state : table()) {
    if (QString::fromUtf16(state.name) != name) continue;
    configuration.updateFeedPublicKey = updateKey;
    storage.settings.set(keys::authEmail, u"asha.rao@example.org"_s);
    storage.settings.set(keys::authDisplayName, u"Asha Rao"_s);
    state.prepare(*this);
    start();
    state.act(*this);
    pass(0s);
    return;
  }
  qFatal("There is no such state of the settings window.");
}

Window::~SettingsOnFakes() {
  m_diskMayGoOn.release();
}

void Window::start() {
  configuration.websiteURL = QUrl(u"https://vemo.example"_s);
  configuration.googleClientId = u"offline.accounts.example"_s;
  configuration.googleAuthorizationEndpoint = QUrl(u"https://accounts.example/auth"_s);
  configuration.googleTokenEndpoint = QUrl(u"https://accounts.example/token"_s);
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
  m_loginItem.changeFromOutside(true);
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
                                      .quit = [this] { ++m_quits; },
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

void Window::holdDisk() {
  m_diskReader.post([this] { m_diskMayGoOn.acquire(); });
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
