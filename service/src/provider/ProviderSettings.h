// How the local identity provider is set up. A plain value, checked by the configuration.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace vemo::service {

struct ProviderSettings {
  bool enabled = false;
  std::string address = "127.0.0.1";  ///< always one of loopback
  std::uint16_t port = 8751;          ///< 0: any free one
  std::string clientIdentifier = "desktop.vemo.brelmox";
  // Of the person at this machine; empty: what the login says.
  std::string name = {};
  std::string email = {};
  std::filesystem::path keyFile = {};

  /// The client identifier's parts from back to front, as installed applications have it.
  std::string redirectScheme() const;
  std::string redirectUri() const { return redirectScheme() + ":/oauth2redirect"; }
  /// With name and e-mail address filled in from the login.
  ProviderSettings completed() const;
};

/// Stays the same whatever the port: accounts are told apart by it.
inline constexpr auto localIssuer = "http://localhost/vemo-local-sign-in";

}  // namespace vemo::service
