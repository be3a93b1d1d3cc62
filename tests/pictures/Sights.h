// What there is to look at: each state of the windows, light and dark, and the more telling ones as
// small as the window goes, turned around, and on displays with more pixels.
#pragma once

#include <QColor>
#include <QList>
#include <QSize>
#include <QString>

#include "ShownWindow.h"

namespace vemo {

struct Sight {
  QString name;   ///< of its picture's file, without the ending
  QString state;  ///< as vemo-offline lists it
  QSize size;
  Brightness brightness = Brightness::Light;
  Qt::LayoutDirection direction = Qt::LeftToRight;
  QColor accent = {};    ///< the desktop's, if it has one
  QString pressed = {};  ///< the button that is pressed first, by its text
  int tabs = 0;          ///< how often Tab is pressed then
};

/// Those that are drawn with this many pixels to one: 1, 1.5 or 2.
QList<Sight> sightsAtScale(qreal scale);

inline void PrintTo(const Sight& sight, std::ostream* stream) {
  *stream << sight.name.toStdString();
}

}  // namespace vemo
