#include "storage/PrivateFolder.h"

#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace vemo {

bool makePrivateFolder(const QString& path) {
  const QFileInfo folder(path);
  if (folder.isDir()) return true;
  const QString parent = folder.absolutePath();
  if (parent == folder.absoluteFilePath() || !makePrivateFolder(parent)) return false;
  ::mkdir(QFile::encodeName(folder.absoluteFilePath()).constData(), 0700);
  return QFileInfo(path).isDir();
}

}  // namespace vemo
