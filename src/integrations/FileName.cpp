#include "integrations/FileName.h"

#include <QByteArray>
#include <QString>
#include <algorithm>

#include "base/Text.h"

namespace vemo {

namespace {

constexpr bool isCapital(char c) {
  return c >= 'A' && c <= 'Z';
}

}  // namespace

bool isAscii(std::string_view name) {
  unsigned char all = 0;
  for (const char c : name) all |= static_cast<unsigned char>(c);
  return all < 0x80;
}

bool isFolded(std::string_view name) {
  bool isChanged = false;
  for (const char c : name) isChanged |= isCapital(c) || static_cast<unsigned char>(c) >= 0x80;
  return !isChanged;
}

std::string foldedName(std::string_view name) {
  std::string folded;
  appendFolded(name, folded);
  return folded;
}

void appendFolded(std::string_view name, std::string& text) {
  if (!isAscii(name)) {
    text += lowerCased(QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())))
                .toStdString();
    return;
  }
  const std::size_t before = text.size();
  text.resize_and_overwrite(before + name.size(), [&](char* bytes, std::size_t size) {
    std::ranges::transform(name, bytes + before, [](char c) {
      return static_cast<char>(c | (isCapital(c) ? 'a' - 'A' : 0));
    });
    return size;
  });
}

}  // namespace vemo
