#include "app/Application.h"

#include <QCoreApplication>

#include "app/Desktop.h"
#include "app/Face.h"
#include "app/Foundation.h"
#include "app/Program.h"
#include "app/Updating.h"
#include "platform/qt/QtInstallLocation.h"
#include "platform/xdg/BusRemoteControl.h"
#include "session/AppDelegate.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

Application::Application(DeploymentConfiguration configuration)
    : m_configuration(std::move(configuration)) {}

Application::~Application() = default;

void Application::quit() {
  if (!m_program) return QCoreApplication::quit();
  m_program->tasks.start([this](std::stop_token) { return quitWithoutLoss(); });
}

void Application::open(const QString& address) {
  const QUrl url(address);
  if (!m_program->browserSignIn.deliver(url)) m_delegate->applicationOpenURLs({url});
}

void Application::reopen() {
  const auto& scenes = m_desktop->scenes;
  m_delegate->applicationShouldHandleReopen(scenes.isOpen(Scene::Main) ||
                                            scenes.isOpen(Scene::Settings));
}

/// A target may still be reading the text that was pasted a moment ago.
Task<> Application::quitWithoutLoss() {
  while (m_program->injector.isRestorePending())
    co_await m_foundation->clock.sleep(std::chrono::milliseconds(20), {});
  m_delegate->applicationWillTerminate();
  QCoreApplication::quit();
}

std::expected<std::unique_ptr<Application>, Application::Refusal> Application::create(
    DeploymentConfiguration configuration, std::optional<SelfContainedCopy> copy,
    const QString& address) {
  // The name comes before everything that another instance may be writing to.
  auto bus = BusRemoteControl::create();
  if (!bus && bus.error() == BusNameError::NoBus)
    return std::unexpected(Refusal{u"Vemo needs a D-Bus session bus."_s, true});
  if (!bus) {
    const auto answer =
        address.isEmpty() ? sendCommand(u"reopen"_s) : sendCommand(u"open"_s, {address});
    if (!answer) return std::unexpected(Refusal{answer.error(), true});
    return nullptr;
  }
  std::unique_ptr<Application> application(new Application(std::move(configuration)));
  application->m_bus = *std::move(bus);
  if (auto error = application->start(std::move(copy), address))
    return std::unexpected(Refusal{*std::move(error), false});
  return application;
}

std::optional<QString> Application::start(std::optional<SelfContainedCopy> copy,
                                          const QString& address) {
  m_foundation = std::make_unique<Foundation>(std::move(copy), [this] { quit(); });
  m_desktop = Desktop::create(m_foundation->mainThread);
  if (!m_desktop) return u"Vemo needs an X server with XFixes, XTest, XInput 2 and RandR 1.5."_s;
  makeDelegate();
  m_delegate->applicationWillFinishLaunching(QCoreApplication::arguments());
  m_delegate->applicationDidFinishLaunching();
  if (!m_program) return std::nullopt;
  m_program->tasks.start([this](std::stop_token stop) {
    return keepOwnCopyWhenStartedWell(*m_foundation, std::move(stop));
  });
  if (!address.isEmpty()) open(address);
  return std::nullopt;
}

void Application::makeDelegate() {
  m_delegate = std::make_unique<AppDelegate>(AppDelegate::Neighbours{
      .mainThread = m_foundation->mainThread,
      .debugLog = m_foundation->debugLog,
      .settings = m_foundation->settings,
      .windows = m_desktop->windows,
      .scenes = m_desktop->scenes,
      .alert = m_desktop->alert,
      .location = readInstallLocation(QCoreApplication::applicationFilePath()),
      .services = {
          .bootstrapDictation = [this] { makeProgram(); },
          .startUpdates = [this] { m_program->updates.start(); },
          .startTelemetry =
              [this](bool launchedAtLogin) { m_program->telemetry.start(launchedAtLogin); },
          .endTelemetry = [this] { m_program->telemetry.endSession(); },
          .refreshProfile =
              [this](std::stop_token stop) {
                return m_program->auth.refreshProfile(std::move(stop));
              },
          .terminate = [this] { quit(); }}});
}

void Application::makeProgram() {
  m_program = std::make_unique<Program>(
      *m_foundation, *m_desktop, m_configuration,
      DictationRemoteControl::Program{.quit = [this] { quit(); },
                                      .reopen = [this] { reopen(); },
                                      .open = [this](const QString& address) { open(address); }});
  m_face = std::make_unique<Face>(*m_foundation, *m_desktop, *m_program);
  m_program->appState.bootstrap();
  m_bus->serve(m_program->remoteControl);
}

}  // namespace vemo
