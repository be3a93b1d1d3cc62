// Tells when something has changed about the desktop's keyring: it came, went, was locked or
// unlocked, or holds other items.
//
// Main thread; the bus is waited for on the GioThread. Without a session bus nothing is ever told.
#pragma once

#include <functional>
#include <memory>

#include "base/MainThread.h"

namespace vemo {

class GioBus;
class GioThread;

class KeyringWatch {
 public:
  /// `changed` is called on the main thread as long as this object lives.
  KeyringWatch(GioThread& thread, MainThread& mainThread, std::function<void()> changed);
  ~KeyringWatch();
  KeyringWatch(const KeyringWatch&) = delete;
  KeyringWatch& operator=(const KeyringWatch&) = delete;

 private:
  void listen();
  void tell();

  GioThread& m_thread;
  MainThread& m_mainThread;
  const std::shared_ptr<std::function<void()>> m_changed;
  std::unique_ptr<GioBus> m_bus;  ///< on the GioThread
};

}  // namespace vemo
