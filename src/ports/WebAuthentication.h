// Letting the user sign in on a web page: opens the page in the user's own browser and waits for
// the redirect that ends it.
//
// Main thread only. Any number of waits may be under way; a redirect goes to the latest of its
// scheme.
#pragma once

#include <QString>
#include <QUrl>
#include <expected>
#include <optional>
#include <stop_token>

#include "base/Task.h"

namespace vemo {

struct WebAuthenticationError {
  enum class Kind {
    CannotOpen,  ///< no page was shown
    Cancelled,   ///< the user, or the stop token, ended it
    Failed,      ///< anything else, told by the description
  };
  Kind kind = Kind::Failed;
  QString description = {};
};

class WebAuthentication {
 public:
  /// The address that the page redirected to, as it came; absent when there was none.
  using Redirect = std::expected<std::optional<QUrl>, WebAuthenticationError>;

  virtual ~WebAuthentication() = default;

  /// Shows `page` and waits, without a limit of time, for one redirect to `callbackScheme`.
  virtual Task<Redirect> authenticate(QUrl page, QString callbackScheme, std::stop_token stop) = 0;
};

}  // namespace vemo
