// The running program's end, and the command line's end, of RemoteControl on the session bus.
//
// Owning the bus name is also what makes the program single-instance. Main thread only.
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <expected>
#include <memory>

namespace vemo {

class RemoteControl;

enum class BusNameError {
  NoBus,  ///< there is no session bus to be reached
  Taken,  ///< another instance runs
};

/// Owns the name as long as it lives.
class BusRemoteControl {
 public:
  /// Takes the name, which no other instance can have then. Commands that come before the event
  /// loop runs wait for it; those that it meets before serve() are told that Vemo is still
  /// starting.
  static std::expected<std::unique_ptr<BusRemoteControl>, BusNameError> create();
  ~BusRemoteControl();

  /// Answers commands from now on. `control` outlives this object.
  void serve(RemoteControl& control);

 private:
  class Adaptor;
  BusRemoteControl();

  std::unique_ptr<Adaptor> m_adaptor;
  bool m_hasName = false;
};

/// Calls an operation of RemoteControl, by its name, in the running program. The answer, or why
/// there is none, is one line for the person at the terminal.
std::expected<QString, QString> sendCommand(const QString& command,
                                            const QStringList& arguments = {});

}  // namespace vemo
