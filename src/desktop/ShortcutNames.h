// How a shortcut reads: in full, as in "Control + Option + Page Up", and short, as in "⌃⌥F5".
#pragma once

#include <QString>
#include <cstdint>

#include "storage/CustomKeyShortcut.h"

namespace vemo {

QString displayName(const CustomKeyShortcut& shortcut);
QString shortDisplayName(const CustomKeyShortcut& shortcut);

/// What is printed on the key of a US keyboard; "Key(N)" for a code without a name.
QString keyName(std::int64_t keyCode);

/// The sign of the nine keys that have one, else the name.
QString keySymbol(std::int64_t keyCode);

}  // namespace vemo
