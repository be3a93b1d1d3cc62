// Everything that needs the accounts' database, put together: its workers and the endpoints of
// accounts.
//
// Made and used on the network thread; owned by the program, and alive until the executor has run
// dry.
#pragma once

#include <boost/asio/io_context.hpp>
#include <expected>
#include <memory>

#include "database/DatabaseWorkers.h"
#include "http/AccessLog.h"
#include "http/Router.h"
#include "setup/Configuration.h"

namespace vemo::service {

class AccountServices {
 public:
  /// Opens the database and brings its schema up to date; the error is one line for the operator.
  static std::expected<std::unique_ptr<AccountServices>, std::string> open(
      const Configuration& configuration, boost::asio::io_context& io, AccessLog& log);

  void addTo(Router& router);
  DatabaseWorkers& database() { return m_database; }

 private:
  static constexpr DatabaseWorkers::Size databaseSize{.workers = 4, .waiting = 1024};

  AccountServices(const Configuration& configuration, boost::asio::io_context& io, AccessLog& log);

  DatabaseWorkers m_database;
};

}  // namespace vemo::service
