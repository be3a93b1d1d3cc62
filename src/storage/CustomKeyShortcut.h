// A recorded or preset key chord, as the settings store it.
#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <optional>

namespace vemo {

struct CustomKeyShortcut {
  std::optional<std::int64_t> keyCode = {};  ///< virtual key code; absent means no key
  std::uint64_t modifierFlagsRaw = 0;        ///< bits of ModifierFlag
  bool isModifierOnly = false;               ///< the key is itself a modifier
  std::optional<QString> presetId = {};  ///< the preset that this equals; absent for a free chord

  friend bool operator==(const CustomKeyShortcut&, const CustomKeyShortcut&) = default;
};
std::size_t qHash(const CustomKeyShortcut& shortcut, std::size_t seed = 0);

QByteArray encodeShortcut(const CustomKeyShortcut& shortcut);

/// Nothing when the bytes aren't a record of exactly these types.
std::optional<CustomKeyShortcut> decodeShortcut(const QByteArray& json);

}  // namespace vemo
