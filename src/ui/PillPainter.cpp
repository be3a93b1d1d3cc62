#include "ui/PillPainter.h"

#include <QPainter>
#include <cmath>

#include "ui/AlphaBlur.h"
#include "ui/PillShapes.h"
#include "ui/PillText.h"

namespace vemo {

namespace {

constexpr double shadowOpacity = 0.38;
constexpr double shadowRadius = 14;
constexpr double shadowOffset = 6;
constexpr double strokeWidth = 1;
constexpr Color orange{1.0, 0.584, 0.0};

QColor toQt(const Color& color) {
  return QColor::fromRgbF(float(color.red), float(color.green), float(color.blue),
                          float(color.opacity));
}

QRectF toQt(const ScreenRect& rect) {
  return {rect.x, rect.y, rect.width, rect.height};
}

QRectF withMargin(const QRectF& rect, double margin) {
  return rect.adjusted(-margin, -margin, margin, margin);
}

QRect inPixels(const QRectF& points, double scale) {
  return QRectF(points.topLeft() * scale, points.size() * scale).toAlignedRect();
}

/// The pill's way to its place: scaled from the middle of its top, and moved down. In pixels.
QTransform transitionOf(const PillPicture& picture, double scale) {
  if (picture.scale == 1 && picture.offset == 0) return {};
  const QPointF anchor(picture.pill.midX() * scale, picture.pill.y * scale);
  return QTransform::fromTranslate(anchor.x(), anchor.y() + picture.offset * scale)
      .scale(picture.scale, picture.scale)
      .translate(-anchor.x(), -anchor.y());
}

QRectF reachOfShadow(const QRectF& pill) {
  return withMargin(pill, reachOfBlur(shadowRadius)).translated(0, shadowOffset).united(pill);
}

/// An image of one colour from its coverage.
QImage tinted(const QImage& coverage, const QColor& color) {
  QImage image(coverage.size(), QImage::Format_ARGB32_Premultiplied);
  QRgb shades[256];
  for (int alpha = 0; alpha < 256; ++alpha)
    shades[alpha] = qPremultiply(qRgba(color.red(), color.green(), color.blue(), alpha));
  for (int y = 0; y < image.height(); ++y) {
    const uchar* from = coverage.constScanLine(y);
    auto* to = reinterpret_cast<QRgb*>(image.scanLine(y));
    for (int x = 0; x < image.width(); ++x) to[x] = shades[from[x]];
  }
  return image;
}

void drawBars(QPainter& painter, const std::vector<WaveformBar>& bars) {
  for (const WaveformBar& bar : bars) {
    painter.setBrush(toQt(bar.color));
    painter.drawRoundedRect(QRectF(bar.x, bar.y, bar.width, bar.height), bar.cornerRadius,
                            bar.cornerRadius);
  }
}

double opacityOn(Ground ground, const PillPicture& picture) {
  if (ground == Ground::Translucent) return picture.opacity;
  return picture.isLeaving && picture.opacity < 0.5 ? 0 : 1;
}

}  // namespace

QRect PillPainter::bounds(const PillPicture& picture, double scale) {
  if (picture.isEmpty()) return {};
  const QRect atRest = inPixels(reachOfShadow(toQt(picture.pill)), scale);
  return withMargin(transitionOf(picture, scale).mapRect(QRectF(atRest)), 1).toAlignedRect();
}

QRect PillPainter::waveformBounds(const PillPicture& picture, double scale) {
  QRectF bounds;
  for (const auto& content : picture.contents) {
    if (!content.waveform.bars.empty())
      bounds |= withMargin(toQt(content.layout.waveform),
                           reachOfBlur(content.waveform.glowBlurRadius) + 1);
  }
  return transitionOf(picture, scale).mapRect(QRectF(inPixels(bounds, scale))).toAlignedRect();
}

void PillPainter::paint(const PanelPixels& pixels, const PillPicture& picture, Ground ground,
                        const QRect& changed) {
  QImage image(reinterpret_cast<uchar*>(pixels.argb.data()), pixels.width, pixels.height,
               QImage::Format_ARGB32_Premultiplied);
  QPainter painter(&image);
  painter.setCompositionMode(QPainter::CompositionMode_Source);
  painter.fillRect(changed, Qt::transparent);
  const double opacity = opacityOn(ground, picture);
  if (picture.isEmpty() || opacity == 0) return;

  painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
  painter.setClipRect(changed);
  painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
  painter.setPen(Qt::NoPen);
  painter.setTransform(transitionOf(picture, pixels.scale));
  painter.setOpacity(opacity);
  drawBase(painter, {.pill = picture.pill,
                     .cornerRadius = picture.cornerRadius,
                     .colors = picture.colors,
                     .ground = ground,
                     .scale = pixels.scale});
  for (const auto& content : picture.contents) {
    if (content.opacity == 0) continue;
    painter.save();
    painter.setOpacity(opacity * content.opacity);
    drawContent(painter, picture, content, pixels.scale, changed);
    painter.restore();
  }
}

void PillPainter::drawBase(QPainter& painter, const Base& base) {
  if (base != m_base) {
    m_base = base;
    const QRectF pill = toQt(base.pill);
    const QRect place = inPixels(reachOfShadow(pill), base.scale);
    m_baseOrigin = place.topLeft();
    const QPainterPath shape = continuousRoundedRect(pill, base.cornerRadius);
    const QTransform toPlace =
        QTransform::fromTranslate(-place.x(), -place.y()).scale(base.scale, base.scale);
    if (base.ground == Ground::Translucent) {
      QImage shadow(place.size(), QImage::Format_Alpha8);
      shadow.fill(0);
      QPainter shadowPainter(&shadow);
      shadowPainter.setRenderHint(QPainter::Antialiasing);
      shadowPainter.setTransform(toPlace);
      shadowPainter.translate(0, shadowOffset);
      shadowPainter.fillPath(shape, toQt(black.withOpacity(shadowOpacity)));
      shadowPainter.end();
      blurAlpha(shadow, deviationOfBlur(shadowRadius) * base.scale);
      m_baseImage = tinted(shadow, Qt::black);
    } else {
      m_baseImage = QImage(place.size(), QImage::Format_ARGB32_Premultiplied);
      m_baseImage.fill(Qt::transparent);
    }
    QPainter basePainter(&m_baseImage);
    basePainter.setRenderHint(QPainter::Antialiasing);
    basePainter.setTransform(toPlace);
    basePainter.fillPath(shape, toQt(base.colors.fill));
    const double inset = strokeWidth / 2;
    basePainter.strokePath(
        continuousRoundedRect(withMargin(pill, -inset), std::max(base.cornerRadius - inset, 0.0)),
        QPen(toQt(base.colors.stroke), strokeWidth));
  }
  painter.drawImage(m_baseOrigin, m_baseImage);
}

void PillPainter::drawContent(QPainter& painter, const PillPicture& picture,
                              const PillPicture::Content& content, double scale,
                              const QRect& changed) {
  // A pill that is still growing to its content's size hides what isn't in it yet.
  if (content.layout.size.width > picture.pill.width + 1 ||
      content.layout.size.height > picture.pill.height + 1)
    painter.setClipPath(QTransform::fromScale(scale, scale)
                            .map(continuousRoundedRect(toQt(picture.pill), picture.cornerRadius)),
                        Qt::IntersectClip);
  if (!content.waveform.bars.empty()) drawWaveform(painter, content, scale);

  const auto isTouched = [&](const ScreenRect& place) {
    const QRectF pixels(inPixels(toQt(place), scale));
    return !pixels.isEmpty() &&
           painter.transform().mapRect(pixels).toAlignedRect().intersects(changed);
  };
  const bool touchesSymbol = isTouched(content.layout.symbol);
  const bool touchesMessage = isTouched(content.layout.message);
  const bool touchesLiveText = !content.liveText.isEmpty() && isTouched(content.layout.liveText);
  painter.scale(scale, scale);
  if (touchesSymbol) painter.fillPath(warningTriangle(toQt(content.layout.symbol)), toQt(orange));
  painter.setPen(toQt(picture.colors.text));
  if (touchesMessage) m_text.drawMessage(painter, content.layout.message, content.message);
  if (touchesLiveText) {
    painter.setOpacity(painter.opacity() * content.liveTextOpacity);
    m_text.drawLiveText(painter, content.layout.liveText, content.liveText);
  }
}

void PillPainter::drawWaveform(QPainter& painter, const PillPicture::Content& content,
                               double scale) {
  drawGlow(painter, content, scale);
  painter.save();
  painter.scale(scale, scale);
  painter.translate(content.layout.waveform.x, content.layout.waveform.y);
  drawBars(painter, content.waveform.bars);
  painter.restore();
}

void PillPainter::drawGlow(QPainter& painter, const PillPicture::Content& content, double scale) {
  const WaveformDrawing& waveform = content.waveform;
  if (waveform.glow.empty() || waveform.glow.front().color.opacity == 0) return;
  const double radius = waveform.glowBlurRadius;
  const QRect place =
      inPixels(withMargin(toQt(content.layout.waveform), reachOfBlur(radius)), scale);
  if (m_glow.size() != place.size()) m_glow = QImage(place.size(), QImage::Format_Alpha8);
  m_glow.fill(0);
  QPainter glowPainter(&m_glow);
  glowPainter.setRenderHint(QPainter::Antialiasing);
  glowPainter.setPen(Qt::NoPen);
  glowPainter.translate(-place.topLeft());
  glowPainter.scale(scale, scale);
  glowPainter.translate(content.layout.waveform.x, content.layout.waveform.y);
  drawBars(glowPainter, waveform.glow);
  glowPainter.end();
  blurAlpha(m_glow, deviationOfBlur(radius) * scale);
  // All of the glow has one colour; what differs is its opacity, which is in the coverage.
  painter.drawImage(place.topLeft(),
                    tinted(m_glow, toQt(waveform.glow.front().color.withOpacity(1))));
}

}  // namespace vemo
