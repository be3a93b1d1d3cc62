// Counts what dictations of accounts come to, before they are answered.
//
// `count` is for any thread; its completion runs exactly once, on the network thread: when the step
// is counted, when that failed, or after `patience`. A text is worth more than its count.
#pragma once

#include <boost/asio/any_io_executor.hpp>

#include "accounts/Usage.h"
#include "database/DatabaseWorkers.h"

namespace vemo::service {

class UsageMeter {
 public:
  static constexpr std::chrono::milliseconds patience{500};

  UsageMeter(DatabaseWorkers& database, boost::asio::any_io_executor networkThread, Now now)
      : m_database(database), m_networkThread(std::move(networkThread)), m_now(std::move(now)) {}

  /// `key` as in Usage::add.
  void count(AccountId account, const UsageStep& step, std::string key,
             std::move_only_function<void()> done);

 private:
  DatabaseWorkers& m_database;
  const boost::asio::any_io_executor m_networkThread;
  const Now m_now;
};

}  // namespace vemo::service
