// Draws a picture of the pill into a panel's pixels. What takes time to draw, the pill with its
// shadow, is kept as an image for as long as it stays the same.
//
// Main thread only.
#pragma once

#include <QImage>
#include <QRect>

#include "ports/FloatingPanel.h"
#include "ui/RecordingHUD.h"

class QPainter;

namespace vemo {

class PillText;

/// Where a shadow can't shine through and nothing can fade, the pill is drawn without.
enum class Ground { Translucent, Opaque };

class PillPainter {
 public:
  explicit PillPainter(const PillText& text) : m_text(text) {}

  /// Draws what of the picture lies in `changed`, which it clears first.
  void paint(const PanelPixels& pixels, const PillPicture& picture, Ground ground,
             const QRect& changed);

  /// The pixels that the picture covers, shadow included.
  static QRect bounds(const PillPicture& picture, double scale);
  /// The pixels that the waveforms of the picture cover, glow included.
  static QRect waveformBounds(const PillPicture& picture, double scale);

 private:
  /// What the pill without its contents looks like.
  struct Base {
    ScreenRect pill;
    double cornerRadius = 0;
    PillColors colors;
    Ground ground = Ground::Translucent;
    double scale = 0;

    friend bool operator==(const Base&, const Base&) = default;
  };

  void drawBase(QPainter& painter, const Base& base);
  void drawContent(QPainter& painter, const PillPicture& picture,
                   const PillPicture::Content& content, double scale, const QRect& changed);
  void drawWaveform(QPainter& painter, const PillPicture::Content& content, double scale);
  void drawGlow(QPainter& painter, const PillPicture::Content& content, double scale);

  const PillText& m_text;
  Base m_base;
  QImage m_baseImage;
  QPoint m_baseOrigin;
  QImage m_glow;
};

}  // namespace vemo
