#include "integrations/WorkspaceFiles.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <utility>

#include "base/Text.h"
#include "integrations/FileName.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

using Place = WorkspaceFiles::Place;

QString fromUtf8(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// Not Qt's hash: it leaves the processor's wide registers in a state in which all other code on
/// text runs at a third of its speed, until something happens to clear them.
std::size_t hashOf(std::string_view base, std::uint32_t extension) {
  return std::hash<std::string_view>()(base) ^ extension * 0x9E3779B97F4A7C15ULL;
}

/// Whether a name is lower-cased as its parts are.
bool foldsInParts(std::string_view fileName, const FileNameParts& parts) {
  if (isAscii(fileName)) return true;
  const std::string extension = foldedName(parts.extension);
  return foldedName(fileName) ==
         foldedName(parts.base) + (extension.empty() ? extension : '.' + extension);
}

std::optional<Place> lowerOf(std::optional<Place> one, std::optional<Place> other) {
  if (!one || !other) return one ? one : other;
  return std::min(*one, *other);
}

}  // namespace

/// What was said, lower-cased, in the forms that are compared with names.
struct WorkspaceFiles::Query {
  Query(const QString& spokenName, const QString& spokenExtension)
      : name(lowerCased(trimmed(spokenName)).toStdString()),
        extension(lowerCased(trimmed(spokenExtension)).toStdString()),
        fileName(name + '.' + extension),
        joined(name),
        dashed(name),
        underscored(name) {
    std::erase(joined, ' ');
    std::ranges::replace(dashed, ' ', '-');
    std::ranges::replace(underscored, ' ', '_');
  }

  std::string name;
  std::string extension;
  std::string fileName;
  std::string joined;
  std::string dashed;
  std::string underscored;
  std::optional<Extension> number;  ///< of the extension, if any file has it
};

WorkspaceFiles::WorkspaceFiles(QString root) : m_root(std::move(root)) {
  if (m_root.isEmpty()) return;
  // Memory that is never written to costs nothing, and moving what is there costs much.
  constexpr std::size_t manyFiles = 200'000;
  m_files.reserve(manyFiles);
  m_text.reserve(manyFiles * 32);
}

std::uint32_t WorkspaceFiles::addFolder(std::string_view path) {
  m_folders.push_back({m_text.size(), path.size()});
  m_text += path;
  return static_cast<std::uint32_t>(m_folders.size() - 1);
}

void WorkspaceFiles::addFile(std::uint32_t folder, std::string_view fileName) {
  // Longer names than any file system has, and more files than a place can tell.
  constexpr std::size_t maximumLength = std::numeric_limits<std::uint16_t>::max() / 3;
  if (fileName.size() > maximumLength || m_files.size() >= std::numeric_limits<Place>::max())
    return;

  const auto parts = partsOf(fileName);
  if (!foldsInParts(fileName, parts)) m_irregular.push_back(static_cast<Place>(m_files.size()));
  File& file = m_files.emplace_back();
  file.start = m_text.size();
  file.folder = folder;
  file.extension = extensionFor(parts.extension);
  file.nameLength = static_cast<std::uint16_t>(fileName.size());
  file.baseLength = static_cast<std::uint16_t>(parts.base.size());
  m_text += fileName;
  if (!isFolded(parts.base)) appendFolded(parts.base, m_text);
  file.foldedLength = static_cast<std::uint16_t>(m_text.size() - file.start - file.nameLength);
  m_sieve.add(foldedBaseOf(file), file.extension);
}

void WorkspaceFiles::finish() {
  m_byBaseAndExtension = FirstPlaces(m_files.size());
  auto irregular = m_irregular.cbegin();
  for (Place place = 0; place < m_files.size(); ++place) {
    const File& file = m_files[place];
    const std::string_view base = foldedBaseOf(file);
    if (irregular != m_irregular.cend() && *irregular == place) {
      ++irregular;
      continue;
    }
    m_byBaseAndExtension.add(hashOf(base, file.extension), place, [&](Place other) {
      return m_files[other].extension == file.extension && foldedBaseOf(m_files[other]) == base;
    });
  }
}

WorkspaceFile WorkspaceFiles::operator[](std::size_t place) const {
  const File& file = m_files[place];
  const Folder& folder = m_folders[file.folder];
  const auto parts = partsOf(nameOf(file));
  const QString fileName = fromUtf8(nameOf(file));
  const QString fullPath = fromUtf8(text(folder.start, folder.length)) + u'/' + fileName;
  return {.id = QUuid::createUuidV5(m_scan, QByteArray::number(quint64{place})),
          .fileName = fileName,
          .baseName = fromUtf8(parts.base),
          .relativePath = QString(fullPath).remove(m_root + u'/'),
          .fullPath = fullPath,
          .ext = lowerCased(fromUtf8(parts.extension))};
}

QString WorkspaceFiles::fileName(std::size_t place) const {
  return fromUtf8(nameOf(m_files[place]));
}

std::optional<Place> WorkspaceFiles::find(const QString& spokenName,
                                          const QString& spokenExtension) const {
  // No file's name has half a character in it.
  if (!spokenName.isValidUtf16() || !spokenExtension.isValidUtf16()) return std::nullopt;
  Query query(spokenName, spokenExtension);
  query.number = findExtension(query.extension);
  const auto exact = findExact(query);
  return exact ? exact : findLoose(query);
}

std::optional<QString> WorkspaceFiles::tagFor(const QString& spokenName,
                                              const QString& spokenExtension) const {
  const auto place = find(spokenName, spokenExtension);
  if (!place) return std::nullopt;
  return u'@' + fileName(*place);
}

bool WorkspaceFiles::isExact(const File& file, const Query& query) const {
  if (foldedName(nameOf(file)) == query.fileName) return true;
  if (foldedBaseOf(file) != query.name) return false;
  return query.extension.empty() || file.extension == query.number;
}

bool WorkspaceFiles::isLoose(const File& file, const Query& query) const {
  if (!query.extension.empty() && file.extension != query.number) return false;
  const std::string_view base = foldedBaseOf(file);
  return base == query.dashed || base == query.underscored || base.contains(query.joined);
}

std::optional<Place> WorkspaceFiles::findExact(const Query& query) const {
  const auto parts = partsOf(query.fileName);
  auto first = findNamed(parts.base, parts.extension);
  if (query.extension.empty()) first = lowerOf(first, findWithBase(query.name));
  for (const Place place : m_irregular) {
    if (first && *first < place) break;
    if (isExact(m_files[place], query)) return place;
  }
  return first;
}

std::optional<Place> WorkspaceFiles::findLoose(const Query& query) const {
  if (!query.extension.empty() && !query.number) return std::nullopt;
  auto first = findContaining(query);
  if (query.joined != query.name) {
    const auto findCalled = [&](std::string_view base) {
      return query.extension.empty() ? findWithBase(base) : findNamed(base, query.extension);
    };
    first = lowerOf(first, lowerOf(findCalled(query.dashed), findCalled(query.underscored)));
  }
  for (const Place place : m_irregular) {
    if (first && *first < place) break;
    if (isLoose(m_files[place], query)) return place;
  }
  return first;
}

/// The first regular file of this folded base name and extension; an empty one means none.
std::optional<Place> WorkspaceFiles::findNamed(std::string_view base,
                                               std::string_view extension) const {
  const auto number = findExtension(extension);
  if (!number) return std::nullopt;
  return m_byBaseAndExtension.find(hashOf(base, *number), [&](Place place) {
    return m_files[place].extension == *number && foldedBaseOf(m_files[place]) == base;
  });
}

std::optional<Place> WorkspaceFiles::findWithBase(std::string_view base) const {
  return findWith({base, NameSieve::Extent::Whole, std::nullopt},
                  [&](const File& file) { return foldedBaseOf(file) == base; });
}

std::optional<Place> WorkspaceFiles::findContaining(const Query& query) const {
  const auto extension = query.extension.empty() ? std::nullopt : query.number;
  return findWith({query.joined, NameSieve::Extent::Part, extension}, [&](const File& file) {
    return (!extension || file.extension == *extension) &&
           foldedBaseOf(file).contains(query.joined);
  });
}

/// The first file that matches, of those whose folded base name is wanted.
template <typename Matches>
std::optional<Place> WorkspaceFiles::findWith(const NameSieve::Wanted& wanted,
                                              Matches&& matches) const {
  std::optional<Place> first;
  m_sieve.visitBlocks(wanted, [&](std::size_t block) {
    const std::size_t end = std::min((block + 1) * NameSieve::blockSize, m_files.size());
    for (std::size_t place = block * NameSieve::blockSize; place < end && !first; ++place) {
      if (matches(m_files[place])) first = static_cast<Place>(place);
    }
    return first.has_value();
  });
  return first;
}

WorkspaceFiles::Extension WorkspaceFiles::extensionFor(std::string_view extension) {
  std::string apart;
  if (!isFolded(extension)) extension = apart = foldedName(extension);
  if (const auto known = findExtension(extension)) return *known;
  const auto number = static_cast<Extension>(m_extensions.size() + 1);
  m_extensions.emplace(extension, number);
  return number;
}

std::optional<WorkspaceFiles::Extension> WorkspaceFiles::findExtension(
    std::string_view folded) const {
  if (folded.empty()) return noExtension;
  const auto found = m_extensions.find(folded);
  return found == m_extensions.end() ? std::nullopt : std::optional(found->second);
}

std::string_view WorkspaceFiles::text(std::uint64_t start, std::uint64_t length) const {
  return std::string_view(m_text).substr(start, length);
}

std::string_view WorkspaceFiles::nameOf(const File& file) const {
  return text(file.start, file.nameLength);
}

std::string_view WorkspaceFiles::foldedBaseOf(const File& file) const {
  return file.foldedLength > 0 ? text(file.start + file.nameLength, file.foldedLength)
                               : text(file.start, file.baseLength);
}

std::size_t WorkspaceFiles::memoryUsed() const {
  return m_text.size() + m_files.size() * sizeof(File) + m_folders.size() * sizeof(Folder) +
         m_irregular.size() * sizeof(Place) + m_byBaseAndExtension.memoryUsed() +
         m_sieve.memoryUsed();
}

}  // namespace vemo
