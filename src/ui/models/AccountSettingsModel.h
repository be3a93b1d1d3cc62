// The account tab of the settings window: profile card, sign-in and sign-out, and the deletion of
// the account.
//
// Main thread only; owned by the settings window's model. What the user has typed into the names
// stays until it is saved or the session ends; a save that fails leaves it as it is. The
// deletion goes on when the window closes. Once the service has deleted the account, everything
// that this machine holds of the user goes, unless the session has ended meanwhile: then what is
// there belongs to somebody else.
#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <optional>

#include "base/Notifier.h"
#include "base/TaskScope.h"

namespace vemo {

class AppState;
class AuthManager;
class Clipboard;

class AccountSettingsModel : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool isSignedIn READ isSignedIn NOTIFY changed)
  Q_PROPERTY(bool isSigningIn READ isSigningIn NOTIFY changed)
  Q_PROPERTY(QString email READ email NOTIFY changed)
  Q_PROPERTY(QString initials READ initials NOTIFY changed)
  Q_PROPERTY(QString errorText READ errorText NOTIFY changed)
  Q_PROPERTY(QString firstName READ firstName WRITE setFirstName NOTIFY changed)
  Q_PROPERTY(QString lastName READ lastName WRITE setLastName NOTIFY changed)
  Q_PROPERTY(bool isSaving READ isSaving NOTIFY changed)
  Q_PROPERTY(bool canSave READ canSave NOTIFY changed)
  Q_PROPERTY(bool isRefreshing READ isRefreshing NOTIFY changed)
  Q_PROPERTY(bool isDeletingAccount READ isDeletingAccount NOTIFY changed)
  Q_PROPERTY(QString deleteLabel READ deleteLabel NOTIFY changed)
  Q_PROPERTY(bool isDeleteDialogOpen READ isDeleteDialogOpen NOTIFY changed)
  Q_PROPERTY(bool isAlertOpen READ isAlertOpen NOTIFY changed)
  Q_PROPERTY(QString alertTitle READ alertTitle NOTIFY changed)
  Q_PROPERTY(QString alertText READ alertText NOTIFY changed)

 public:
  struct With {
    MainThread& mainThread;
    AppState& appState;
    AuthManager& auth;
    Clipboard& clipboard;
    std::function<void(const QString&)> showToast;
  };

  explicit AccountSettingsModel(With with);

  bool isSignedIn() const;
  bool isSigningIn() const;
  QString email() const;
  /// Of the name, else of the address: at most two letters.
  QString initials() const;
  /// Why the last sign-in or session ended as it did; empty when there's nothing to say.
  QString errorText() const;

  const QString& firstName() const { return m_firstName; }
  const QString& lastName() const { return m_lastName; }
  void setFirstName(const QString& name);
  void setLastName(const QString& name);
  bool isSaving() const { return m_isSaving; }
  /// There is a name, it is another than the account's, and none is being saved.
  bool canSave() const;
  bool isRefreshing() const { return m_isRefreshing; }

  bool isDeletingAccount() const { return m_isDeletingAccount; }
  QString deleteLabel() const;
  bool isDeleteDialogOpen() const { return m_isDeleteDialogOpen; }
  bool isAlertOpen() const { return m_alert.has_value(); }
  QString alertTitle() const { return m_alert ? m_alert->title : QString(); }
  QString alertText() const { return m_alert ? m_alert->text : QString(); }

  Q_INVOKABLE void copyEmail();
  Q_INVOKABLE void save();
  Q_INVOKABLE void refreshProfile();
  Q_INVOKABLE void signIn();
  Q_INVOKABLE void cancelSignIn();
  Q_INVOKABLE void signOut();
  Q_INVOKABLE void askToDelete();
  Q_INVOKABLE void cancelDelete();
  Q_INVOKABLE void confirmDelete();
  Q_INVOKABLE void dismissAlert();

  /// Without a decision of the user.
  void closeDialogs();

  Q_SIGNAL void changed();
  /// The account is gone, and the user knows.
  Q_SIGNAL void closeRequested();

 private:
  enum class AfterAlert { KeepWindow, CloseWindow };
  struct Alert {
    QString title;
    QString text;
    AfterAlert after;
  };

  void followAccount();
  void takeNames(const QString& displayName);
  QString typedName() const;
  Task<> saveName(QString name, std::stop_token stop);
  Task<> readProfile(std::stop_token stop);
  Task<> deleteAccount(std::stop_token stop);

  With m_with;
  QString m_accountName;  ///< what the fields were last filled from
  QString m_firstName;
  QString m_lastName;
  bool m_isSaving = false;
  bool m_isRefreshing = false;
  bool m_isDeletingAccount = false;
  bool m_hasSessionEnded = false;  ///< since the deletion began
  bool m_isDeleteDialogOpen = false;
  std::optional<Alert> m_alert;
  Observation m_observation;
  TaskScope m_tasks;
};

}  // namespace vemo
