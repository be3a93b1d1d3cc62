#include "telemetry/TelemetrySummary.h"

#include <sstream>

#include "database/DatabaseCommand.h"

namespace vemo::service {

namespace {

using soci::into;
using soci::use;

constexpr int listedAtMost = 40;

class Summary {
 public:
  Summary(Database& database, Moment now)
      : m_session(database.session()),
        m_today(std::chrono::floor<std::chrono::days>(now).time_since_epoch().count()) {}

  std::string text() {
    m_text << "Installations: "
           << count("SELECT count(*) FROM installations WHERE last_day > :day", -1)
           << ", of them started in the last 30 days: "
           << count("SELECT count(*) FROM installations WHERE last_day > :day", m_today - 30)
           << ", in the last 7: "
           << count("SELECT count(*) FROM installations WHERE last_day > :day", m_today - 7)
           << "\nAccounts: " << count("SELECT count(*) FROM accounts WHERE created_at > :at", -1)
           << ", of them dictating in the last 30 days: "
           << count("SELECT count(*) FROM usage_sums WHERE last_active_at > :at",
                    (m_today - 30) * 86'400)
           << "\nDictations: "
           << count("SELECT coalesce(sum(utterances), 0) FROM usage_sums WHERE words > :least", -1)
           << ", words: "
           << count("SELECT coalesce(sum(words), 0) FROM usage_sums WHERE words > :least", -1)
           << ", minutes of speech: "
           << count("SELECT coalesce(sum(milliseconds), 0) FROM usage_sums WHERE words > :least",
                    -1) /
                  60'000
           << "\n";
    list("Versions of the installations of the last 30 days",
         "SELECT app_version, count(*) FROM installations WHERE last_day > :day GROUP BY "
         "app_version ORDER BY 2 DESC, 1 LIMIT :most",
         m_today - 30);
    list("Events of the last 7 days",
         "SELECT name, count(*) FROM events WHERE received_day > :day GROUP BY name ORDER BY 2 "
         "DESC, 1 LIMIT :most",
         m_today - 7);
    return m_text.str();
  }

 private:
  long long count(const char* question, long long above) {
    long long result = 0;
    m_session << question, use(above), into(result);
    return result;
  }

  void list(std::string_view title, const char* question, long long above) {
    std::string name;
    long long number = 0;
    const int most = listedAtMost;
    soci::statement statement =
        (m_session.prepare << question, use(above), use(most), into(name), into(number));
    statement.execute();
    bool hasTitle = false;
    while (statement.fetch()) {
      if (!hasTitle) m_text << title << ":\n";
      hasTitle = true;
      m_text << "  " << name << ": " << number << "\n";
    }
  }

  soci::session& m_session;
  const long long m_today;
  std::ostringstream m_text;
};

}  // namespace

CommandResult telemetrySummary(const AccountSettings& settings, Moment now) {
  return databaseCommand(settings, [now](Database& database) -> CommandResult {
    return Summary(database, now).text();
  });
}

}  // namespace vemo::service
