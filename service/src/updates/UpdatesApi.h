// GET desktop/updates/NAME: the feed of updates and its archives, files of one folder as they are.
//
// Whoever asks needs no token: feed and archives are signed, and a program looks for updates before
// anybody has signed in. Archives are sent in parts, for which the client asks. Any thread.
#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include "http/Router.h"

namespace vemo::service {

/// The part of a file that a Range header names, "bytes=0-99".
struct FilePart {
  std::uint64_t first;
  std::uint64_t last;

  static std::optional<FilePart> parse(std::string_view range);
};

class UpdatesApi {
 public:
  static constexpr std::uint64_t largestPart = 4 * 1024 * 1024;

  explicit UpdatesApi(std::filesystem::path folder) : m_folder(std::move(folder)) {}

  void addTo(Router& router) const;

 private:
  const std::filesystem::path m_folder;
};

}  // namespace vemo::service
