#include "session/DictionaryList.h"

#include "account/AuthManager.h"
#include "storage/SettingsKeys.h"

namespace vemo {

DictionaryList::DictionaryList(MainThread& mainThread, Settings& settings, AuthManager& auth)
    : m_auth(auth),
      m_entries(settings, {keys::customDictionaryEntries, &decodeDictionary, &encodeDictionary}),
      m_wasSignedIn(auth.isSignedIn()),
      m_authObservation(auth.changed.observe([this] { signInChanged(); })),
      m_tasks(mainThread) {
  if (m_wasSignedIn) m_entries.read();
}

void DictionaryList::signInChanged() {
  if (m_wasSignedIn == m_auth.isSignedIn()) return;
  m_wasSignedIn = m_auth.isSignedIn();
  if (m_wasSignedIn) return load();
  m_pull.cancel();
  m_isDictionaryLoading = false;
  m_entries.forget();
  changed.notify();
}

void DictionaryList::load() {
  m_pull.cancel();
  m_isDictionaryLoading = false;
  m_entries.forget();
  if (m_auth.isSignedIn()) {
    m_entries.read();
    m_pull = m_tasks.start([&](std::stop_token stop) { return pull(std::move(stop)); });
  }
  changed.notify();
}

void DictionaryList::setLoading(bool isLoading) {
  m_isDictionaryLoading = isLoading;
  changed.notify();
}

/// Whoever cancels a pull has already said that nothing is loading.
Task<> DictionaryList::pull(std::stop_token stop) {
  co_await m_auth.refreshProfile(stop);
  if (stop.stop_requested() || !m_auth.isSignedIn()) co_return;
  setLoading(true);
  const auto items = co_await m_auth.fetchDictionary(stop);
  if (stop.stop_requested()) co_return;
  if (!items.empty()) {
    std::vector<CustomDictionaryEntry> rows;
    rows.reserve(items.size());
    for (const auto& [id, phrase, replacement] : items) rows.push_back({id, phrase, replacement});
    m_entries.replace(std::move(rows));
  }
  setLoading(false);
}

void DictionaryList::add(const QString& phrase, const QString& replacement) {
  const QString heard = withoutOuterBlanks(phrase);
  const QString written = withoutOuterBlanks(replacement);
  // With nobody signed in the list shows nothing, and yet nothing that is stored may be lost.
  if (!m_auth.isSignedIn()) m_entries.read();
  const QString id = m_entries.append(heard, written);
  if (m_auth.isSignedIn()) {
    m_tasks.start([&](std::stop_token stop) { return push(id, heard, written, std::move(stop)); });
  }
  changed.notify();
}

/// The row may have been removed meanwhile, or replaced by a pull.
Task<> DictionaryList::push(QString id, QString phrase, QString replacement, std::stop_token stop) {
  const auto item = co_await m_auth.addDictionaryItem(phrase, replacement, stop);
  if (item && m_entries.changeId(id, item->id)) changed.notify();
}

bool DictionaryList::edit(const QString& id, const QString& phrase, const QString& replacement) {
  if (!m_auth.isSignedIn()) m_entries.read();
  const CustomDictionaryEntry entry{m_entries.newId(), withoutOuterBlanks(phrase),
                                    withoutOuterBlanks(replacement)};
  if (!m_entries.change(id, entry)) return false;
  if (m_auth.isSignedIn()) {
    m_tasks.start([&](std::stop_token stop) { return pushChange(id, entry, std::move(stop)); });
  }
  changed.notify();
  return true;
}

/// The removal goes first: the service may refuse a phrase that it holds already.
Task<> DictionaryList::pushChange(QString oldId, CustomDictionaryEntry entry,
                                  std::stop_token stop) {
  co_await m_auth.deleteDictionaryItem(oldId, stop);
  co_await push(entry.id, entry.phrase, entry.replacement, stop);
}

void DictionaryList::remove(const QString& id) {
  if (!m_auth.isSignedIn()) m_entries.read();
  m_entries.remove(id);
  if (m_auth.isSignedIn())
    m_tasks.start([&](std::stop_token stop) { return pushRemoval(id, std::move(stop)); });
  changed.notify();
}

Task<> DictionaryList::pushRemoval(QString id, std::stop_token stop) {
  co_await m_auth.deleteDictionaryItem(id, stop);
}

}  // namespace vemo
