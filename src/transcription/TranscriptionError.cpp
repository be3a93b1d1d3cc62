#include "transcription/TranscriptionError.h"

#include <utility>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

QString networkDescription(UrlError code) {
  switch (code) {
    case UrlError::NotConnectedToInternet:
      return u"No internet connection"_s;
    case UrlError::TimedOut:
      return u"Server took too long — try again"_s;
    case UrlError::CannotFindHost:
    case UrlError::DnsLookupFailed:
      return u"Can't find the server"_s;
    case UrlError::NetworkConnectionLost:
      return u"Connection lost — try again"_s;
    default:
      return u"Can't reach the server"_s;
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
      return u"Sign in to start dictating"_s;
    case Kind::Unauthorized:
      return u"Sign-in expired — sign in again"_s;
    case Kind::BadResponse:
      return u"Unexpected server response"_s;
    case Kind::Cancelled:
      return u"Cancelled"_s;
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
