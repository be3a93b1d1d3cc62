// Screens that a test sets up.
#pragma once

#include "ports/Screens.h"

namespace vemo {

class FakeScreens : public Screens {
 public:
  std::optional<Screen> mainScreen() const override { return main; }
  std::vector<Screen> screens() const override { return all; }

  std::optional<Screen> main = Screen{.frame = {0, 0, 1280, 800}, .topStripThickness = 24};
  std::vector<Screen> all = {*main};
};

}  // namespace vemo
