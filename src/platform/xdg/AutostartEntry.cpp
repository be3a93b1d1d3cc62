#include "platform/xdg/AutostartEntry.h"

#include <glib.h>

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <algorithm>
#include <memory>
#include <utility>

#include "platform/xdg/DesktopEntryFile.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

const QString entryName = u"brelmox.Vemo.desktop"_s;

QString entryIn(const QString& folder) {
  return folder + u'/' + entryName;
}

QByteArray entry(const QString& program) {
  return u"[Desktop Entry]\n"
         u"Type=Application\n"
         u"Name=Vemo\n"
         u"Icon=brelmox.Vemo\n"
         u"Exec=%1 %2\n"
         u"X-GNOME-Autostart-enabled=true\n"_s
             .arg(quotedExecArgument(program), QString::fromUtf16(launchedAtLoginArgument))
             .toUtf8();
}

const QByteArray hiddenEntry =
    "[Desktop Entry]\n"
    "Type=Application\n"
    "Name=Vemo\n"
    "Hidden=true\n";

constexpr qint64 longestEntry = 65'536;

bool isTrue(GKeyFile* file, const char* key, bool otherwise) {
  GError* error = nullptr;
  const bool value = g_key_file_get_boolean(file, G_KEY_FILE_DESKTOP_GROUP, key, &error);
  if (!error) return value;
  g_error_free(error);
  return otherwise;
}

/// Nothing but a plain file is read: another kind may block the reader.
bool startsItsProgram(const QString& path) {
  QFile entry(path);
  if (!QFileInfo(path).isFile() || !entry.open(QIODevice::ReadOnly)) return false;
  const QByteArray content = entry.read(longestEntry);
  const std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)> file(g_key_file_new(),
                                                                    &g_key_file_unref);
  return g_key_file_load_from_data(file.get(), content.constData(), gsize(content.size()),
                                   G_KEY_FILE_NONE, nullptr) &&
         g_key_file_has_key(file.get(), G_KEY_FILE_DESKTOP_GROUP, G_KEY_FILE_DESKTOP_KEY_EXEC,
                            nullptr) &&
         !isTrue(file.get(), G_KEY_FILE_DESKTOP_KEY_HIDDEN, false) &&
         isTrue(file.get(), "X-GNOME-Autostart-enabled", true);
}

}  // namespace

AutostartEntry::AutostartEntry(QString program, QString userFolder, QStringList systemFolders)
    : m_program(std::move(program)),
      m_userEntry(entryIn(userFolder)),
      m_systemFolders(std::move(systemFolders)) {}

AutostartEntry AutostartEntry::standard(QString program) {
  QStringList folders = QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation);
  for (QString& folder : folders) folder += u"/autostart"_s;
  const QString ofUser = folders.isEmpty() ? QString() : folders.takeFirst();
  return {std::move(program), ofUser, folders};
}

std::expected<void, QString> AutostartEntry::registerItem() {
  return writeDesktopEntry(m_userEntry, entry(m_program));
}

std::expected<void, QString> AutostartEntry::unregisterItem() {
  if (comesWithTheSystem()) return writeDesktopEntry(m_userEntry, hiddenEntry);
  QFile file(m_userEntry);
  const QFileInfo information(m_userEntry);
  if (!information.exists() && !information.isSymLink()) return {};
  if (!file.remove()) return std::unexpected(file.errorString());
  return {};
}

bool AutostartEntry::isRegistered() const {
  if (QFileInfo::exists(m_userEntry)) return startsItsProgram(m_userEntry);
  const auto ofSystem = std::ranges::find_if(
      m_systemFolders, [](const QString& folder) { return QFileInfo::exists(entryIn(folder)); });
  return ofSystem != m_systemFolders.end() && startsItsProgram(entryIn(*ofSystem));
}

bool AutostartEntry::comesWithTheSystem() const {
  return std::ranges::any_of(
      m_systemFolders, [](const QString& folder) { return QFileInfo::exists(entryIn(folder)); });
}

}  // namespace vemo
