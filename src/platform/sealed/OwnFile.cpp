#include "platform/sealed/OwnFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

namespace vemo {

namespace {

using Outcome = std::expected<void, FileTrouble>;

class Descriptor {
 public:
  explicit Descriptor(int number) : m_number(number) {}
  ~Descriptor() {
    if (m_number >= 0) ::close(m_number);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int number() const { return m_number; }
  explicit operator bool() const { return m_number >= 0; }

 private:
  const int m_number;
};

FileTrouble troubleOf(int error) {
  if (error == ENOENT) return FileTrouble::Missing;
  return error == ELOOP || error == EISDIR || error == ENOTDIR ? FileTrouble::NotAPlainFile
                                                               : FileTrouble::Failed;
}

Outcome checkOwner(const struct stat& status, mode_t forbidden) {
  if (status.st_uid != ::geteuid()) return std::unexpected(FileTrouble::OtherOwner);
  if (status.st_mode & forbidden) return std::unexpected(FileTrouble::OpenToOthers);
  return {};
}

bool writeAll(int descriptor, const QByteArray& content) {
  qsizetype written = 0;
  while (written < content.size()) {
    const ssize_t count = ::write(descriptor, content.constData() + written,
                                  static_cast<std::size_t>(content.size() - written));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    written += count;
  }
  return ::fsync(descriptor) == 0;
}

QByteArray folderOf(const QByteArray& path) {
  return path.first(path.lastIndexOf('/'));
}

}  // namespace

const char* nameOf(FileTrouble trouble) {
  switch (trouble) {
    case FileTrouble::Missing:
      return "missing";
    case FileTrouble::NotAPlainFile:
      return "not a plain file";
    case FileTrouble::OtherOwner:
      return "of another owner";
    case FileTrouble::OpenToOthers:
      return "open to other users";
    case FileTrouble::TooLarge:
      return "too large";
    case FileTrouble::Damaged:
      return "damaged, or sealed elsewhere";
    case FileTrouble::Failed:
      break;
  }
  return "out of reach";
}

std::expected<QByteArray, FileTrouble> readOwnFile(const QByteArray& path, qsizetype largest) {
  // Without blocking: a pipe would wait for its other end.
  const Descriptor file(
      ::open(path.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
  if (!file) return std::unexpected(troubleOf(errno));
  struct stat status{};
  if (::fstat(file.number(), &status) != 0) return std::unexpected(FileTrouble::Failed);
  if (!S_ISREG(status.st_mode)) return std::unexpected(FileTrouble::NotAPlainFile);
  if (const auto own = checkOwner(status, 077); !own) return std::unexpected(own.error());

  QByteArray content(largest + 1, Qt::Uninitialized);
  qsizetype length = 0;
  while (length <= largest) {
    const ssize_t count = ::read(file.number(), content.data() + length,
                                 static_cast<std::size_t>(largest + 1 - length));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return std::unexpected(FileTrouble::Failed);
    if (count == 0) break;
    length += count;
  }
  if (length > largest) return std::unexpected(FileTrouble::TooLarge);
  content.truncate(length);
  return content;
}

Outcome replaceOwnFile(const QByteArray& path, const QByteArray& content) {
  const QByteArray unfinished = path + ".unfinished";
  ::unlink(unfinished.constData());
  const Descriptor file(
      ::open(unfinished.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!file) return std::unexpected(FileTrouble::Failed);
  const bool isWhole = ::fchmod(file.number(), 0600) == 0 && writeAll(file.number(), content);
  if (!isWhole || ::rename(unfinished.constData(), path.constData()) != 0) {
    ::unlink(unfinished.constData());
    return std::unexpected(FileTrouble::Failed);
  }
  const Descriptor folder(::open(folderOf(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder) ::fsync(folder.number());
  return {};
}

Outcome removeOwnFile(const QByteArray& path) {
  if (::unlink(path.constData()) == 0) return {};
  return std::unexpected(troubleOf(errno));
}

Outcome makeOwnFolder(const QByteArray& path) {
  struct stat status{};
  if (::stat(path.constData(), &status) != 0) {
    const QByteArray parent = path.lastIndexOf('/') > 0 ? folderOf(path) : QByteArray();
    struct stat above{};
    if (!parent.isEmpty() && ::stat(parent.constData(), &above) != 0) {
      if (const auto made = makeOwnFolder(parent); !made) return made;
    }
    // The mode at creation is subject to the umask, which may take the owner's rights away.
    const bool isMade = ::mkdir(path.constData(), 0700) == 0;
    if (isMade ? ::chmod(path.constData(), 0700) != 0 : errno != EEXIST)
      return std::unexpected(FileTrouble::Failed);
    if (::stat(path.constData(), &status) != 0) return std::unexpected(FileTrouble::Failed);
  }
  if (!S_ISDIR(status.st_mode)) return std::unexpected(FileTrouble::NotAPlainFile);
  return checkOwner(status, 022);
}

}  // namespace vemo
