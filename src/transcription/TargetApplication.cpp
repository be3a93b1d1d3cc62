#include "transcription/TargetApplication.h"

#include <algorithm>
#include <optional>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

bool canStandIn(const RunningApplication& application) {
  return application.isRegular && application.isActive && !application.isSelf;
}

std::optional<RunningApplication> chosenApplication(const FocusedApplication& focusedApplication) {
  auto frontmost = focusedApplication.frontmost();
  if (frontmost && !frontmost->isSelf) return frontmost;
  const auto running = focusedApplication.running();
  const auto standIn = std::ranges::find_if(running, canStandIn);
  return standIn != running.end() ? *standIn : frontmost;
}

}  // namespace

TargetApplication TargetApplication::current(const FocusedApplication& focusedApplication) {
  const auto application = chosenApplication(focusedApplication).value_or(RunningApplication{});
  return {.name = application.name.value_or(u"Desktop App"_s),
          .identifier = application.identifier.value_or(QString())};
}

}  // namespace vemo
