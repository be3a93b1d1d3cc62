#include "session/FaultModel.h"

#include <QJsonDocument>
#include <algorithm>
#include <utility>

#include "base/Json.h"
#include "base/Text.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr Milliseconds hedgeDelay = 5s;
constexpr int tenthsPerChunk = 150;
constexpr int shortestTail = 3;  ///< tenths
/// The block that fills a chunk comes when its last tenth of a second begins.
constexpr Milliseconds blockLength = 100ms;
/// A failure is shown for 2 s, a paste takes less.
constexpr Milliseconds untilIdle = 3s;

QByteArray success(const QString& text) {
  return compactJson(QJsonObject{{u"status"_s, u"ok"_s}, {u"transcription"_s, text}});
}

HttpResult failure(UrlError code) {
  return std::unexpected(HttpError{code, u"failed as made up"_s});
}

struct OperationOutcome {
  std::optional<QString> text;
  std::string reason;  ///< of a failure, as its event says it
  std::vector<Sent> sends;
  Milliseconds end{0};
};

/// One attempt: what it comes to, and when.
std::pair<HttpResult, Milliseconds> attemptOutcome(const std::array<CopyFate, 2>& copies,
                                                   const QString& served, Milliseconds start,
                                                   std::vector<Sent>& sends) {
  const auto& [first, second] = copies;
  sends.push_back({0, start});
  if (first.end() < hedgeDelay) return {first.outcome(served), start + first.end()};
  sends.push_back({1, start + hedgeDelay});
  const Milliseconds secondEnd = hedgeDelay + second.end();
  const bool isFirstEarlier = first.end() < secondEnd;
  const CopyFate& earlier = isFirstEarlier ? first : second;
  const CopyFate& later = isFirstEarlier ? second : first;
  if (const auto outcome = earlier.outcome(served))
    return {outcome, start + std::min(first.end(), secondEnd)};
  return {later.outcome(served), start + std::max(first.end(), secondEnd)};
}

OperationOutcome operationOutcome(const OperationFate& fate, const QString& served,
                                  Milliseconds start) {
  OperationOutcome outcome{.text = {}, .reason = {}, .sends = {}, .end = start};
  for (std::size_t attempt = 0; attempt < fate.size(); ++attempt) {
    const auto [answer, end] = attemptOutcome(fate[attempt], served, outcome.end, outcome.sends);
    outcome.end = end;
    if (!answer) {
      outcome.reason = "network";
      continue;
    }
    const int status = answer->status.value_or(0);
    if (status >= 500) {
      outcome.reason = "server";
      if (attempt < 2) outcome.end += attempt == 0 ? 1'000ms : 2'000ms;
      continue;
    }
    const QJsonObject json = QJsonDocument::fromJson(answer->body).object();
    if (status >= 200 && status <= 299 && json[u"transcription"_s].isString())
      outcome.text = json[u"transcription"_s].toString();
    else if (status == 401)
      outcome.reason = "unauthorized";
    else
      outcome.reason = status == 0 || (status >= 200 && status <= 299) ? "bad_response" : "server";
    return outcome;
  }
  return outcome;
}

/// A controller that is disabled sends and pastes nothing more.
void cut(DictationFaults::Expected& expected, std::chrono::microseconds time) {
  for (auto& [name, sends] : expected.sends)
    std::erase_if(sends, [&](const Sent& sent) { return sent.time > time; });
  std::erase_if(expected.sends, [](const auto& entry) { return entry.second.empty(); });
}

}  // namespace

HttpResult CopyFate::outcome(const QString& served) const {
  if (!delay) return failure(UrlError::TimedOut);
  if (isServed) return HttpResponse{200, success(served)};
  return result;
}

OperationFate FaultGenerator::operation() {
  OperationFate fate;
  for (auto& [first, second] : fate) {
    // The last digits keep two copies from ending in the same millisecond …
    first = copy(1);
    second = copy(3);
    // … but for those that do, with the same answer.
    if (first.isServed && *first.delay > hedgeDelay && number(0, 2) == 0)
      second = {*first.delay - hedgeDelay, HttpResponse{}, true};
  }
  return fate;
}

CopyFate FaultGenerator::copy(int lastDigit) {
  const Milliseconds soon(10 * number(0, 250) + lastDigit);
  const Milliseconds late(10 * number(400, 5'900) + lastDigit);
  const Milliseconds delay = number(0, 3) == 0 ? late : soon;
  const bool isOnSockets = m_wire == Wire::Sockets;
  switch (number(0, 12)) {
    case 0:
      return {isOnSockets ? 0ms : soon, failure(UrlError::CannotConnectToHost)};
    case 1:
    case 2:
      return {delay, failure(UrlError::NetworkConnectionLost)};
    case 3:
      return {std::nullopt, HttpResponse{}};
    case 4:
    case 5:
      return {delay, HttpResponse{number(500, 599), body()}};
    case 6: {
      const int status = number(0, 2) == 0 ? 401 : number(isOnSockets ? 200 : 100, 499);
      const bool isBodiless = status == 204 || status == 304;
      return {delay, HttpResponse{status, isBodiless ? QByteArray() : body()}};
    }
    case 7: {
      const HttpResult foreign =
          isOnSockets ? failure(UrlError::CannotParseResponse) : HttpResponse{std::nullopt, body()};
      return {delay, number(0, 3) == 0 ? foreign : HttpResponse{200, body()}};
    }
    case 8:
      return {delay, HttpResponse{200, success(QChar(u'A' + number(0, 25)) + u"bc."_s)}};
    default:
      return {delay, HttpResponse{}, true};
  }
}

QByteArray FaultGenerator::body() {
  switch (number(0, 3)) {
    case 0:
      return success(u" \n"_s);
    case 1:
      return R"({"status":"error","error":"said the service"})";
    case 2:
      return {};
    default:
      return QByteArray(number(1, 2'000), static_cast<char>(number(0, 255)));
  }
}

QString spokenText(int amplitude) {
  return u"Loud as %1."_s.arg(amplitude);
}

DictationFaults::DictationFaults(FaultGenerator& random, int ownLoudness) : loudness(ownLoudness) {
  tenths = random.number(0, 1) == 0 ? random.number(3, tenthsPerChunk - 1)
                                    : random.number(tenthsPerChunk, 620);
  isSilent = random.number(0, 9) == 0;
  fates["whole"] = random.operation();
  fates["finalize"] = random.operation();
  for (int index = 0; index <= tenths / tenthsPerChunk; ++index)
    fates[std::to_string(index)] = random.operation();
}

std::int16_t DictationFaults::amplitude(int stretch) const {
  return static_cast<std::int16_t>(isSilent ? 10 * loudness + stretch
                                            : 1'000 * loudness + 100 * stretch);
}

DictationFaults::Expected DictationFaults::expected(const Interruption& interruption) const {
  Expected result;
  const bool isSignedOut = interruption.kind == Interruption::Kind::SignOut;
  const auto run = [&](const std::string& name, const QString& served, Milliseconds start) {
    if (isSignedOut && start > interruption.time)
      return OperationOutcome{.text = {}, .reason = "not_signed_in", .sends = {}, .end = start};
    const OperationOutcome outcome = operationOutcome(fates.at(name), served, start);
    result.sends[name] = outcome.sends;
    return outcome;
  };
  const auto finish = [&](const OperationOutcome& last) {
    result.end = last.end;
    result.pasted = last.text ? trimmed(*last.text) : QString();
    result.reason = last.text ? (result.pasted.isEmpty() ? "empty_transcript" : "") : last.reason;
    if (interruption.kind != Interruption::Kind::Disable) return result;
    if (interruption.time < result.end) {
      result.pasted.clear();
      result.reason.clear();
    }
    cut(result, interruption.time);
    return result;
  };

  const bool isChunked = tenths >= tenthsPerChunk;
  if (!isChunked && !isSilent) return finish(run("whole", spokenText(amplitude(0)), length()));
  QStringList texts;
  Milliseconds chunksEnd = length();
  for (int index = 0; index < tenths / tenthsPerChunk; ++index) {
    const auto chunk = run(std::to_string(index), spokenText(amplitude(index)),
                           (index + 1) * tenthsPerChunk * 100ms - blockLength);
    texts.append(trimmed(chunk.text.value_or(QString())));
    chunksEnd = std::max(chunksEnd, chunk.end);
  }
  if (isSilent) return finish({.text = {}, .reason = "no_audio", .sends = {}, .end = length()});
  if (tenths % tenthsPerChunk >= shortestTail) {
    const int index = tenths / tenthsPerChunk;
    const auto tail = run(std::to_string(index), spokenText(amplitude(index)), length());
    if (!tail.text) return finish(tail);
    texts.append(trimmed(*tail.text));
    chunksEnd = std::max(chunksEnd, tail.end);
  }
  texts.removeAll(QString());
  if (texts.isEmpty())
    return finish({.text = QString(), .reason = {}, .sends = {}, .end = chunksEnd});
  result.rawTranscript = texts.join(u' ');
  return finish(run("finalize", result.rawTranscript, chunksEnd));
}

FaultStory::FaultStory(std::uint64_t seed, Wire wire) : FaultStory(FaultGenerator(seed, wire)) {}

FaultStory::FaultStory(FaultGenerator random) : first(random, 3) {
  using Kind = Interruption::Kind;
  firstExpected = first.expected();
  const Milliseconds end = firstExpected.end;
  const int kind = random.number(0, 5);
  if (kind <= 1) {
    interruption.kind = kind == 0 ? Kind::Disable : Kind::SignOut;
    Milliseconds time(random.number(0, static_cast<int>((end + untilIdle).count())));
    // While the text is being pasted, either outcome is right.
    if (time >= end) time += untilIdle;
    interruption.time = time + 500us;
    firstExpected = first.expected(interruption);
  }
  const bool isSignedOut =
      interruption.kind == Kind::SignOut || firstExpected.reason == "unauthorized";
  if (kind == 5 || isSignedOut) return;
  second.emplace(random, 6);
  const std::chrono::microseconds idle =
      interruption.kind == Kind::Disable ? interruption.time : end + untilIdle + 500us;
  secondStart = idle + Milliseconds(random.number(301, 5'000));
  cut(firstExpected, secondStart);
}

}  // namespace vemo
