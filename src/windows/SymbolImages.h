// The symbols of the windows as images: "image://symbols/NAME/RRGGBB" is the drawing of that name
// in that colour, as sharp as it is asked for.
//
// Owned by the QML engine; called on its threads. A name without a drawing is an empty image.
#pragma once

#include <QQuickImageProvider>
#include <QString>

namespace vemo {

class SymbolImages : public QQuickImageProvider {
 public:
  /// `folder` holds NAME.svg, drawn in `currentColor`.
  explicit SymbolImages(QString folder);

  QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;

 private:
  const QString m_folder;
};

}  // namespace vemo
