// A window's QML on a model, shown on Qt's display without a screen, with everything that the
// console would say.
#pragma once

#include <QGuiApplication>
#include <QImage>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QStringList>
#include <memory>
#include <ostream>

/// What a failing test shows of a text.
inline void PrintTo(const QString& text, std::ostream* stream) {
  *stream << text.toStdString();
}

namespace vemo {

enum class Brightness { Light, Dark };

class ShownWindow {
 public:
  /// Qt's application, if there is none yet; one for the whole test program, since Qt can't make a
  /// second one reliably.
  static void makeApplication();

  /// Makes Qt's application, too. `file` is relative to the folder of the QML.
  ShownWindow(const QString& file, QObject& model, QSize size,
              Brightness brightness = Brightness::Light);
  ~ShownWindow();

  QQuickItem& root() { return *m_view->rootObject(); }
  QQuickWindow& window() { return *m_view; }
  QQmlEngine& engine() { return *m_view->engine(); }

  /// As if the desktop's accent were this colour.
  void setAccent(const QColor& accent);

  /// Gives it the keyboard.
  void activate();

  /// Lets everything that waits in Qt's queue happen, and draws.
  QImage draw();

  /// Each text that can be seen, whether it is drawn or told to assistive tools alone.
  QStringList texts();

  /// What QML has complained of since the window was made.
  const QStringList& complaints() const { return s_complaints; }

 private:
  std::unique_ptr<QObject> themeFinder();
  void setLook(Brightness brightness);
  static void note(QtMsgType type, const QMessageLogContext& context, const QString& message);

  static inline QStringList s_complaints;
  QtMessageHandler m_handlerBefore;
  std::unique_ptr<QQuickView> m_view;
};

}  // namespace vemo
