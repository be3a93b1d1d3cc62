// The composition root: has every object made once (Foundation, Desktop, Program), starts them in
// their order and ends them. The one folder that names adapters.
//
// Lives on the main thread between the making of the QGuiApplication and its end. Members are
// destroyed from the last to the first, so each outlives what was given it.
#pragma once

#include <QString>
#include <expected>
#include <memory>
#include <optional>

#include "base/Task.h"
#include "platform/updater/SelfContainedCopy.h"
#include "storage/DeploymentConfiguration.h"

namespace vemo {

class AppDelegate;
class BusRemoteControl;
class Face;
struct Desktop;
struct Foundation;
struct Program;

class Application {
 public:
  /// Why the program can't start.
  struct Refusal {
    QString text;              ///< one line for the person who starts it
    bool isOfTheSurroundings;  ///< no other version could start either
  };

  /// Null when another instance runs, which has come forward instead, or has taken the address. An
  /// empty address is none.
  static std::expected<std::unique_ptr<Application>, Refusal> create(
      DeploymentConfiguration configuration, std::optional<SelfContainedCopy> copy,
      const QString& address);
  ~Application();

 private:
  explicit Application(DeploymentConfiguration configuration);

  /// Makes the desktop and launches the program; the error is a text for the person who starts it.
  std::optional<QString> start(std::optional<SelfContainedCopy> copy, const QString& address);

  void quit();
  void makeDelegate();
  void makeProgram();
  void open(const QString& address);
  void reopen();
  Task<> quitWithoutLoss();

  const DeploymentConfiguration m_configuration;
  std::unique_ptr<BusRemoteControl> m_bus;  ///< goes last: another instance may start then
  std::unique_ptr<Foundation> m_foundation;
  std::unique_ptr<Desktop> m_desktop;
  std::unique_ptr<Program> m_program;  ///< made in the launch's own order
  std::unique_ptr<Face> m_face;
  std::unique_ptr<AppDelegate> m_delegate;
};

}  // namespace vemo
