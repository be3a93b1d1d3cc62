#include "app/Application.h"

#include <QCoreApplication>
#include <QFileInfo>

#include "account/AuthManager.h"
#include "account/GoogleSignIn.h"
#include "app/TerminationSignals.h"
#include "audio/AudioRecorder.h"
#include "base/SerialQueue.h"
#include "desktop/HotkeyManager.h"
#include "desktop/PermissionsManager.h"
#include "desktop/TextInjector.h"
#include "integrations/SlackManager.h"
#include "integrations/WorkspaceIndexer.h"
#include "platform/atspi/AtspiSecureInput.h"
#include "platform/canberra/CanberraSounds.h"
#include "platform/gio/GioThread.h"
#include "platform/logind/LogindSleep.h"
#include "platform/posix/SignalCrashRecorder.h"
#include "platform/posix/SystemRandom.h"
#include "platform/pulse/PulseAudioInput.h"
#include "platform/pulse/PulseInputDevice.h"
#include "platform/pulse/PulseMicrophoneAccess.h"
#include "platform/pulse/PulseServer.h"
#include "platform/qt/QtApplicationWindows.h"
#include "platform/qt/QtClock.h"
#include "platform/qt/QtHttpSession.h"
#include "platform/qt/QtLastRequest.h"
#include "platform/qt/QtMainThread.h"
#include "platform/qt/QtSystemEvents.h"
#include "platform/qt/QtSystemInformation.h"
#include "platform/secretservice/SecretServiceBackend.h"
#include "platform/x11/X11Clipboard.h"
#include "platform/x11/X11FloatingPanel.h"
#include "platform/x11/X11FocusedApplication.h"
#include "platform/x11/X11InputSources.h"
#include "platform/x11/X11KeyEventSource.h"
#include "platform/x11/X11KeyPoster.h"
#include "platform/x11/X11LoneModifier.h"
#include "platform/x11/X11Screens.h"
#include "platform/xdg/AbsentHaptics.h"
#include "platform/xdg/BrowserSignIn.h"
#include "platform/xdg/BusRemoteControl.h"
#include "platform/xdg/LinuxDeviceInformation.h"
#include "platform/xdg/LinuxPermissions.h"
#include "session/AppState.h"
#include "session/DictationRemoteControl.h"
#include "shaping/ContextProcessor.h"
#include "storage/Config.h"
#include "storage/DebugLog.h"
#include "storage/PrivateFolder.h"
#include "storage/SecureTokenStore.h"
#include "storage/Settings.h"
#include "storage/StandardPlaces.h"
#include "telemetry/Telemetry.h"
#include "transcription/TranscriptionClient.h"
#include "ui/HUDWindowController.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

/// Beside an installed program; a build tree takes them from the sources.
QString soundsFolder() {
  const QString installed = QCoreApplication::applicationDirPath() + u"/../share/vemo/sounds"_s;
  return QFileInfo::exists(installed) ? installed : QString::fromUtf8(VEMO_SOUNDS_IN_SOURCE);
}

/// The file that crash notes are kept in, and its folder.
QString crashFileInItsFolder() {
  const QString file = places::crashFile();
  if (!file.isEmpty()) makePrivateFolder(QFileInfo(file).path());
  return file;
}

}  // namespace

/// Time, the main queue, and the program's files.
struct Application::Base {
  explicit Base(std::function<void()> quit) : terminationSignals(std::move(quit)) {}

  TerminationSignals terminationSignals;
  SystemInformation information = readSystemInformation();
  SignalCrashRecorder crashes{crashFileInItsFolder(), information.applicationBuild.toUtf8()};
  QtMainThread mainThread;
  QtClock clock{mainThread};
  DebugLog debugLog{clock, places::logFolder()};
  Settings settings{places::settingsFile(), debugLog};
};

/// The adapters.
struct Application::Desktop {
  Desktop(std::unique_ptr<X11Clipboard> x11Clipboard, std::unique_ptr<X11KeyPoster> x11KeyPoster,
          std::unique_ptr<X11FocusedApplication> x11FocusedApplication,
          std::unique_ptr<X11Screens> x11Screens)
      : clipboard(std::move(x11Clipboard)),
        keyPoster(std::move(x11KeyPoster)),
        focusedApplication(std::move(x11FocusedApplication)),
        screens(std::move(x11Screens)) {}

  static std::unique_ptr<Desktop> create(QtMainThread& mainThread) {
    auto clipboard = X11Clipboard::create(mainThread);
    auto keyPoster = X11KeyPoster::create();
    auto focusedApplication = X11FocusedApplication::create();
    auto screens = X11Screens::create();
    if (!clipboard || !keyPoster || !focusedApplication || !screens) return nullptr;
    return std::make_unique<Desktop>(std::move(clipboard), std::move(keyPoster),
                                     std::move(focusedApplication), std::move(screens));
  }

  GioThread gio;
  PulseServer pulse{"Vemo", "brelmox.Vemo"};
  PulseMicrophoneAccess microphoneAccess{pulse};
  PulseAudioInput audioInput{pulse};
  PulseInputDevice inputDevice{pulse};
  CanberraSounds sounds{soundsFolder(), u"Vemo"_s, u"brelmox.Vemo"_s};
  /// Its first answer says whether somebody is signed in, and the token store keeps what it hears.
  SecretServiceBackend keyring{std::chrono::milliseconds(200), std::chrono::seconds(3)};
  std::unique_ptr<X11Clipboard> clipboard;
  std::unique_ptr<X11KeyPoster> keyPoster;
  std::unique_ptr<X11FocusedApplication> focusedApplication;
  std::unique_ptr<X11Screens> screens;
  QtApplicationWindows windows;
  QtSystemEvents systemEvents;
  AtspiSecureInput secureInput{gio};
  X11KeyEventSource keyEvents{keyPoster->keyboard()->connection().window()};
  X11LoneModifier loneModifier{keyPoster->keyboard()};
  AbsentHaptics haptics;
  LinuxDeviceInformation deviceInformation{inputDevice, [] { return readX11InputSources(); }};
};

/// The logic, on those adapters.
struct Application::Program {
  Program(Base& base, Desktop& desktop, const DeploymentConfiguration& configuration,
          DictationRemoteControl::Program remotely)
      : Program(base, base.mainThread, base.clock, base.debugLog, base.settings, desktop,
                configuration, std::move(remotely)) {}

  Program(Base& base, QtMainThread& mainThread, QtClock& theClock, DebugLog& debugLog,
          Settings& settings, Desktop& desktop, const DeploymentConfiguration& configuration,
          DictationRemoteControl::Program remotely)
      : session(mainThread),
        hedgeSession(mainThread),
        sharedSession(mainThread),
        permissionsOfSystem(
            [&desktop] { return desktop.microphoneAccess.authorization(); },
            [&desktop] { return desktop.keyEvents.canListen() && desktop.keyPoster->canPost(); },
            theClock, mainThread),
        tokens({&desktop.keyring}, debugLog),
        telemetry({.clock = theClock,
                   .mainThread = mainThread,
                   .settings = settings,
                   .tokens = tokens,
                   .session = sharedSession,
                   .lastRequest = lastRequest,
                   .configuration = configuration,
                   .system = base.information,
                   .device = desktop.deviceInformation,
                   .crashes = base.crashes}),
        browserSignIn(mainThread, QCoreApplication::applicationFilePath()),
        googleSignIn({.browser = browserSignIn,
                      .session = sharedSession,
                      .random = random,
                      .configuration = configuration}),
        auth({.mainThread = mainThread,
              .clock = theClock,
              .tokens = tokens,
              .settings = settings,
              .debugLog = debugLog,
              .telemetry = telemetry,
              .session = sharedSession,
              .googleSignIn = googleSignIn,
              .configuration = configuration,
              .system = base.information}),
        slack({.tokens = tokens,
               .settings = settings,
               .debugLog = debugLog,
               .session = sharedSession,
               .configuration = configuration,
               .reader = SlackManager::Reader{diskReader, mainThread}}),
        workspace({.mainThread = mainThread,
                   .diskReader = diskReader,
                   .settings = settings,
                   .focusedApplication = *desktop.focusedApplication,
                   .configFolder = places::configFolder()}),
        permissions(permissionsOfSystem, theClock, mainThread, telemetry),
        hotkey(desktop.keyEvents, desktop.loneModifier, theClock, mainThread, settings, debugLog),
        recorder(desktop.audioInput, mainThread, theClock, debugLog),
        client({.session = session,
                .hedgeSession = hedgeSession,
                .clock = theClock,
                .mainThread = mainThread,
                .telemetry = telemetry,
                .debugLog = debugLog,
                .sources = {.settings = settings,
                            .tokens = tokens,
                            .configuration = configuration,
                            .focusedApplication = *desktop.focusedApplication,
                            .inputDevice = desktop.inputDevice,
                            .system = base.information}}),
        contextProcessor({.applications = *desktop.focusedApplication,
                          .settings = settings,
                          .files = workspace,
                          .directory = slack,
                          .clock = theClock,
                          .debugLog = debugLog}),
        injector(*desktop.clipboard, *desktop.keyPoster, desktop.secureInput, permissionsOfSystem,
                 theClock, mainThread, debugLog),
        hud({.clock = theClock,
             .mainThread = mainThread,
             .settings = settings,
             .screens = *desktop.screens,
             .makePanel = [] { return X11FloatingPanel::create(); }}),
        appState({.mainThread = mainThread,
                  .clock = theClock,
                  .settings = settings,
                  .debugLog = debugLog,
                  .telemetry = telemetry,
                  .permissions = permissions,
                  .auth = auth,
                  .hotkey = hotkey,
                  .recorder = recorder,
                  .client = client,
                  .contextProcessor = contextProcessor,
                  .injector = injector,
                  .slack = slack,
                  .hud = hud,
                  .clipboard = *desktop.clipboard,
                  .sounds = desktop.sounds,
                  .haptics = desktop.haptics,
                  .windows = desktop.windows,
                  .systemEvents = desktop.systemEvents}),
        machineSleep(desktop.gio, mainThread,
                     [this, &desktop] {
                       if (desktop.systemEvents.onDidWake) desktop.systemEvents.onDidWake();
                       telemetry.sendDeviceReport(Urgency::IfDue);
                     }),
        tasks(mainThread),
        remoteControl(appState, std::move(remotely)) {}

  QtHttpSession session;
  QtHttpSession hedgeSession;
  QtHttpSession sharedSession;  ///< of everything but dictation
  LinuxPermissions permissionsOfSystem;
  SecureTokenStore tokens;
  QtLastRequest lastRequest;
  Telemetry telemetry;
  SystemRandom random;
  BrowserSignIn browserSignIn;
  GoogleSignIn googleSignIn;
  AuthManager auth;
  SerialQueue diskReader{"vemo.workspace"};
  SlackManager slack;
  WorkspaceIndexer workspace;
  PermissionsManager permissions;
  HotkeyManager hotkey;
  AudioRecorder recorder;
  TranscriptionClient client;
  ContextProcessor contextProcessor;
  TextInjector injector;
  HUDWindowController hud;
  AppState appState;
  LogindSleep machineSleep;
  TaskScope tasks;
  DictationRemoteControl remoteControl;
};

Application::Application(DeploymentConfiguration configuration)
    : m_configuration(std::move(configuration)) {}

Application::~Application() = default;

void Application::quit() {
  m_program->tasks.start([this](std::stop_token) { return quitWithoutLoss(); });
}

/// The redirect of a sign-in carries secrets in its query, so the log holds no query at all.
void Application::open(const QString& address) {
  const QUrl url(address);
  if (m_program->browserSignIn.deliver(url)) return;
  m_base->debugLog(u"appDelegate: opened URL "_s +
                   url.toString(QUrl::RemoveQuery | QUrl::RemoveFragment));
  if (url.scheme() != u"vemo") return;
  m_program->tasks.start(
      [this](std::stop_token stop) { return m_program->auth.refreshProfile(std::move(stop)); });
}

/// A target may still be reading the text that was pasted a moment ago.
Task<> Application::quitWithoutLoss() {
  while (m_program->injector.isRestorePending())
    co_await m_base->clock.sleep(std::chrono::milliseconds(20), {});
  m_program->telemetry.endSession();
  QCoreApplication::quit();
}

std::expected<std::unique_ptr<Application>, QString> Application::create(
    DeploymentConfiguration configuration) {
  std::unique_ptr<Application> application(new Application(std::move(configuration)));
  if (auto error = application->start()) return std::unexpected(*std::move(error));
  return application;
}

std::optional<QString> Application::start() {
  // The name comes before everything that another instance may be writing to.
  auto bus = BusRemoteControl::create();
  if (!bus) {
    return bus.error() == BusNameError::Taken ? u"Vemo is already running."_s
                                              : u"Vemo needs a D-Bus session bus."_s;
  }
  m_bus = *std::move(bus);

  m_base = std::make_unique<Base>([this] { quit(); });
  m_base->debugLog.purgeLegacyLogIfNeeded(m_base->settings);
  config::migrateToggleHotkeyIfNeeded(m_base->settings, m_base->debugLog);

  m_desktop = Desktop::create(m_base->mainThread);
  if (!m_desktop) return u"Vemo needs an X server with XFixes, XTest, XInput 2 and RandR 1.5."_s;
  m_program = std::make_unique<Program>(
      *m_base, *m_desktop, m_configuration,
      DictationRemoteControl::Program{.quit = [this] { quit(); },
                                      .open = [this](const QString& address) { open(address); }});
  m_program->appState.bootstrap();
  m_program->telemetry.start(false);
  m_bus->serve(m_program->remoteControl);
  return std::nullopt;
}

}  // namespace vemo
