// Finds the object that has the keyboard focus among all objects of the window in front, for when
// the focus was given before anybody listened.
//
// Asks one object at a time and gives up after as many as a large dialogue has. Destroying it ends
// it. On the GioThread.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/atspi/AtspiObjects.h"

namespace vemo {

class AtspiFocusSearch {
 public:
  using Found = std::function<void(const AtspiObject&)>;

  /// `found` comes once, or never when nothing is found; it may destroy this object.
  AtspiFocusSearch(GioBus& bus, Found found);
  ~AtspiFocusSearch();

 private:
  struct Progress;

  const std::shared_ptr<Progress> m_progress;
};

}  // namespace vemo
