// The sheets over the program's windows, as their models know them. Main thread only; the models
// outlive it.
#pragma once

#include <algorithm>
#include <functional>
#include <vector>

#include "ports/ApplicationSheets.h"

namespace vemo {

class WindowSheets : public ApplicationSheets {
 public:
  template <typename Model>
  void add(Model& model) {
    m_windows.push_back(
        {[&model] { return model.hasOpenSheet(); }, [&model] { model.closeSheets(); }});
  }

  bool isAnyAttached() const override {
    return std::ranges::any_of(m_windows, [](const auto& window) { return window.hasSheet(); });
  }
  void endAttached() override {
    for (const auto& window : m_windows) window.closeSheets();
  }

 private:
  struct Window {
    std::function<bool()> hasSheet;
    std::function<void()> closeSheets;
  };
  std::vector<Window> m_windows;
};

}  // namespace vemo
