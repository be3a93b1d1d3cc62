// The pages of the local identity provider: plain HTML without a script. Pure functions.
#pragma once

#include <string>
#include <string_view>

namespace vemo::service {

struct ConsentPage {
  std::string name;
  std::string email;
  std::string ticket;  ///< what the form sends back, so that no other page can press the button
  std::string styleNonce;
};

std::string written(const ConsentPage& page);

std::string errorPage(std::string_view message, std::string_view styleNonce);

}  // namespace vemo::service
