// The menu of the desktop's panel as a window can show it, where no panel does. Main thread only.
#pragma once

#include <QVariantList>
#include <vector>

#include "ports/StatusItem.h"

namespace vemo {

/// Rows with `kind` ("line", "button", "toggle" or "divider"), `identifier`, `text`, `isEnabled`
/// and `isChecked`. What opens a submenu isn't among them, and no divider stands first, last or
/// twice.
QVariantList menuRows(const std::vector<MenuItem>& items);

/// Does what the item of this identifier does; nothing when it is disabled or not there.
void pressMenuRow(const std::vector<MenuItem>& items, const QString& identifier);

}  // namespace vemo
