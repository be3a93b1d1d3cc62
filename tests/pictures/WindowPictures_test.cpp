// How the windows look, in each state that they can be in.
//
// A window that is meant to look different gets its pictures anew: window_pictures
// --write-references, and the same with --scale 1.5 and --scale 2. Look at what that changes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QTest>
#include <algorithm>
#include <cstdlib>

#include "PictureComparison.h"
#include "Sights.h"
#include "windows/offline/MainWindowOnFakes.h"
#include "windows/offline/SettingsOnFakes.h"

namespace vemo {
namespace {

qreal scale = 1;

/// What the documentation shows is drawn sharply enough for any display.
QDir folderOfReferences() {
  return scale == 2 ? QDir(QStringLiteral(VEMO_DOCUMENTS_IN_SOURCE) + u"/pictures"_s)
                    : QDir(QStringLiteral(VEMO_PICTURES_IN_SOURCE) + u"/references"_s);
}

std::unique_ptr<OfflineWindow> windowIn(const QString& state) {
  if (SettingsOnFakes::states().contains(state)) return std::make_unique<SettingsOnFakes>(state);
  return std::make_unique<MainWindowOnFakes>(state);
}

QQuickItem* buttonOf(QQuickItem& item, const QString& text) {
  if (!item.isVisible()) return nullptr;
  const bool isButton = item.metaObject()->indexOfSignal("clicked()") >= 0;
  if (isButton && item.property("text").toString() == text) return &item;
  for (auto* child : item.childItems())
    if (auto* found = buttonOf(*child, text)) return found;
  return nullptr;
}

QImage draw(const Sight& sight) {
  const auto offline = windowIn(sight.state);
  QGuiApplication::setLayoutDirection(sight.direction);
  ShownWindow window(
      offline->scene() == Scene::Main ? u"main/MainWindow.qml"_s : u"settings/SettingsWindow.qml"_s,
      offline->viewModel(), sight.size, sight.brightness);
  EXPECT_THAT(window.complaints(), testing::IsEmpty());
  if (!window.complaints().isEmpty()) return {};
  if (sight.accent.isValid()) window.setAccent(sight.accent);
  window.activate();
  offline->pass({});
  if (!sight.pressed.isEmpty()) {
    auto* button = buttonOf(window.root(), sight.pressed);
    if (button) QMetaObject::invokeMethod(button, "clicked");
    EXPECT_TRUE(button) << sight.pressed.toStdString();
    offline->pass({});
  }
  for (int i = 0; i < sight.tabs; ++i) QTest::keyClick(&window.window(), Qt::Key_Tab);
  window.draw();
  const QImage image = window.draw().convertToFormat(QImage::Format_RGB32);
  QGuiApplication::setLayoutDirection(Qt::LeftToRight);
  EXPECT_THAT(window.complaints(), testing::IsEmpty());
  return image;
}

class WindowPicturesTest : public testing::TestWithParam<Sight> {};

TEST_P(WindowPicturesTest, LooksAsItIsMeantTo) {
  const QImage image = draw(GetParam());
  ASSERT_EQ(image.size(), GetParam().size * scale);
  expectLooksAs(image, folderOfReferences().filePath(GetParam().name + u".png"_s));
}

INSTANTIATE_TEST_SUITE_P(EachSight, WindowPicturesTest, testing::ValuesIn(sightsAtScale(scale)),
                         [](const auto& info) {
                           QString name = info.param.name;
                           return name.replace(u'-', u'_').replace(u'.', u'_').toStdString();
                         });

TEST(WindowPicturesFolderTest, EveryPictureThatIsKeptIsOfAWindow) {
  QStringList names;
  for (const qreal each : scale == 2 ? QList<qreal>{2} : QList<qreal>{1, 1.5})
    for (const auto& sight : sightsAtScale(each)) names.append(sight.name + u".png"_s);
  for (const auto& file : folderOfReferences().entryList({u"*.png"_s}))
    if (!file.startsWith(u"icons-")) EXPECT_TRUE(names.contains(file)) << file.toStdString();
}

/// What the letters look like, and how large a pixel is, Qt asks for when it starts.
void readArguments(int count, char** arguments) {
  for (int i = 1; i < count; ++i) {
    if (qstrcmp(arguments[i], "--write-references") == 0) writesReferences = true;
    if (qstrcmp(arguments[i], "--scale") == 0 && i + 1 < count) {
      qputenv("QT_SCALE_FACTOR", arguments[i + 1]);
      scale = QByteArray(arguments[i + 1]).toDouble();
    }
  }
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("FONTCONFIG_FILE", VEMO_PICTURES_IN_SOURCE "/fonts.conf");
}

}  // namespace
}  // namespace vemo

int main(int argumentCount, char** arguments) {
  vemo::readArguments(argumentCount, arguments);
  testing::InitGoogleTest(&argumentCount, arguments);
  return RUN_ALL_TESTS();
}
