#include "app/Application.h"

#include <QCoreApplication>

#include "app/Desktop.h"
#include "app/Foundation.h"
#include "app/Program.h"
#include "platform/xdg/BusRemoteControl.h"
#include "storage/Config.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

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
  m_foundation->debugLog(u"appDelegate: opened URL "_s +
                         url.toString(QUrl::RemoveQuery | QUrl::RemoveFragment));
  if (url.scheme() != u"vemo") return;
  m_program->tasks.start(
      [this](std::stop_token stop) { return m_program->auth.refreshProfile(std::move(stop)); });
}

/// A target may still be reading the text that was pasted a moment ago.
Task<> Application::quitWithoutLoss() {
  while (m_program->injector.isRestorePending())
    co_await m_foundation->clock.sleep(std::chrono::milliseconds(20), {});
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

  m_foundation = std::make_unique<Foundation>([this] { quit(); });
  m_foundation->debugLog.purgeLegacyLogIfNeeded(m_foundation->settings);
  config::migrateToggleHotkeyIfNeeded(m_foundation->settings, m_foundation->debugLog);

  m_desktop = Desktop::create(m_foundation->mainThread);
  if (!m_desktop) return u"Vemo needs an X server with XFixes, XTest, XInput 2 and RandR 1.5."_s;
  m_program = std::make_unique<Program>(
      *m_foundation, *m_desktop, m_configuration,
      DictationRemoteControl::Program{.quit = [this] { quit(); },
                                      .open = [this](const QString& address) { open(address); }});
  m_program->appState.bootstrap();
  m_program->telemetry.start(false);
  m_bus->serve(m_program->remoteControl);
  return std::nullopt;
}

}  // namespace vemo
