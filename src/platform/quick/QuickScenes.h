// The windows, in a shared object of their own that is loaded when the first of them opens.
//
// Until then the program has nothing of Qt Quick in memory; when the last window has closed, what
// the windows took goes back to the system, but for the shared object itself. Main thread only. A
// shared object that can't be loaded is told once, on the standard error.
#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <memory>

#include "platform/quick/WindowSet.h"
#include "ports/ApplicationWindows.h"
#include "ports/Scenes.h"

namespace vemo {

class QuickScenes : public Scenes {
 public:
  struct Places {
    QString sharedObject;   ///< vemo-windows.so
    QString symbolsFolder;  ///< NAME.svg for each symbol
  };

  explicit QuickScenes(Places places);
  ~QuickScenes() override;

  /// Gives the view model of a window that is about to open. The model outlives this object. Set
  /// before the first opening.
  std::function<QObject&(Scene)> modelOf;

  /// Keeps a window, by the display's identifier, to the policy.
  std::function<void(quintptr, ActivationPolicy)> applyPolicy;

  /// Called whenever a window was opened by the user's wish or has closed.
  std::function<void()> onChanged;

  /// Loads the shared object, where that hasn't been done. False where it can't be.
  bool load();

  void open(Scene scene) override;
  void close(Scene scene) override;
  bool isOpen(Scene scene) const override;

  /// Closes all windows and gives their models free, at once.
  void closeAll() { m_windows.reset(); }

  void setLook(const WindowLook& look);
  void setActivationPolicy(ActivationPolicy policy);

 private:
  void applyPolicyToAll() const;
  void freed();

  const Places m_places;
  WindowLook m_look;
  ActivationPolicy m_policy = ActivationPolicy::Regular;
  bool m_isMissing = false;
  std::unique_ptr<WindowSet> m_windows;
};

}  // namespace vemo
