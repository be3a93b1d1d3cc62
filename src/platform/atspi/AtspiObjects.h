// Questions to the accessible objects of other programs, asked over the accessibility bus.
//
// The names and numbers of the protocol are those of libatspi's headers. The library itself isn't
// used: it has every program report every object that it makes or changes. On the GioThread.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vemo {

class GioBus;

/// An object of a program: the program's name on the bus, and the object's path.
struct AtspiObject {
  std::string program;
  std::string path;

  bool operator==(const AtspiObject&) const = default;
};

/// What an object says of itself, as far as it matters here.
struct AtspiState {
  bool isFocused = false;
  bool isActive = false;  ///< of a window: the one in front
};

class AtspiObjects {
 public:
  /// An object that doesn't answer within `limit` has no answer.
  AtspiObjects(GioBus& bus, std::chrono::milliseconds limit) : m_bus(bus), m_limit(limit) {}

  /// The object above all programs.
  static AtspiObject root();

  void askRole(const AtspiObject& object, std::function<void(std::optional<unsigned>)> answer);
  void askState(const AtspiObject& object, std::function<void(std::optional<AtspiState>)> answer);
  /// Of an embedded page, the parent may be in another program.
  void askParent(const AtspiObject& object, std::function<void(std::optional<AtspiObject>)> answer);
  void askChildren(const AtspiObject& object, std::function<void(std::vector<AtspiObject>)> answer);

 private:
  GioBus& m_bus;
  const std::chrono::milliseconds m_limit;
};

}  // namespace vemo
