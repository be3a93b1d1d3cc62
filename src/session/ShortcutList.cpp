#include "session/ShortcutList.h"

#include "account/AuthManager.h"
#include "storage/SettingsKeys.h"

namespace vemo {

ShortcutList::ShortcutList(Settings& settings, AuthManager& auth)
    : m_auth(auth),
      m_entries(settings, {keys::customShortcutEntries, &decodeShortcuts, &encodeShortcuts}),
      m_wasSignedIn(auth.isSignedIn()),
      m_authObservation(auth.changed.observe([this] { signInChanged(); })) {
  if (m_wasSignedIn) m_entries.read();
}

void ShortcutList::signInChanged() {
  if (m_wasSignedIn == m_auth.isSignedIn()) return;
  m_wasSignedIn = m_auth.isSignedIn();
  load();
}

void ShortcutList::load() {
  m_entries.forget();
  if (m_auth.isSignedIn()) m_entries.read();
  changed.notify();
}

void ShortcutList::add(const QString& trigger, const QString& snippet) {
  // With nobody signed in the list shows nothing, and yet nothing that is stored may be lost.
  if (!m_auth.isSignedIn()) m_entries.read();
  m_entries.append(withoutOuterBlanks(trigger), withoutOuterBlanks(snippet));
  changed.notify();
}

bool ShortcutList::edit(const QString& id, const QString& trigger, const QString& snippet) {
  if (!m_auth.isSignedIn()) m_entries.read();
  if (!m_entries.change(id, {id, withoutOuterBlanks(trigger), withoutOuterBlanks(snippet)}))
    return false;
  changed.notify();
  return true;
}

void ShortcutList::remove(const QString& id) {
  if (!m_auth.isSignedIn()) m_entries.read();
  m_entries.remove(id);
  changed.notify();
}

}  // namespace vemo
