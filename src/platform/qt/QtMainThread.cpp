#include "platform/qt/QtMainThread.h"

#include <QCoreApplication>
#include <QEvent>
#include <utility>

namespace vemo {

namespace {

const QEvent::Type workEventType = static_cast<QEvent::Type>(QEvent::registerEventType());

class WorkEvent : public QEvent {
 public:
  explicit WorkEvent(std::move_only_function<void()> postedWork)
      : QEvent(workEventType), work(std::move(postedWork)) {}

  std::move_only_function<void()> work;
};

}  // namespace

void QtMainThread::post(std::move_only_function<void()> work) {
  QCoreApplication::postEvent(this, new WorkEvent(std::move(work)));
}

bool QtMainThread::event(QEvent* event) {
  if (event->type() != workEventType) return QObject::event(event);
  static_cast<WorkEvent*>(event)->work();
  return true;
}

}  // namespace vemo
