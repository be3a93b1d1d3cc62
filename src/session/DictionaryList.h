// The user's dictionary as the windows show and change it, mirrored to the account.
//
// The account's list replaces the local one when it is pulled: when a window appears and when
// somebody signs in. Between pulls the local list counts; each addition and removal is told to the
// service on its own, once, in the background. An empty answer can't be told from a failed one, and
// neither ever empties the local list. No failure reaches the user.
//
// Observable. Main thread only; network waits suspend. Made once, beside the AuthManager, which
// outlives it. A sign-out ends the pull under way and empties the list.
#pragma once

#include <QString>
#include <stop_token>
#include <vector>

#include "base/Notifier.h"
#include "base/TaskScope.h"
#include "session/StoredEntries.h"
#include "shaping/CustomEntries.h"

namespace vemo {

class AuthManager;

class DictionaryList {
 public:
  DictionaryList(MainThread& mainThread, Settings& settings, AuthManager& auth);

  const std::vector<CustomDictionaryEntry>& entries() const { return m_entries.rows(); }

  /// Whether the account's list is on its way.
  bool isDictionaryLoading() const { return m_isDictionaryLoading; }

  /// Tells that entries() or isDictionaryLoading() may read differently.
  Notifier<> changed;

  /// Shows what is stored, then asks for the profile and pulls. To be called when a window appears;
  /// a sign-in does it by itself. In place of a pull that is under way.
  void load();

  /// Blanks around the two texts are dropped. In force for the next dictation.
  void add(const QString& phrase, const QString& replacement);

  /// Writes other texts into a row, which keeps its place; false when the row has gone. The account
  /// knows no changing, so there the old entry goes and a new one comes.
  bool edit(const QString& id, const QString& phrase, const QString& replacement);

  void remove(const QString& id);

 private:
  void signInChanged();
  void setLoading(bool isLoading);
  Task<> pull(std::stop_token stop);
  Task<> push(QString id, QString phrase, QString replacement, std::stop_token stop);
  Task<> pushChange(QString oldId, CustomDictionaryEntry entry, std::stop_token stop);
  Task<> pushRemoval(QString id, std::stop_token stop);

  AuthManager& m_auth;
  StoredEntries<CustomDictionaryEntry> m_entries;
  bool m_wasSignedIn;
  bool m_isDictionaryLoading = false;
  StartedTask m_pull;
  Observation m_authObservation;
  TaskScope m_tasks;
};

}  // namespace vemo
