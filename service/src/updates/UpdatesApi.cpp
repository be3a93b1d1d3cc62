#include "updates/UpdatesApi.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>

namespace vemo::service {

namespace {

class OpenFile {
 public:
  explicit OpenFile(const std::filesystem::path& path)
      : m_descriptor(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC)) {
    struct stat status{};
    if (m_descriptor >= 0 && ::fstat(m_descriptor, &status) == 0 && S_ISREG(status.st_mode))
      m_size = static_cast<std::uint64_t>(status.st_size);
  }
  ~OpenFile() {
    if (m_descriptor >= 0) ::close(m_descriptor);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  /// None for what is no plain file.
  std::optional<std::uint64_t> size() const { return m_size; }

  std::optional<std::string> read(std::uint64_t from, std::uint64_t count) const {
    std::string bytes(count, '\0');
    const auto got = ::pread(m_descriptor, bytes.data(), count, static_cast<off_t>(from));
    if (got < 0 || static_cast<std::uint64_t>(got) != count) return std::nullopt;
    return bytes;
  }

 private:
  const int m_descriptor;
  std::optional<std::uint64_t> m_size;
};

bool isPlainName(std::string_view name) {
  constexpr std::string_view allowed =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._+-";
  return !name.empty() && name.size() <= 128 && name.front() != '.' &&
         name.find_first_not_of(allowed) == std::string_view::npos;
}

Answer answerOf(const std::filesystem::path& folder, const Request& request) {
  if (!isPlainName(request.item)) return errorAnswer(404, "There is no such file.");
  const OpenFile file(folder / request.item);
  if (!file.size()) return errorAnswer(404, "There is no such file.");
  const std::uint64_t size = *file.size();
  const auto part = FilePart::parse(request.header("Range"));
  if (!part && size > UpdatesApi::largestPart)
    return errorAnswer(400, "Ask for parts of this file, by a Range header.");
  if (part && part->first >= size) return errorAnswer(416, "The file ends before that.");
  const std::uint64_t first = part ? part->first : 0;
  const std::uint64_t end =
      part ? std::min({part->last + 1, size, first + UpdatesApi::largestPart}) : size;
  auto bytes = file.read(first, end - first);
  if (!bytes) return errorAnswer(503, "The file can't be read.");
  Answer answer{.status = part ? 206U : 200U, .body = *std::move(bytes)};
  answer.contentType =
      request.item.ends_with(".xml") ? "application/xml" : "application/octet-stream";
  if (part)
    answer.contentRange = "bytes " + std::to_string(first) + '-' + std::to_string(end - 1) + '/' +
                          std::to_string(size);
  return answer;
}

}  // namespace

std::optional<FilePart> FilePart::parse(std::string_view range) {
  constexpr std::string_view unit = "bytes=";
  if (!range.starts_with(unit)) return std::nullopt;
  range.remove_prefix(unit.size());
  FilePart part{};
  const char* end = range.data() + range.size();
  const auto first = std::from_chars(range.data(), end, part.first);
  if (first.ec != std::errc{} || first.ptr == end || *first.ptr != '-') return std::nullopt;
  const auto last = std::from_chars(first.ptr + 1, end, part.last);
  if (last.ec != std::errc{} || last.ptr != end || part.last < part.first ||
      part.last == UINT64_MAX)
    return std::nullopt;
  return part;
}

void UpdatesApi::addTo(Router& router) const {
  router.add(
      {.method = boost::beast::http::verb::get,
       .path = "/desktop/updates/*",
       .access = Access::Everybody,
       .bodyLimit = 0,
       .handler = [folder = m_folder](const Request& request, const std::stop_token&,
                                      AnswerCompletion done) { done(answerOf(folder, request)); }});
}

}  // namespace vemo::service
