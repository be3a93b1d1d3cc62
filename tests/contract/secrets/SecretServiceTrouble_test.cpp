// The keyring adapter on desktops without a keyring, and with one that doesn't answer.
#include "PrivateBus.h"

namespace vemo {
namespace {

/// The limit of 200 ms, and what a busy machine may add to the shortest of a few waits.
constexpr int longestWaitMs = 1'000;
/// What answers at all does so within this one.
const QString generousLimitMs = u"60000"_s;

class SecretServiceTroubleTest : public testing::TestWithParam<const char*> {
 protected:
  struct Answer {
    QString outcome;
    int heldMs = 0;
    QString secondOutcome;
    int heldBySecondCallMs = 0;
  };

  /// The operation twice in a row.
  Answer probe(const QStringList& limit = {}) {
    QProcess process;
    process.setProcessEnvironment(bus.environment());
    process.start(QStringLiteral(SECRET_PROBE),
                  QStringList{QString::fromLatin1(GetParam())} + limit);
    EXPECT_TRUE(process.waitForFinished(PrivateBus::generousLimitMs));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 0);
    const auto words = QString::fromUtf8(process.readAll()).trimmed().split(u' ');
    return {words.value(0), words.value(1).toInt(), words.value(2), words.value(3).toInt()};
  }

  /// The first of a few probes that was held as short as it ought to be, or the last one.
  Answer probeUntil(const std::function<bool(const Answer&)>& isQuick) {
    Answer answer = probe();
    for (int more = 2; more > 0 && !isQuick(answer); --more) answer = probe();
    return answer;
  }

  void expectAFailureWithinTheLimit() {
    const auto answer = probeUntil([](const Answer& each) { return each.heldMs < longestWaitMs; });
    EXPECT_EQ(answer.outcome, u"Failed"_s);
    EXPECT_GE(answer.heldMs, 200);
    EXPECT_LT(answer.heldMs, longestWaitMs);
  }

  void startSilentKeyring() {
    bus.start();
    ASSERT_EQ(PrivateBus::firstLineOf(bus.startProcess(QStringLiteral(SILENT_KEYRING))),
              u"ready"_s);
  }

  PrivateBus bus;
};

TEST_P(SecretServiceTroubleTest, WithoutASessionBusThereIsNoStore) {
  EXPECT_EQ(probe({generousLimitMs}).outcome, u"Unavailable"_s);
}

TEST_P(SecretServiceTroubleTest, WithoutAKeyringOnTheBusThereIsNoStore) {
  bus.start();
  EXPECT_EQ(probe({generousLimitMs}).outcome, u"Unavailable"_s);
}

TEST_P(SecretServiceTroubleTest, AKeyringThatNeverAnswersHoldsTheCallerNoLongerThanTheLimit) {
  startSilentKeyring();
  expectAFailureWithinTheLimit();
}

TEST_P(SecretServiceTroubleTest, WhoAsksASilentKeyringTwiceInARowWaitsOnce) {
  startSilentKeyring();
  const auto answer = probeUntil([](const Answer& each) { return each.heldBySecondCallMs < 100; });
  EXPECT_EQ(answer.secondOutcome, u"Failed"_s);
  EXPECT_LT(answer.heldBySecondCallMs, 100);
}

TEST_P(SecretServiceTroubleTest, ABusThatNeverAnswersHoldsTheCallerNoLongerThanTheLimit) {
  bus.start();
  bus.stop();
  expectAFailureWithinTheLimit();
}

INSTANTIATE_TEST_SUITE_P(Operations, SecretServiceTroubleTest,
                         testing::Values("find", "add", "remove"),
                         [](const auto& operation) { return std::string(operation.param); });

}  // namespace
}  // namespace vemo
