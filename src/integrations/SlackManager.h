// The directory of the user's Slack workspace, read with the user's own token.
//
// Main thread only; nothing here fails towards its caller.
#pragma once

namespace vemo {

class SecureTokenStore;
class Settings;

class SlackManager {
 public:
  SlackManager(SecureTokenStore& tokens, Settings& settings);

  /// Forgets the token and all that was learnt with it.
  void disconnect();

 private:
  SecureTokenStore& m_tokens;
  Settings& m_settings;
};

}  // namespace vemo
