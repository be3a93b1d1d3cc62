// A keyboard in memory: a test sends the events, says what is held, and interrupts.
#pragma once

#include <QtGlobal>

#include "ports/KeyEventSource.h"

namespace vemo {

class FakeKeyEventSource : public KeyEventSource {
 public:
  bool start() override {
    ++startCount;
    m_isStarted = canStart;
    return canStart;
  }

  void stop() override { m_isStarted = false; }

  ModifierFlags modifierFlags() const override { return m_modifierFlags; }

  /// One event; what is held from now on is what the event says.
  void send(const KeyEvent& event) {
    m_modifierFlags = event.flags;
    if (!m_isStarted) return;
    if (!onEvent) qFatal("FakeKeyEventSource: started without anyone to hear it");
    onEvent(event);
  }

  /// Key events pass unheard; what is held afterwards is `flags`.
  void missEventsUpTo(ModifierFlags flags) { m_modifierFlags = flags; }

  void interrupt() {
    if (m_isStarted) onInterrupted();
  }

  bool isStarted() const { return m_isStarted; }

  bool canStart = true;
  int startCount = 0;

 private:
  bool m_isStarted = false;
  ModifierFlags m_modifierFlags = 0;
};

}  // namespace vemo
