// A user who points at folders as a test says, and has been asked what the test may read.
#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <utility>
#include <vector>

#include "base/Completion.h"
#include "ports/FolderChooser.h"

namespace vemo {

class FakeFolderChooser : public FolderChooser {
 public:
  explicit FakeFolderChooser(MainThread& mainThread) : m_mainThread(mainThread) {}

  /// What the next question ends with: a path, or nothing for a user who decides against it.
  void answer(std::optional<QString> path) { m_answers.push_back(std::move(path)); }

  const std::vector<FolderQuestion>& questions() const { return m_questions; }

  Task<std::optional<QString>> chooseFolder(FolderQuestion question, std::stop_token) override {
    m_questions.push_back(std::move(question));
    if (m_answers.empty()) {
      ADD_FAILURE() << "nobody scripted which folder is chosen";
      co_return std::nullopt;
    }
    const Completion<std::optional<QString>> choice(m_mainThread);
    choice.complete(std::move(m_answers.front()));
    m_answers.pop_front();
    auto path = co_await choice;
    co_return path;
  }

 private:
  MainThread& m_mainThread;
  std::deque<std::optional<QString>> m_answers;
  std::vector<FolderQuestion> m_questions;
};

}  // namespace vemo
