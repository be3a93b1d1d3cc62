#include "accounts/Usage.h"

namespace vemo::service {

namespace {

using soci::into;
using soci::use;

/// A number for each calendar month.
long long cycleOf(Moment moment) {
  const std::chrono::year_month_day date(std::chrono::floor<std::chrono::days>(moment));
  return static_cast<int>(date.year()) * 12LL + static_cast<unsigned>(date.month());
}

}  // namespace

bool Usage::add(AccountId account, const UsageStep& step, const std::string& key, Moment now) {
  const long long seconds = now.time_since_epoch().count();
  const long long cycle = cycleOf(now);
  const long long milliseconds = step.speech.count();
  auto& session = m_database.session();
  return m_database.inTransaction([&] {
    const auto isNew = changedRows(
        (session.prepare << "INSERT INTO counted_requests (account, hash, counted_at) SELECT id, "
                            ":hash, :now FROM accounts WHERE id = :account ON CONFLICT DO NOTHING",
         use(key), use(seconds), use(account)));
    if (isNew == 0) return false;
    session
        << "INSERT INTO usage_sums (account, words, cycle, cycle_words, milliseconds, ai_tokens, "
           "utterances, requests, last_active_at) VALUES (:account, :words, :cycle, :cycle_words, "
           ":milliseconds, :tokens, :utterances, 1, :now) ON CONFLICT (account) DO UPDATE SET "
           "words = usage_sums.words + excluded.words, cycle_words = CASE WHEN usage_sums.cycle = "
           "excluded.cycle THEN usage_sums.cycle_words ELSE 0 END + excluded.words, cycle = "
           "excluded.cycle, milliseconds = usage_sums.milliseconds + excluded.milliseconds, "
           "ai_tokens = usage_sums.ai_tokens + excluded.ai_tokens, utterances = "
           "usage_sums.utterances + excluded.utterances, requests = usage_sums.requests + 1, "
           "last_active_at = excluded.last_active_at",
        use(account), use(step.words), use(cycle), use(step.words), use(milliseconds),
        use(step.aiTokens), use(step.utterances), use(seconds);
    return true;
  });
}

UsageSums Usage::of(AccountId account, Moment now) {
  UsageSums sums;
  long long words = 0;
  long long cycle = 0;
  long long cycleWords = 0;
  long long milliseconds = 0;
  long long tokens = 0;
  long long utterances = 0;
  long long requests = 0;
  long long lastActive = 0;
  auto& session = m_database.session();
  session << "SELECT words, cycle, cycle_words, milliseconds, ai_tokens, utterances, requests, "
             "last_active_at FROM usage_sums WHERE account = :account",
      use(account), into(words), into(cycle), into(cycleWords), into(milliseconds), into(tokens),
      into(utterances), into(requests), into(lastActive);
  if (!session.got_data()) return sums;
  return {.words = words,
          .cycleWords = cycle == cycleOf(now) ? cycleWords : 0,
          .speech = std::chrono::milliseconds(milliseconds),
          .aiTokens = tokens,
          .utterances = utterances,
          .requests = requests,
          .lastActive = Moment(std::chrono::seconds(lastActive))};
}

}  // namespace vemo::service
