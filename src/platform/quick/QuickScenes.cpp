#include "platform/quick/QuickScenes.h"

#include <malloc.h>

#include <QLibrary>
#include <cstdio>
#include <utility>

#include "platform/quick/CleanPages.h"

namespace vemo {

QuickScenes::QuickScenes(Places places) : m_places(std::move(places)) {}

QuickScenes::~QuickScenes() = default;

void QuickScenes::open(Scene scene) {
  if (!load()) return;
  m_windows->open(scene, modelOf(scene));
  applyPolicyToAll();
  if (onChanged) onChanged();
}

void QuickScenes::close(Scene scene) {
  if (m_windows) m_windows->close(scene);
}

bool QuickScenes::isOpen(Scene scene) const {
  return m_windows && m_windows->isOpen(scene);
}

void QuickScenes::setLook(const WindowLook& look) {
  m_look = look;
  if (m_windows) m_windows->setLook(look);
}

void QuickScenes::setActivationPolicy(ActivationPolicy policy) {
  m_policy = policy;
  applyPolicyToAll();
}

void QuickScenes::applyPolicyToAll() const {
  if (!m_windows || !applyPolicy) return;
  for (const quintptr window : m_windows->identifiers()) applyPolicy(window, m_policy);
}

bool QuickScenes::load() {
  if (m_windows) return true;
  if (m_isMissing) return false;
  // Never unloaded: Qt keeps types and caches of it for the life of the process.
  QLibrary sharedObject(m_places.sharedObject);
  const auto make = reinterpret_cast<MakeWindowSet*>(sharedObject.resolve(makeWindowSetName));
  if (!make) {
    m_isMissing = true;
    std::fprintf(stderr, "No windows: %s\n", qUtf8Printable(sharedObject.errorString()));
    return false;
  }
  m_windows.reset(make(m_places.symbolsFolder, [this] { freed(); }));
  m_windows->setLook(m_look);
  return true;
}

void QuickScenes::freed() {
  if (!isOpen(Scene::Main) && !isOpen(Scene::Settings)) {
    malloc_trim(0);
    letGoOfCleanPages();
  }
  if (onChanged) onChanged();
}

}  // namespace vemo
