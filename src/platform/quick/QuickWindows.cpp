#include "platform/quick/QuickWindows.h"

#include <QGuiApplication>
#include <QIcon>
#include <QQmlComponent>
#include <QQmlContext>
#include <QScreen>
#include <utility>

#include "windows/AccentColors.h"
#include "windows/SymbolImages.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr QSize standardSize{860, 620};
constexpr QSize smallestSize{640, 480};

QUrl sourceOf(Scene scene) {
  return scene == Scene::Main ? QUrl(u"qrc:/vemo/qml/main/MainWindow.qml"_s)
                              : QUrl(u"qrc:/vemo/qml/settings/SettingsWindow.qml"_s);
}

QString titleOf(Scene scene) {
  return scene == Scene::Main ? u"Vemo"_s : QGuiApplication::translate("Windows", "Settings");
}

/// A copy in a folder of its own has the program's icon where no desktop looks.
void lookForIconsOfThisCopy() {
  QIcon::setThemeSearchPaths(QIcon::themeSearchPaths()
                             << QCoreApplication::applicationDirPath() + u"/../share/icons"_s);
}

void centre(QQuickView& view) {
  const QRect free = view.screen()->availableGeometry();
  QRect place(QPoint(), view.size().boundedTo(free.size()));
  place.moveCenter(free.center());
  view.setGeometry(place);
}

}  // namespace

QuickWindows::QuickWindows(QString symbolsFolder, std::function<void()> onClosed)
    : m_symbolsFolder(std::move(symbolsFolder)), m_onClosed(std::move(onClosed)) {
  // A window needs no graphics card, whose driver would weigh more than all of Vemo.
  QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
  lookForIconsOfThisCopy();
}

QuickWindows::~QuickWindows() {
  m_views.clear();
}

void QuickWindows::open(Scene scene, QObject& model) {
  if (!m_engine) makeEngine();
  Shown& shown = m_views[scene];
  if (!shown.view) {
    shown = {makeView(scene, model), &model};
    QMetaObject::invokeMethod(&model, "windowShown");
  }
  shown.view->setWindowStates(shown.view->windowStates() & ~Qt::WindowMinimized);
  shown.view->show();
  shown.view->raise();
  shown.view->requestActivate();
}

void QuickWindows::close(Scene scene) {
  const auto shown = m_views.find(scene);
  if (shown != m_views.end()) shown->second.view->close();
}

void QuickWindows::makeEngine() {
  m_engine = std::make_unique<QQmlEngine>();
  m_engine->addImageProvider(u"symbols"_s, new SymbolImages(m_symbolsFolder));
  setLook(m_look);
}

std::unique_ptr<QQuickView> QuickWindows::makeView(Scene scene, QObject& model) {
  QQmlEngine::setObjectOwnership(&model, QQmlEngine::CppOwnership);
  auto view = std::make_unique<QQuickView>(m_engine.get(), nullptr);
  view->setTitle(titleOf(scene));
  view->setIcon(QIcon::fromTheme(u"brelmox.Vemo"_s));
  view->setInitialProperties({{u"model"_s, QVariant::fromValue(&model)}});
  view->setSource(sourceOf(scene));
  if (scene == Scene::Main) view->resize(standardSize);
  view->setMinimumSize(scene == Scene::Main ? smallestSize
                                            : view->initialSize().boundedTo(smallestSize));
  view->setResizeMode(QQuickView::SizeRootObjectToView);
  centre(*view);
  // Qt is still telling of the closing then.
  connect(view.get(), &QWindow::visibleChanged, this, [this, scene](bool isVisible) {
    if (isVisible) return;
    QMetaObject::invokeMethod(this, [this, scene] { closed(scene); }, Qt::QueuedConnection);
  });
  return view;
}

void QuickWindows::closed(Scene scene) {
  const auto shown = m_views.find(scene);
  if (shown == m_views.end() || shown->second.view->isVisible()) return;
  QObject* const model = shown->second.model;
  m_views.erase(shown);
  if (m_views.empty()) m_engine.reset();
  QMetaObject::invokeMethod(model, "windowHidden");
  m_onClosed();
}

void QuickWindows::setLook(const WindowLook& look) {
  m_look = look;
  if (!m_engine) return;
  QQmlComponent finder(m_engine.get());
  finder.setData(
      "import QtQml\nimport \"common\"\nQtObject { readonly property QtObject theme: Theme }",
      QUrl(u"qrc:/vemo/qml/Look.qml"_s));
  const std::unique_ptr<QObject> found(finder.create());
  if (!found)
    qFatal("The theme of the windows can't be read: %s", qUtf8Printable(finder.errorString()));
  auto* const theme = found->property("theme").value<QObject*>();
  theme->setProperty("isDark", look.isDark);
  theme->setProperty("reducedMotion", look.hasReducedMotion);
  theme->setProperty("desktopAccent", look.accent
                                          ? desktopAccent(*theme, QColor::fromRgb(*look.accent))
                                          : QVariantMap());
}

std::vector<quintptr> QuickWindows::identifiers() const {
  std::vector<quintptr> identifiers;
  for (const auto& [scene, shown] : m_views) identifiers.push_back(shown.view->winId());
  return identifiers;
}

}  // namespace vemo

extern "C" Q_DECL_EXPORT vemo::WindowSet* makeVemoWindowSet(const QString& symbolsFolder,
                                                            std::function<void()> onClosed) {
  return new vemo::QuickWindows(symbolsFolder, std::move(onClosed));
}
