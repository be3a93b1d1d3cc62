#include "platform/updater/UpdatePreparation.h"

#include <QDir>
#include <QFile>

#include "platform/updater/UpdateArchive.h"
#include "platform/updater/UpdateSignatures.h"
#include "platform/updater/VersionCheck.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

bool isSigned(const AppcastItem& item, const QString& file, const QByteArray& key) {
  QFile archive(file);
  return archive.open(QIODevice::ReadOnly) && archive.size() == item.archiveSize &&
         isArchiveSigned(archive, item.archiveSignature, key);
}

UpdatePreparation unpackAndCheck(const AppcastItem& item, const QString& file,
                                 const QString& folder, std::chrono::milliseconds limit,
                                 const std::stop_token& stop) {
  if (const auto unpacked = unpackUpdate(file, item.files, folder, stop); !unpacked)
    return std::unexpected(UpdateRefusal{UpdateTrouble::ArchiveRefused, unpacked.error()});
  const auto checked = checkVersion(folder, item.shown.displayVersion, item.build, stop, limit);
  if (checked) return {};
  return std::unexpected(UpdateRefusal{
      checked.error().isFinal ? UpdateTrouble::InstallationFailed : UpdateTrouble::NoAnswer,
      checked.error().why});
}

}  // namespace

UpdatePreparation prepareUpdate(const AppcastItem& item, const QString& file, const QByteArray& key,
                                const QString& folder, std::chrono::milliseconds limit,
                                const std::stop_token& stop) {
  if (!isSigned(item, file, key))
    return std::unexpected(
        UpdateRefusal{UpdateTrouble::NotSigned, u"the archive's signature is wrong"_s});
  QDir(folder).removeRecursively();
  const UpdatePreparation prepared = unpackAndCheck(item, file, folder, limit, stop);
  if (!prepared) QDir(folder).removeRecursively();
  return prepared;
}

}  // namespace vemo
