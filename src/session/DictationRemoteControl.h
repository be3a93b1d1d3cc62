// What `vemo toggle`, `vemo start` and `vemo stop` do to the running program. Main thread only.
#pragma once

#include <functional>

#include "ports/RemoteControl.h"

namespace vemo {

class AppState;

class DictationRemoteControl : public RemoteControl {
 public:
  DictationRemoteControl(AppState& appState, std::function<void()> quit);

  /// As the toggle key.
  QString toggle() override;
  /// As pressing the push-to-talk key; does nothing while a recording runs.
  QString start() override;
  /// Ends the recording under way, whatever began it.
  QString stop() override;
  /// The phase; an idle program that can't dictate says why behind it.
  QString status() const override;
  void quit() override;

 private:
  AppState& m_appState;
  std::function<void()> m_quit;
};

}  // namespace vemo
