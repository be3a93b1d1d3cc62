// What is known of this program's crashes, told at a later start.
#pragma once

#include <QString>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace vemo {

struct CrashDiagnostic {
  QString applicationBuildVersion;  ///< of the program that crashed
  std::optional<std::int64_t> exceptionType;
  std::optional<std::int64_t> exceptionCode;
  std::optional<std::int64_t> signal;  ///< number of the fatal signal
  std::optional<QString> terminationReason;

  friend bool operator==(const CrashDiagnostic&, const CrashDiagnostic&) = default;
};

class CrashDiagnostics {
 public:
  using Payload = std::vector<CrashDiagnostic>;

  virtual ~CrashDiagnostics() = default;

  /// Tells the crashes since the last subscription; none is told twice. Main thread. `receive` may
  /// run on any thread, later or at once.
  virtual void subscribe(std::function<void(Payload)> receive) = 0;
};

}  // namespace vemo
