#include "platform/x11/DesktopEntries.h"

#include <glib.h>

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <algorithm>
#include <memory>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qint64 maximumFileBytes = 1024 * 1024;

struct FreeKeyFile {
  void operator()(GKeyFile* file) const { g_key_file_free(file); }
};

QString takeString(gchar* text) {
  const QString result = QString::fromUtf8(text);
  g_free(text);
  return result;
}

std::optional<DesktopEntry> readEntry(const QString& path, const QString& identifier) {
  const std::unique_ptr<GKeyFile, FreeKeyFile> file(g_key_file_new());
  if (QFileInfo(path).size() > maximumFileBytes ||
      !g_key_file_load_from_file(file.get(), QFile::encodeName(path).constData(), G_KEY_FILE_NONE,
                                 nullptr))
    return std::nullopt;
  const char* group = G_KEY_FILE_DESKTOP_GROUP;
  const QString type =
      takeString(g_key_file_get_string(file.get(), group, G_KEY_FILE_DESKTOP_KEY_TYPE, nullptr));
  const bool isHidden =
      g_key_file_get_boolean(file.get(), group, G_KEY_FILE_DESKTOP_KEY_HIDDEN, nullptr);
  if (type != u"Application"_s || isHidden) return std::nullopt;
  return DesktopEntry{identifier,
                      takeString(g_key_file_get_locale_string(
                          file.get(), group, G_KEY_FILE_DESKTOP_KEY_NAME, nullptr, nullptr)),
                      takeString(g_key_file_get_string(
                          file.get(), group, G_KEY_FILE_DESKTOP_KEY_STARTUP_WM_CLASS, nullptr))};
}

/// The first entry that claims a key keeps it.
void claim(QHash<QString, QString>& index, const QString& key, const QString& identifier) {
  const QString folded = key.toLower();
  if (!folded.isEmpty() && !index.contains(folded)) index.insert(folded, identifier);
}

}  // namespace

DesktopEntries::DesktopEntries(QStringList folders) : m_folders(std::move(folders)) {}

QStringList DesktopEntries::standardFolders() {
  const auto variable = [](const char* name, const QString& fallback) {
    const QString value = qEnvironmentVariable(name);
    return value.isEmpty() ? fallback : value;
  };
  QStringList roots{variable("XDG_DATA_HOME", QDir::homePath() + u"/.local/share"_s)};
  roots +=
      variable("XDG_DATA_DIRS", u"/usr/local/share:/usr/share"_s).split(u':', Qt::SkipEmptyParts);
  for (QString& root : roots) root += u"/applications"_s;
  return roots;
}

std::optional<DesktopEntry> DesktopEntries::find(const QString& identifier) {
  refresh();
  const auto found = m_byIdentifier.constFind(identifier);
  return found == m_byIdentifier.cend() ? std::nullopt : std::optional(*found);
}

std::optional<DesktopEntry> DesktopEntries::findForWindow(const QString& className,
                                                          const QString& instanceName) {
  refresh();
  for (const auto* index : {&m_byWindowClass, &m_byFileName, &m_byLastPart, &m_byName}) {
    for (const QString& name : {className, instanceName}) {
      const auto found = index->constFind(name.toLower());
      if (!name.isEmpty() && found != index->cend()) return m_byIdentifier.value(*found);
    }
  }
  return std::nullopt;
}

void DesktopEntries::refresh() {
  std::vector<QDateTime> times;
  for (const QString& folder : m_folders) times.push_back(QFileInfo(folder).lastModified());
  if (times == m_folderTimes) return;
  // A folder's time has the grain of the system's clock tick, or of a second on some disks: what
  // has changed a moment ago may change again without showing.
  const QDateTime settled = QDateTime::currentDateTime().addSecs(-2);
  const bool areSettled = std::ranges::all_of(
      times, [&](const QDateTime& time) { return !time.isValid() || time < settled; });
  m_folderTimes = areSettled ? std::move(times) : std::vector<QDateTime>();
  m_byIdentifier.clear();
  for (auto* index : {&m_byWindowClass, &m_byFileName, &m_byLastPart, &m_byName}) index->clear();
  for (const QString& folder : m_folders) read(folder);
}

void DesktopEntries::read(const QString& folder) {
  QDirIterator files(folder, {u"*.desktop"_s}, QDir::Files, QDirIterator::Subdirectories);
  std::vector<DesktopEntry> found;
  while (files.hasNext()) {
    const QString path = files.next();
    QString identifier = QDir(folder).relativeFilePath(path);
    identifier.chop(QStringView(u".desktop").size());
    identifier.replace(u'/', u'-');
    if (m_byIdentifier.contains(identifier)) continue;
    if (auto entry = readEntry(path, identifier)) found.push_back(std::move(*entry));
  }
  std::ranges::sort(found, {}, &DesktopEntry::identifier);
  for (const DesktopEntry& entry : found) add(entry);
}

void DesktopEntries::add(const DesktopEntry& entry) {
  m_byIdentifier.insert(entry.identifier, entry);
  claim(m_byWindowClass, entry.startupWindowClass, entry.identifier);
  claim(m_byFileName, entry.identifier, entry.identifier);
  claim(m_byLastPart, entry.identifier.section(u'.', -1), entry.identifier);
  claim(m_byName, entry.name, entry.identifier);
}

}  // namespace vemo
