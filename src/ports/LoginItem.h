// Whether the desktop starts this program when the user logs in.
//
// Main thread only; both operations return when they have taken effect. Doing what is done already
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
};

}  // namespace vemo
