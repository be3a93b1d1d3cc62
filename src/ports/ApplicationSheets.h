// The sheets over this program's windows: each blocks its window and the program's end. Main thread
// only.
#pragma once

namespace vemo {

class ApplicationSheets {
 public:
  virtual ~ApplicationSheets() = default;

  /// Whether any window has a sheet over it.
  virtual bool isAnyAttached() const = 0;

  /// Takes every sheet down, whatever it holds.
  virtual void endAttached() = 0;
};

}  // namespace vemo
