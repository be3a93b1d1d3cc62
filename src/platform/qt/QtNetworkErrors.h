// Qt's failures of a request, told as the program's own.
//
// Any thread. The descriptions are fixed sentences: Qt's own may hold addresses with their queries.
#pragma once

#include <QList>
#include <QNetworkReply>
#include <QSslError>

#include "ports/HttpSession.h"

namespace vemo {

enum class Connectivity { Up, Down };

/// Up while an interface other than loopback is running with an address.
Connectivity currentConnectivity();

/// The code for a transfer that failed with `error`. `certificateErrors` are what the TLS handshake
/// had against the certificate, if it came to that.
UrlError urlErrorFor(QNetworkReply::NetworkError error, const QList<QSslError>& certificateErrors,
                     Connectivity connectivity);

/// The error of this code, with its description.
HttpError httpErrorFor(UrlError code);

}  // namespace vemo
