#include "setup/SecretFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace vemo::service {

namespace {

constexpr off_t largest = 1024 * 1024;

class Descriptor {
 public:
  explicit Descriptor(int number) : m_number(number) {}
  ~Descriptor() {
    if (m_number >= 0) ::close(m_number);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int number() const { return m_number; }

 private:
  int m_number;
};

}  // namespace

std::expected<std::string, std::string> readSecretFile(const std::filesystem::path& path) {
  const auto failure = [&path](std::string_view reason) {
    return std::unexpected(path.string() + ": " + std::string(reason));
  };
  // Without O_NONBLOCK a pipe of that name would hold the program up.
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file.number() < 0) return failure(std::strerror(errno));
  struct stat status = {};
  if (::fstat(file.number(), &status) != 0) return failure(std::strerror(errno));
  if (!S_ISREG(status.st_mode)) return failure("is not a regular file");
  if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0)
    return failure("others may read it; run chmod 600 on it");
  if (status.st_size > largest) return failure("is too large");

  std::string content(static_cast<std::size_t>(status.st_size), '\0');
  std::size_t length = 0;
  while (length < content.size()) {
    const auto count = ::read(file.number(), content.data() + length, content.size() - length);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return failure(std::strerror(errno));
    if (count == 0) break;
    length += static_cast<std::size_t>(count);
  }
  content.resize(length);
  return content;
}

}  // namespace vemo::service
