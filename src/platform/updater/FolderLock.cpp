#include "platform/updater/FolderLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <QFile>
#include <cerrno>

namespace vemo {

std::shared_ptr<FolderLock> FolderLock::take(const QString& folder, Kind kind) {
  const int descriptor = ::open(QFile::encodeName(folder).constData(),
                                O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (descriptor < 0) return nullptr;
  std::shared_ptr<FolderLock> lock(new FolderLock(descriptor));
  const int operation = kind == Kind::Shared ? LOCK_SH : LOCK_EX;
  if (::flock(descriptor, operation | LOCK_NB) != 0 && errno == EWOULDBLOCK) return nullptr;
  return lock;
}

void FolderLock::share() {
  ::flock(m_descriptor, LOCK_SH | LOCK_NB);
}

FolderLock::~FolderLock() {
  ::close(m_descriptor);
}

}  // namespace vemo
