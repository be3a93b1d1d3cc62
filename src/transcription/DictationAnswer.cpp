#include "transcription/DictationAnswer.h"

#include "base/Json.h"

namespace vemo {

namespace {

/// Both kinds of body count only with a status string, whatever it says.
std::optional<QString> stringBesideStatus(const QByteArray& body, QStringView key) {
  const auto answer = parseJsonObject(body);
  if (!answer || !stringIn(*answer, u"status")) return std::nullopt;
  return stringIn(*answer, key);
}

}  // namespace

std::optional<QString> transcriptionIn(const QByteArray& body) {
  return stringBesideStatus(body, u"transcription");
}

std::optional<QString> errorMessageIn(const QByteArray& body) {
  return stringBesideStatus(body, u"error");
}

}  // namespace vemo
