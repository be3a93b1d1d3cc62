// What a client sends over a network that fails as a story says, by dictation and request.
#pragma once

#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QUrlQuery>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "base/Clock.h"
#include "ports/HttpSession.h"
#include "session/FaultModel.h"
#include "session/SessionFixture.h"

namespace vemo {

class FaultNetwork {
 public:
  struct Record {
    std::vector<Sent> sends;
    std::vector<QByteArray> bodies;
  };
  using Records = std::map<std::string, Record>;

  explicit FaultNetwork(Clock& clock) : m_clock(clock) {}

  /// The next requests with a new session, or with none, are those of this dictation.
  void begin(const DictationFaults& faults) {
    m_dictations.push_back({&faults, m_clock.monotonicTime(), {}});
  }

  /// Notes the copy of a request; what becomes of it.
  const CopyFate& take(const HttpRequest& request, int copy) {
    auto& [faults, start, records] = dictationOf(request);
    const std::string name = nameOf(request.url);
    auto& record = records[name];
    record.sends.push_back(
        {copy, std::chrono::duration_cast<Milliseconds>(m_clock.monotonicTime() - start)});
    record.bodies.push_back(request.body);
    const auto attempts = std::ranges::count(record.sends, 0, &Sent::copy);
    EXPECT_LE(attempts, 3) << "a fourth attempt of " << name;
    const auto attempt = static_cast<std::size_t>(std::max<std::ptrdiff_t>(attempts - 1, 0));
    return faults->fates.at(name)[attempt % 3][static_cast<std::size_t>(copy)];
  }

  Records& recordsOf(std::size_t dictation) { return m_dictations.at(dictation).records; }

  /// Counts a request from its sending to its end.
  struct Opening {
    explicit Opening(FaultNetwork& network) : count(network.m_openCount) { ++count; }
    ~Opening() { --count; }
    Opening(const Opening&) = delete;
    Opening& operator=(const Opening&) = delete;
    int& count;
  };
  int openCount() const { return m_openCount; }

 private:
  struct Dictation {
    const DictationFaults* faults;
    Clock::MonotonicTime start;
    Records records;
  };

  Dictation& dictationOf(const HttpRequest& request) {
    for (const auto& [name, value] : request.headers) {
      if (name == "x-session-id")
        return m_dictations.at(
            m_sessions.try_emplace(value, m_dictations.size() - 1).first->second);
    }
    return m_dictations.back();
  }

  static std::string nameOf(const QUrl& url) {
    if (url.path() == finalizePath) return "finalize";
    if (url.path() == dictatePath) return "whole";
    return QUrlQuery(url).queryItemValue(u"chunk_index"_s).toStdString();
  }

  Clock& m_clock;
  std::deque<Dictation> m_dictations;
  std::map<QByteArray, std::size_t> m_sessions;
  int m_openCount = 0;
};

}  // namespace vemo
