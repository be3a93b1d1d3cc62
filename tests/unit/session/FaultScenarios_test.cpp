// A thousand stories of dictations over networks that fail at random, in virtual time, against the
// plain model of the rules.
//
// The seeds are fixed. VEMO_FAULT_SEED=N runs a thousand from there on instead, and
// VEMO_FAULT_SEED=random from anywhere; a failure names the seed of its story.
#include "session/FaultStoryRun.h"

namespace vemo {
namespace {

constexpr std::uint64_t storyCount = 1'000;

/// Answers as the story says, or as the service would, when the time has come.
class VirtualSession : public HttpSession {
 public:
  VirtualSession(FaultNetwork& network, Clock& clock, int copy)
      : m_network(network), m_clock(clock), m_copy(copy) {}

  Task<HttpResult> send(HttpRequest request, std::stop_token stop) override {
    const CopyFate& fate = m_network.take(request, m_copy);
    const FaultNetwork::Opening opening(m_network);
    const auto end = co_await m_clock.sleep(fate.end(), stop);
    if (end == SleepEnd::Cancelled)
      co_return std::unexpected(HttpError{UrlError::Cancelled, u"cancelled"_s});
    co_return fate.outcome(servedText(request));
  }

 private:
  static QString servedText(const HttpRequest& request) {
    if (request.url.path() == finalizePath)
      return QJsonDocument::fromJson(request.body)[u"rawTranscript"_s].toString();
    std::int16_t sample = 0;
    std::memcpy(&sample, request.body.constData() + 44, sizeof sample);
    return spokenText(sample);
  }

  FaultNetwork& m_network;
  Clock& m_clock;
  const int m_copy;
};

class VirtualStoryRun : public FaultStoryRun {
 public:
  explicit VirtualStoryRun(std::uint64_t seed) : FaultStoryRun(seed, Wire::Virtual) {
    dictationSession = &m_first;
    dictationHedgeSession = &m_second;
  }

 private:
  VirtualSession m_first{network, clock, 0};
  VirtualSession m_second{network, clock, 1};
};

TEST(FaultScenariosTest, AThousandDictationsComeOutAsTheRulesSay) {
  const std::uint64_t first = firstFaultSeed();
  for (std::uint64_t seed = first; seed < first + storyCount; ++seed) {
    SCOPED_TRACE("VEMO_FAULT_SEED=" + std::to_string(seed));
    VirtualStoryRun(seed).TestBody();
    if (testing::Test::HasFailure()) return;
  }
}

/// The stories are worth something only if they reach every way that a dictation can end, and
/// everything that can come in between.
TEST(FaultScenariosTest, TheFixedSeedsReachEveryOutcome) {
  std::map<std::string, int> counts;
  for (std::uint64_t seed = 20'000; seed < 20'000 + storyCount; ++seed) {
    const FaultStory story(seed, Wire::Virtual);
    const auto& [pasted, rawTranscript, reason, sends, end] = story.firstExpected;
    ++counts[!reason.empty() ? reason : pasted.isEmpty() ? "given up" : "pasted"];
    if (story.interruption.kind != Interruption::Kind::None && story.interruption.time < end)
      ++counts[story.interruption.kind == Interruption::Kind::Disable ? "disabled midway"
                                                                      : "signed out midway"];
    const auto whole = story.first.expected(story.interruption);
    if (story.second && whole.sends != sends) ++counts["uploads cut off by the next start"];
    for (const auto& [name, copies] : sends) {
      counts["second copies"] += static_cast<int>(std::ranges::count(copies, 1, &Sent::copy));
      counts["third attempts"] += std::ranges::count(copies, 0, &Sent::copy) == 3;
    }
  }
  for (const char* outcome :
       {"pasted", "server", "network", "bad_response", "empty_transcript", "unauthorized",
        "not_signed_in", "no_audio", "given up", "disabled midway", "signed out midway",
        "uploads cut off by the next start", "second copies", "third attempts"}) {
    std::printf("%s: %d\n", outcome, counts[outcome]);
    EXPECT_GE(counts[outcome], 5) << outcome;
  }
}

}  // namespace
}  // namespace vemo
