#include "ui/HUDWindowController.h"

namespace vemo {

using namespace std::chrono_literals;

namespace {

using Kind = HUDModel::State::Kind;

constexpr auto errorDuration = 2400ms;
constexpr auto removalDuration = 350ms;
constexpr Spring insertion{.response = 0.36, .dampingFraction = 0.74};
constexpr Spring removal{.response = 0.32, .dampingFraction = 0.8};

}  // namespace

HUDWindowController::HUDWindowController(With with)
    : m_with(std::move(with)), m_tasks(m_with.mainThread) {}

void HUDWindowController::showRecording() {
  m_dismissTask.cancel();
  makeSureOfPanel();
  place();
  m_model.level = 0;
  m_model.liveText.clear();
  m_model.state = {Kind::Recording, {}};
  m_model.changed.notify({});
  orderFront();
  setPresented(true, insertion);
}

void HUDWindowController::showTranscribing() {
  m_dismissTask.cancel();
  makeSureOfPanel();
  place();
  m_model.state = {Kind::Transcribing, {}};
  setPresented(true, {});
  orderFront();
}

void HUDWindowController::showError(const QString& message) {
  m_dismissTask.cancel();
  makeSureOfPanel();
  place();
  m_model.liveText.clear();
  m_model.state = {Kind::Error, message};
  m_model.changed.notify({});
  orderFront();
  setPresented(true, insertion);
  startDismissal(errorDuration);
}

void HUDWindowController::hide() {
  m_dismissTask.cancel();
  startDismissal(0ms);
}

void HUDWindowController::hideNow() {
  m_dismissTask.cancel();
  m_model.isPresented = false;
  m_model.state = {};
  m_model.liveText.clear();
  m_model.changed.notify({});
  orderOut();
}

void HUDWindowController::setLevel(float level) {
  m_model.level = level;
  m_model.changed.notify({});
}

void HUDWindowController::makeSureOfPanel() {
  if (m_panel) return;
  m_panel = m_with.makePanel();
  if (!m_panel) return;
  m_panel->setAlpha(0);
  m_view = std::make_unique<HUDView>(*m_panel, m_model, m_with.settings, m_with.clock);
  m_screenObserver = m_with.screens.changed.observe(
      [this] { m_tasks.start([this](std::stop_token) { return placeAgain(); }); });
}

void HUDWindowController::place() {
  if (!m_panel) return;
  std::optional<Screen> screen = m_with.screens.mainScreen();
  if (!screen) {
    const auto screens = m_with.screens.screens();
    if (screens.empty()) return;
    screen = screens.front();
  }
  m_model.hasNotch = screen->safeAreaTop > 0;
  m_model.topInset = m_model.hasNotch ? screen->safeAreaTop : screen->topStripThickness;
  m_model.changed.notify({});
  const ScreenRect& frame = screen->frame;
  m_panel->setFrame(
      {frame.midX() - panelSize.width / 2, frame.y, panelSize.width, panelSize.height}, *screen);
}

Task<> HUDWindowController::placeAgain() {
  place();
  co_return;
}

void HUDWindowController::orderFront() {
  if (!m_panel) return;
  m_panel->setAlpha(1);
  m_panel->orderFrontRegardless();
}

void HUDWindowController::orderOut() {
  if (m_panel) m_panel->orderOut();
}

void HUDWindowController::setPresented(bool isPresented, std::optional<Motion> motion) {
  m_model.isPresented = isPresented;
  m_model.changed.notify(motion);
}

void HUDWindowController::startDismissal(Clock::Duration delay) {
  m_dismissTask =
      m_tasks.start([&](std::stop_token stop) { return dismiss(delay, std::move(stop)); });
}

Task<> HUDWindowController::dismiss(Clock::Duration delay, std::stop_token stop) {
  if (delay > 0ms) co_await m_with.clock.sleep(delay, stop);
  if (stop.stop_requested()) co_return;
  setPresented(false, removal);
  co_await m_with.clock.sleep(removalDuration, stop);
  if (stop.stop_requested()) co_return;
  orderOut();
  m_model.state = {};
  m_model.liveText.clear();
  m_model.level = 0;
  m_model.changed.notify({});
}

}  // namespace vemo
