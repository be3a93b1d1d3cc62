// A file's name, in UTF-8, in its parts and in the form in which names are compared. Any thread.
#pragma once

#include <string>
#include <string_view>

namespace vemo {

struct FileNameParts {
  std::string_view base;       ///< without the last extension
  std::string_view extension;  ///< without its point; empty when there is none
};

/// The last point parts the two, unless nothing stands before or after it.
constexpr FileNameParts partsOf(std::string_view fileName) {
  const auto point = fileName.rfind('.');
  if (point == std::string_view::npos || point == 0 || point + 1 == fileName.size())
    return {.base = fileName, .extension = {}};
  return {.base = fileName.substr(0, point), .extension = fileName.substr(point + 1)};
}

bool isAscii(std::string_view name);

/// lowerCased(), on valid UTF-8.
std::string foldedName(std::string_view name);

/// Puts foldedName() at the end of a text.
void appendFolded(std::string_view name, std::string& text);

/// Whether a name is its own foldedName(). May say no where it is, but not in ASCII.
bool isFolded(std::string_view name);

}  // namespace vemo
