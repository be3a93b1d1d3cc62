// These stand in for the C library's, in the libraries that the tests are linked to, too.
#include "SystemCalls.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>

namespace vemo {

std::function<void(const SystemCall&)> beforeSystemCall;
bool isFlushing = true;

namespace {

void look(const char* name, int descriptor, const char* path) {
  if (beforeSystemCall) beforeSystemCall({name, descriptor, path});
}

template <typename... Arguments>
int call(long number, Arguments... arguments) {
  return static_cast<int>(syscall(number, arguments...));
}

}  // namespace
}  // namespace vemo

using vemo::call;
using vemo::look;

extern "C" {

int fsync(int descriptor) {
  look("fsync", descriptor, nullptr);
  return vemo::isFlushing ? call(SYS_fsync, descriptor) : 0;
}
int fdatasync(int descriptor) {
  look("fsync", descriptor, nullptr);
  return vemo::isFlushing ? call(SYS_fdatasync, descriptor) : 0;
}
int fchmod(int descriptor, mode_t mode) noexcept {
  look("fchmod", descriptor, nullptr);
  return call(SYS_fchmod, descriptor, mode);
}
ssize_t write(int descriptor, const void* bytes, std::size_t size) {
  look("write", descriptor, nullptr);
  return syscall(SYS_write, descriptor, bytes, size);
}
int rename(const char* from, const char* to) noexcept {
  look("rename", -1, to);
  return call(SYS_renameat, AT_FDCWD, from, AT_FDCWD, to);
}
int symlink(const char* target, const char* path) noexcept {
  look("symlink", -1, path);
  return call(SYS_symlinkat, target, AT_FDCWD, path);
}
int mkdir(const char* path, mode_t mode) noexcept {
  look("mkdir", -1, path);
  return call(SYS_mkdirat, AT_FDCWD, path, mode);
}
int unlink(const char* path) noexcept {
  look("unlink", -1, path);
  return call(SYS_unlinkat, AT_FDCWD, path, 0);
}
int rmdir(const char* path) noexcept {
  look("rmdir", -1, path);
  return call(SYS_unlinkat, AT_FDCWD, path, AT_REMOVEDIR);
}
}
