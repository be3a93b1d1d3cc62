#include "platform/updater/UpdateMemory.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include "platform/updater/UpdateSignatures.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qint64 largestFile = 64 * 1024;

QString base64(const QByteArray& bytes) {
  return QString::fromLatin1(bytes.toBase64());
}

}  // namespace

UpdateMemory UpdateMemory::read(const QString& file, const QByteArray& builtIn) {
  UpdateMemory memory{.serial = 0, .key = builtIn, .lastCheck = {}};
  QFile opened(file);
  if (!opened.open(QIODevice::ReadOnly)) return memory;
  const QJsonObject json = QJsonDocument::fromJson(opened.read(largestFile)).object();
  memory.automaticallyChecks = json[u"automaticallyChecks"].toBool(true);
  memory.automaticallyDownloads = json[u"automaticallyDownloads"].toBool(true);
  memory.skippedBuild = json[u"skippedBuild"].toString().toULongLong();
  memory.installedBuild = json[u"installedBuild"].toString().toULongLong();
  const auto lastCheck = QDateTime::fromString(json[u"lastCheck"].toString(), Qt::ISODate);
  if (lastCheck.isValid()) memory.lastCheck = lastCheck;
  if (json[u"builtInKey"].toString() != base64(builtIn)) return memory;
  memory.serial = json[u"serial"].toString().toULongLong();
  memory.key = publicKeyFrom(json[u"key"].toString().toLatin1()).value_or(builtIn);
  return memory;
}

bool UpdateMemory::write(const QString& file, const QByteArray& builtIn) const {
  QDir().mkpath(QFileInfo(file).path());
  const QJsonObject json{
      {u"serial"_s, QString::number(serial)},
      {u"builtInKey"_s, base64(builtIn)},
      {u"key"_s, base64(key)},
      {u"lastCheck"_s, lastCheck ? lastCheck->toUTC().toString(Qt::ISODate) : QString()},
      {u"skippedBuild"_s, QString::number(skippedBuild)},
      {u"installedBuild"_s, QString::number(installedBuild)},
      {u"automaticallyChecks"_s, automaticallyChecks},
      {u"automaticallyDownloads"_s, automaticallyDownloads}};
  QSaveFile saved(file);
  if (!saved.open(QIODevice::WriteOnly)) return false;
  saved.write(QJsonDocument(json).toJson());
  return saved.commit();
}

}  // namespace vemo
