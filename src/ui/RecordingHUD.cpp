#include "ui/RecordingHUD.h"

#include <algorithm>

#include "storage/SettingsKeys.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

using Kind = HUDModel::State::Kind;

constexpr Spring presenceSpring{.response = 0.36, .dampingFraction = 0.74};
constexpr Spring stateSpring{.response = 0.3, .dampingFraction = 0.8};
constexpr EaseInOut liveTextEase{.duration = 0.15};
constexpr EaseInOut colorEase{.duration = 0.2};

/// Contents of quick changes that fade away at the same time; older ones are hardly to be seen.
constexpr std::size_t maximumLeaving = 2;

/// A frame's time counts from the start of 2001, in UTC.
double secondsSinceReferenceDate(Clock::WallTime time) {
  constexpr Clock::WallTime reference = std::chrono::sys_days{std::chrono::year{2001} / 1 / 1};
  return std::chrono::duration<double>(time - reference).count();
}

bool hasWaveform(const HUDModel::State& state) {
  return state.kind == Kind::Recording || state.kind == Kind::Transcribing;
}

ScreenRect movedBy(const ScreenRect& rect, double x, double y) {
  return {rect.x + x, rect.y + y, rect.width, rect.height};
}

}  // namespace

RecordingHUD::RecordingHUD(HUDModel& model, Settings& settings, Clock& clock,
                           const PillTextMetrics& metrics)
    : m_model(model),
      m_settings(settings),
      m_clock(clock),
      m_metrics(metrics),
      m_transition(pillTransition(model.hasNotch)),
      m_pillColor(settings.get(keys::dictationPillColor, u"dark"_s)),
      m_colorChange(1) {
  m_modelObservation =
      m_model.changed.observe([this](const std::optional<Motion>& motion) { followModel(motion); });
  m_settingsObservation = m_settings.changed.observe([this](const QString& key) {
    if (key == QString::fromUtf16(keys::dictationPillColor.name)) followColor();
  });
}

void RecordingHUD::followModel(const std::optional<Motion>& motion) {
  const auto now = m_clock.monotonicTime();
  const bool wasVisible = isVisible(now);
  followContent(now);
  followPresence(motion, now);
  if (wasVisible || isVisible(now)) changed.notify();
}

void RecordingHUD::followPresence(const std::optional<Motion>& motion, Clock::MonotonicTime now) {
  if (!m_model.isPresented && m_model.state.kind == Kind::Idle) {
    m_presence.jump(0);
    return;
  }
  const double target = m_model.isPresented ? 1 : 0;
  if (target == m_presence.target()) return;
  m_transition = pillTransition(m_model.hasNotch);
  m_presence.move(target, motion.value_or(presenceSpring), now);
}

void RecordingHUD::followContent(Clock::MonotonicTime now) {
  const bool isAnimated = isVisible(now);
  const bool isOtherState = m_model.state != m_current.state;
  const bool isOtherText = m_model.liveText != m_liveText;
  const bool textComesOrGoes = m_model.liveText.isEmpty() != m_liveText.isEmpty();
  m_liveText = m_model.liveText;
  if (!m_liveText.isEmpty()) m_lastLiveText = m_liveText;

  if (isOtherState) {
    if (isAnimated) {
      m_current.opacity.move(0, stateSpring, now);
      m_leaving.push_back(m_current);
      if (m_leaving.size() > maximumLeaving) m_leaving.erase(m_leaving.begin());
    }
    m_current = {m_model.state, MovingValue(isAnimated ? 0 : 1)};
    m_current.opacity.move(1, stateSpring, now);
  }
  if (!isAnimated) m_leaving.clear();

  m_liveTextOpacity.move(m_liveText.isEmpty() ? 0 : 1, liveTextEase, now);
  m_cornerRadius.move(pillCornerRadius(m_liveText), liveTextEase, now);
  if (isOtherState || isOtherText) {
    followSize(isOtherState ? Motion(stateSpring) : Motion(liveTextEase), now);
    if (!isOtherState && !textComesOrGoes) {
      m_width.jump(m_width.target());
      m_height.jump(m_height.target());
    }
  }

  if (!isAnimated) {
    for (MovingValue* value : {&m_width, &m_height, &m_cornerRadius, &m_liveTextOpacity})
      value->jump(value->target());
  }
}

void RecordingHUD::followSize(const Motion& motion, Clock::MonotonicTime now) {
  const PillLayout layout = pillLayout(m_model.state, m_liveText, m_metrics);
  m_width.move(layout.size.width, motion, now);
  m_height.move(layout.size.height, motion, now);
}

void RecordingHUD::followColor() {
  const auto now = m_clock.monotonicTime();
  m_formerColors = colorsAt(now);
  m_pillColor = m_settings.get(keys::dictationPillColor, u"dark"_s);
  if (isVisible(now)) {
    m_colorChange.jump(0);
    m_colorChange.move(1, colorEase, now);
    changed.notify();
  }
}

bool RecordingHUD::isVisible(Clock::MonotonicTime moment) const {
  return m_presence.target() == 1 || m_presence.isMoving(moment);
}

bool RecordingHUD::needsFrames() const {
  const auto now = m_clock.monotonicTime();
  if (!isVisible(now)) return false;
  if (hasWaveform(m_current.state)) return true;
  const auto moves = [now](const MovingValue& value) { return value.isMoving(now); };
  return moves(m_presence) || moves(m_width) || moves(m_height) || moves(m_cornerRadius) ||
         moves(m_liveTextOpacity) || moves(m_colorChange) || moves(m_current.opacity) ||
         std::ranges::any_of(m_leaving, moves, &Shown::opacity);
}

PillPicture RecordingHUD::picture(Clock::MonotonicTime moment) const {
  PillPicture picture;
  if (!isVisible(moment)) return picture;
  const double width = m_width.at(moment);
  picture.pill = {panelSize.width / 2 - width / 2,
                  pillTopPadding(m_model.topInset, m_model.hasNotch), width, m_height.at(moment)};
  picture.cornerRadius = m_cornerRadius.at(moment);
  const double presence = m_presence.at(moment);
  picture.scale = mixed(m_transition.scale, 1, presence);
  picture.offset = mixed(m_transition.offset, 0, presence);
  picture.opacity = std::clamp(presence, 0.0, 1.0);
  picture.isLeaving = !m_model.isPresented;
  picture.colors = colorsAt(moment);
  for (const Shown& shown : m_leaving) {
    if (shown.opacity.isMoving(moment))
      picture.contents.push_back(contentOf(shown, picture.pill, moment));
  }
  picture.contents.push_back(contentOf(m_current, picture.pill, moment));
  return picture;
}

PillPicture::Content RecordingHUD::contentOf(const Shown& shown, const ScreenRect& pill,
                                             Clock::MonotonicTime moment) const {
  const double liveTextOpacity = std::clamp(m_liveTextOpacity.at(moment), 0.0, 1.0);
  PillPicture::Content content{
      .opacity = std::clamp(shown.opacity.at(moment), 0.0, 1.0),
      .layout =
          pillLayout(shown.state, liveTextOpacity > 0 ? m_lastLiveText : QString(), m_metrics),
      .waveform = {},
      .liveText = {},
      .liveTextOpacity = liveTextOpacity,
      .message = shown.state.message};
  if (hasWaveform(shown.state)) {
    const VemoWaveform waveform{
        .mode = shown.state.kind == Kind::Recording
                    ? VemoWaveform::Mode(VemoWaveform::Active{m_model.level})
                    : VemoWaveform::Processing{},
        .theme = m_pillColor};
    content.waveform = waveform.drawing(waveformSize.width, waveformSize.height,
                                        secondsSinceReferenceDate(m_clock.wallTime()));
    if (liveTextOpacity > 0) content.liveText = m_lastLiveText;
  }
  PillLayout& layout = content.layout;
  const double x = pill.midX() - layout.size.width / 2;
  const double y = pill.y + (pill.height - layout.size.height) / 2;
  for (ScreenRect* rect : {&layout.waveform, &layout.liveText, &layout.symbol, &layout.message})
    *rect = movedBy(*rect, x, y);
  return content;
}

PillColors RecordingHUD::colorsAt(Clock::MonotonicTime moment) const {
  const PillColors& colors = pillTheme(m_pillColor).pill;
  const double part = m_colorChange.at(moment);
  if (part == 1) return colors;
  return {.fill = mixed(m_formerColors.fill, colors.fill, part),
          .stroke = mixed(m_formerColors.stroke, colors.stroke, part),
          .text = mixed(m_formerColors.text, colors.text, part)};
}

}  // namespace vemo
