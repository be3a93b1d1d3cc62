// What the network does to a dictation, made up from a seed, and what has to come of it: the rules
// of attempts, second copies and stitching, computed without tasks, queues or timers.
#pragma once

#include <QByteArray>
#include <QJsonDocument>
#include <QString>
#include <algorithm>
#include <array>
#include <chrono>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "base/Json.h"
#include "ports/HttpSession.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using Milliseconds = std::chrono::milliseconds;

/// How one copy of a request ends, and when; no delay is never.
struct CopyFate {
  std::optional<Milliseconds> delay;
  HttpResult result;

  Milliseconds end() const { return delay.value_or(Milliseconds(60'000)); }
  HttpResult outcome() const {
    if (!delay) return std::unexpected(HttpError{UrlError::TimedOut, u"timed out"_s});
    return result;
  }
};

/// Three attempts of two copies.
using OperationFate = std::array<std::array<CopyFate, 2>, 3>;

struct Sent {
  int copy;
  Milliseconds time;  ///< since the operation's first copy
  friend bool operator==(const Sent&, const Sent&) = default;
};

struct OperationOutcome {
  std::optional<QString> text;
  std::string reason;  ///< of a failure, as its event says it
  std::vector<Sent> sends;
};

class FaultGenerator {
 public:
  explicit FaultGenerator(std::uint64_t seed) : m_random(seed) {}

  int number(int from, int to) { return std::uniform_int_distribution(from, to)(m_random); }

  OperationFate operation() {
    OperationFate fate;
    // The last digits keep two copies from ending in the same millisecond.
    for (auto& attempt : fate)
      for (int copy : {0, 1}) attempt[static_cast<std::size_t>(copy)] = this->copy(1 + 2 * copy);
    return fate;
  }

 private:
  CopyFate copy(int lastDigit) {
    const Milliseconds soon(10 * number(0, 250) + lastDigit);
    const Milliseconds late(10 * number(400, 5'900) + lastDigit);
    const Milliseconds delay = number(0, 3) == 0 ? late : soon;
    switch (number(0, 11)) {
      case 0:
        return {soon, std::unexpected(HttpError{UrlError::CannotConnectToHost, u"refused"_s})};
      case 1:
        return {delay, std::unexpected(HttpError{UrlError::NetworkConnectionLost, u"reset"_s})};
      case 2:
        return {std::nullopt, HttpResponse{}};
      case 3:
      case 4:
        return {delay, HttpResponse{number(500, 599), body()}};
      case 5:
        return {delay, HttpResponse{number(0, 2) == 0 ? 401 : number(100, 499), body()}};
      case 6:
        if (number(0, 3) == 0) return {delay, HttpResponse{std::nullopt, body()}};
        return {delay, HttpResponse{200, body()}};
      default:
        return {delay, HttpResponse{200, success(QChar(u'A' + number(0, 25)) + u"bc."_s)}};
    }
  }

  QByteArray body() {
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

  static QByteArray success(const QString& text) {
    return compactJson(QJsonObject{{u"status"_s, u"ok"_s}, {u"transcription"_s, text}});
  }

  std::mt19937_64 m_random;
};

/// One attempt: what it comes to, and when.
inline std::pair<HttpResult, Milliseconds> attemptOutcome(const std::array<CopyFate, 2>& copies,
                                                          Milliseconds start,
                                                          std::vector<Sent>& sends) {
  constexpr Milliseconds hedge(5'000);
  const auto& [first, second] = copies;
  sends.push_back({0, start});
  if (first.end() < hedge) return {first.outcome(), start + first.end()};
  sends.push_back({1, start + hedge});
  const Milliseconds secondEnd = hedge + second.end();
  const bool isFirstEarlier = first.end() < secondEnd;
  const CopyFate& earlier = isFirstEarlier ? first : second;
  const CopyFate& later = isFirstEarlier ? second : first;
  if (earlier.outcome()) return {earlier.outcome(), start + std::min(first.end(), secondEnd)};
  return {later.outcome(), start + std::max(first.end(), secondEnd)};
}

inline OperationOutcome operationOutcome(const OperationFate& fate) {
  OperationOutcome outcome;
  Milliseconds now(0);
  for (std::size_t attempt = 0; attempt < fate.size(); ++attempt) {
    const auto [answer, end] = attemptOutcome(fate[attempt], now, outcome.sends);
    now = end;
    if (!answer) {
      outcome.reason = "network";
      continue;
    }
    const int status = answer->status.value_or(0);
    if (status >= 500) {
      outcome.reason = "server";
      now += Milliseconds(attempt == 0 ? 1'000 : 2'000);
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

/// A dictation of so many tenths of a second, and the fates of all that it may send, by name:
/// "whole", "0", "1" … and "finalize".
struct Scenario {
  explicit Scenario(std::uint64_t seed) {
    FaultGenerator random(seed);
    tenths = random.number(0, 1) == 0 ? random.number(3, 149) : random.number(150, 620);
    fates["whole"] = random.operation();
    fates["finalize"] = random.operation();
    for (int index = 0; index <= tenths / 150; ++index)
      fates[std::to_string(index)] = random.operation();
  }

  struct Expected {
    QString pasted;         ///< empty: nothing
    QString rawTranscript;  ///< of the finalize; empty: none
    std::string reason;     ///< of the failure, if it is one
    std::map<std::string, std::vector<Sent>> sends;
  };

  Expected expected() const {
    Expected result;
    const auto run = [&](const std::string& name) {
      const OperationOutcome outcome = operationOutcome(fates.at(name));
      result.sends[name] = outcome.sends;
      return outcome;
    };
    if (tenths < 150) {
      const auto whole = run("whole");
      return finish(result, whole);
    }
    QStringList texts;
    for (int index = 0; index < tenths / 150; ++index)
      texts.append(run(std::to_string(index)).text.value_or(QString()).trimmed());
    if (tenths % 150 >= 3) {
      const auto tail = run(std::to_string(tenths / 150));
      if (!tail.text) return finish(result, tail);
      texts.append(tail.text->trimmed());
    }
    texts.removeAll(QString());
    if (texts.isEmpty()) return finish(result, {.text = QString(), .reason = {}, .sends = {}});
    result.rawTranscript = texts.join(u' ');
    const auto final = run("finalize");
    return finish(result, final);
  }

  int tenths = 0;
  std::map<std::string, OperationFate> fates;

 private:
  static Expected finish(Expected result, const OperationOutcome& last) {
    result.pasted = last.text.value_or(QString()).trimmed();
    result.reason = last.text ? (result.pasted.isEmpty() ? "empty_transcript" : "") : last.reason;
    return result;
  }
};

}  // namespace vemo
