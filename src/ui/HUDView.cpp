#include "ui/HUDView.h"

namespace vemo {

namespace {

/// A frame is drawn for the moment at which the display shows it, a frame's time later. So the
/// first of a pill that fades in is one in which something can be seen.
constexpr std::chrono::nanoseconds untilShown{1'000'000'000 / 60};

PillPicture withoutWaveforms(PillPicture picture) {
  for (auto& content : picture.contents) content.waveform = {};
  return picture;
}

PixelRect toPixelRect(const QRect& rect) {
  return {rect.x(), rect.y(), rect.width(), rect.height()};
}

}  // namespace

HUDView::HUDView(FloatingPanel& panel, HUDModel& model, Settings& settings, Clock& clock)
    : m_panel(panel), m_clock(clock), m_hud(model, settings, clock, m_text) {
  m_panel.onFrame = [this] { drawFrame(); };
  m_panel.onRedrawNeeded = [this] {
    m_drawnSize.reset();
    m_panel.setAnimating(Animating::Yes);
  };
  m_observation = m_hud.changed.observe([this] {
    // What has gone is not to be seen for a frame when the panel is shown the next time.
    if (m_hud.isGone())
      drawFrame();
    else
      m_panel.setAnimating(Animating::Yes);
  });
  m_textObservation = model.changed.observe(
      [this, &model](const std::optional<Motion>&) { m_spoken.setLiveText(model.liveText); });
}

void HUDView::drawFrame() {
  const PillPicture picture = m_hud.picture(m_clock.monotonicTime() + untilShown);
  const PanelPixels pixels = m_panel.pixels();
  const QRect all(0, 0, pixels.width, pixels.height);
  const QRect changed = m_drawnSize == all.size() ? changedSince(picture, pixels.scale) & all : all;
  if (!changed.isEmpty()) {
    m_painter.paint(pixels, picture, m_panel.isTranslucent() ? Ground::Translucent : Ground::Opaque,
                    changed);
    m_panel.present(toPixelRect(changed));
  }
  m_last = picture;
  m_drawnSize = all.size();
  if (!m_hud.needsFrames()) m_panel.setAnimating(Animating::No);
}

QRect HUDView::changedSince(const PillPicture& picture, double scale) const {
  if (picture == m_last) return {};
  if (withoutWaveforms(picture) == withoutWaveforms(m_last))
    return PillPainter::waveformBounds(picture, scale);
  return PillPainter::bounds(picture, scale) | PillPainter::bounds(m_last, scale);
}

}  // namespace vemo
