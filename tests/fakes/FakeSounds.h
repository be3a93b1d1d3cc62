// Sounds that are written down rather than heard. A test says which there are; every other name has
// none.
#pragma once

#include <QList>
#include <QSet>
#include <QString>
#include <memory>

#include "ports/Sounds.h"

namespace vemo {

class FakeSounds : public Sounds {
 public:
  std::unique_ptr<Sound> resource(const QString& name) override {
    return load(name, resources, resourcesLoaded);
  }
  std::unique_ptr<Sound> system(const QString& name) override {
    return load(name, systemSounds, systemSoundsLoaded);
  }

  QSet<QString> resources;
  QSet<QString> systemSounds;

  QStringList resourcesLoaded;     ///< asked for, found or not
  QStringList systemSoundsLoaded;  ///< asked for, found or not
  QStringList played;

 private:
  class FakeSound : public Sound {
   public:
    FakeSound(FakeSounds& owner, QString name) : m_owner(owner), m_name(std::move(name)) {}
    void play() override { m_owner.played.append(m_name); }

   private:
    FakeSounds& m_owner;
    const QString m_name;
  };

  std::unique_ptr<Sound> load(const QString& name, const QSet<QString>& present,
                              QStringList& loaded) {
    loaded.append(name);
    if (!present.contains(name)) return nullptr;
    return std::make_unique<FakeSound>(*this, name);
  }
};

}  // namespace vemo
