#include "transcription/TranscriptionError.h"

#include <QCoreApplication>
#include <utility>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

QString networkDescription(UrlError code) {
  switch (code) {
    case UrlError::NotConnectedToInternet:
      return QCoreApplication::translate("Dictation", "No internet connection");
    case UrlError::TimedOut:
      return QCoreApplication::translate("Dictation", "Server took too long — try again");
    case UrlError::CannotFindHost:
    case UrlError::DnsLookupFailed:
      return QCoreApplication::translate("Dictation", "Can't find the server");
    case UrlError::NetworkConnectionLost:
      return QCoreApplication::translate("Dictation", "Connection lost — try again");
    default:
      return QCoreApplication::translate("Dictation", "Can't reach the server");
  }
}

}  // namespace

TranscriptionError TranscriptionError::server(QString message) {
  return {.kind = Kind::Server, .serverMessage = std::move(message), .networkError = {}};
}

TranscriptionError TranscriptionError::network(HttpError error) {
  return {.kind = Kind::Network, .serverMessage = {}, .networkError = std::move(error)};
}

TranscriptionError TranscriptionError::notConfigured() {
  return {.kind = Kind::NotConfigured, .serverMessage = {}, .networkError = {}};
}

TranscriptionError TranscriptionError::unauthorized() {
  return {.kind = Kind::Unauthorized, .serverMessage = {}, .networkError = {}};
}

TranscriptionError TranscriptionError::badResponse() {
  return {.kind = Kind::BadResponse, .serverMessage = {}, .networkError = {}};
}

TranscriptionError TranscriptionError::cancelled() {
  return {.kind = Kind::Cancelled, .serverMessage = {}, .networkError = {}};
}

QString TranscriptionError::errorDescription() const {
  switch (kind) {
    case Kind::Server:
      return serverMessage;
    case Kind::Network:
      return networkDescription(networkError.code);
    case Kind::NotConfigured:
      return QCoreApplication::translate("Dictation", "Sign in to start dictating");
    case Kind::Unauthorized:
      return QCoreApplication::translate("Dictation", "Sign-in expired — sign in again");
    case Kind::BadResponse:
      return QCoreApplication::translate("Dictation", "Unexpected server response");
    case Kind::Cancelled:
      return QCoreApplication::translate("Dictation", "Cancelled");
  }
  std::unreachable();
}

QString TranscriptionError::diagnosticText() const {
  switch (kind) {
    case Kind::Server:
      return u"server"_s;
    case Kind::Network:
      return u"network(URLError %1)"_s.arg(static_cast<int>(networkError.code));
    case Kind::NotConfigured:
      return u"notConfigured"_s;
    case Kind::Unauthorized:
      return u"unauthorized"_s;
    case Kind::BadResponse:
      return u"badResponse"_s;
    case Kind::Cancelled:
      return u"cancelled"_s;
  }
  std::unreachable();
}

}  // namespace vemo
