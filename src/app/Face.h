// What the user sees of the program beside the pill: brings together windows, the panel's item and
// the models that they show.
//
// Made once, on the main thread, when the logic stands; outlived by what it connects.
#pragma once

#include <vector>

#include "base/Notifier.h"
#include "base/TaskScope.h"
#include "ui/models/MissingPanelNotice.h"

namespace vemo {

struct Desktop;
struct Foundation;
struct Program;

class Face {
 public:
  Face(Foundation& foundation, Desktop& desktop, Program& program);
  ~Face();

 private:
  void connectWindows();
  void connectStatusItem();
  Task<> lookWhereTheFocusWent(std::stop_token stop);
  void showMenu();
  void showLook();

  Foundation& m_foundation;
  Desktop& m_desktop;
  Program& m_program;
  MissingPanelNotice m_missingPanel;
  std::vector<Observation> m_observations;
  TaskScope m_tasks;
};

}  // namespace vemo
