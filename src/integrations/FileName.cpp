#include "integrations/FileName.h"

#include <QByteArray>
#include <QString>
#include <algorithm>

#include "base/Text.h"

namespace vemo {

std::string foldedName(std::string_view name) {
  const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
  if (!std::ranges::all_of(name, isAscii))
    return lowerCased(QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())))
        .toStdString();
  std::string folded(name);
  for (char& c : folded) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return folded;
}

}  // namespace vemo
