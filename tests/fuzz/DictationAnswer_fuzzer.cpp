// Any body of an answer decodes without harm, and a text that comes out of one can be counted, and
// passes unchanged through a body of its own.
#include "Fuzzing.h"
#include "base/Json.h"
#include "base/Text.h"
#include "transcription/DictationAnswer.h"

using namespace Qt::Literals::StringLiterals;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const QByteArray body = vemo::bytesOf(data, size);
  vemo::errorMessageIn(body);
  const auto text = vemo::transcriptionIn(body);
  if (!text) return 0;
  vemo::require(vemo::characterCount(*text) <= text->size());
  vemo::require(vemo::wordCount(*text) <= text->size());
  if (!text->isValidUtf16()) return 0;
  const QJsonObject again{{u"status"_s, u"ok"_s}, {u"transcription"_s, *text}};
  vemo::require(vemo::transcriptionIn(vemo::compactJson(again)) == text);
  return 0;
}
