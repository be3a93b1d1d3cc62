#include "windows/SymbolImages.h"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>
#include <utility>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

SymbolImages::SymbolImages(QString folder)
    : QQuickImageProvider(Image), m_folder(std::move(folder)) {}

QImage SymbolImages::requestImage(const QString& id, QSize* size, const QSize& requestedSize) {
  QFile file(m_folder + u'/' + id.section(u'/', 0, 0) + u".svg"_s);
  if (!file.open(QIODevice::ReadOnly)) return {};
  const QByteArray color = '#' + id.section(u'/', 1, 1).toLatin1();
  QSvgRenderer drawing(file.readAll().replace("currentColor", color));
  const QSize drawn = requestedSize.isEmpty() ? drawing.defaultSize() : requestedSize;
  QImage image(drawn, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  drawing.render(&painter);
  *size = drawn;
  return image;
}

}  // namespace vemo
