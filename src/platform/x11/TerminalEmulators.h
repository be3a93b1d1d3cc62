// Which windows are terminal emulators. There Control+V reaches the program inside, and pasting is
// Control+Shift+V.
#pragma once

#include "platform/x11/X11Windows.h"

namespace vemo {

bool isTerminalEmulator(const X11WindowClass& windowClass);

}  // namespace vemo
