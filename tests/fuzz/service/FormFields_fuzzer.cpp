// Forms and queries of the local identity provider.
#include "provider/FormFields.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto fields = vemo::service::FormFields::read(text);
  if (!fields) return 0;
  if (size > vemo::service::FormFields::largest || fields->count() > size + 1) std::abort();
  for (const auto* name : {"client_id", "redirect_uri", "state", "code", "code_verifier", "ticket"})
    if (fields->value(name).size() > size) std::abort();
  return 0;
}
