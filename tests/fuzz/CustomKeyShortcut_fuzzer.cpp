// Any bytes decode without harm, and a record that decodes survives being written and read again.
#include "Fuzzing.h"
#include "storage/CustomKeyShortcut.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto shortcut = vemo::decodeShortcut(vemo::bytesOf(data, size));
  if (shortcut) vemo::require(vemo::decodeShortcut(vemo::encodeShortcut(*shortcut)) == shortcut);
  return 0;
}
