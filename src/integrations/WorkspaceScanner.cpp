#include "integrations/WorkspaceScanner.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QByteArray>
#include <QFile>
#include <algorithm>
#include <array>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/SerialQueue.h"
#include "integrations/FileName.h"

namespace vemo {

namespace {

/// Path components, lower-cased, of what builds and tools make or keep.
constexpr std::array<std::string_view, 14> ignoredDirectories{
    ".git", "node_modules", "deriveddata", ".build", "build", "dist",    ".next",
    "venv", ".venv",        "target",      "pods",   ".idea", ".vscode", "tmp",
};

/// Extensions of folders that desktops show as one document.
constexpr std::array<std::string_view, 22> packageExtensions{
    "app",         "appex",         "bundle",    "kext",        "logarchive",     "mdimporter",
    "mpkg",        "photoslibrary", "pkg",       "playground",  "playgroundbook", "prefpane",
    "qlgenerator", "rtfd",          "saver",     "scptd",       "sparsebundle",   "workflow",
    "xcarchive",   "xcdatamodeld",  "xcodeproj", "xcworkspace",
};

bool isOneOf(std::span<const std::string_view> names, std::string_view name) {
  return std::ranges::find(names, foldedName(name)) != names.end();
}

bool isIgnored(std::string_view component) {
  constexpr std::size_t longest =
      std::ranges::max(ignoredDirectories, {}, [](auto name) { return name.size(); }).size();
  return component.size() <= longest && isOneOf(ignoredDirectories, component);
}

bool isPackage(std::string_view folderName) {
  const auto extension = partsOf(folderName).extension;
  return !extension.empty() && isOneOf(packageExtensions, extension);
}

bool hasIgnoredComponent(std::string_view path) {
  while (!path.empty()) {
    const auto end = std::min(path.find('/'), path.size());
    if (isIgnored(path.substr(0, end))) return true;
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return false;
}

bool isUtf8(std::string_view name) {
  return isAscii(name) ||
         QByteArrayView(name.data(), static_cast<qsizetype>(name.size())).isValidUtf8();
}

struct CloseFolder {
  void operator()(DIR* folder) const { ::closedir(folder); }
};
using OpenFolder = std::unique_ptr<DIR, CloseFolder>;

/// Null when it can't be opened. Never waits for a pipe or a device that took the folder's place.
OpenFolder openFolder(const std::string& path, int moreFlags) {
  const int descriptor =
      ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC | moreFlags);
  if (descriptor == -1) return nullptr;
  DIR* folder = ::fdopendir(descriptor);
  if (!folder) ::close(descriptor);
  return OpenFolder(folder);
}

enum class Kind { File, Folder, Other };

Kind kindOf(const dirent& entry, int folder) {
  if (entry.d_type == DT_REG) return Kind::File;
  if (entry.d_type == DT_DIR) return Kind::Folder;
  if (entry.d_type != DT_UNKNOWN) return Kind::Other;
  // Some file systems tell the kind only by the longer way.
  struct stat status{};
  if (::fstatat(folder, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) != 0) return Kind::Other;
  if (S_ISREG(status.st_mode)) return Kind::File;
  return S_ISDIR(status.st_mode) ? Kind::Folder : Kind::Other;
}

/// Some folders with the names of their files, on their way into the index.
struct Batch {
  struct Folder {
    std::string path;
    std::size_t namesEnd;
  };
  std::vector<Folder> folders;
  std::string names;  ///< each with a NUL behind it

  void addTo(WorkspaceFiles& files) const {
    std::size_t start = 0;
    for (const auto& [path, namesEnd] : folders) {
      const auto number = files.addFolder(path);
      while (start < namesEnd) {
        const std::string_view name(names.c_str() + start);
        files.addFile(number, name);
        start += name.size() + 1;
      }
    }
  }
};

constexpr std::size_t batchSize = 64 * 1024;

/// A walk with a list of the folders still to read, so that no depth of folders costs the stack or
/// open descriptors. A path too long for the system to open ends the walk there. The walk is mostly
/// waiting for the system, so a thread of its own takes the names into the index meanwhile.
class Walk {
 public:
  Walk(const QString& root, std::stop_token stop) : m_files(root), m_stop(std::move(stop)) {
    m_root = QFile::encodeName(root).toStdString();
    while (m_root.ends_with('/')) m_root.pop_back();
  }

  WorkspaceFiles run() {
    if (!hasIgnoredComponent(m_root)) {
      read(m_root, openFolder(m_root + '/', 0));
      while (!m_unread.empty() && !m_stop.stop_requested()) {
        const std::string path = std::move(m_unread.back());
        m_unread.pop_back();
        read(path, openFolder(path, O_NOFOLLOW));
        if (m_batch.names.size() >= batchSize) handOver();
      }
      handOver();
      m_indexing.waitUntilIdle();
    }
    m_files.finish();
    return std::move(m_files);
  }

 private:
  void read(const std::string& path, const OpenFolder& folder) {
    if (!folder) return;
    const auto firstFound = static_cast<std::ptrdiff_t>(m_unread.size());
    const std::size_t namesBefore = m_batch.names.size();
    while (const dirent* entry = ::readdir(folder.get())) {
      const std::string_view name = entry->d_name;
      if (name.starts_with('.') || isIgnored(name) || !isUtf8(name)) continue;
      switch (kindOf(*entry, ::dirfd(folder.get()))) {
        case Kind::File:
          m_batch.names += name;
          m_batch.names += '\0';
          break;
        case Kind::Folder:
          if (!isPackage(name)) m_unread.push_back(path + '/' + std::string(name));
          break;
        case Kind::Other:
          break;
      }
    }
    if (m_batch.names.size() > namesBefore) m_batch.folders.push_back({path, m_batch.names.size()});
    std::reverse(m_unread.begin() + firstFound, m_unread.end());
  }

  void handOver() {
    m_indexing.post([this, batch = std::exchange(m_batch, {})] { batch.addTo(m_files); });
    m_batch.names.reserve(2 * batchSize);
  }

  std::string m_root;  ///< without a slash at the end
  WorkspaceFiles m_files;
  std::stop_token m_stop;
  std::vector<std::string> m_unread;  ///< the next one last
  Batch m_batch;
  SerialQueue m_indexing{"vemo.index"};  ///< ends first: it uses the files
};

}  // namespace

WorkspaceFiles scanWorkspace(const QString& root, std::stop_token stop) {
  if (root.isEmpty()) return WorkspaceFiles();
  return Walk(root, std::move(stop)).run();
}

}  // namespace vemo
