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
  if (real != copy.path(versionName(copy.currentBuild()) + u"/bin/vemo"_s)) return std::nullopt;
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
  for (const QFileInfo& entry : found) {
    if (kept.contains(entry.filePath())) continue;
    if (entry.isDir() && !entry.isSymLink()) {
      QDir(entry.filePath()).removeRecursively();
    } else {
      QFile::remove(entry.filePath());
    }
  }
}

quint64 SelfContainedCopy::currentBuild() const {
  return buildOf(u"current"_s);
}

quint64 SelfContainedCopy::refusedBuild() const {
  return readText(path(u"refused"_s)).toULongLong();
}

std::expected<void, QString> SelfContainedCopy::install(quint64 build) {
  const quint64 old = currentBuild();
  if (build == old) return std::unexpected(u"build %1 runs already"_s.arg(build));
  const QString version = path(versionName(build));
  QDir(version).removeRecursively();  // left by an installation that was cut off
  if (!renamePath(stagingFolder(build), version) || !syncFolder(path(u"versions"_s)))
    return failure(version);
  QFile::remove(path(u"trial"_s));
  if (auto kept = pointTo(u"previous"_s, old); !kept) return kept;
  return pointTo(u"current"_s, build);
}

SelfContainedCopy::Start SelfContainedCopy::beginStart() {
  const quint64 previous = buildOf(u"previous"_s);
  const quint64 current = currentBuild();
  if (previous == 0 || previous == current) return Start::Goes;
  const int trials = readText(path(u"trial"_s)).toInt();
  if (trials < mostTrials) {
    writeText(path(u"trial"_s), QString::number(trials + 1));
    return Start::Goes;
  }
  if (!QFileInfo(path(versionName(previous) + u"/bin/vemo"_s)).isExecutable()) return Start::Goes;
  writeText(path(u"refused"_s), QString::number(current));
  return pointTo(u"current"_s, previous) ? Start::RolledBack : Start::Goes;
}

void SelfContainedCopy::startedWell() {
  const QString current = QString::number(currentBuild());
  QFile::remove(path(u"previous"_s));
  QFile::remove(path(u"trial"_s));
  const QDir versions(path(u"versions"_s));
  for (const QString& name : versions.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
    if (name != current) QDir(versions.filePath(name)).removeRecursively();
}

std::expected<void, QString> SelfContainedCopy::pointTo(const QString& link, quint64 build) {
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
