// Random scripts of outcomes, against a plain model of the loop that knows no coroutines.
#include <random>
#include <variant>

#include "TranscriptionFixture.h"

namespace vemo {
namespace {

using std::chrono::milliseconds;

/// How one copy of a request ends.
struct CopyEnd {
  milliseconds delay;
  std::optional<int> status;  ///< absent with an error
  UrlError error = UrlError::Unknown;
  bool isDecodable = true;
};

struct Attempt {
  CopyEnd first;
  CopyEnd second;
  bool sendsSecond() const { return first.delay >= 5s; }
};

struct Expectation {
  std::variant<QString, TranscriptionError::Kind> end;
  milliseconds duration{0};
  std::size_t firstCopies = 0;
  std::size_t secondCopies = 0;
};

/// Which copy decides an attempt, and when.
CopyEnd endOf(const Attempt& attempt) {
  if (!attempt.sendsSecond()) return attempt.first;
  CopyEnd second = attempt.second;
  second.delay += 5s;
  const auto& [earlier, later] = attempt.first.delay < second.delay
                                     ? std::pair(attempt.first, second)
                                     : std::pair(second, attempt.first);
  return earlier.status ? earlier : later;
}

Expectation model(const std::vector<Attempt>& script) {
  using Kind = TranscriptionError::Kind;
  Expectation expected;
  for (int number = 1;; ++number) {
    const Attempt& attempt = script.at(static_cast<std::size_t>(number - 1));
    const CopyEnd end = endOf(attempt);
    expected.duration += end.delay;
    ++expected.firstCopies;
    if (attempt.sendsSecond()) ++expected.secondCopies;
    if (!end.status) {
      expected.end = end.error == UrlError::Cancelled ? Kind::Cancelled : Kind::Network;
      if (end.error == UrlError::Cancelled || number == 3) return expected;
    } else if (*end.status == 401) {
      expected.end = Kind::Unauthorized;
      return expected;
    } else if (*end.status >= 200 && *end.status < 300) {
      if (end.isDecodable)
        expected.end = u"text"_s;
      else
        expected.end = Kind::BadResponse;
      return expected;
    } else {
      expected.end = Kind::Server;
      if (*end.status < 500 || number == 3) return expected;
      expected.duration += number == 1 ? 1000ms : 2000ms;
    }
  }
}

class TranscriptionModelTest : public TranscriptionFixture {
 protected:
  /// Delays of first copies are even and those of second copies odd, so that no two ends meet.
  CopyEnd randomEnd(int oddness) {
    static constexpr int statuses[] = {200, 200, 299, 300, 302, 400, 401,
                                       404, 499, 500, 503, 503, 503, 599};
    static constexpr UrlError errors[] = {UrlError::TimedOut, UrlError::NetworkConnectionLost,
                                          UrlError::CannotFindHost, UrlError::Cancelled};
    const int longest = below(2) ? 4'999 : 50'000;
    CopyEnd end{.delay = milliseconds(below(longest) / 2 * 2 + oddness), .status = {}};
    if (below(2))
      end.status = statuses[below(static_cast<int>(std::size(statuses)))];
    else
      end.error = errors[below(static_cast<int>(std::size(errors)))];
    end.isDecodable = below(4) != 0;
    return end;
  }

  int below(int bound) { return std::uniform_int_distribution(0, bound - 1)(m_random); }

  static void play(FakeHttpSession& target, const CopyEnd& end) {
    if (end.status)
      target.answer(dictatePath, *end.status, end.isDecodable ? successBody(u"text"_s) : "{}"_ba,
                    end.delay);
    else
      target.fail(dictatePath, end.error, end.delay);
  }

 private:
  std::mt19937 m_random{20260314};
};

TEST_F(TranscriptionModelTest, TheLoopDoesWhatThePlainModelDoes) {
  for (int round = 0; round < 400; ++round) {
    SCOPED_TRACE(round);
    std::vector<Attempt> script;
    for (int i = 0; i < 3; ++i) script.push_back({randomEnd(0), randomEnd(1)});
    const Expectation expected = model(script);

    FakeHttpSession first(mainThread, clock);
    FakeHttpSession second(mainThread, clock);
    for (const Attempt& attempt : script) {
      play(first, attempt.first);
      if (attempt.sendsSecond()) play(second, attempt.second);
    }
    TranscriptionClient scripted({.session = first,
                                  .hedgeSession = second,
                                  .clock = clock,
                                  .mainThread = mainThread,
                                  .telemetry = telemetry,
                                  .debugLog = storage.debugLog,
                                  .sources = sources});
    start([this, &scripted](std::stop_token stop) { return scripted.transcribe(wav, stop); });
    if (expected.duration > 0ms) {
      clock.advance(expected.duration - 1ms);
      EXPECT_FALSE(isFinished());
      clock.advance(1ms);
    }
    ASSERT_TRUE(isFinished());
    if (std::holds_alternative<QString>(expected.end))
      EXPECT_EQ(text(), std::get<QString>(expected.end));
    else
      EXPECT_EQ(failure(), std::get<TranscriptionError::Kind>(expected.end));
    EXPECT_EQ(first.requests().size(), expected.firstCopies);
    EXPECT_EQ(second.requests().size(), expected.secondCopies);
    EXPECT_EQ(first.openCount() + second.openCount(), 0);
    EXPECT_EQ(clock.sleeperCount(), 0u);
  }
}

}  // namespace
}  // namespace vemo
