// What `vemo toggle` and the other commands do to the running program. Main thread only.
#pragma once

#include <functional>

#include "ports/RemoteControl.h"

namespace vemo {

class AppState;

class DictationRemoteControl : public RemoteControl {
 public:
  /// What the program as a whole does.
  struct Program {
    std::function<void()> quit;
    std::function<void()> reopen;
    std::function<void(const QString& address)> open;
  };

  DictationRemoteControl(AppState& appState, Program program);

  /// As the toggle key.
  QString toggle() override;
  /// As pressing the push-to-talk key; does nothing while a recording runs.
  QString start() override;
  /// Ends the recording under way, whatever began it.
  QString stop() override;
  /// The phase; an idle program that can't dictate says why behind it.
  QString status() const override;
  void quit() override;
  QString signIn() override;
  QString cancelSignIn() override;
  QString signOut() override;
  void reopen() override;
  void open(const QString& address) override;

 private:
  AppState& m_appState;
  const Program m_program;
};

}  // namespace vemo
