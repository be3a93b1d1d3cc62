#include "accounts/UsageMeter.h"

#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <utility>

namespace vemo::service {

namespace net = boost::asio;

namespace {

/// Network thread only, after it is made.
struct Wait {
  Wait(const net::any_io_executor& executor, std::move_only_function<void()> whenDone)
      : timer(executor, UsageMeter::patience), done(std::move(whenDone)) {}

  void end() {
    timer.cancel();
    if (auto call = std::exchange(done, nullptr)) call();
  }

  net::steady_timer timer;
  std::move_only_function<void()> done;
};

}  // namespace

void UsageMeter::count(AccountId account, const UsageStep& step, std::string key,
                       std::move_only_function<void()> done) {
  const auto wait = std::make_shared<Wait>(m_networkThread, std::move(done));
  net::post(m_networkThread, [wait] {
    wait->timer.async_wait([wait](const boost::system::error_code&) { wait->end(); });
  });
  m_database.ask([account, step, key = std::move(key), now = m_now()](
                     Database& database) { return Usage(database).add(account, step, key, now); },
                 [wait, executor = m_networkThread](const auto&) {
                   net::post(executor, [wait] { wait->end(); });
                 });
}

}  // namespace vemo::service
