#include "ui/models/FolderChooserModel.h"

#include <gtest/gtest.h>

#include <QDir>

#include "base/TaskScope.h"
#include "fakes/FakeMainThread.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

class FolderChooserModelTest : public testing::Test {
 protected:
  StartedTask ask() {
    auto task = scope.start([this](std::stop_token stop) { return keep(std::move(stop)); });
    mainThread.drain();
    return task;
  }

  Task<> keep(std::stop_token stop) {
    ++questions;
    chosen = co_await model.chooseFolder({u"Choose the root"_s, u"Select"_s}, std::move(stop));
    ++answers;
  }

  FakeMainThread mainThread;
  FolderChooserModel model{mainThread};
  std::optional<QString> chosen;
  int questions = 0;
  int answers = 0;
  TaskScope scope{mainThread};
};

TEST_F(FolderChooserModelTest, AQuestionOpensTheDialogWithItsWords) {
  EXPECT_FALSE(model.isOpen());
  ask();
  EXPECT_TRUE(model.isOpen());
  EXPECT_EQ(model.message(), u"Choose the root"_s);
  EXPECT_EQ(model.prompt(), u"Select"_s);
}

TEST_F(FolderChooserModelTest, AFolderThatIsChosenIsTheAnswer) {
  ask();
  model.acceptPath(QDir::rootPath());
  mainThread.drain();
  EXPECT_FALSE(model.isOpen());
  EXPECT_EQ(chosen, QDir::rootPath());
}

TEST_F(FolderChooserModelTest, WhatIsNoFolderKeepsTheDialogOpenAndSaysSo) {
  ask();
  for (const QString& path : {u"/etc/passwd"_s, u"relative"_s, u"/no/such/folder"_s, QString()}) {
    model.acceptPath(path);
    mainThread.drain();
    EXPECT_TRUE(model.isOpen());
    EXPECT_EQ(model.problem(), u"There is no such folder."_s);
  }
  model.reject();
  mainThread.drain();
  ask();
  EXPECT_EQ(model.problem(), QString());
}

TEST_F(FolderChooserModelTest, ATildeIsTheHomeFolder) {
  ask();
  model.acceptPath(u" ~ "_s);
  mainThread.drain();
  EXPECT_EQ(chosen, QDir::homePath());
}

TEST_F(FolderChooserModelTest, ADecisionAgainstItIsNoFolder) {
  ask();
  model.reject();
  mainThread.drain();
  EXPECT_EQ(answers, 1);
  EXPECT_EQ(chosen, std::nullopt);
}

TEST_F(FolderChooserModelTest, AStopClosesTheDialog) {
  const auto task = ask();
  task.cancel();
  mainThread.drain();
  EXPECT_FALSE(model.isOpen());
  EXPECT_EQ(answers, 1);
}

TEST_F(FolderChooserModelTest, ASecondQuestionIsDecidedAgainstAndLeavesTheFirst) {
  ask();
  ask();
  EXPECT_EQ(answers, 1);
  EXPECT_TRUE(model.isOpen());
  model.acceptPath(QDir::rootPath());
  mainThread.drain();
  EXPECT_EQ(chosen, QDir::rootPath());
}

}  // namespace
}  // namespace vemo
