// The main queue on Qt's event loop: each piece of work is one posted event.
//
// Made on the main thread.
#pragma once

#include <QObject>

#include "base/MainThread.h"

namespace vemo {

class QtMainThread : public QObject, public MainThread {
 public:
  void post(std::move_only_function<void()> work) override;

  bool event(QEvent* event) override;
};

}  // namespace vemo
