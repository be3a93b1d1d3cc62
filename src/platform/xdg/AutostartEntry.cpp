#include "platform/xdg/AutostartEntry.h"

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <algorithm>
#include <utility>

#include "platform/xdg/DesktopEntryFile.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

const QString entryName = u"brelmox.Vemo.desktop"_s;

QString entryIn(const QString& folder) {
  return folder + u'/' + entryName;
}

QByteArray entry(const QString& program) {
  return u"[Desktop Entry]\n"
         u"Type=Application\n"
         u"Name=Vemo\n"
         u"Icon=brelmox.Vemo\n"
         u"Exec=%1 %2\n"
         u"X-GNOME-Autostart-enabled=true\n"_s
             .arg(quotedExecArgument(program), QString::fromUtf16(launchedAtLoginArgument))
             .toUtf8();
}

const QByteArray hiddenEntry =
    "[Desktop Entry]\n"
    "Type=Application\n"
    "Name=Vemo\n"
    "Hidden=true\n";

}  // namespace

AutostartEntry::AutostartEntry(QString program, QString userFolder, QStringList systemFolders)
    : m_program(std::move(program)),
      m_userEntry(entryIn(userFolder)),
      m_systemFolders(std::move(systemFolders)) {}

AutostartEntry AutostartEntry::standard(QString program) {
  QStringList folders = QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation);
  for (QString& folder : folders) folder += u"/autostart"_s;
  const QString ofUser = folders.isEmpty() ? QString() : folders.takeFirst();
  return {std::move(program), ofUser, folders};
}

std::expected<void, QString> AutostartEntry::registerItem() {
  return writeDesktopEntry(m_userEntry, entry(m_program));
}

std::expected<void, QString> AutostartEntry::unregisterItem() {
  if (comesWithTheSystem()) return writeDesktopEntry(m_userEntry, hiddenEntry);
  QFile file(m_userEntry);
  const QFileInfo information(m_userEntry);
  if (!information.exists() && !information.isSymLink()) return {};
  if (!file.remove()) return std::unexpected(file.errorString());
  return {};
}

bool AutostartEntry::comesWithTheSystem() const {
  return std::ranges::any_of(
      m_systemFolders, [](const QString& folder) { return QFileInfo::exists(entryIn(folder)); });
}

}  // namespace vemo
