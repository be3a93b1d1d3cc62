// The two sounds of a dictation, loaded at first use and kept. Main thread only.
#pragma once

#include <QString>
#include <map>
#include <memory>

#include "ports/Sounds.h"

namespace vemo {

class Settings;

class DictationSounds {
 public:
  DictationSounds(Sounds& sounds, const Settings& settings);

  /// A recording has started.
  void playStart();

  /// The text was pasted.
  void playStop();

 private:
  void playSound(const QString& name, const QString& fallback);

  Sounds& m_sounds;
  const Settings& m_settings;
  std::map<QString, std::unique_ptr<Sound>> m_soundCache;
};

}  // namespace vemo
