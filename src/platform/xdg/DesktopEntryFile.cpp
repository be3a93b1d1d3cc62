#include "platform/xdg/DesktopEntryFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <algorithm>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

bool isPlain(const QString& argument) {
  return std::ranges::all_of(argument, [](QChar letter) {
    return letter.unicode() < 0x80 && (letter.isLetterOrNumber() || u"/._-+"_s.contains(letter));
  });
}

}  // namespace

QString quotedExecArgument(const QString& argument) {
  if (isPlain(argument)) return argument;
  QString text = argument;
  // Once for the quotes of the command, and once more as any string of the file.
  for (const auto& special : {u"\\"_s, u"\""_s, u"`"_s, u"$"_s})
    text.replace(special, u"\\"_s + special);
  text.replace(u"\\"_s, u"\\\\"_s);
  // A percent sign introduces a field code.
  text.replace(u"%"_s, u"%%"_s);
  return u'"' + text + u'"';
}

std::expected<void, QString> writeDesktopEntry(const QString& path, const QByteArray& content) {
  // Anything but a plain file may block the reader.
  if (QFileInfo(path).isFile()) {
    QFile existing(path);
    if (existing.open(QIODevice::ReadOnly) && existing.read(content.size() + 1) == content)
      return {};
  }
  const QString folder = QFileInfo(path).path();
  if (!QDir().mkpath(folder)) return std::unexpected(u"no folder %1"_s.arg(folder));
  QSaveFile file(path);
  if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() || !file.commit())
    return std::unexpected(file.errorString());
  return {};
}

}  // namespace vemo
