#include "accounts/Dictionary.h"

#include "accounts/Secrets.h"

namespace vemo::service {

using soci::into;
using soci::use;

std::vector<DictionaryEntry> Dictionary::entries() {
  std::vector<DictionaryEntry> entries;
  DictionaryEntry entry;
  long long id = 0;
  soci::statement statement =
      (m_database.session().prepare
           << "SELECT id, phrase, replacement FROM dictionary_entries WHERE "
              "account = :account ORDER BY position, id",
       use(m_account), into(id), into(entry.phrase), into(entry.replacement));
  statement.execute();
  while (statement.fetch()) {
    entry.id = id;
    entries.push_back(entry);
  }
  return entries;
}

std::optional<DictionaryEntry> Dictionary::add(const std::string& phrase,
                                               const std::string& replacement) {
  const auto id = randomIdentifier();
  const auto limit = entriesAnAccount;
  const bool added = m_database.inTransaction([&] {
    return changedRows((
               m_database.session().prepare
                   << "INSERT INTO dictionary_entries (account, id, phrase, replacement, position) "
                      "SELECT accounts.id, :id, :phrase, :replacement, coalesce((SELECT "
                      "max(position) FROM dictionary_entries WHERE account = :a), 0) + 1 FROM "
                      "accounts WHERE accounts.id = :b AND (SELECT count(*) FROM "
                      "dictionary_entries WHERE account = :c) < :limit",
               use(id), use(phrase), use(replacement), use(m_account), use(m_account),
               use(m_account), use(limit))) > 0;
  });
  if (!added) return std::nullopt;
  return DictionaryEntry{.id = id, .phrase = phrase, .replacement = replacement};
}

bool Dictionary::remove(std::int64_t id) {
  return changedRows((m_database.session().prepare
                          << "DELETE FROM dictionary_entries WHERE account = :account AND id = :id",
                      use(m_account), use(id))) > 0;
}

}  // namespace vemo::service
