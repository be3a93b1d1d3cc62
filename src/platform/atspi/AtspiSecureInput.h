// Knows a password field by the role that its program gives it on the accessibility bus.
//
// Programs that don't take part in accessibility are unknown, and so is a password prompt in a
// terminal, which is a terminal like any other. Main thread only; what the buses say is waited for
// on the GioThread, from the making of this object on, and costs the main thread at most 50 ms a
// question.
#pragma once

#include <memory>

#include "ports/SecureInput.h"

namespace vemo {

class AtspiFocus;
class GioThread;

class AtspiSecureInput : public SecureInput {
 public:
  explicit AtspiSecureInput(GioThread& thread);
  ~AtspiSecureInput() override;
  AtspiSecureInput(const AtspiSecureInput&) = delete;
  AtspiSecureInput& operator=(const AtspiSecureInput&) = delete;

  bool isActive() const override;

  /// Finds out what has the focus without waiting: for after a window of this program has closed,
  /// since not every program reports that the focus has come back to it.
  void lookAgain();

 private:
  GioThread& m_thread;
  std::unique_ptr<AtspiFocus> m_focus;  ///< on the thread
};

}  // namespace vemo
