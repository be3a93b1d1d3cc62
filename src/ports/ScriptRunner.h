// Runs a script that asks another application something, in the desktop's own scripting language.
//
// Main thread only. Blocks until the application has answered.
#pragma once

#include <QString>
#include <optional>

namespace vemo {

class ScriptRunner {
 public:
  virtual ~ScriptRunner() = default;

  /// The text that the script ends with; nothing when it can't be run, fails or ends with no text.
  virtual std::optional<QString> run(const QString& source) = 0;
};

}  // namespace vemo
