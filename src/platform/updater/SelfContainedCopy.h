// A copy of the program in a folder of the user's own, with its versions side by side:
//
//   versions/57/bin/vemo   a version, by its build number
//   current                a link to the version that starts
//   previous               a link to the one that last started well, until the new one has
//   trial                  how often the new one has begun to start and not ended regularly
//   refused                the newest build that didn't start well
//
// `current` is replaced by one rename, after everything that it leads to has reached the disk: a
// kill or a power cut at any moment leaves the old version or the new one. A version that another
// process runs is held by a lock and stays; so is the whole copy while versions take their places
// or go. Blocks. What is const may be called on any thread. Errors are one line for the log.
#pragma once

#include <QList>
#include <QString>
#include <expected>
#include <memory>
#include <optional>

#include "platform/updater/FolderLock.h"

namespace vemo {

class SelfContainedCopy {
 public:
  /// Nothing where the program doesn't stand in such a folder, or the folder isn't the user's own:
  /// its files belong to a package manager then, or to somebody else.
  static std::optional<SelfContainedCopy> around(const QString& program);

  /// The one whose current version runs.
  explicit SelfContainedCopy(QString root);

  const QString& root() const { return m_root; }
  QString program() const;  ///< of the current version
  /// Where a version is put together; nothing starts from there. Each build has its own, so that
  /// one that is ready stays whole while the next is put together.
  QString stagingFolder(quint64 build) const;
  QString downloadFile(quint64 build) const;
  quint64 currentBuild() const;
  quint64 refusedBuild() const;
  /// What didn't start isn't tried again; nor is what is older.
  void refuse(quint64 build) const;

  /// Whether this process is the one that updates the copy, as it stays until it lets go. False
  /// while another does.
  bool claim();
  void letGo() { m_claim.reset(); }
  /// Takes away what other builds have left of downloads and in staging folders.
  void keepOnly(const QList<quint64>& builds) const;
  /// Makes what stands in the build's staging folder the version that starts next. Only upwards.
  std::expected<void, QString> install(quint64 build) const;

  enum class Start { Goes, RolledBack };
  /// At each start, before anything that may fail; holds the version that runs. One that has begun
  /// twice, neither to start well nor to end regularly, is given up for the one before; whoever
  /// called starts program() then.
  Start beginStart();
  /// The program ends as it should: what beginStart() counted doesn't count.
  void takeBackStart();
  /// The program runs well: versions that nobody runs aren't needed any more.
  void startedWell() const;

 private:
  std::expected<void, QString> pointTo(const QString& link, quint64 build) const;
  Start countStart();
  bool hasProgram(quint64 build) const;
  bool discard(quint64 build) const;
  quint64 buildOf(const QString& link) const;
  QString path(const QString& name) const { return m_root + u'/' + name; }

  QString m_root;
  quint64 m_runningBuild;
  bool m_isStartCounted = false;
  std::shared_ptr<FolderLock> m_running;
  std::shared_ptr<FolderLock> m_claim;
};

}  // namespace vemo
