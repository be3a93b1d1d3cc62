// The files of one project in the order in which they were found, and the lookup of a spoken file
// name among them.
//
// Filled once, by a scan, and then never changed, so that any thread may read it. It may hold
// millions of files: it keeps each as some bytes of shared text and makes WorkspaceFile records
// when asked. A lookup gives what a walk over all records from first to last would give, without
// the walk.
#pragma once

#include <QString>
#include <QUuid>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "integrations/FileName.h"
#include "integrations/FirstPlaces.h"
#include "integrations/NameSieve.h"
#include "integrations/WorkspaceFile.h"

namespace vemo {

class WorkspaceFiles {
 public:
  using Place = FirstPlaces::Place;

  /// No files yet. The root is spelled as the user or the editor names it.
  explicit WorkspaceFiles(QString root = {});

  // Filling, in valid UTF-8: folders by their absolute path without a slash at the end, files by
  // name, and finish() once.
  std::uint32_t addFolder(std::string_view path);
  void addFile(std::uint32_t folder, std::string_view fileName);
  void finish();

  std::size_t size() const { return m_files.size(); }
  bool isEmpty() const { return m_files.empty(); }

  WorkspaceFile operator[](std::size_t place) const;
  QString fileName(std::size_t place) const;

  /// The place of the first file that the spoken name and extension mean: of those called exactly
  /// so, or else of those whose name has the spoken one in it.
  std::optional<Place> find(const QString& spokenName, const QString& spokenExtension) const;

  /// "@" and that file's name.
  std::optional<QString> tagFor(const QString& spokenName, const QString& spokenExtension) const;

  /// How many bytes it occupies.
  std::size_t memoryUsed() const;

 private:
  using Extension = NameSieve::Kind;
  static constexpr Extension noExtension = 0;

  struct Folder {
    std::uint64_t start;
    std::uint64_t length;
  };
  struct File {
    std::uint64_t start;  ///< of its name, which its folded base name follows if that differs
    std::uint32_t folder;
    Extension extension;
    std::uint16_t nameLength;
    std::uint16_t baseLength;
    std::uint16_t foldedLength;  ///< 0: the base name is folded as it stands
  };
  struct Query;

  Extension extensionFor(std::string_view extension);
  std::optional<Extension> findExtension(std::string_view folded) const;
  std::string_view text(std::uint64_t start, std::uint64_t length) const;
  std::string_view nameOf(const File& file) const;
  std::string_view foldedBaseOf(const File& file) const;

  bool isExact(const File& file, const Query& query) const;
  bool isLoose(const File& file, const Query& query) const;
  std::optional<Place> findExact(const Query& query) const;
  std::optional<Place> findLoose(const Query& query) const;
  std::optional<Place> findNamed(std::string_view base, std::string_view extension) const;
  std::optional<Place> findWithBase(std::string_view base) const;
  std::optional<Place> findContaining(const Query& query) const;
  template <typename Matches>
  std::optional<Place> findWith(const NameSieve::Wanted& wanted, Matches&& matches) const;

  QString m_root;
  QUuid m_scan = QUuid::createUuid();
  std::string m_text;
  std::vector<Folder> m_folders;
  std::vector<File> m_files;
  std::map<std::string, Extension, std::less<>> m_extensions;  ///< folded
  /// Files whose folded name isn't their folded base name and extension put together: in some
  /// scripts a letter's lower case depends on what follows. The table leaves them out.
  std::vector<Place> m_irregular;
  FirstPlaces m_byBaseAndExtension;
  NameSieve m_sieve;  ///< of the folded base names, by extension
};

}  // namespace vemo
