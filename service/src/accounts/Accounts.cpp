#include "accounts/Accounts.h"

#include <soci/boost-optional.h>

#include <boost/optional.hpp>
#include <charconv>

#include "accounts/Secrets.h"

namespace vemo::service {

namespace {

using soci::into;
using soci::use;
using Text = boost::optional<std::string>;

Text stored(const std::optional<std::string>& text) {
  return text ? Text(*text) : Text();
}

std::optional<std::string> read(const Text& text) {
  return text ? std::optional(*text) : std::nullopt;
}

}  // namespace

Account Accounts::signIn(const Identity& identity, Moment now) {
  return m_database.inTransaction([&] {
    const AccountId fresh = randomIdentifier();
    const long long seconds = now.time_since_epoch().count();
    const Text email = stored(identity.email);
    const Text name = stored(identity.name);
    const Text avatar = stored(identity.avatar);
    long long id = 0;
    m_database.session()
        << "INSERT INTO accounts (id, issuer, subject, email, name, avatar, created_at) VALUES "
           "(:id, :issuer, :subject, :email, :name, :avatar, :now) ON CONFLICT (issuer, subject) "
           "DO "
           "UPDATE SET email = excluded.email, avatar = excluded.avatar, name = "
           "coalesce(accounts.name, excluded.name) RETURNING id",
        use(fresh), use(identity.issuer), use(identity.subject), use(email), use(name), use(avatar),
        use(seconds), into(id);
    return find(id).value();
  });
}

std::vector<Account> Accounts::select(const std::string& condition, const std::string& value) {
  long long id = 0;
  Text email;
  Text name;
  Text avatar;
  auto& session = m_database.session();
  soci::statement statement(session);
  statement.exchange(into(id));
  statement.exchange(into(email));
  statement.exchange(into(name));
  statement.exchange(into(avatar));
  if (!value.empty()) statement.exchange(use(value));
  statement.alloc();
  statement.prepare("SELECT id, email, name, avatar FROM accounts " + condition);
  statement.define_and_bind();
  statement.execute();
  std::vector<Account> accounts;
  while (statement.fetch())
    accounts.push_back(
        {.id = id, .email = read(email), .name = read(name), .avatar = read(avatar)});
  return accounts;
}

std::optional<Account> Accounts::find(AccountId id) {
  const auto found = select("WHERE id = :id", std::to_string(id));
  return found.empty() ? std::nullopt : std::optional(found.front());
}

std::optional<Account> Accounts::rename(AccountId id, const std::string& name) {
  m_database.session() << "UPDATE accounts SET name = :name WHERE id = :id", use(name), use(id);
  return find(id);
}

bool Accounts::remove(AccountId id) {
  // Everything else that belongs to it goes with it, by the references of the schema.
  const auto removed = m_database.inTransaction([&] {
    return changedRows(
        (m_database.session().prepare << "DELETE FROM accounts WHERE id = :id", use(id)));
  });
  if (m_database.kind() == DatabaseAddress::Kind::Sqlite) {
    // Out of the write-ahead log, too.
    m_database.session() << "PRAGMA wal_checkpoint(TRUNCATE)";
  }
  return removed > 0;
}

std::vector<Account> Accounts::named(const std::string& identifierOrEmail) {
  auto found = select("WHERE email = :email ORDER BY id", identifierOrEmail);
  AccountId id = 0;
  const auto end = identifierOrEmail.data() + identifierOrEmail.size();
  const auto [stop, error] = std::from_chars(identifierOrEmail.data(), end, id);
  if (!found.empty() || error != std::errc() || stop != end) return found;
  return select("WHERE id = :id", identifierOrEmail);
}

std::vector<Account> Accounts::all() {
  return select("ORDER BY created_at, id", {});
}

}  // namespace vemo::service
