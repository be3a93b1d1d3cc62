// Notes which windows were opened and closed, and which are open.
#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "ports/Scenes.h"

namespace vemo {

class FakeScenes : public Scenes {
 public:
  void open(Scene scene) override {
    m_open.insert(scene);
    m_calls.push_back("open " + name(scene));
  }
  void close(Scene scene) override {
    m_open.erase(scene);
    m_calls.push_back("close " + name(scene));
  }
  bool isOpen(Scene scene) const override { return m_open.contains(scene); }

  /// "open main", "close settings" and so on, since the last time that this was asked.
  std::vector<std::string> takeCalls() { return std::exchange(m_calls, {}); }

 private:
  static std::string name(Scene scene) { return scene == Scene::Main ? "main" : "settings"; }

  std::set<Scene> m_open;
  std::vector<std::string> m_calls;
};

}  // namespace vemo
