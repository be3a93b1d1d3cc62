// A picture beside the one that is kept of it.
#pragma once

#include <QImage>
#include <QString>

namespace vemo {

/// Whether pictures are written rather than looked at; the program's arguments say so.
inline bool writesReferences = false;

/// Fails when the picture clearly differs from the one in the file, and leaves it beside the tests
/// as failed-NAME.png; or else writes the file anew.
void expectLooksAs(const QImage& image, const QString& file);

}  // namespace vemo
