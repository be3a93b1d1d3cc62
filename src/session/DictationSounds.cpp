#include "session/DictationSounds.h"

#include "storage/SettingsKeys.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

DictationSounds::DictationSounds(Sounds& sounds, const Settings& settings)
    : m_sounds(sounds), m_settings(settings) {}

void DictationSounds::playStart() {
  playSound(u"vemo_start"_s, u"Tink"_s);
}

void DictationSounds::playStop() {
  playSound(u"vemo_stop"_s, u"Pop"_s);
}

void DictationSounds::playSound(const QString& name, const QString& fallback) {
  if (!m_settings.get(keys::dictationSounds, true)) return;
  auto cached = m_soundCache.find(name);
  if (cached == m_soundCache.end()) {
    auto sound = m_sounds.resource(name);
    if (!sound) sound = m_sounds.system(fallback);
    if (!sound) return;
    cached = m_soundCache.emplace(name, std::move(sound)).first;
  }
  cached->second->play();
}

}  // namespace vemo
