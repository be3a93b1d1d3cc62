// The desktop's accent colour, made fit to be written in and on.
//
// The hue is the user's; how light it is follows from what has to be read. Pure functions.
#pragma once

#include <QColor>
#include <QObject>
#include <QVariantMap>

namespace vemo {

/// Of two opaque colours, from 1 to 21, as the Web Content Accessibility Guidelines define it.
double contrast(const QColor& one, const QColor& other);

struct AccentColors {
  QColor accent;        ///< of surfaces, symbols and the keyboard's ring
  QColor accentText;    ///< of words on the grounds, and on `selection`
  QColor textOnAccent;  ///< of words on `accent`
  QColor selection;     ///< of what is chosen, behind ordinary text
};

/// The grounds that a theme's texts stand on, from the darkest to the lightest.
struct Grounds {
  QColor darkest;
  QColor lightest;
};

/// Words that are drawn with them have a contrast of at least 4.5, and so does the ring.
AccentColors accentColors(const QColor& wish, const Grounds& grounds);

/// The same for the theme of the windows, as its property `desktopAccent` takes it.
QVariantMap desktopAccent(const QObject& theme, const QColor& wish);

}  // namespace vemo
