#include "ui/models/CodebaseContextModel.h"

#include "integrations/WorkspaceIndexerFixture.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class CodebaseContextModelTest : public WorkspaceIndexerFixture {
 protected:
  void open() {
    startUp();
    model = std::make_unique<CodebaseContextModel>(
        *indexer, [this](const QString& text) { toasts.append(text); });
    QObject::connect(model.get(), &CodebaseContextModel::changed, [this] { ++changes; });
  }

  std::unique_ptr<CodebaseContextModel> model;
  QStringList toasts;
  int changes = 0;
};

TEST_F(CodebaseContextModelTest, WithoutAProjectNothingIsIndexed) {
  open();
  EXPECT_EQ(model->countText(), u"0 files indexed in memory for instant @file voice tagging."_s);
  EXPECT_EQ(model->modeLabel(), u"Auto-detect"_s);
  EXPECT_EQ(model->workspaceName(), QString());
}

TEST_F(CodebaseContextModelTest, AChosenFolderBecomesTheWorkspaceAndIsScanned) {
  const QString project = addProject("alpha");
  open();
  folderChooser.answer(project);
  model->chooseFolder();
  settle();
  EXPECT_EQ(model->countText(), u"1 files indexed in memory for instant @file voice tagging."_s);
  EXPECT_EQ(model->modeLabel(), u"Manual"_s);
  EXPECT_EQ(model->workspaceName(), u"alpha"_s);
  EXPECT_EQ(model->workspacePath(), project);
  EXPECT_GT(changes, 0);
}

TEST_F(CodebaseContextModelTest, AUserWhoDecidesAgainstAFolderChangesNothing) {
  open();
  folderChooser.answer(std::nullopt);
  model->chooseFolder();
  settle();
  EXPECT_FALSE(model->isManual());
  EXPECT_THAT(toasts, IsEmpty());
}

TEST_F(CodebaseContextModelTest, RescanningConfirmsItself) {
  fallbackRoots = {addProject("alpha")};
  open();
  EXPECT_EQ(model->rescanLabel(), u"Rescan"_s);
  model->rescan();
  EXPECT_THAT(toasts, ElementsAre(u"Workspace Refreshed"_s));
  settle();
  EXPECT_EQ(model->workspaceName(), u"alpha"_s);
}

TEST_F(CodebaseContextModelTest, WhileAScanRunsTheButtonSaysSoAndDoesNothing) {
  open();
  storage.settings.set(keys::customWorkspacePath, addProject("alpha"));
  indexer->refreshActiveWorkspace();
  mainThread.drain();
  EXPECT_TRUE(model->isScanning());
  EXPECT_EQ(model->rescanLabel(), u"Scanning…"_s);
  model->rescan();
  EXPECT_THAT(toasts, IsEmpty());
  settle();
  EXPECT_EQ(model->rescanLabel(), u"Rescan"_s);
}

TEST_F(CodebaseContextModelTest, ReturningToAutomaticConfirmsItself) {
  fallbackRoots = {addProject("alpha")};
  storage.settings.set(keys::customWorkspacePath, addProject("beta"));
  open();
  EXPECT_EQ(model->workspaceName(), u"beta"_s);
  model->detectAutomatically();
  settle();
  EXPECT_EQ(model->modeLabel(), u"Auto-detect"_s);
  EXPECT_EQ(model->workspaceName(), u"alpha"_s);
  EXPECT_THAT(toasts, ElementsAre(u"Switched to Auto-detection"_s));
}

TEST_F(CodebaseContextModelTest, ReturningToAutomaticWhereItIsAutomaticDoesNothing) {
  open();
  model->detectAutomatically();
  EXPECT_THAT(toasts, IsEmpty());
}

}  // namespace
}  // namespace vemo
