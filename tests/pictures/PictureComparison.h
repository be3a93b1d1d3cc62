// A picture beside the one that is kept of it.
#pragma once

#include <QImage>
#include <QString>

namespace vemo {

/// How many pixels of two pictures of one size are clearly different: more than the few colours of
/// a kept picture make them.
int differingPixels(const QImage& one, const QImage& other);

/// Writes the picture to be kept: small, with no more colours than it takes. False when it can't.
bool keepPicture(const QImage& image, const QString& file);

}  // namespace vemo
