// What comes back from outside during a sign-in: the redirect of the browser and the answer of the
// token endpoint. Both may hold anything. Any thread.
#pragma once

#include <QString>
#include <QUrl>

#include "account/GoogleSignIn.h"

namespace vemo {

struct HttpResponse;

/// The authorization code that a redirect brings.
GoogleSignIn::Result<QString> authorizationCodeIn(const QUrl& redirect,
                                                  const QString& expectedState);

/// The ID token that the token endpoint answers with.
GoogleSignIn::Result<QString> idTokenIn(const HttpResponse& response);

}  // namespace vemo
