// One connection to the database that accounts live in: SQLite or PostgreSQL.
//
// One thread at a time. Whatever fails throws soci::soci_error, whose text may quote what was
// stored and therefore never reaches a log; DatabaseWorkers is where such exceptions stop.
#pragma once

#include <soci/soci.h>

#include <string>

#include "database/DatabaseAddress.h"

namespace vemo::service {

class Database {
 public:
  /// Connects; makes an absent SQLite file, mode 0600, and its folder.
  explicit Database(DatabaseAddress address);

  soci::session& session() { return m_session; }
  DatabaseAddress::Kind kind() const { return m_address.kind; }

  /// False when the connection has gone for good.
  bool isConnected() const { return m_session.is_connected(); }

  /// Runs `work` in one transaction, which is undone when `work` throws. On SQLite it holds the
  /// place of the only writer from the start, so that it never has to give up halfway. Within
  /// another one it becomes part of that.
  template <typename Work>
  auto inTransaction(Work work) {
    if (m_inTransaction) return work();
    Transaction transaction(*this);
    if constexpr (std::is_void_v<decltype(work())>) {
      work();
      transaction.commit();
    } else {
      auto result = work();
      transaction.commit();
      return result;
    }
  }

 private:
  class Transaction {
   public:
    explicit Transaction(Database& database);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void commit();

   private:
    Database& m_database;
    bool m_open = true;
  };

  void prepare();

  const DatabaseAddress m_address;
  soci::session m_session;
  bool m_inTransaction = false;
};

/// How many rows the statement changed; parameters as in soci's `use`.
long long changedRows(soci::statement statement);

}  // namespace vemo::service
