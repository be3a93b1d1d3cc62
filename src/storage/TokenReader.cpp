#include "storage/TokenReader.h"

#include <algorithm>
#include <utility>

#include "storage/SecureTokenStore.h"

namespace vemo {

namespace {

using namespace std::chrono_literals;

/// Doubled from try to try. Most keyrings tell when they are unlocked, and then nobody waits for
/// these.
constexpr Clock::Duration firstPause = 1s;
constexpr Clock::Duration longestPause = 2min;

}  // namespace

TokenReader::TokenReader(Neighbours neighbours, std::vector<QString> accounts)
    : m_with(std::move(neighbours)), m_accounts(std::move(accounts)), m_tasks(m_with.mainThread) {
  for (const QString& account : m_accounts) m_with.tokens.expect(account);
  // Not as the task's first step, which would wait for the rest of the start-up.
  const auto answer = ask(m_accounts);
  m_asking = m_tasks.start([&](std::stop_token stop) { return followUp(answer, std::move(stop)); });
}

TokenReader::~TokenReader() {
  m_with.giveUp.request_stop();
}

void TokenReader::keyringChanged() {
  askAgain(accountsThatAre(Which::Unsettled));
}

void TokenReader::secretsChanged() {
  askAgain(accountsThatAre(Which::Open));
}

void TokenReader::askAgain(std::vector<QString> accounts) {
  if (accounts.empty()) return;
  if (m_asking.isFinished()) {
    const auto answer = ask(std::move(accounts));
    m_asking =
        m_tasks.start([&](std::stop_token stop) { return followUp(answer, std::move(stop)); });
  } else {
    m_isAskedAgain = true;
    std::exchange(m_pause, {}).request_stop();
  }
}

Completion<TokenReader::News> TokenReader::ask(std::vector<QString> accounts) {
  const Completion<News> completion(m_with.mainThread);
  m_thread.post([completion, accounts = std::move(accounts), &with = m_with] {
    News news;
    for (const QString& account : accounts) {
      if (with.giveUp.stop_requested()) return;
      if (with.tokens.refresh(account, with.backends)) news.push_back(account);
    }
    with.mainThread.post(
        [completion, news = std::move(news)]() mutable { completion.complete(std::move(news)); });
  });
  return completion;
}

Task<> TokenReader::followUp(Completion<News> answer, std::stop_token stop) {
  Clock::Duration pause = firstPause;
  while (!stop.stop_requested()) {
    for (const QString& account : co_await answer) arrived.notify(account);
    if (!m_isAskedAgain && !accountsThatAre(Which::Open).empty()) {
      co_await m_with.clock.sleep(pause, m_pause.get_token());
      pause = std::min(pause * 2, longestPause);
    }
    if (m_isAskedAgain) pause = firstPause;
    auto accounts =
        accountsThatAre(std::exchange(m_isAskedAgain, false) ? Which::Unsettled : Which::Open);
    if (accounts.empty()) co_return;
    answer = ask(std::move(accounts));
  }
}

std::vector<QString> TokenReader::accountsThatAre(Which which) const {
  using Standing = SecureTokenStore::Standing;
  std::vector<QString> accounts;
  for (const QString& account : m_accounts) {
    const Standing standing = m_with.tokens.standing(account);
    if (standing == Standing::Open || (standing == Standing::NoStore && which == Which::Unsettled))
      accounts.push_back(account);
  }
  return accounts;
}

}  // namespace vemo
