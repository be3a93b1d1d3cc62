#include "platform/qt/QtInstallLocation.h"

#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

/// Of the disk itself, or of the disk that a partition is on.
bool isRemovableDevice(const QString& device, const QString& blockDevices) {
  const QString folder =
      QFileInfo(blockDevices + u'/' + QFileInfo(device).fileName()).canonicalFilePath();
  if (folder.isEmpty()) return false;
  for (const QString& attributes : {folder, QFileInfo(folder).path()}) {
    QFile file(attributes + u"/removable"_s);
    if (file.open(QIODevice::ReadOnly)) return file.readAll().trimmed() == "1";
  }
  return false;
}

}  // namespace

bool isRemovableMedium(const QString& root, const QString& device, const QString& blockDevices) {
  if (root.startsWith(u"/media/") || root.startsWith(u"/run/media/")) return true;
  return device.startsWith(u"/dev/") && isRemovableDevice(device, blockDevices);
}

InstallLocation readInstallLocation(const QString& program) {
  const QStorageInfo medium(QFileInfo(program).path());
  return {.path = program,
          .isOnRemovableMedium =
              isRemovableMedium(medium.rootPath(), QString::fromLocal8Bit(medium.device()))};
}

}  // namespace vemo
