#include "platform/atspi/AtspiSecureInput.h"

#include <atomic>
#include <chrono>
#include <semaphore>

#include "platform/atspi/AtspiFocus.h"
#include "platform/gio/GioThread.h"

namespace vemo {

namespace {

/// Of the 50 ms that a question may cost, so that waking up late stays within them.
constexpr std::chrono::milliseconds longestWait{40};

/// What the main thread waits for; it may have gone on when the answer comes.
struct Question {
  std::binary_semaphore isAnswered{0};
  std::atomic<bool> isPassword = false;
};

}  // namespace

AtspiSecureInput::AtspiSecureInput(GioThread& thread) : m_thread(thread) {
  m_thread.post([this] { m_focus = std::make_unique<AtspiFocus>(m_thread); });
}

AtspiSecureInput::~AtspiSecureInput() {
  m_thread.run([this] { m_focus.reset(); });
}

bool AtspiSecureInput::isActive() const {
  const auto question = std::make_shared<Question>();
  m_thread.post([this, question] {
    m_focus->askForPassword([question](bool isPassword, AtspiFocus::Finality finality) {
      question->isPassword = isPassword;
      if (finality == AtspiFocus::Finality::Final) question->isAnswered.release();
    });
  });
  // What a busy machine has answered so far counts: rather no paste than one into a password field.
  static_cast<void>(question->isAnswered.try_acquire_for(longestWait));
  return question->isPassword;
}

void AtspiSecureInput::lookAgain() {
  m_thread.post([this] { m_focus->search(); });
}

}  // namespace vemo
