// The desktop entries of the installed applications, and which of them a window belongs to.
//
// Main thread only; owned by X11FocusedApplication. The entries are read at the first question and
// again when one of their folders has changed; between questions nothing is watched. Files that
// can't be read or make no sense are passed over.
#pragma once

#include <QDateTime>
#include <QHash>
#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

namespace vemo {

struct DesktopEntry {
  QString identifier;  ///< the file's name without ".desktop"
  QString name;        ///< in the user's language
  QString startupWindowClass;
};

class DesktopEntries {
 public:
  /// The folders to look in, the most important first.
  explicit DesktopEntries(QStringList folders);
  /// The "applications" folders of XDG_DATA_HOME and XDG_DATA_DIRS.
  static QStringList standardFolders();

  /// The entry whose identifier is this one.
  std::optional<DesktopEntry> find(const QString& identifier);
  /// The entry that a window with these names belongs to: by its StartupWMClass, its file's name,
  /// the last part of that ("mousepad" of "org.xfce.mousepad"), or its name for people.
  std::optional<DesktopEntry> findForWindow(const QString& className, const QString& instanceName);

 private:
  void refresh();
  void read(const QString& folder);
  void add(const DesktopEntry& entry);

  const QStringList m_folders;
  std::vector<QDateTime> m_folderTimes;
  QHash<QString, DesktopEntry> m_byIdentifier;
  QHash<QString, QString> m_byWindowClass;  ///< lower-case StartupWMClass to identifier
  QHash<QString, QString> m_byFileName;     ///< lower-case identifier to identifier
  QHash<QString, QString> m_byLastPart;     ///< lower-case last part to identifier
  QHash<QString, QString> m_byName;         ///< lower-case name to identifier
};

}  // namespace vemo
