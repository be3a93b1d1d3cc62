#include "storage/SettingsFile.h"

#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>
#include <cstdio>
#include <utility>

#include "storage/DebugLog.h"
#include "storage/PrivateFolder.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {
const auto unfinishedSuffix = u".unfinished-"_s;
}

SettingsFile::SettingsFile(QString path, DebugLog& debugLog)
    : m_path(std::move(path)), m_debugLog(debugLog) {}

SettingValues SettingsFile::read() {
  if (m_path.isEmpty()) return {};
  removeLeftovers();
  const QFileInfo file(m_path);
  if (!file.exists()) return {};
  if (auto values = readWhole()) return *std::move(values);
  m_holdsDamagedFile = !moveDamagedFileAside();
  return {};
}

std::optional<SettingValues> SettingsFile::readWhole() const {
  // Anything but a plain file may block the reader or never end.
  if (!QFileInfo(m_path).isFile()) return std::nullopt;
  QFile file(m_path);
  if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
  const QByteArray content = file.read(maximumSize + 1);
  if (content.size() > maximumSize || file.error() != QFileDevice::NoError) return std::nullopt;
  return decodeSettings(content);
}

bool SettingsFile::moveDamagedFileAside() const {
  const QDir folder = QFileInfo(m_path).dir();
  QString name;
  for (int number = 1; name.isEmpty() || QFileInfo(folder, name).exists(); ++number)
    name = u"settings.damaged-%1.json"_s.arg(number);
  if (!QFile::rename(m_path, folder.filePath(name))) {
    m_debugLog(u"settings: damaged file could not be moved aside, starting without settings"_s);
    return false;
  }
  m_debugLog(u"settings: damaged file kept as %1, starting without settings"_s.arg(name));
  return true;
}

void SettingsFile::write(const SettingValues& values) {
  const auto failure = replaceWith(encodeSettings(values));
  if (failure && !m_lastWriteFailed)
    m_debugLog(u"settings: write failed (%1), the next change tries again"_s.arg(*failure));
  if (!failure && m_lastWriteFailed) m_debugLog(u"settings: writing works again"_s);
  m_lastWriteFailed = failure.has_value();
}

std::optional<QString> SettingsFile::replaceWith(const QByteArray& content) const {
  if (m_path.isEmpty()) return u"there is no place for the file"_s;
  if (content.size() > maximumSize) return u"too large, %1 bytes"_s.arg(content.size());
  if (m_holdsDamagedFile && QFileInfo::exists(m_path) && !readWhole() && !moveDamagedFileAside())
    return u"a damaged file is in the way"_s;
  if (!makePrivateFolder(QFileInfo(m_path).absolutePath())) return u"no folder"_s;

  // QSaveFile overlooks failures to flush and to synchronise, and what a kill leaves of it can't be
  // told from a file of the user's. The target may be a link to a file kept elsewhere.
  const QFileInfo file(m_path);
  const QString target = file.isSymLink() ? file.symLinkTarget() : m_path;
  QTemporaryFile unfinished(target + unfinishedSuffix + u"XXXXXX"_s);
  if (!unfinished.open() || unfinished.write(content) != content.size() || !unfinished.flush())
    return unfinished.errorString();
  if (::fsync(unfinished.handle()) != 0) return qt_error_string();
  const QByteArray from = QFile::encodeName(unfinished.fileName());
  if (::rename(from.constData(), QFile::encodeName(target).constData()) != 0)
    return qt_error_string();
  unfinished.setAutoRemove(false);
  return std::nullopt;
}

void SettingsFile::removeLeftovers() const {
  const QFileInfo file(m_path);
  QDir folder = file.dir();
  const QString pattern = file.fileName() + unfinishedSuffix + u"??????"_s;
  for (const auto& name : folder.entryList({pattern}, QDir::Files)) folder.remove(name);
}

}  // namespace vemo
