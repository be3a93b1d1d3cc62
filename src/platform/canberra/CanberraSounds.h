// Sounds through libcanberra: the program's own by file, the desktop's by their name in the sound
// theme.
//
// libcanberra waits for the sound server, so it is used on a thread of its own, which begins with
// the first play. A sound server that hangs so delays sounds and nothing else; the end of the
// program doesn't wait for it either. Sounds may outlive this object and are then silent.
#pragma once

#include <QString>
#include <memory>

#include "ports/Sounds.h"

namespace vemo {

class CanberraSounds : public Sounds {
 public:
  /// `folder` holds the program's own sounds, as NAME.wav.
  CanberraSounds(QString folder, QString applicationName, QString applicationId);
  ~CanberraSounds() override;

  std::unique_ptr<Sound> resource(const QString& name) override;
  std::unique_ptr<Sound> system(const QString& name) override;

 private:
  const QString m_folder;
  const std::shared_ptr<class CanberraPlayer> m_player;
};

}  // namespace vemo
