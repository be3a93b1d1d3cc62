#include "integrations/SlackManager.h"

#include "storage/SecureTokenStore.h"
#include "storage/SettingsKeys.h"

namespace vemo {

SlackManager::SlackManager(SecureTokenStore& tokens, Settings& settings)
    : m_tokens(tokens), m_settings(settings) {}

void SlackManager::disconnect() {
  m_tokens.remove(QString::fromUtf16(slackApiTokenAccount));
  m_settings.remove(keys::slackApiToken);
  m_settings.remove(keys::slackCachedUsers);
  m_settings.remove(keys::slackCachedChannels);
  m_settings.remove(keys::slackCachedWorkspace);
}

}  // namespace vemo
