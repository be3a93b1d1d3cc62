// The main window: the sign-in card for nobody, and for somebody signed in the four tabs.
//
// Main thread only; one, made in the composition root, whether a window is open or not. It makes
// the models of the tabs and of the sheets.
#pragma once

#include <QObject>
#include <QString>
#include <QVariantList>
#include <functional>
#include <vector>

#include "base/Notifier.h"
#include "ports/StatusItem.h"
#include "ui/models/DictionaryModel.h"
#include "ui/models/HomeModel.h"
#include "ui/models/NavigationTab.h"
#include "ui/models/ShortcutsModel.h"
#include "ui/models/SlackConnectionModel.h"
#include "ui/models/StatsModel.h"
#include "ui/models/ToastModel.h"

namespace vemo {

class AppState;
class AuthManager;
class DictionaryList;
class PermissionsManager;
class Settings;
class ShortcutList;
class SlackManager;
class Telemetry;
struct DeploymentConfiguration;

class MainWindowModel : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool isSignedIn READ isSignedIn NOTIFY changed)
  Q_PROPERTY(bool isSigningIn READ isSigningIn NOTIFY changed)
  Q_PROPERTY(QString signInLabel READ signInLabel NOTIFY changed)
  /// Why the last sign-in or session ended as it did; empty when there's nothing to say.
  Q_PROPERTY(QString errorText READ errorText NOTIFY changed)
  /// In Markdown.
  Q_PROPERTY(QString agreement READ agreement CONSTANT)
  /// Rows with `name`, `label` and `symbol`.
  Q_PROPERTY(QVariantList tabs READ tabs CONSTANT)
  /// The name of the tab that is shown.
  Q_PROPERTY(QString tab READ tab NOTIFY tabChanged)
  Q_PROPERTY(QObject* home READ home CONSTANT)
  Q_PROPERTY(QObject* stats READ stats CONSTANT)
  Q_PROPERTY(QObject* dictionary READ dictionary CONSTANT)
  Q_PROPERTY(QObject* shortcuts READ shortcuts CONSTANT)
  Q_PROPERTY(QObject* slack READ slack CONSTANT)
  Q_PROPERTY(QObject* toast READ toast CONSTANT)
  /// The card of a downloaded update; null where there can't be one.
  Q_PROPERTY(QObject* update READ update CONSTANT)

 public:
  /// What it works with; all of it outlives the model.
  struct With {
    MainThread& mainThread;
    Clock& clock;
    Settings& settings;
    Telemetry& telemetry;
    AppState& appState;
    AuthManager& auth;
    PermissionsManager& permissions;
    SlackManager& slack;
    DictionaryList& dictionary;
    ShortcutList& shortcuts;
    const DeploymentConfiguration& configuration;
    std::function<void()> openSettings;  ///< brings up the settings window
    /// What the desktop's panel offers, for desktops whose panel shows no such menus.
    std::function<std::vector<MenuItem>()> menu = [] { return std::vector<MenuItem>(); };
    QObject* update = nullptr;  ///< the card of a downloaded update
    QLocale locale = QLocale::system();
  };

  explicit MainWindowModel(With with);

  bool isSignedIn() const;
  bool isSigningIn() const;
  QString signInLabel() const;
  QString errorText() const;
  QString agreement() const;
  QVariantList tabs() const;
  QString tab() const;
  HomeModel* home() { return &m_home; }
  StatsModel* stats() { return &m_stats; }
  DictionaryModel* dictionary() { return &m_dictionary; }
  ShortcutsModel* shortcuts() { return &m_shortcuts; }
  SlackConnectionModel* slack() { return &m_slack; }
  ToastModel* toast() { return &m_toast; }
  QObject* update() const { return m_with.update; }

  Q_INVOKABLE void signIn();
  Q_INVOKABLE void cancelSignIn();
  /// A name that no tab has changes nothing.
  Q_INVOKABLE void selectTab(const QString& name);
  Q_INVOKABLE void openSettings();
  /// As menuRows() lists them.
  Q_INVOKABLE QVariantList menu() const;
  Q_INVOKABLE void pressMenuRow(const QString& identifier);

  /// The window has come up: the account and the user's lists are read.
  Q_INVOKABLE void windowShown();
  /// The window has gone, and its sheets with it.
  Q_INVOKABLE void windowHidden();

  bool hasOpenSheet() const;
  /// Dismisses every sheet at once; nothing that was typed is saved.
  void closeSheets();

  Q_SIGNAL void changed();
  Q_SIGNAL void tabChanged();

 private:
  void accountChanged();

  With m_with;
  NavigationTab m_tab = NavigationTab::Home;
  ToastModel m_toast;
  HomeModel m_home;
  StatsModel m_stats;
  DictionaryModel m_dictionary;
  ShortcutsModel m_shortcuts;
  SlackConnectionModel m_slack;
  Observation m_observation;
};

}  // namespace vemo
