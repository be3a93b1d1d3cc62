// Follows the keyboard focus of all programs over the accessibility bus, and tells what has it.
//
// Programs report each change of the focus; in between nothing is asked and nothing wakes up. A bus
// that isn't there or has been lost is looked for once, and again at each question. On the
// GioThread.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "platform/atspi/AtspiFocusSearch.h"
#include "platform/atspi/AtspiObjects.h"

namespace vemo {

class GioBus;
class GioThread;

class AtspiFocus {
 public:
  explicit AtspiFocus(GioThread& thread);
  ~AtspiFocus();

  /// Looks for what has the focus now, in case its program hasn't reported that.
  void search();

  enum class Finality { SoFar, Final };
  using PasswordAnswer = std::function<void(bool isPassword, Finality finality)>;
  /// Whether a password field in the window in front has the focus, false when it can't be told.
  /// A field that says that it has the focus is one so far, until its window has answered. No final
  /// answer comes when the programs asked give none, or this object goes first.
  void askForPassword(PasswordAnswer answer);

 private:
  void findBus();
  void connectTo(const std::string& address);
  void loseBus();
  void listen();
  void requestEvents();
  void handleStateChange(AtspiObject object, bool isFocused);
  void askForWindowInFront(const AtspiObject& object, int depth, PasswordAnswer answer);

  GioThread& m_thread;
  std::unique_ptr<GioBus> m_sessionBus;  ///< while it is asked for the accessibility bus
  std::unique_ptr<GioBus> m_bus;
  std::optional<AtspiObjects> m_objects;  ///< once m_bus is open
  std::unique_ptr<AtspiFocusSearch> m_search;
  std::optional<AtspiObject> m_focused;
};

}  // namespace vemo
