// Any text: formatting ends, grows the text by no more than its point, and never starts with a
// blank.
#include "formatting/SmartFormatter.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto text = vemo::service::formatSmart({reinterpret_cast<const char*>(data), size});
  if (text.size() > size + 1) std::abort();
  if (text.starts_with(' ') || text.ends_with(' ')) std::abort();
  return 0;
}
