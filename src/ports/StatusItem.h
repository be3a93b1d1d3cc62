// The program's item in the desktop's panel: an image, and a menu that opens from it.
//
// Main thread only. Nothing here fails: without a panel that shows such items it waits for one, and
// hasHost() says that nobody sees it meanwhile.
#pragma once

#include <QString>
#include <functional>
#include <vector>

namespace vemo {

struct MenuItem {
  enum class Kind { Line, Button, Toggle, Divider, Submenu };

  Kind kind = Kind::Divider;
  QString identifier = {};  ///< unique in the menu, and the same while the item means the same
  QString text = {};
  bool isEnabled = true;
  bool isChecked = false;  ///< of Toggle
  QString shortcut = {};   ///< such as "Ctrl+Shift+C"; shown, and in force where the menu is open
  std::function<void()> action = {};
  std::vector<MenuItem> children = {};  ///< of Submenu
};

class StatusItem {
 public:
  virtual ~StatusItem() = default;

  virtual void setMenu(std::vector<MenuItem> items) = 0;

  /// A symbol's name, or "vemo_icon" for the program's own mark.
  virtual void setImage(const QString& name) = 0;

  virtual bool hasHost() const = 0;

  /// Called when hasHost() reads differently, and once when the first answer is there.
  std::function<void()> onHostKnown;

  /// Called when the item itself is pressed rather than its menu.
  std::function<void()> onActivated;
};

}  // namespace vemo
