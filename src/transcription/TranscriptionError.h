// Why a dictation request gave no text: the failure of every operation of TranscriptionClient.
//
// A value; any thread. Two renderings: errorDescription() is a sentence for the user,
// diagnosticText() is for logs and events and never holds what a server or a user said.
#pragma once

#include <QString>

#include "ports/HttpSession.h"

namespace vemo {

struct TranscriptionError {
  enum class Kind {
    Server,         ///< the service answered with a failure
    Network,        ///< no HTTP answer came
    NotConfigured,  ///< no session token is stored
    Unauthorized,   ///< the service answered 401
    BadResponse,    ///< the answer couldn't be understood, or the address couldn't be built
    Cancelled,      ///< the caller gave up
  };

  static TranscriptionError server(QString message);
  static TranscriptionError network(HttpError error);
  static TranscriptionError notConfigured();
  static TranscriptionError unauthorized();
  static TranscriptionError badResponse();
  static TranscriptionError cancelled();

  QString errorDescription() const;
  QString diagnosticText() const;

  Kind kind = Kind::BadResponse;
  QString serverMessage;   ///< of Server: the service's words for the user
  HttpError networkError;  ///< of Network
};

}  // namespace vemo
