// The client's view of the signed-in account, and the owner of the session token's life.
//
// Observable. Main thread only; no operation fails towards its caller.
#pragma once

#include <QString>
#include <optional>
#include <stop_token>

#include "base/Notifier.h"
#include "base/Task.h"

namespace vemo {

class SecureTokenStore;
class Settings;
class Telemetry;

class AuthManager {
 public:
  /// Signed in from the start when the token store holds a session token.
  AuthManager(SecureTokenStore& tokens, Settings& settings, Telemetry& telemetry);

  bool isSignedIn() const { return m_isSignedIn; }

  /// The last failure of sign-in or session, in words for the user.
  const std::optional<QString>& lastError() const { return m_lastError; }
  void setLastError(std::optional<QString> message);

  Notifier<> changed;

  /// Drops the session token and what the settings hold of the account, on this machine alone.
  void signOut();

  /// Reads the account anew from the service. The companion service keeps no accounts, so there is
  /// nothing to read.
  Task<> refreshProfile(std::stop_token stop);

 private:
  SecureTokenStore& m_tokens;
  Settings& m_settings;
  Telemetry& m_telemetry;
  bool m_isSignedIn = false;
  std::optional<QString> m_lastError;
};

}  // namespace vemo
