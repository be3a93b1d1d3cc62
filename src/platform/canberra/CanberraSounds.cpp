#include "platform/canberra/CanberraSounds.h"

#include <QDir>
#include <QFile>
#include <array>
#include <utility>

#include "platform/canberra/CanberraPlayer.h"

using namespace Qt::Literals::StringLiterals;

namespace vemo {

namespace {

class CanberraSound : public Sound {
 public:
  CanberraSound(std::shared_ptr<CanberraPlayer> player, CanberraSource source)
      : m_player(std::move(player)),
        m_soundId(m_player->newSoundId()),
        m_source(std::move(source)) {}

  void play() override { m_player->play(m_soundId, m_source); }

 private:
  const std::shared_ptr<CanberraPlayer> m_player;
  const std::uint32_t m_soundId;
  const CanberraSource m_source;
};

struct ThemeSound {
  QLatin1StringView name;
  const char* themeId;
};

/// The sounds of the freedesktop theme that come nearest: a small bell and a soft blip.
constexpr std::array themeSounds{
    ThemeSound{"Tink"_L1, "bell"},
    ThemeSound{"Pop"_L1, "audio-volume-change"},
};

bool isWavFile(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return false;
  const QByteArray head = file.read(12);
  return head.startsWith("RIFF") && head.endsWith("WAVE");
}

}  // namespace

CanberraSounds::CanberraSounds(QString folder, QString applicationName, QString applicationId)
    : m_folder(std::move(folder)),
      m_player(std::make_shared<CanberraPlayer>(applicationName.toUtf8(), applicationId.toUtf8())) {
}

CanberraSounds::~CanberraSounds() {
  m_player->end();
}

std::unique_ptr<Sound> CanberraSounds::resource(const QString& name) {
  if (name.contains(u'/')) return nullptr;
  const QString path = QDir(m_folder).absoluteFilePath(name + u".wav"_s);
  if (!isWavFile(path)) return nullptr;
  return std::make_unique<CanberraSound>(
      m_player, CanberraSource{CA_PROP_MEDIA_FILENAME, QFile::encodeName(path)});
}

std::unique_ptr<Sound> CanberraSounds::system(const QString& name) {
  for (const ThemeSound& sound : themeSounds) {
    if (sound.name == name)
      return std::make_unique<CanberraSound>(m_player,
                                             CanberraSource{CA_PROP_EVENT_ID, sound.themeId});
  }
  return nullptr;
}

}  // namespace vemo
