// Any answer of the account service is read without harm, and what is read holds what the service
// is bound to send: never half a record.
#include "Fuzzing.h"
#include "account/AccountRecords.h"
#include "base/Json.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vemo;
  const QByteArray body = bytesOf(data, size);
  const auto object = parseJsonObject(body);
  const auto holds = [&object](QStringView key) { return object && object->contains(key); };

  require(!decodeAuthSuccess(body) || (holds(u"token") && holds(u"user")));
  require(!decodeAuthError(body) || holds(u"error"));
  require(!decodeProfileResponse(body) || (holds(u"status") && holds(u"user")));
  if (const auto languages = decodeLanguagesResponse(body))
    require(languages->size() ==
            static_cast<std::size_t>(object->value(u"languages").toArray().size()));
  if (const auto entries = decodeDictionaryResponse(body))
    require(entries->size() ==
            static_cast<std::size_t>(object->value(u"dictionary").toArray().size()));
  require(!decodeDictionaryAddResponse(body) || holds(u"entry"));
  return 0;
}
