#include "platform/qt/QtSystemInformation.h"

#include <QFile>
#include <QSysInfo>
#include <QVersionNumber>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

QString contentOf(const QString& path) {
  constexpr qint64 longest = 64 * 1024;
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return {};
  QByteArray content = file.read(longest);
  while (content.endsWith('\0')) content.chop(1);
  return QString::fromUtf8(content).trimmed();
}

/// What the firmware says: on PCs through DMI, elsewhere through the device tree.
std::optional<QString> deviceModel(const QString& root) {
  for (const auto& path :
       {u"/sys/class/dmi/id/product_name"_s, u"/sys/firmware/devicetree/base/model"_s}) {
    if (const QString model = contentOf(root + path); !model.isEmpty()) return model;
  }
  return std::nullopt;
}

std::optional<QString> processorName(const QString& root) {
  for (const QString& line : contentOf(root + u"/proc/cpuinfo"_s).split(u'\n')) {
    if (!line.startsWith(u"model name"_s)) continue;
    const QString name = line.section(u':', 1).trimmed();
    if (!name.isEmpty()) return name;
  }
  return std::nullopt;
}

}  // namespace

SystemInformation readSystemInformation(const QString& root) {
  return {.systemVersion = threePartVersion(QSysInfo::productVersion()),
          .applicationVersion = QStringLiteral(VEMO_VERSION),
          .applicationBuild = QStringLiteral(VEMO_BUILD),
          .systemVersionText = QSysInfo::prettyProductName(),
          .deviceModel = deviceModel(root),
          .processorArchitecture = QSysInfo::currentCpuArchitecture(),
          .processorName = processorName(root)};
}

QString threePartVersion(const QString& version) {
  const auto numbers = QVersionNumber::fromString(version);
  return u"%1.%2.%3"_s.arg(numbers.majorVersion())
      .arg(numbers.minorVersion())
      .arg(numbers.microVersion());
}

}  // namespace vemo
