// The windows that the user opens and closes. Main thread only.
//
// There is at most one of each. What they show is made by the program, before they open.
#pragma once

namespace vemo {

enum class Scene { Main, Settings };

class Scenes {
 public:
  virtual ~Scenes() = default;

  /// Opens the window, or brings it forward where it is open, and makes this program the active
  /// one.
  virtual void open(Scene scene) = 0;

  /// As the user's closing; nothing for a window that isn't open.
  virtual void close(Scene scene) = 0;

  virtual bool isOpen(Scene scene) const = 0;
};

}  // namespace vemo
