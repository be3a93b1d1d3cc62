// The panels of the desktop's own settings, found through the installed desktop entries.
//
// Main thread only. A panel that can't be started is a panel that doesn't open.
#pragma once

namespace vemo {

enum class SettingsPanel { Sound, Accessibility };

/// Opens the panel of the desktop that runs, else any that is installed. False without one.
bool openSettingsPanel(SettingsPanel panel);

}  // namespace vemo
