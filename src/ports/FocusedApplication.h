// Which application is in front, and which others run.
//
// Main thread only. Reading is a few round trips to the window server and never blocks for longer
// than that; a server that has gone reads as no application at all.
#pragma once

#include <QString>
#include <optional>
#include <vector>

namespace vemo {

struct RunningApplication {
  /// Stable identifier, such as the name of the desktop entry without its ending
  /// ("org.xfce.mousepad"); absent when the application tells none.
  std::optional<QString> identifier;
  /// Name for people, in the user's language; absent when there is none.
  std::optional<QString> name;
  /// An ordinary application with windows of its own, not a panel, dock or background helper.
  bool isRegular = true;
  bool isActive = false;
  /// This very program.
  bool isSelf = false;

  friend bool operator==(const RunningApplication&, const RunningApplication&) = default;
};

class FocusedApplication {
 public:
  virtual ~FocusedApplication() = default;

  /// The application whose window is active, if any.
  virtual std::optional<RunningApplication> frontmost() const = 0;

  /// The applications that have windows, in the desktop's order.
  virtual std::vector<RunningApplication> running() const = 0;
};

}  // namespace vemo
