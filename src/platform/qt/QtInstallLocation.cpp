#include "platform/qt/QtInstallLocation.h"

#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

/// Of the disk itself, or of the disk that a partition is on.
bool isRemovable(const QString& device) {
  const QString folder =
      QFileInfo(u"/sys/class/block/"_s + QFileInfo(device).fileName()).canonicalFilePath();
  for (const QString& attributes : {folder, QFileInfo(folder).path()}) {
    QFile file(attributes + u"/removable"_s);
    if (file.open(QIODevice::ReadOnly)) return file.readAll().trimmed() == "1";
  }
  return false;
}

}  // namespace

InstallLocation readInstallLocation(const QString& program) {
  const QStorageInfo medium(QFileInfo(program).path());
  const QString root = medium.rootPath();
  const QString device = QString::fromLocal8Bit(medium.device());
  const bool isPluggedIn = root.startsWith(u"/media/") || root.startsWith(u"/run/media/");
  const bool isOnRemovableMedium =
      isPluggedIn || (device.startsWith(u"/dev/") && isRemovable(device));
  return {.path = program, .isOnRemovableMedium = isOnRemovableMedium};
}

}  // namespace vemo
