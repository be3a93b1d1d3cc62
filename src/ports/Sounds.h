// Short sounds that tell the user what happens.
//
// Main thread only; playing never waits for the sound server, and a sound that can't be played is
// silence.
#pragma once

#include <QString>
#include <memory>

namespace vemo {

class Sound {
 public:
  virtual ~Sound() = default;

  /// Plays from the start; a play of this sound that is under way is stopped first.
  virtual void play() = 0;
};

class Sounds {
 public:
  virtual ~Sounds() = default;

  /// The program's own sound `name`, or null when there is none or it can't be loaded.
  virtual std::unique_ptr<Sound> resource(const QString& name) = 0;

  /// The desktop's sound that stands for the system sound `name` ("Tink", "Pop"), or null.
  virtual std::unique_ptr<Sound> system(const QString& name) = 0;
};

}  // namespace vemo
