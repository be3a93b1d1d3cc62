// Whether the desktop starts this program when the user logs in.
//
// Main thread only; changes return when they have taken effect. Doing what is done already
// succeeds. An error is one line for the log.
#pragma once

#include <QString>
#include <expected>

namespace vemo {

class LoginItem {
 public:
  virtual ~LoginItem() = default;

  virtual std::expected<void, QString> registerItem() = 0;
  virtual std::expected<void, QString> unregisterItem() = 0;

  /// Whether the next login starts the program, whoever arranged it. Asked anew each time: a
  /// desktop has settings of its own for this.
  virtual bool isRegistered() const = 0;
};

}  // namespace vemo
