// Any bytes decode without harm, and what decodes survives being written and read again, but for
// text that has no UTF-8 form: that changes with the first writing, and never again.
#include "Fuzzing.h"
#include "storage/SettingValue.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto values = vemo::decodeSettings(vemo::bytesOf(data, size));
  if (!values) return 0;
  const QByteArray written = vemo::encodeSettings(*values);
  const auto again = vemo::decodeSettings(written);
  vemo::require(again.has_value());
  vemo::require(vemo::encodeSettings(*again) == written);
  if (!written.contains('?') && !written.contains("\xef\xbf\xbd")) vemo::require(*again == *values);
  return 0;
}
