#include "integrations/EditorProjects.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <QFile>
#include <QUrl>
#include <compare>
#include <functional>
#include <map>
#include <memory>

#include "base/Json.h"
#include "base/Text.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

/// Far more than any editor writes into one.
constexpr qint64 maximumFileSize = 1'000'000;

struct Modification {
  std::int64_t seconds;
  std::int64_t nanoseconds;
  auto operator<=>(const Modification&) const = default;
};

/// Files by date, the newest first; of equally old ones, in the order in which they came.
using Candidates = std::multimap<Modification, QByteArray, std::greater<>>;

struct CloseFolder {
  void operator()(DIR* folder) const { ::closedir(folder); }
};

/// The `workspace.json` of each folder in the storage folder, in the file system's order.
void collect(const QString& storageFolder, Candidates& candidates) {
  const QByteArray path = QFile::encodeName(storageFolder);
  const std::unique_ptr<DIR, CloseFolder> folder(::opendir(path.constData()));
  if (!folder) return;
  while (const dirent* entry = ::readdir(folder.get())) {
    const QByteArray name = entry->d_name;
    if (name == "." || name == "..") continue;
    const QByteArray file = name + "/workspace.json";
    struct stat status{};
    // The date is that of a link itself, but the file that it points to must exist.
    if (::fstatat(::dirfd(folder.get()), file.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0)
      continue;
    if (S_ISLNK(status.st_mode) && ::faccessat(::dirfd(folder.get()), file.constData(), F_OK, 0))
      continue;
    candidates.emplace(Modification{status.st_mtim.tv_sec, status.st_mtim.tv_nsec},
                       path + '/' + file);
  }
}

/// The bytes of an ordinary file; nothing for what isn't one, can't be read or is far too long.
std::optional<QByteArray> contentOf(const QByteArray& path) {
  // A pipe in the file's place must not hold up the thread.
  const int descriptor = ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (descriptor == -1) return std::nullopt;
  QFile file;
  if (!file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
    return std::nullopt;
  struct stat status{};
  if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  QByteArray content = file.read(maximumFileSize + 1);
  if (file.error() != QFileDevice::NoError || content.size() > maximumFileSize) return std::nullopt;
  return content;
}

/// The path of a URL with its escapes decoded; nothing when that is no text or has a NUL in it.
std::optional<QString> decodedPathOf(const QUrl& url) {
  const QByteArray path = QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
  if (!QByteArrayView(path).isValidUtf8() || path.contains('\0')) return std::nullopt;
  QString text = QString::fromUtf8(path);
  while (text.size() > 1 && text.endsWith(u'/')) text.chop(1);
  return text;
}

}  // namespace

QStringList editorStorageFolders(const QString& configFolder, const QString& bundleIdentifier,
                                 const QString& appName) {
  if (configFolder.isEmpty()) return {};
  const auto folderOf = [&configFolder](const QString& editor) {
    return configFolder + u'/' + editor + u"/User/workspaceStorage"_s;
  };
  const QString identifier = lowerCased(bundleIdentifier);
  const QString name = lowerCased(appName);
  const auto isNamed = [&](const QString& word) {
    return identifier.contains(word) || name.contains(word);
  };
  if (isNamed(u"cursor"_s)) return {folderOf(u"Cursor"_s)};
  if (isNamed(u"antigravity"_s)) return {folderOf(u"Antigravity"_s)};
  if (isNamed(u"code"_s)) return {folderOf(u"Code"_s)};
  return {folderOf(u"Code"_s), folderOf(u"Cursor"_s), folderOf(u"Antigravity"_s)};
}

std::optional<QString> lastOpenedProject(const QStringList& storageFolders) {
  Candidates candidates;
  for (const QString& folder : storageFolders) collect(folder, candidates);
  // Most often the newest is the one, and no other has to be read.
  for (const auto& [modification, file] : candidates) {
    const auto content = contentOf(file);
    if (!content) continue;
    if (auto project = projectFolderIn(*content)) return project;
  }
  return std::nullopt;
}

std::optional<QString> projectFolderIn(const QByteArray& workspaceJson) {
  const auto workspace = parseJsonObject(workspaceJson);
  if (!workspace) return std::nullopt;
  const auto folder = stringIn(*workspace, u"folder");
  if (!folder) return std::nullopt;
  const QUrl url(*folder, QUrl::TolerantMode);
  if (!url.isValid() || url.scheme() != u"file") return std::nullopt;
  return decodedPathOf(url);
}

}  // namespace vemo
