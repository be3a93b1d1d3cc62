#include "app/Foundation.h"

#include <QFileInfo>

#include "storage/PrivateFolder.h"

namespace vemo {

QString crashFileInItsFolder() {
  const QString file = places::crashFile();
  if (!file.isEmpty()) makePrivateFolder(QFileInfo(file).path());
  return file;
}

}  // namespace vemo
