// The user's snippets as the windows show and change them. They never leave this machine.
//
// Observable. Main thread only. Made once, beside the AuthManager, which outlives it: with nobody
// signed in the list is empty.
#pragma once

#include <QString>
#include <vector>

#include "base/Notifier.h"
#include "session/StoredEntries.h"
#include "shaping/CustomEntries.h"

namespace vemo {

class AuthManager;

class ShortcutList {
 public:
  ShortcutList(Settings& settings, AuthManager& auth);

  const std::vector<CustomShortcutEntry>& entries() const { return m_entries.rows(); }

  Notifier<> changed;

  /// Shows what is stored. To be called when a window appears; a sign-in does it by itself.
  void load();

  /// Blanks around the two texts are dropped. In force for the next dictation.
  void add(const QString& trigger, const QString& snippet);

  /// Writes other texts into a row, which keeps its place; false when the row has gone.
  bool edit(const QString& id, const QString& trigger, const QString& snippet);

  void remove(const QString& id);

 private:
  void signInChanged();

  AuthManager& m_auth;
  StoredEntries<CustomShortcutEntry> m_entries;
  bool m_wasSignedIn;
  Observation m_authObservation;
};

}  // namespace vemo
