// Any stored bytes are read as lists without harm, and a list that can be written reads as it was.
#include "Fuzzing.h"
#include "shaping/CustomEntries.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vemo;
  const QByteArray bytes = bytesOf(data, size);
  if (const auto entries = decodeDictionary(bytes)) {
    const auto stored = encodeDictionary(*entries);
    require(!stored || decodeDictionary(*stored) == entries);
  }
  if (const auto entries = decodeShortcuts(bytes)) {
    const auto stored = encodeShortcuts(*entries);
    require(!stored || decodeShortcuts(*stored) == entries);
  }
  return 0;
}
