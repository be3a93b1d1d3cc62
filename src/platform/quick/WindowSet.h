// What the shared object of the windows gives to the program that loads it.
//
// Main thread only. The two are built together, so that the interface needs no versions.
#pragma once

#include <QObject>
#include <QString>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "ports/Scenes.h"

namespace vemo {

/// What the desktop's user prefers to look at.
struct WindowLook {
  bool isDark = false;
  bool hasReducedMotion = false;
  std::optional<std::uint32_t> accent = {};  ///< 0xRRGGBB; without one, Vemo's own
};

class WindowSet {
 public:
  virtual ~WindowSet() = default;

  /// Makes the window and shows it; one that is open already comes forward. `model` is the view
  /// model and outlives the window.
  virtual void open(Scene scene, QObject& model) = 0;
  virtual void close(Scene scene) = 0;
  virtual bool isOpen(Scene scene) const = 0;

  /// Holds for windows that are open, too.
  virtual void setLook(const WindowLook& look) = 0;

  /// The display's identifiers of the windows that are open.
  virtual std::vector<quintptr> identifiers() const = 0;
};

/// The one symbol of the shared object. `symbolsFolder` holds the drawings; `onClosed` is called
/// when a window has gone and all that it held is freed.
using MakeWindowSet = WindowSet*(const QString& symbolsFolder, std::function<void()> onClosed);
inline constexpr auto makeWindowSetName = "makeVemoWindowSet";

}  // namespace vemo
