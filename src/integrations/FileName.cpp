#include "integrations/FileName.h"

#include <QByteArray>
#include <QString>

#include "base/Text.h"

namespace vemo {

bool isAscii(std::string_view name) {
  unsigned char all = 0;
  for (const char c : name) all |= static_cast<unsigned char>(c);
  return all < 0x80;
}

std::string foldedName(std::string_view name) {
  std::string folded;
  foldName(name, folded);
  return folded;
}

void foldName(std::string_view name, std::string& folded) {
  if (!isAscii(name)) {
    folded = lowerCased(QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())))
                 .toStdString();
    return;
  }
  folded = name;
  for (char& c : folded) c = static_cast<char>(c | (c >= 'A' && c <= 'Z' ? 'a' - 'A' : 0));
}

}  // namespace vemo
