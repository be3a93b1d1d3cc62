#include "session/DictationRemoteControl.h"

#include <QCoreApplication>

#include "session/AppState.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

DictationRemoteControl::DictationRemoteControl(AppState& appState, Program program)
    : m_appState(appState), m_program(std::move(program)) {}

QString DictationRemoteControl::toggle() {
  m_appState.handleToggleTrigger();
  return status();
}

QString DictationRemoteControl::start() {
  m_appState.handlePushToTalkDown();
  return status();
}

QString DictationRemoteControl::stop() {
  if (m_appState.phase() == Phase::recording()) m_appState.toggleFromButton();
  return status();
}

QString DictationRemoteControl::status() const {
  const Phase& phase = m_appState.phase();
  if (phase.kind == Phase::Kind::Error) return u"error: "_s + phase.message;
  if (phase.kind != Phase::Kind::Idle) return phase.name();
  const QString text = m_appState.statusText();
  return text == readyStatusText() ? phase.name() : u"idle: "_s + text;
}

void DictationRemoteControl::quit() {
  m_program.quit();
}

QString DictationRemoteControl::signIn() {
  m_appState.signIn();
  return QCoreApplication::translate("Dictation",
                                     "The sign-in page is on its way to your browser.");
}

QString DictationRemoteControl::cancelSignIn() {
  m_appState.cancelSignIn();
  return status();
}

QString DictationRemoteControl::signOut() {
  m_appState.clearLocalUserData();
  return status();
}

void DictationRemoteControl::reopen() {
  m_program.reopen();
}

void DictationRemoteControl::open(const QString& address) {
  m_program.open(address);
}

}  // namespace vemo
