#include "platform/qt/QtSystemInformation.h"

#include <QSysInfo>
#include <QVersionNumber>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

SystemInformation readSystemInformation() {
  return {.systemVersion = threePartVersion(QSysInfo::productVersion()),
          .applicationVersion = QStringLiteral(VEMO_VERSION),
          .applicationBuild = QStringLiteral(VEMO_BUILD)};
}

QString threePartVersion(const QString& version) {
  const auto numbers = QVersionNumber::fromString(version);
  return u"%1.%2.%3"_s.arg(numbers.majorVersion())
      .arg(numbers.minorVersion())
      .arg(numbers.microVersion());
}

}  // namespace vemo
