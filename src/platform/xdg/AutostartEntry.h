// The login item as an XDG autostart entry of the user:
// XDG_CONFIG_HOME/autostart/brelmox.Vemo.desktop.
//
// An entry of the same name that the system brings is overridden by the user's: registering writes
// an entry that starts this program, unregistering one that is hidden where the system has one, and
// removes the user's where it hasn't. What the user or a settings program has changed in an entry
// is replaced. An entry counts as registered unless it is hidden, or switched off as desktops do.
// Source of the rules: the Desktop Application Autostart Specification, version 0.5.
#pragma once

#include <QStringList>

#include "ports/LoginItem.h"

namespace vemo {

/// What the program is started with at login, and by nothing else.
inline constexpr auto launchedAtLoginArgument = u"--launched-at-login";

class AutostartEntry : public LoginItem {
 public:
  /// `program` is the path that is started; `userFolder` and `systemFolders` hold the entries.
  AutostartEntry(QString program, QString userFolder, QStringList systemFolders);

  /// The folders named above, from XDG_CONFIG_HOME and XDG_CONFIG_DIRS.
  static AutostartEntry standard(QString program);

  std::expected<void, QString> registerItem() override;
  std::expected<void, QString> unregisterItem() override;
  bool isRegistered() const override;

 private:
  bool comesWithTheSystem() const;

  const QString m_program;
  const QString m_userEntry;
  const QStringList m_systemFolders;
};

}  // namespace vemo
