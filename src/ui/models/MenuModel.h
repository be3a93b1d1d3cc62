// The menu of the program's item in the desktop's panel: which lines, in which order, and what each
// does; and the item's image.
//
// Main thread only; one, made in the composition root. `changed` tells that items() or
// statusImage() may read differently.
#pragma once

#include <QCoreApplication>
#include <QString>
#include <functional>
#include <optional>
#include <vector>

#include "base/Notifier.h"
#include "ports/StatusItem.h"

namespace vemo {

class AppState;
class AuthManager;
class PermissionsManager;
class Scenes;
class Settings;

/// How updates stand, as far as the menu shows them.
struct MenuUpdates {
  bool isConfigured = false;
  bool canCheckForUpdates = false;
  bool canRestartNow = false;
  std::optional<QString> readyVersion = {};
  std::optional<QString> pendingVersion = {};
};

class MenuModel {
  Q_DECLARE_TR_FUNCTIONS(MenuModel)

 public:
  /// All of it outlives the model. A function that is called for what the menu doesn't offer may be
  /// left out.
  struct With {
    Settings& settings;
    AppState& appState;
    AuthManager& auth;
    PermissionsManager& permissions;
    Scenes& scenes;
    std::function<MenuUpdates()> updates;
    std::function<void()> restartToUpdate;
    std::function<void()> checkForUpdates;
    std::function<void()> quitClosingSheets;
  };

  explicit MenuModel(With with);

  std::vector<MenuItem> items() const;

  /// A symbol's name, or "vemo_icon".
  QString statusImage() const;

  /// To be called when updates stand differently.
  void updatesChanged() { changed.notify(); }

  Notifier<> changed;

 private:
  void addReadyUpdate(std::vector<MenuItem>& items, const MenuUpdates& updates) const;
  void addWindows(std::vector<MenuItem>& items) const;
  void addLastTranscript(std::vector<MenuItem>& items) const;
  void addLanguages(std::vector<MenuItem>& items) const;
  void addPermissions(std::vector<MenuItem>& items) const;
  void addAccount(std::vector<MenuItem>& items) const;
  void addUpdates(std::vector<MenuItem>& items, const MenuUpdates& updates) const;

  const With m_with;
  std::vector<Observation> m_observations;
};

}  // namespace vemo
