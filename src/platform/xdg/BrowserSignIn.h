// Signing in through the user's own browser: the page is opened as any link is, and the redirect
// comes back through the desktop, which opens it with this program.
//
// That the user closes the page can't be seen; whoever waits offers a way to cancel. Main thread
// only.
#pragma once

#include <QString>
#include <vector>

#include "base/Completion.h"
#include "ports/WebAuthentication.h"

namespace vemo {

class BrowserSignIn : public WebAuthentication {
 public:
  /// `program` is what the desktop starts for a redirect.
  BrowserSignIn(MainThread& mainThread, QString program);

  Task<Redirect> authenticate(QUrl page, QString callbackScheme, std::stop_token stop) override;

  /// Hands over an address that the desktop opened with this program. False when nobody waits for
  /// its scheme.
  bool deliver(const QUrl& address);

 private:
  struct Wait {
    QString scheme;
    Completion<Redirect> end;
  };
  struct Registration;

  MainThread& m_mainThread;
  const QString m_program;
  std::vector<const Wait*> m_waits;  ///< the latest last
};

}  // namespace vemo
