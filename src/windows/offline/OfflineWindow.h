// A window on fakes, in the state that somebody wants to look at.
//
// Main thread only. Time stands still until it is let pass.
#pragma once

#include <QObject>

#include "base/Clock.h"
#include "ports/Scenes.h"

namespace vemo {

class OfflineWindow {
 public:
  virtual ~OfflineWindow() = default;

  virtual Scene scene() const = 0;
  virtual QObject& viewModel() = 0;
  virtual void pass(Clock::Duration duration) = 0;
};

}  // namespace vemo
