#include "ShownWindow.h"

#include <gtest/gtest.h>

#include <QCursor>
#include <QStyleHints>

#include "fakes/TestApplication.h"
#include "windows/AccentColors.h"
#include "windows/SymbolImages.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

void collect(QQuickItem& item, QStringList& texts) {
  if (!item.isVisible()) return;
  for (const char* property : {"text", "placeholderText", "label", "title"}) {
    const QString text = item.property(property).toString();
    if (!text.isEmpty() && !texts.contains(text)) texts.append(text);
  }
  const auto children = item.childItems();
  for (auto* child : children) collect(*child, texts);
}

}  // namespace

/// Nothing of it blinks, and the pointer is on nothing.
void ShownWindow::makeApplication() {
  if (QGuiApplication::instance()) return;
  QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
  makeTestApplication<QGuiApplication>();
  QGuiApplication::styleHints()->setCursorFlashTime(0);
  QCursor::setPos(-100, -100);
}

void ShownWindow::note(QtMsgType type, const QMessageLogContext&, const QString& message) {
  if (type == QtDebugMsg || type == QtInfoMsg) return;
  // Not every machine has a font for each of the languages.
  if (message.contains(u"OpenType support missing"_s)) return;
  s_complaints.append(message);
}

ShownWindow::ShownWindow(const QString& file, QObject& model, QSize size, Brightness brightness)
    : m_handlerBefore(qInstallMessageHandler(&note)) {
  makeApplication();
  s_complaints.clear();
  m_view = std::make_unique<QQuickView>();
  QQmlEngine::setObjectOwnership(&model, QQmlEngine::CppOwnership);
  m_view->setResizeMode(QQuickView::SizeRootObjectToView);
  m_view->resize(size);
  m_view->engine()->addImageProvider(u"symbols"_s,
                                     new SymbolImages(QStringLiteral(VEMO_SYMBOLS_IN_SOURCE)));
  setLook(brightness);
  m_view->setInitialProperties({{u"model"_s, QVariant::fromValue(&model)}});
  m_view->setSource(QUrl::fromLocalFile(QStringLiteral(VEMO_QML_IN_SOURCE) + u'/' + file));
  m_view->show();
  draw();
}

/// Its property `theme` is the windows' theme.
std::unique_ptr<QObject> ShownWindow::themeFinder() {
  QQmlComponent finder(m_view->engine());
  finder.setData(
      "import QtQml; import \"common\"; QtObject { readonly property QtObject theme: Theme }",
      QUrl::fromLocalFile(QStringLiteral(VEMO_QML_IN_SOURCE) + u"/look"_s));
  return std::unique_ptr<QObject>(finder.create());
}

/// Without motion, so that what is drawn doesn't depend on when.
void ShownWindow::setLook(Brightness brightness) {
  const auto finder = themeFinder();
  auto* const theme = finder->property("theme").value<QObject*>();
  theme->setProperty("reducedMotion", true);
  theme->setProperty("isDark", brightness == Brightness::Dark);
}

void ShownWindow::setAccent(const QColor& accent) {
  const auto finder = themeFinder();
  auto* const theme = finder->property("theme").value<QObject*>();
  theme->setProperty("desktopAccent", desktopAccent(*theme, accent));
}

ShownWindow::~ShownWindow() {
  qInstallMessageHandler(m_handlerBefore);
}

void ShownWindow::activate() {
  m_view->requestActivate();
  draw();
}

QImage ShownWindow::draw() {
  for (int round = 0; round < 5; ++round) QCoreApplication::processEvents();
  return m_view->grabWindow();
}

QStringList ShownWindow::texts() {
  QStringList texts;
  collect(*m_view->contentItem(), texts);
  return texts;
}

}  // namespace vemo
