// What reading a token costs once it is known, as before every request: beside a plain string under
// a lock, which is the least that threads could share.
//
// Present and absent tokens, in rounds of 10,000 reads, the two ways in turn. Limit: 1 microsecond
// in the middle, absence included. Exit status 1 when it is missed.
#include <cstdio>
#include <mutex>
#include <optional>

#include "Stopwatch.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeSecretBackend.h"
#include "storage/DebugLog.h"
#include "storage/SecureTokenStore.h"

using namespace vemo;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int roundCount = 200;
constexpr int readCount = 10'000;
constexpr double limitNanoseconds = 1'000;

struct LockedString {
  std::mutex mutex;
  std::optional<QString> value;

  std::optional<QString> read() {
    const std::lock_guard lock(mutex);
    return value;
  }
};

double nanosecondsOf(const Rounds& rounds) {
  return rounds.median() * 1e6 / readCount;
}

template <typename Read>
double readMany(Read read, std::size_t& characters) {
  return millisecondsFor([&] {
    for (int number = 0; number < readCount; ++number) {
      if (const auto token = read()) characters += static_cast<std::size_t>(token->size());
    }
  });
}

bool report(const char* what, SecureTokenStore& tokens, LockedString& plain) {
  const QString account = QString::fromUtf16(authTokenAccount);
  plain.value = tokens.read(account);
  Rounds store;
  Rounds baseline;
  std::size_t characters = 0;
  for (int round = 0; round < roundCount; ++round) {
    store.add(readMany([&] { return tokens.read(account); }, characters));
    baseline.add(readMany([&] { return plain.read(); }, characters));
  }
  const bool isWithin = nanosecondsOf(store) < limitNanoseconds;
  std::fprintf(stderr, "%s: %.0f ns a read (limit %.0f), %.1f times a locked string's %.0f ns%s\n",
               what, nanosecondsOf(store), limitNanoseconds, store.median() / baseline.median(),
               nanosecondsOf(baseline), isWithin ? "" : "  MISSED");
  return isWithin && (characters > 0) == plain.value.has_value();
}

}  // namespace

int main() {
  FakeMainThread mainThread;
  FakeClock clock(mainThread);
  DebugLog debugLog(clock, QString());
  FakeSecretBackend keyring;
  SecureTokenStore tokens({&keyring}, debugLog);
  LockedString plain;
  tokens.write(QString(64, u't'), QString::fromUtf16(authTokenAccount));
  tokens.write(u"slack"_s, QString::fromUtf16(slackApiTokenAccount));
  const bool present = report("present", tokens, plain);
  tokens.remove(QString::fromUtf16(authTokenAccount));
  const bool absent = report("absent", tokens, plain);
  return present && absent ? 0 : 1;
}
