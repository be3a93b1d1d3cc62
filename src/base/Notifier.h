// Tells observers that something changed.
//
// An observation lasts as long as the object that observe() returns. Observers run in the order in
// which they came, inside notify(); they may observe or end observations meanwhile. Main thread
// only.
#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

namespace vemo {

using Observation = std::shared_ptr<void>;

template <typename... Arguments>
class Notifier {
 public:
  using Observer = std::function<void(Arguments...)>;

  [[nodiscard]] Observation observe(Observer observer) {
    auto observation = std::make_shared<Observer>(std::move(observer));
    m_observers.push_back(observation);
    return observation;
  }

  void notify(const Arguments&... arguments) {
    std::erase_if(m_observers, [](const auto& observer) { return observer.expired(); });
    const auto observers = m_observers;
    for (const auto& observer : observers) {
      if (const auto alive = observer.lock()) (*alive)(arguments...);
    }
  }

 private:
  std::vector<std::weak_ptr<Observer>> m_observers;
};

}  // namespace vemo
