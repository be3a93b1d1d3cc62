// vemo-offline: the real windows on fakes in scripted states, for those who design them.

#include <QColor>
#include <QCommandLineParser>
#include <QGuiApplication>
#include <QQuickWindow>
#include <QTimer>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>

#include "platform/quick/QuickScenes.h"
#include "windows/offline/MainWindowOnFakes.h"
#include "windows/offline/SettingsOnFakes.h"

namespace vemo {
namespace {

using namespace std::chrono_literals;

constexpr auto frame = 16ms;
constexpr auto timeToDraw = 500ms;

struct Family {
  QStringList states;
  std::function<std::unique_ptr<OfflineWindow>(const QString&)> make;
};

const Family families[] = {
    {MainWindowOnFakes::states(),
     [](const QString& state) { return std::make_unique<MainWindowOnFakes>(state); }},
    {SettingsOnFakes::states(),
     [](const QString& state) { return std::make_unique<SettingsOnFakes>(state); }},
};

int list() {
  for (const auto& family : families) {
    for (const auto& state : family.states) std::puts(qUtf8Printable(state));
  }
  return 0;
}

std::unique_ptr<OfflineWindow> make(const QString& state) {
  for (const auto& family : families) {
    if (family.states.contains(state)) return family.make(state);
  }
  return nullptr;
}

int takeScreenshot(const QString& file) {
  for (QWindow* window : QGuiApplication::topLevelWindows()) {
    auto* const shown = qobject_cast<QQuickWindow*>(window);
    if (shown && shown->grabWindow().save(file)) return 0;
  }
  std::fprintf(stderr, "vemo-offline: can't write %s\n", qUtf8Printable(file));
  return 1;
}

std::optional<std::uint32_t> accentOf(const QCommandLineParser& options) {
  const QColor color(options.value(u"accent"_s));
  return color.isValid() ? std::optional(color.rgb() & RGB_MASK) : std::nullopt;
}

int run(const QCommandLineParser& options) {
  if (options.isSet(u"list"_s)) return list();
  if (options.positionalArguments().size() != 1) {
    std::fputs(qUtf8Printable(options.helpText()), stderr);
    return 2;
  }
  const QString state = options.positionalArguments().constFirst();
  const auto offline = make(state);
  if (!offline) {
    std::fprintf(stderr, "vemo-offline: no state is called %s (--list names all)\n",
                 qUtf8Printable(state));
    return 2;
  }
  if (options.isSet(u"right-to-left"_s)) QGuiApplication::setLayoutDirection(Qt::RightToLeft);

  QuickScenes scenes({.sharedObject = QStringLiteral(VEMO_WINDOWS_IN_BUILD),
                      .symbolsFolder = QStringLiteral(VEMO_SYMBOLS_IN_SOURCE)});
  scenes.modelOf = [&offline](Scene) -> QObject& { return offline->viewModel(); };
  scenes.applyPolicy = [](quintptr, ActivationPolicy) {};
  scenes.setLook({.isDark = options.value(u"theme"_s) == u"dark",
                  .hasReducedMotion = options.isSet(u"screenshot"_s),
                  .accent = accentOf(options)});
  scenes.open(offline->scene());
  if (!scenes.isOpen(offline->scene())) return 1;

  QTimer time;
  QObject::connect(&time, &QTimer::timeout, [&offline] { offline->pass(frame); });
  if (const QString file = options.value(u"screenshot"_s); !file.isEmpty()) {
    offline->pass({});
    QTimer::singleShot(timeToDraw, [&file] { QCoreApplication::exit(takeScreenshot(file)); });
  } else {
    time.start(frame);
  }
  return QCoreApplication::exec();
}

}  // namespace
}  // namespace vemo

int main(int argumentCount, char** arguments) {
  using namespace Qt::Literals::StringLiterals;
  // Qt reads the scale when the application is made.
  for (int i = 1; i + 1 < argumentCount; ++i) {
    if (qstrcmp(arguments[i], "--scale") == 0) qputenv("QT_SCALE_FACTOR", arguments[i + 1]);
  }
  const QGuiApplication application(argumentCount, arguments);
  QCommandLineParser options;
  options.setApplicationDescription(u"Shows a window of Vemo in a scripted state, offline."_s);
  options.addHelpOption();
  options.addPositionalArgument(u"state"_s, u"what to show"_s);
  options.addOptions({{u"list"_s, u"name the states"_s},
                      {u"theme"_s, u"light or dark"_s, u"theme"_s, u"light"_s},
                      {u"accent"_s, u"the desktop's accent, as #RRGGBB"_s, u"color"_s},
                      {u"scale"_s, u"device pixels to a pixel"_s, u"N"_s, u"1"_s},
                      {u"right-to-left"_s, u"turn the window around"_s},
                      {u"screenshot"_s, u"write a picture and end"_s, u"file"_s}});
  options.process(application);
  return vemo::run(options);
}
