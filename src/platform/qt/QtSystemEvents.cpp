#include "platform/qt/QtSystemEvents.h"

#include <QGuiApplication>

namespace vemo {

QtSystemEvents::QtSystemEvents() {
  QObject::connect(qGuiApp, &QGuiApplication::applicationStateChanged, &m_connection,
                   [this](Qt::ApplicationState state) {
                     if (state == Qt::ApplicationActive && onDidBecomeActive) onDidBecomeActive();
                   });
}

}  // namespace vemo
