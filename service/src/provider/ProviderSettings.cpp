#include "provider/ProviderSettings.h"

#include <pwd.h>
#include <unistd.h>

#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/split.hpp>
#include <ranges>
#include <vector>

namespace vemo::service {

std::string ProviderSettings::redirectScheme() const {
  std::vector<std::string> parts;
  boost::algorithm::split(parts, clientIdentifier, [](char letter) { return letter == '.'; });
  std::ranges::reverse(parts);
  return boost::algorithm::join(parts, ".");
}

ProviderSettings ProviderSettings::completed() const {
  ProviderSettings result = *this;
  const auto* entry = ::getpwuid(::getuid());
  const std::string login = entry && entry->pw_name ? entry->pw_name : "user";
  // The first of the fields that the comment of a login is divided into.
  std::string fullName = entry && entry->pw_gecos ? entry->pw_gecos : "";
  fullName.resize(std::min(fullName.find(','), fullName.size()));
  if (result.name.empty()) result.name = fullName.empty() ? login : fullName;
  if (result.email.empty()) result.email = login + "@localhost";
  return result;
}

}  // namespace vemo::service
