#include "platform/updater/FolderLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <QFile>
#include <cerrno>

namespace vemo {

std::shared_ptr<FolderLock> FolderLock::lock(const QString& folder, int operation) {
  const int descriptor = ::open(QFile::encodeName(folder).constData(),
                                O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (descriptor < 0) return nullptr;
  std::shared_ptr<FolderLock> lock(new FolderLock(descriptor));
  while (::flock(descriptor, operation) != 0) {
    if (errno == EWOULDBLOCK) return nullptr;
    if (errno != EINTR) break;
  }
  return lock;
}

std::shared_ptr<FolderLock> FolderLock::take(const QString& folder, Kind kind) {
  return lock(folder, (kind == Kind::Shared ? LOCK_SH : LOCK_EX) | LOCK_NB);
}

std::shared_ptr<FolderLock> FolderLock::await(const QString& folder) {
  return lock(folder, LOCK_EX);
}

void FolderLock::share() {
  ::flock(m_descriptor, LOCK_SH | LOCK_NB);
}

FolderLock::~FolderLock() {
  ::close(m_descriptor);
}

}  // namespace vemo
