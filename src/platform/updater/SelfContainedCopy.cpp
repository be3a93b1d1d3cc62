#include "platform/updater/SelfContainedCopy.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int mostTrials = 2;

std::unexpected<QString> failure(const QString& what) {
  return std::unexpected(u"%1: %2"_s.arg(what, QString::fromLocal8Bit(std::strerror(errno))));
}

bool syncFolder(const QString& folder) {
  const int descriptor = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY);
  const bool isSynced = descriptor >= 0 && ::fsync(descriptor) == 0;
  if (descriptor >= 0) ::close(descriptor);
  return isSynced;
}

bool renamePath(const QString& from, const QString& to) {
  return std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

QString versionName(quint64 build) {
  return u"versions/"_s + QString::number(build);
}

/// Of a link, the link alone.
void removePath(const QString& path) {
  const QFileInfo entry(path);
  if (entry.isDir() && !entry.isSymLink()) {
    QDir(path).removeRecursively();
  } else {
    QFile::remove(path);
  }
}

void writeText(const QString& file, const QString& text) {
  QSaveFile saved(file);
  if (saved.open(QIODevice::WriteOnly) && saved.write(text.toLatin1()) >= 0) saved.commit();
}

QString readText(const QString& file) {
  QFile opened(file);
  return opened.open(QIODevice::ReadOnly) ? QString::fromLatin1(opened.read(64)) : QString();
}

}  // namespace

std::optional<SelfContainedCopy> SelfContainedCopy::around(const QString& program) {
  const QString real = QFileInfo(program).canonicalFilePath();
  const qsizetype versions = real.lastIndexOf(u"/versions/"_s);
  if (versions <= 0 || real.startsWith(u"/usr/"_s)) return std::nullopt;
  SelfContainedCopy copy(real.first(versions));
  if (real != copy.path(versionName(copy.m_runningBuild) + u"/bin/vemo"_s)) return std::nullopt;
  for (const QString& folder : {copy.root(), copy.path(u"versions"_s)}) {
    struct stat status{};
    const QByteArray name = QFile::encodeName(folder);
    if (::lstat(name.constData(), &status) != 0 || !S_ISDIR(status.st_mode) ||
        status.st_uid != ::geteuid() || (status.st_mode & S_IWOTH) ||
        ::access(name.constData(), W_OK) != 0)
      return std::nullopt;
  }
  return copy;
}

SelfContainedCopy::SelfContainedCopy(QString root)
    : m_root(std::move(root)), m_runningBuild(currentBuild()) {}

QString SelfContainedCopy::program() const {
  return path(u"current/bin/vemo"_s);
}

QString SelfContainedCopy::stagingFolder(quint64 build) const {
  return path(u"versions/.staging-%1"_s.arg(build));
}

QString SelfContainedCopy::downloadFile(quint64 build) const {
  return path(u"versions/.download-%1"_s.arg(build));
}

void SelfContainedCopy::keepOnly(const QList<quint64>& builds) const {
  QStringList kept;
  for (const quint64 build : builds) kept << stagingFolder(build) << downloadFile(build);
  const QDir versions(path(u"versions"_s));
  const auto found = versions.entryInfoList({u".staging*"_s, u".download-*"_s},
                                            QDir::Dirs | QDir::Files | QDir::Hidden);
  for (const QFileInfo& entry : found)
    if (!kept.contains(entry.filePath())) removePath(entry.filePath());
}

quint64 SelfContainedCopy::currentBuild() const {
  return buildOf(u"current"_s);
}

quint64 SelfContainedCopy::refusedBuild() const {
  return readText(path(u"refused"_s)).toULongLong();
}

void SelfContainedCopy::refuse(quint64 build) const {
  writeText(path(u"refused"_s), QString::number(std::max(build, refusedBuild())));
}

bool SelfContainedCopy::claim() {
  if (!m_claim) m_claim = FolderLock::take(path(u"versions"_s), FolderLock::Kind::Exclusive);
  return m_claim != nullptr;
}

std::expected<void, QString> SelfContainedCopy::install(quint64 build) const {
  const auto lock = FolderLock::await(m_root);
  const quint64 old = currentBuild();
  if (build <= old)
    return std::unexpected(u"build %1 is the current one already"_s.arg(QString::number(old)));
  const QString version = path(versionName(build));
  // What an installation that was cut off has left.
  if (!discard(build)) return std::unexpected(u"build %1 is running"_s.arg(build));
  if (!renamePath(stagingFolder(build), version) || !syncFolder(path(u"versions"_s)))
    return failure(version);
  QFile::remove(path(u"trial"_s));
  // One that hasn't proved itself yet is nothing to go back to.
  if (!hasProgram(buildOf(u"previous"_s)))
    if (auto kept = pointTo(u"previous"_s, old); !kept) return kept;
  return pointTo(u"current"_s, build);
}

SelfContainedCopy::Start SelfContainedCopy::beginStart() {
  const QString version = path(versionName(m_runningBuild));
  m_running = FolderLock::take(version, FolderLock::Kind::Exclusive);
  if (!m_running) {
    // It runs already, for this user's other session or to be told something: it can start.
    m_running = FolderLock::take(version, FolderLock::Kind::Shared);
    return Start::Goes;
  }
  const Start start = countStart();
  m_running->share();
  return start;
}

SelfContainedCopy::Start SelfContainedCopy::countStart() {
  const quint64 previous = buildOf(u"previous"_s);
  if (previous == 0 || previous == m_runningBuild) return Start::Goes;
  const int trials = readText(path(u"trial"_s)).toInt();
  if (trials < mostTrials) {
    writeText(path(u"trial"_s), QString::number(trials + 1));
    m_isStartCounted = true;
    return Start::Goes;
  }
  if (!hasProgram(previous)) return Start::Goes;
  refuse(m_runningBuild);
  return pointTo(u"current"_s, previous) ? Start::RolledBack : Start::Goes;
}

void SelfContainedCopy::takeBackStart() {
  if (!std::exchange(m_isStartCounted, false) || currentBuild() != m_runningBuild) return;
  const QString trial = path(u"trial"_s);
  if (const int trials = readText(trial).toInt(); trials > 1) {
    writeText(trial, QString::number(trials - 1));
  } else {
    QFile::remove(trial);
  }
}

void SelfContainedCopy::startedWell() const {
  const auto lock = FolderLock::take(m_root, FolderLock::Kind::Exclusive);
  // The next one is on trial already, or just taking its place.
  if (!lock || currentBuild() != m_runningBuild) return;
  QFile::remove(path(u"previous"_s));
  QFile::remove(path(u"trial"_s));
  for (const QString& name : QDir(path(u"versions"_s)).entryList(QDir::Dirs)) {
    const quint64 build = name.toULongLong();
    if (build != 0 && build != m_runningBuild) discard(build);
  }
}

bool SelfContainedCopy::hasProgram(quint64 build) const {
  return QFileInfo(path(versionName(build) + u"/bin/vemo"_s)).isExecutable();
}

/// False where a process runs it.
bool SelfContainedCopy::discard(quint64 build) const {
  const QString version = path(versionName(build));
  const QFileInfo entry(version);
  if (!entry.isDir() || entry.isSymLink()) {
    QFile::remove(version);
    return true;
  }
  const auto lock = FolderLock::take(version, FolderLock::Kind::Exclusive);
  return lock && QDir(version).removeRecursively();
}

std::expected<void, QString> SelfContainedCopy::pointTo(const QString& link, quint64 build) const {
  const QString fresh = path(link + u".new"_s);
  QFile::remove(fresh);
  if (::symlink(versionName(build).toLatin1().constData(), QFile::encodeName(fresh).constData()) !=
          0 ||
      !renamePath(fresh, path(link)) || !syncFolder(m_root))
    return failure(link);
  return {};
}

quint64 SelfContainedCopy::buildOf(const QString& link) const {
  char target[64] = {};
  const auto size = ::readlink(QFile::encodeName(path(link)).constData(), target, sizeof target);
  const QByteArray name(target, std::max<ssize_t>(size, 0));
  return name.startsWith("versions/") ? name.sliced(9).toULongLong() : 0;
}

}  // namespace vemo
