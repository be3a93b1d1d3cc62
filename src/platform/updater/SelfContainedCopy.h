// A copy of the program in a folder of the user's own, with its versions side by side:
//
//   versions/57/bin/vemo   a version, by its build number
//   current                a link to the version that starts
//   previous               a link to the one before, until the new one has started well
//   trial                  how often the new one has begun to start
//   refused                a build that didn't start well and isn't tried again
//
// `current` is replaced by one rename, after everything that it leads to has reached the disk: a
// kill or a power cut at any moment leaves the old version or the new one. Blocks; one thread at a
// time. Errors are one line for the log.
#pragma once

#include <QList>
#include <QString>
#include <expected>
#include <optional>

namespace vemo {

class SelfContainedCopy {
 public:
  /// Nothing where the program doesn't stand in such a folder, or the folder isn't the user's own:
  /// its files belong to a package manager then, or to somebody else.
  static std::optional<SelfContainedCopy> around(const QString& program);

  explicit SelfContainedCopy(QString root) : m_root(std::move(root)) {}

  const QString& root() const { return m_root; }
  QString program() const;  ///< of the current version
  /// Where a version is put together; nothing starts from there. Each build has its own, so that
  /// one that is ready stays whole while the next is put together.
  QString stagingFolder(quint64 build) const;
  QString downloadFile(quint64 build) const;
  quint64 currentBuild() const;
  quint64 refusedBuild() const;

  /// Takes away what other builds have left of downloads and in staging folders.
  void keepOnly(const QList<quint64>& builds) const;

  /// Makes what stands in the build's staging folder the version that starts next.
  std::expected<void, QString> install(quint64 build);

  enum class Start { Goes, RolledBack };
  /// At each start, before anything else. A version that has begun twice without having started
  /// well is given up for the one before; whoever called starts program() then.
  Start beginStart();
  /// The program runs well: the version before isn't needed any more.
  void startedWell();

 private:
  std::expected<void, QString> pointTo(const QString& link, quint64 build);
  quint64 buildOf(const QString& link) const;
  QString path(const QString& name) const { return m_root + u'/' + name; }

  QString m_root;
};

}  // namespace vemo
