// A desktop whose applications answer scripts as a test says. A script that nobody scripted an
// answer to fails the test.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <utility>
#include <vector>

#include "ports/ScriptRunner.h"

namespace vemo {

class FakeScriptRunner : public ScriptRunner {
 public:
  /// What the script ends with from now on; nothing for one that fails.
  void answer(const QString& source, std::optional<QString> text) {
    m_answers[source] = std::move(text);
  }

  const std::vector<QString>& sources() const { return m_sources; }

  std::optional<QString> run(const QString& source) override {
    m_sources.push_back(source);
    const auto answer = m_answers.find(source);
    if (answer != m_answers.end()) return answer->second;
    ADD_FAILURE() << "nobody scripted an answer to " << source.toStdString();
    return std::nullopt;
  }

 private:
  std::map<QString, std::optional<QString>> m_answers;
  std::vector<QString> m_sources;
};

}  // namespace vemo
