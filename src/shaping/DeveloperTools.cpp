#include "shaping/DeveloperTools.h"

#include <QLocale>
#include <algorithm>
#include <span>

namespace vemo {

namespace {

bool containsAny(const QString& text, std::span<const QStringView> words) {
  // In Turkish "I" is no form of "i", as its speakers expect.
  const QString lower = QLocale().toLower(text);
  return std::ranges::any_of(words, [&](QStringView word) { return lower.contains(word); });
}

}  // namespace

bool isDeveloperTool(const QString& identifier, const QString& name) {
  return containsAny(identifier, developerToolIdentifierWords) ||
         containsAny(name, developerToolNameWords);
}

}  // namespace vemo
