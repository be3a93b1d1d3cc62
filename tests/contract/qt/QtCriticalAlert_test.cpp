#include "platform/qt/QtCriticalAlert.h"

#include <gmock/gmock.h>

#include <QAccessible>
#include <QImage>
#include <QTest>

#include "QtGuiFixture.h"
#include "platform/qt/QtAlertWindow.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

class QtCriticalAlertTest : public QtGuiFixture {
 protected:
  void show(const AlertText& shown) {
    alert.show(shown, [this] { ++closings; });
    for (QWindow* candidate : QGuiApplication::topLevelWindows())
      if (candidate->isVisible()) window = dynamic_cast<QtAlertWindow*>(candidate);
    ASSERT_TRUE(window);
    ASSERT_TRUE(QtTestLoop::runUntil([this] { return window->isActive(); }));
  }
  void show() { show(text); }

  bool isClosed() {
    QCoreApplication::processEvents();
    return QtTestLoop::runUntil([this] { return closings > 0 || window->isVisible(); }) &&
           closings == 1 && !window->isVisible();
  }

  const AlertText text{.message = u"Move Vemo to your Applications folder"_s,
                       .informative = u"It would stop working as soon as you eject the disk."_s,
                       .button = u"Quit"_s};
  QtCriticalAlert alert;
  QtAlertWindow* window = nullptr;
  int closings = 0;
};

TEST_F(QtCriticalAlertTest, ItIsModalInTheMiddleAndHasTheKeyboard) {
  show();
  EXPECT_EQ(window->modality(), Qt::ApplicationModal);
  EXPECT_EQ(window->title(), text.message);
  const QPoint middle = window->screen()->availableGeometry().center();
  EXPECT_LE((window->geometry().center() - middle).manhattanLength(), 2);
}

TEST_F(QtCriticalAlertTest, TheKeysOfAButtonAndEscapeCloseIt) {
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space, Qt::Key_Escape}) {
    closings = 0;
    show();
    QTest::keyClick(window, key);
    EXPECT_TRUE(isClosed()) << key;
  }
}

TEST_F(QtCriticalAlertTest, AnotherKeyDoesNothing) {
  show();
  QTest::keyClick(window, Qt::Key_A);
  QTest::keyClick(window, Qt::Key_Tab);
  EXPECT_FALSE(isClosed());
}

TEST_F(QtCriticalAlertTest, AClickOnTheButtonClosesItAndOneBesideDoesNot) {
  show();
  QTest::mouseClick(window, Qt::LeftButton, {}, window->buttonPlace().topLeft() - QPoint(4, 4));
  EXPECT_FALSE(isClosed());
  QTest::mouseClick(window, Qt::LeftButton, {}, window->buttonPlace().center());
  EXPECT_TRUE(isClosed());
}

TEST_F(QtCriticalAlertTest, TheWindowManagersCloseButtonClosesIt) {
  show();
  window->close();
  EXPECT_TRUE(isClosed());
}

TEST_F(QtCriticalAlertTest, TextOfAnyLengthHasItsRoomAboveTheButton) {
  show();
  const int height = window->height();
  AlertText longer = text;
  longer.informative = text.informative.repeated(12) + u"\n\nAnd a last line."_s;
  show(longer);
  EXPECT_GT(window->height(), height);
  EXPECT_LT(window->informativePlace().bottom(), window->buttonPlace().top());
  EXPECT_TRUE(QRect(QPoint(), window->size()).contains(window->buttonPlace()));
}

TEST_F(QtCriticalAlertTest, AssistiveToolsAreToldOfAnAlertWithATextAndAButton) {
  show();
  auto* root = QAccessible::queryAccessibleInterface(window);
  ASSERT_TRUE(root);
  EXPECT_EQ(root->role(), QAccessible::AlertMessage);
  EXPECT_EQ(root->text(QAccessible::Name), text.message);
  EXPECT_EQ(root->text(QAccessible::Description), text.informative);
  EXPECT_TRUE(root->state().modal);
  ASSERT_EQ(root->childCount(), 2);
  EXPECT_FALSE(root->child(2));

  auto* informative = root->child(0);
  EXPECT_EQ(informative->role(), QAccessible::StaticText);
  EXPECT_EQ(informative->text(QAccessible::Name), text.informative);

  auto* button = root->child(1);
  EXPECT_EQ(button->role(), QAccessible::Button);
  EXPECT_EQ(button->text(QAccessible::Name), text.button);
  EXPECT_TRUE(button->state().focused);
  EXPECT_EQ(root->focusChild(), button);
  EXPECT_EQ(root->indexOfChild(button), 1);
  EXPECT_EQ(button->parent(), root);
  EXPECT_TRUE(window->geometry().contains(button->rect()));
}

TEST_F(QtCriticalAlertTest, AnAssistiveToolPressesTheButton) {
  show();
  auto* actions = window->accessibleButton()->actionInterface();
  ASSERT_TRUE(actions);
  EXPECT_EQ(actions->actionNames(), QStringList(QAccessibleActionInterface::pressAction()));
  actions->doAction(u"something else"_s);
  EXPECT_FALSE(isClosed());
  actions->doAction(QAccessibleActionInterface::pressAction());
  EXPECT_TRUE(isClosed());
}

TEST_F(QtCriticalAlertTest, AnAlertThatGoesWithItsProgramTellsNobody) {
  {
    QtCriticalAlert passing;
    passing.show(text, [this] { ++closings; });
  }
  QCoreApplication::processEvents();
  EXPECT_EQ(closings, 0);
}

}  // namespace
}  // namespace vemo
