#include "platform/atspi/AtspiFocusSearch.h"

#include <algorithm>
#include <utility>

namespace vemo {

namespace {

using namespace std::chrono_literals;

/// A program that hangs holds the search up no longer than this, for each of its objects.
constexpr auto answerLimit = 500ms;
constexpr int mostObjects = 3000;

enum class Level { Root, Program, Window, Content };

constexpr Level below(Level level) {
  switch (level) {
    case Level::Root:
      return Level::Program;
    case Level::Program:
      return Level::Window;
    default:
      return Level::Content;
  }
}

}  // namespace

struct AtspiFocusSearch::Progress : std::enable_shared_from_this<Progress> {
  struct Candidate {
    AtspiObject object;
    Level level = Level::Content;
  };

  Progress(GioBus& bus, Found whenFound) : objects(bus, answerLimit), found(std::move(whenFound)) {}

  void step() {
    if (waiting.empty() || ++askedCount > mostObjects) return finish();
    Candidate next = std::move(waiting.back());
    waiting.pop_back();
    if (next.level == Level::Root || next.level == Level::Program) return descend(next);
    objects.askState(next.object, [self = weak_from_this(), next](std::optional<AtspiState> state) {
      if (const auto progress = self.lock()) progress->judge(next, state.value_or(AtspiState{}));
    });
  }

  void judge(const Candidate& candidate, AtspiState state) {
    if (candidate.level == Level::Window && !state.isActive) return step();
    if (candidate.level == Level::Content && state.isFocused) {
      // A container may count as focused together with what it contains.
      focused = candidate.object;
      waiting.clear();
    }
    descend(candidate);
  }

  void descend(const Candidate& candidate) {
    objects.askChildren(candidate.object, [self = weak_from_this(), level = below(candidate.level)](
                                              std::vector<AtspiObject> children) {
      const auto progress = self.lock();
      if (!progress) return;
      std::ranges::reverse(children);
      for (AtspiObject& child : children) progress->waiting.push_back({std::move(child), level});
      progress->step();
    });
  }

  void finish() {
    const auto report = std::exchange(found, nullptr);
    if (focused && report) report(*focused);
  }

  AtspiObjects objects;
  Found found;
  std::vector<Candidate> waiting{{AtspiObjects::root(), Level::Root}};
  std::optional<AtspiObject> focused;
  int askedCount = 0;
};

AtspiFocusSearch::AtspiFocusSearch(GioBus& bus, Found found)
    : m_progress(std::make_shared<Progress>(bus, std::move(found))) {
  m_progress->step();
}

AtspiFocusSearch::~AtspiFocusSearch() = default;

}  // namespace vemo
