// Commands that reach the running program from outside: a compositor's key binding, a script, a
// test.
//
// Main thread only.
#pragma once

#include <QString>

namespace vemo {

class RemoteControl {
 public:
  virtual ~RemoteControl() = default;

  /// Each returns a line that says how the dictation stands afterwards, as status() does.
  virtual QString toggle() = 0;
  virtual QString start() = 0;
  virtual QString stop() = 0;
  virtual QString status() const = 0;
  virtual void quit() = 0;

  /// Opens the page on which the user signs in. The line says how the account stands.
  virtual QString signIn() = 0;
  /// Ends the wait for a sign-in page, which can't be seen to have been closed.
  virtual QString cancelSignIn() = 0;
  virtual QString signOut() = 0;
  /// The user has started the program once more.
  virtual void reopen() = 0;
  /// An address that the desktop opens with this program.
  virtual void open(const QString& address) = 0;
};

}  // namespace vemo
