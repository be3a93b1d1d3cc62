// Tells when this program comes to the front, by Qt's application state. Qt doesn't know of the
// machine's sleep, so onDidWake is left to be called by whoever does.
//
// Made after the application object, on the main thread.
#pragma once

#include <QObject>

#include "ports/SystemEvents.h"

namespace vemo {

class QtSystemEvents : public SystemEvents {
 public:
  QtSystemEvents();

 private:
  QObject m_connection;  ///< ends the notifications with this object
};

}  // namespace vemo
