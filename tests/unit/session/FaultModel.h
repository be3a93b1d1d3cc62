// What the network does to dictations, made up from a seed, and what has to come of it: the rules
// of attempts, second copies, stitching and interruptions, computed without tasks, queues or
// timers.
#pragma once

#include <QString>
#include <array>
#include <chrono>
#include <map>
#include <optional>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "ports/HttpSession.h"

namespace vemo {

using Milliseconds = std::chrono::milliseconds;

/// How one copy of a request ends, and when; no delay is never.
struct CopyFate {
  std::optional<Milliseconds> delay;
  HttpResult result;
  bool isServed = false;  ///< the service's own answer instead of `result`

  Milliseconds end() const { return delay.value_or(Milliseconds(60'000)); }
  /// What comes of it when the service's text would be `served`.
  HttpResult outcome(const QString& served) const;
};

/// Three attempts of two copies.
using OperationFate = std::array<std::array<CopyFate, 2>, 3>;

/// A copy of a request that was sent; the time is since the start of the recording.
struct Sent {
  int copy;
  Milliseconds time;
  friend bool operator==(const Sent&, const Sent&) = default;
  friend std::ostream& operator<<(std::ostream& stream, const Sent& sent) {
    return stream << "copy " << sent.copy << " at " << sent.time.count() << " ms";
  }
};

/// Over sockets, whatever doesn't speak HTTP is a failed request, and a refusal comes at once.
enum class Wire { Virtual, Sockets };

class FaultGenerator {
 public:
  FaultGenerator(std::uint64_t seed, Wire wire) : m_random(seed), m_wire(wire) {}

  int number(int from, int to) { return std::uniform_int_distribution(from, to)(m_random); }
  OperationFate operation();

 private:
  CopyFate copy(int lastDigit);
  QByteArray body();

  std::mt19937_64 m_random;
  const Wire m_wire;
};

/// What happens to a dictation from outside, between whole milliseconds.
struct Interruption {
  enum class Kind { None, Disable, SignOut };
  Kind kind = Kind::None;
  std::chrono::microseconds time{0};  ///< since the start of the recording
};

/// A dictation of so many tenths of a second, and the fates of all that it may send, by name:
/// "whole", "0", "1" … and "finalize".
struct DictationFaults {
  DictationFaults(FaultGenerator& random, int loudness);

  struct Expected {
    QString pasted;         ///< empty: nothing
    QString rawTranscript;  ///< of the finalize; empty: none
    std::string reason;     ///< of the failure, if it is one
    std::map<std::string, std::vector<Sent>> sends;
    Milliseconds end{0};  ///< delivered or failed; since the start of the recording
  };
  Expected expected(const Interruption& interruption = {}) const;

  Milliseconds length() const { return Milliseconds(100) * tenths; }
  /// Each stretch of 15 s has a loudness of its own, which the service tells in its text.
  std::int16_t amplitude(int stretch) const;

  int tenths = 0;
  bool isSilent = false;
  int loudness = 0;
  std::map<std::string, OperationFate> fates;
};

/// The text of a recording whose first sample is so loud.
QString spokenText(int amplitude);

/// One or two dictations, and what happens to the first from outside.
struct FaultStory {
  FaultStory(std::uint64_t seed, Wire wire);

  DictationFaults first;
  Interruption interruption;
  DictationFaults::Expected firstExpected;
  /// Begins when the first has ended, whose uploads may still be under way. Nobody dictates after a
  /// sign-out.
  std::optional<DictationFaults> second;
  std::chrono::microseconds secondStart{0};  ///< since the start of the first

 private:
  explicit FaultStory(FaultGenerator random);
};

}  // namespace vemo
