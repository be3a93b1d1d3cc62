// A message that the program can't go on without: a window of its own with one button. Main thread
// only.
#pragma once

#include <QString>
#include <functional>

namespace vemo {

struct AlertText {
  QString message;
  QString informative;
  QString button;
};

class CriticalAlert {
 public:
  virtual ~CriticalAlert() = default;

  /// Shows it in front of everything; `onClosed` is called once, later, whatever it was closed by.
  virtual void show(const AlertText& text, std::function<void()> onClosed) = 0;
};

}  // namespace vemo
