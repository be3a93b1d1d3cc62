#include "ui/HUDWindowController.h"

namespace vemo {

using namespace std::chrono_literals;

namespace {

constexpr auto errorDuration = 2400ms;
constexpr auto removalDuration = 350ms;

}  // namespace

HUDWindowController::HUDWindowController(Clock& clock, MainThread& mainThread)
    : m_clock(clock), m_tasks(mainThread) {}

void HUDWindowController::showRecording() {
  m_model.level = 0;
  present({.kind = HUDModel::State::Kind::Recording, .message = {}});
}

void HUDWindowController::showTranscribing() {
  present({.kind = HUDModel::State::Kind::Transcribing, .message = {}});
}

void HUDWindowController::showError(const QString& message) {
  present({.kind = HUDModel::State::Kind::Error, .message = message});
  m_dismissTask =
      m_tasks.start([&](std::stop_token stop) { return dismiss(errorDuration, std::move(stop)); });
}

void HUDWindowController::hide() {
  m_dismissTask.cancel();
  m_dismissTask =
      m_tasks.start([&](std::stop_token stop) { return dismiss(0ms, std::move(stop)); });
}

void HUDWindowController::hideNow() {
  m_dismissTask.cancel();
  m_model.isPresented = false;
  m_model.state = {};
  m_model.changed.notify();
}

void HUDWindowController::setLevel(float level) {
  m_model.level = level;
  m_model.changed.notify();
}

void HUDWindowController::present(HUDModel::State state) {
  m_dismissTask.cancel();
  m_model.state = std::move(state);
  m_model.isPresented = true;
  m_model.changed.notify();
}

Task<> HUDWindowController::dismiss(Clock::Duration delay, std::stop_token stop) {
  if (delay > 0ms) co_await m_clock.sleep(delay, stop);
  if (stop.stop_requested()) co_return;
  m_model.isPresented = false;
  m_model.changed.notify();
  co_await m_clock.sleep(removalDuration, stop);
  if (stop.stop_requested()) co_return;
  m_model.state = {};
  m_model.level = 0;
  m_model.changed.notify();
}

}  // namespace vemo
