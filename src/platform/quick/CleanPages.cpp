#include "platform/quick/CleanPages.h"

#include <sys/mman.h>

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>

namespace vemo {

namespace {

struct Mapping {
  std::uintptr_t begin = 0;
  std::uintptr_t end = 0;
  bool isReadOnlySharedObject = false;
  bool isClean = true;
};

/// The first line of an entry: addresses, rights, offset, device, inode, path.
bool parse(const std::string& line, Mapping& mapping) {
  char rights[5] = {};
  if (std::sscanf(line.c_str(), "%" SCNxPTR "-%" SCNxPTR " %4s", &mapping.begin, &mapping.end,
                  rights) != 3)
    return false;
  mapping.isClean = true;
  mapping.isReadOnlySharedObject =
      rights[0] == 'r' && rights[1] == '-' && line.find(".so") != std::string::npos;
  return true;
}

/// What the loader has written to is read-only by now, too, and is in no file.
bool tellsOfWrittenPages(const std::string& line) {
  return (line.starts_with("Private_Dirty:") || line.starts_with("Anonymous:")) &&
         line.find(" 0 kB") == std::string::npos;
}

void letGo(const Mapping& mapping) {
  if (!mapping.isReadOnlySharedObject || !mapping.isClean) return;
  madvise(reinterpret_cast<void*>(mapping.begin), mapping.end - mapping.begin, MADV_DONTNEED);
}

}  // namespace

void letGoOfCleanPages() {
  std::ifstream mappings("/proc/self/smaps");
  Mapping mapping;
  for (std::string line; std::getline(mappings, line);) {
    Mapping next;
    if (parse(line, next)) {
      letGo(mapping);
      mapping = next;
    } else if (tellsOfWrittenPages(line)) {
      mapping.isClean = false;
    }
  }
  letGo(mapping);
}

}  // namespace vemo
