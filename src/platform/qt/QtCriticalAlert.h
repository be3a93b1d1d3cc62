// A critical message in a window that is drawn without the windows' engine. Enter, Escape, Space, a
// click on the button and the window's own closing all close it. Main thread only.
#pragma once

#include <memory>

#include "ports/CriticalAlert.h"

namespace vemo {

class QtAlertWindow;

class QtCriticalAlert : public CriticalAlert {
 public:
  QtCriticalAlert();
  ~QtCriticalAlert() override;

  void show(const AlertText& text, std::function<void()> onClosed) override;

 private:
  std::unique_ptr<QtAlertWindow> m_window;
};

}  // namespace vemo
