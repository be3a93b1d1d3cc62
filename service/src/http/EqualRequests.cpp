#include "http/EqualRequests.h"

#include <boost/asio/post.hpp>
#include <list>
#include <optional>
#include <utility>

namespace vemo::service {

namespace net = boost::asio;

struct EqualRequests::Waiter {
  explicit Waiter(Completion done) : completion(std::move(done)) {}

  Completion completion;
  std::optional<std::stop_callback<std::function<void()>>> onStop;
};

/// Under way while `answer` is absent, remembered once it is there.
struct EqualRequests::Entry {
  RequestKey key;
  std::list<Waiter> waiters;
  std::stop_source work;
  std::optional<Answer> answer;
  Clock::time_point forgetAt;
};

EqualRequests::EqualRequests(net::any_io_executor executor, const Limits& limits)
    : m_executor(executor), m_limits(limits), m_timer(executor) {}

void EqualRequests::answer(const RequestKey& key, std::stop_token stop, Work work,
                           Completion completion) {
  auto& known = m_entries[key];
  if (known && known->answer) return completion(*known->answer);
  if (known) return join(known, std::move(stop), std::move(completion));

  known = std::make_shared<Entry>();
  const auto entry = known;
  entry->key = key;
  join(entry, std::move(stop), std::move(completion));
  // The worker may outlive this object, the executor outlives both.
  work(entry->work.get_token(), [this, executor = m_executor, entry](Answer answer) {
    net::post(executor, [this, entry, answer = std::move(answer)]() mutable {
      complete(entry, std::move(answer));
    });
  });
}

void EqualRequests::join(const std::shared_ptr<Entry>& entry, std::stop_token stop,
                         Completion completion) {
  auto& waiter = entry->waiters.emplace_back(std::move(completion));
  // Posted: the callback may run at once, and leaving destroys it.
  waiter.onStop.emplace(std::move(stop), [this, entry, waiter = &waiter] {
    net::post(m_executor, [this, entry, waiter] { leave(entry, waiter); });
  });
}

void EqualRequests::leave(const std::shared_ptr<Entry>& entry, const Waiter* waiter) {
  std::list<Waiter> leaving;
  for (auto place = entry->waiters.begin(); place != entry->waiters.end(); ++place) {
    if (&*place != waiter) continue;
    leaving.splice(leaving.end(), entry->waiters, place);
    break;
  }
  if (leaving.empty()) return;
  leaving.front().completion({.status = clientClosedRequest});
  if (!entry->waiters.empty()) return;
  // Whoever comes now must not join work that ends without an answer.
  m_entries.erase(entry->key);
  entry->work.request_stop();
}

void EqualRequests::complete(const std::shared_ptr<Entry>& entry, Answer answer) {
  auto waiters = std::exchange(entry->waiters, {});
  if (waiters.empty()) return;
  if (answer.status == 200)
    remember(entry, answer);
  else
    m_entries.erase(entry->key);
  for (auto& waiter : waiters) waiter.completion(answer);
}

void EqualRequests::remember(const std::shared_ptr<Entry>& entry, Answer answer) {
  m_answeredBytes += answer.body.size();
  entry->answer = std::move(answer);
  entry->forgetAt = Clock::now() + m_limits.repeatTime;
  m_answered.push_back(entry);
  while (m_answered.size() > m_limits.repeatAnswers || m_answeredBytes > rememberedBytes)
    forgetOldest();
  if (m_answered.size() == 1) forgetOutdated();
}

void EqualRequests::forgetOldest() {
  m_answeredBytes -= m_answered.front()->answer->body.size();
  m_entries.erase(m_answered.front()->key);
  m_answered.pop_front();
}

/// Keeps the timer running for as long as there is something to forget.
void EqualRequests::forgetOutdated() {
  while (!m_answered.empty() && m_answered.front()->forgetAt <= Clock::now()) forgetOldest();
  if (m_answered.empty()) return;
  m_timer.expires_at(m_answered.front()->forgetAt);
  m_timer.async_wait([this](const boost::system::error_code& error) {
    if (!error) forgetOutdated();
  });
}

std::size_t EqualRequests::waitingCount() const {
  std::size_t count = 0;
  for (const auto& [key, entry] : m_entries) count += entry->waiters.size();
  return count;
}

void EqualRequests::forget() {
  m_timer.cancel();
  while (!m_answered.empty()) forgetOldest();
}

}  // namespace vemo::service
