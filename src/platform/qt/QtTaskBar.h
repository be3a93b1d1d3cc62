// Whether a window has a place in the task bar and among the windows that one switches through.
//
// Main thread only. What is asked for goes through Qt's own connection, behind whatever Qt has
// asked the window manager for, so that a window that was just shown is known to it by then. A
// program without a display does nothing. Source of the messages: Extended Window Manager Hints,
// version 1.5, _NET_WM_STATE.
#pragma once

#include <QtGlobal>

#include "ports/ApplicationWindows.h"

namespace vemo {

/// For a window that is shown, or is being shown. `window` is its identifier on the X server.
void applyTaskBarPolicy(quintptr window, ActivationPolicy policy);

}  // namespace vemo
