// The short message that appears over a window and goes away by itself.
//
// Main thread only. A new message replaces the old one and has its full time.
#pragma once

#include <QObject>
#include <QString>
#include <chrono>

#include "base/Clock.h"
#include "base/TaskScope.h"

namespace vemo {

class ToastModel : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool isShown READ isShown NOTIFY changed)
  /// Stays what it was while the banner goes away.
  Q_PROPERTY(QString message READ message NOTIFY changed)

 public:
  static constexpr auto timeShown = std::chrono::seconds(2);

  ToastModel(Clock& clock, MainThread& mainThread) : m_clock(clock), m_tasks(mainThread) {}

  bool isShown() const { return m_isShown; }
  const QString& message() const { return m_message; }

  void show(const QString& message);

  Q_SIGNAL void changed();

 private:
  Task<> hideInTime(std::stop_token stop);

  Clock& m_clock;
  bool m_isShown = false;
  QString m_message;
  StartedTask m_hiding;
  TaskScope m_tasks;
};

}  // namespace vemo
