#include "platform/updater/UpdateArchive.h"

#include <archive.h>
#include <archive_entry.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QHash>
#include <array>
#include <memory>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

using Outcome = std::expected<void, QString>;
using ReadArchive = std::unique_ptr<archive, decltype(&archive_read_free)>;
using WriteArchive = std::unique_ptr<archive, decltype(&archive_write_free)>;

constexpr std::size_t blockSize = 128 * 1024;

std::unexpected<QString> refuse(const QString& path, const QString& why) {
  return std::unexpected(u"%1: %2"_s.arg(path, why));
}

QString errorOf(archive* of) {
  const char* text = archive_error_string(of);
  return text ? QString::fromUtf8(text) : u"unreadable"_s;
}

Outcome writeFile(archive* from, const AppcastFile& file, const QString& path) {
  if (!QDir().mkpath(path.section(u'/', 0, -2))) return refuse(file.path, u"no folder for it"_s);
  QFile target(path);
  if (!target.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
    return refuse(file.path, target.errorString());
  QCryptographicHash hash(QCryptographicHash::Sha256);
  std::array<char, blockSize> block;
  qint64 size = 0;
  la_ssize_t count = 0;
  while ((count = archive_read_data(from, block.data(), block.size())) > 0) {
    size += count;
    if (size > file.size) return refuse(file.path, u"is larger than the feed says"_s);
    hash.addData(QByteArrayView(block.data(), count));
    if (target.write(block.data(), count) != count) return refuse(file.path, target.errorString());
  }
  if (count < 0) return refuse(file.path, errorOf(from));
  if (size != file.size || hash.result() != file.sha256)
    return refuse(file.path, u"isn't what the feed says"_s);
  if (::fchmod(target.handle(), file.isExecutable ? 0755 : 0644) != 0 ||
      ::fsync(target.handle()) != 0)
    return refuse(file.path, u"can't be kept"_s);
  return {};
}

Outcome syncFolders(const QString& folder) {
  QDirIterator folders(folder, QDir::Dirs | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
  QStringList paths{folder};
  while (folders.hasNext()) paths.append(folders.next());
  for (const QString& path : paths) {
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY);
    const bool isSynced = descriptor >= 0 && ::fsync(descriptor) == 0;
    if (descriptor >= 0) ::close(descriptor);
    if (!isSynced) return refuse(path, u"can't be flushed"_s);
  }
  return {};
}

}  // namespace

Outcome unpackUpdate(const QString& archivePath, const std::vector<AppcastFile>& files,
                     const QString& folder, const std::stop_token& stop) {
  QHash<QString, const AppcastFile*> wanted;
  for (const AppcastFile& file : files) wanted.insert(file.path, &file);
  const ReadArchive reader(archive_read_new(), archive_read_free);
  archive_read_support_filter_xz(reader.get());
  archive_read_support_format_tar(reader.get());
  if (archive_read_open_filename(reader.get(), QFile::encodeName(archivePath).constData(),
                                 blockSize) != ARCHIVE_OK)
    return std::unexpected(errorOf(reader.get()));
  if (!QDir().mkdir(folder)) return refuse(folder, u"can't be made"_s);

  archive_entry* entry = nullptr;
  int status = ARCHIVE_OK;
  while ((status = archive_read_next_header(reader.get(), &entry)) == ARCHIVE_OK) {
    const QString path = QString::fromUtf8(archive_entry_pathname(entry));
    if (stop.stop_requested()) return refuse(path, u"isn't needed any more"_s);
    if (archive_entry_filetype(entry) != AE_IFREG || archive_entry_hardlink(entry))
      return refuse(path, u"isn't a plain file"_s);
    const AppcastFile* file = wanted.take(path);
    if (!file) return refuse(path, u"isn't named in the feed, or comes twice"_s);
    if (auto written = writeFile(reader.get(), *file, folder + u'/' + path); !written)
      return written;
  }
  if (status != ARCHIVE_EOF) return std::unexpected(errorOf(reader.get()));
  if (!wanted.isEmpty()) return refuse(wanted.constBegin().key(), u"is missing"_s);
  return syncFolders(folder);
}

std::expected<std::vector<AppcastFile>, QString> packUpdate(const QString& folder,
                                                            const QString& archivePath) {
  QStringList paths;
  QDirIterator entries(QDir(folder).absolutePath(), QDir::Files | QDir::Hidden | QDir::System,
                       QDirIterator::Subdirectories);
  while (entries.hasNext()) paths.append(QDir(folder).relativeFilePath(entries.next()));
  paths.sort();
  const WriteArchive writer(archive_write_new(), archive_write_free);
  archive_write_set_format_pax_restricted(writer.get());
  archive_write_add_filter_xz(writer.get());
  if (archive_write_open_filename(writer.get(), QFile::encodeName(archivePath).constData()) !=
      ARCHIVE_OK)
    return std::unexpected(errorOf(writer.get()));
  std::vector<AppcastFile> files;
  for (const QString& path : paths) {
    QFile file(folder + u'/' + path);
    if (!isPathInside(path)) return refuse(path, u"has a name that a feed can't hold"_s);
    if (!file.open(QIODevice::ReadOnly)) return refuse(path, file.errorString());
    const QByteArray content = file.readAll();
    const bool isExecutable = file.permissions().testFlag(QFile::ExeOwner);
    const std::unique_ptr<archive_entry, decltype(&archive_entry_free)> entry(archive_entry_new(),
                                                                              archive_entry_free);
    archive_entry_set_pathname(entry.get(), path.toUtf8().constData());
    archive_entry_set_filetype(entry.get(), AE_IFREG);
    archive_entry_set_perm(entry.get(), isExecutable ? 0755 : 0644);
    archive_entry_set_size(entry.get(), content.size());
    archive_entry_set_mtime(entry.get(), 0, 0);
    const auto size = static_cast<std::size_t>(content.size());
    if (archive_write_header(writer.get(), entry.get()) != ARCHIVE_OK ||
        archive_write_data(writer.get(), content.constData(), size) != content.size())
      return refuse(path, errorOf(writer.get()));
    files.push_back({.path = path,
                     .size = content.size(),
                     .sha256 = QCryptographicHash::hash(content, QCryptographicHash::Sha256),
                     .isExecutable = isExecutable});
  }
  if (archive_write_close(writer.get()) != ARCHIVE_OK)
    return std::unexpected(errorOf(writer.get()));
  return files;
}

}  // namespace vemo
