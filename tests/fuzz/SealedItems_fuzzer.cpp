// Any bytes are opened without harm, both as a sealed file and as the content of a box, and what
// decodes survives being sealed and opened.
#include "Fuzzing.h"
#include "platform/sealed/SealedItems.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vemo;
  static const SealingKey key = deriveSealingKey(QByteArray(32, 'k'), "machine").value();
  const QByteArray bytes = bytesOf(data, size);
  unseal(bytes, key);
  const auto items = decodeItems(bytes);
  if (!items) return 0;
  for (const auto& [name, secret] : *items) {
    // Text without a UTF-8 form doesn't come back as it was.
    if (!name.first.isValidUtf16() || !name.second.isValidUtf16()) return 0;
  }
  require(unseal(seal(*items, key), key) == items);
  return 0;
}
