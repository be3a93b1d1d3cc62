#include "account/AuthManager.h"

#include "storage/SecureTokenStore.h"
#include "storage/SettingsKeys.h"
#include "telemetry/Telemetry.h"

namespace vemo {

AuthManager::AuthManager(SecureTokenStore& tokens, Settings& settings, Telemetry& telemetry)
    : m_tokens(tokens),
      m_settings(settings),
      m_telemetry(telemetry),
      m_isSignedIn(tokens.read(QString::fromUtf16(authTokenAccount)).has_value()) {}

void AuthManager::setLastError(std::optional<QString> message) {
  m_lastError = std::move(message);
  changed.notify();
}

void AuthManager::signOut() {
  m_telemetry.drainForAccountChange();
  m_tokens.remove(QString::fromUtf16(authTokenAccount));
  m_settings.remove(keys::authEmail);
  m_settings.remove(keys::authDisplayName);
  m_settings.remove(keys::authPhotoURL);
  m_settings.remove(keys::recentDictations);
  m_settings.remove(keys::customDictionaryEntries);
  m_settings.remove(keys::customShortcutEntries);
  m_isSignedIn = false;
  m_lastError.reset();
  changed.notify();
}

Task<> AuthManager::refreshProfile(std::stop_token) {
  co_return;
}

}  // namespace vemo
