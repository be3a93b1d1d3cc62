#include "integrations/WorkspaceScanner.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QByteArray>
#include <QFile>
#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

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

enum class Kind { File, Folder, Other };

/// A folder that is open for reading its entries. The kernel's entries are read as they come:
/// a DIR would ask more of the system for each folder than a small folder's entries take.
class OpenFolder {
 public:
  /// Never waits for a pipe or a device that took the folder's place.
  OpenFolder(const std::string& path, int moreFlags)
      : m_descriptor(
            ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC | moreFlags)) {}
  ~OpenFolder() {
    if (m_descriptor != -1) ::close(m_descriptor);
  }
  OpenFolder(const OpenFolder&) = delete;
  OpenFolder& operator=(const OpenFolder&) = delete;

  /// The next entries, one behind the other; none at the end, or when the folder can't be read.
  std::span<const char> read(std::span<char> buffer) const {
    const auto size = ::getdents64(m_descriptor, buffer.data(), buffer.size());
    return buffer.first(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
  }

  Kind kindOf(const dirent64& entry) const {
    if (entry.d_type == DT_REG) return Kind::File;
    if (entry.d_type == DT_DIR) return Kind::Folder;
    if (entry.d_type != DT_UNKNOWN) return Kind::Other;
    // Some file systems tell the kind only by the longer way.
    struct stat status{};
    if (::fstatat(m_descriptor, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) != 0)
      return Kind::Other;
    if (S_ISREG(status.st_mode)) return Kind::File;
    return S_ISDIR(status.st_mode) ? Kind::Folder : Kind::Other;
  }

 private:
  const int m_descriptor;
};

/// A walk with a list of the folders still to read, so that no depth of folders costs the stack or
/// open descriptors. A path too long for the system to open ends the walk there.
class Walk {
 public:
  Walk(const QString& root, std::stop_token stop) : m_files(root), m_stop(std::move(stop)) {
    m_root = QFile::encodeName(root).toStdString();
    while (m_root.ends_with('/')) m_root.pop_back();
  }

  WorkspaceFiles run() {
    if (!hasIgnoredComponent(m_root)) {
      read(m_root, OpenFolder(m_root + '/', 0));
      while (!m_unread.empty() && !m_stop.stop_requested()) {
        const std::string path = std::move(m_unread.back());
        m_unread.pop_back();
        read(path, OpenFolder(path, O_NOFOLLOW));
      }
    }
    m_files.finish();
    return std::move(m_files);
  }

 private:
  void read(const std::string& path, const OpenFolder& folder) {
    const auto firstFound = static_cast<std::ptrdiff_t>(m_unread.size());
    std::optional<std::uint32_t> number;
    for (auto entries = folder.read(m_buffer); !entries.empty(); entries = folder.read(m_buffer)) {
      while (!entries.empty()) {
        const auto& entry = *reinterpret_cast<const dirent64*>(entries.data());
        entries = entries.subspan(entry.d_reclen);
        const std::string_view name = entry.d_name;
        if (name.starts_with('.') || isIgnored(name) || !isUtf8(name)) continue;
        switch (folder.kindOf(entry)) {
          case Kind::File:
            if (!number) number = m_files.addFolder(path);
            m_files.addFile(*number, name);
            break;
          case Kind::Folder:
            if (!isPackage(name)) m_unread.push_back(path + '/' + std::string(name));
            break;
          case Kind::Other:
            break;
        }
      }
    }
    std::reverse(m_unread.begin() + firstFound, m_unread.end());
  }

  std::string m_root;  ///< without a slash at the end
  WorkspaceFiles m_files;
  std::stop_token m_stop;
  std::vector<std::string> m_unread;  ///< the next one last
  alignas(dirent64) std::array<char, 32 * 1024> m_buffer;
};

}  // namespace

WorkspaceFiles scanWorkspace(const QString& root, std::stop_token stop) {
  if (root.isEmpty()) return WorkspaceFiles();
  return Walk(root, std::move(stop)).run();
}

}  // namespace vemo
