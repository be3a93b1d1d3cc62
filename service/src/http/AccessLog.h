// One line a request on the standard error: method, path, status, bytes of the body, milliseconds.
//
// Nothing that the sender can choose freely goes in: methods and paths are the service's own words
// for those it knows, so neither speech nor tokens nor a forged line can reach the log.
#pragma once

#include <chrono>
#include <ostream>
#include <string_view>

namespace vemo::service {

class AccessLog {
 public:
  struct Entry {
    std::string_view method = "-";
    std::string_view path = "-";
    unsigned status = 0;
    std::size_t bodyBytes = 0;
    std::chrono::milliseconds duration{0};
  };

  explicit AccessLog(std::ostream& output) : m_output(output) {}

  void write(const Entry& entry) {
    m_output << entry.method << ' ' << entry.path << ' ' << entry.status << ' ' << entry.bodyBytes
             << "B " << entry.duration.count() << "ms" << std::endl;
  }
  void note(std::string_view line) { m_output << line << std::endl; }

 private:
  std::ostream& m_output;
};

}  // namespace vemo::service
