// The service's own identity provider: an OpenID Connect page on which the person at this machine
// presses one button, so that signing in works without anybody else's server.
//
// Network thread only; the completion runs exactly once, at once or on a database worker. Alive
// until the workers have ended. It takes hostile requests: those of other pages in the same browser
// are refused by the host they name, by where the browser says they come from, and by a ticket that
// only the page itself holds.
#pragma once

#include <boost/beast/http/message.hpp>
#include <boost/beast/http/string_body.hpp>
#include <functional>

#include "database/DatabaseWorkers.h"
#include "identity/Jose.h"
#include "provider/FormFields.h"
#include "provider/ProviderSettings.h"
#include "provider/SignInCodes.h"

namespace vemo::service {

class LocalProvider {
 public:
  using Request = boost::beast::http::request<boost::beast::http::string_body>;
  using Answer = boost::beast::http::response<boost::beast::http::string_body>;
  using Completion = std::move_only_function<void(Answer)>;

  static constexpr std::chrono::minutes tokenLifetime{5};

  /// `settings` are completed, with the port that was chosen.
  LocalProvider(ProviderSettings settings, JsonWebKey key, DatabaseWorkers& workers,
                std::function<Moment()> now);

  void answer(const Request& request, Completion completion);

  /// The path when it is one of this provider's, else "-".
  static std::string_view knownPath(const Request& request);

 private:
  void authorize(const Request& request, Completion completion);
  void consent(const Request& request, Completion completion);
  void token(const Request& request, Completion completion);
  Answer keys() const;

  bool isForThisHost(const Request& request) const;
  bool isFromOwnPage(const Request& request) const;
  std::string idToken(const std::string& nonce) const;
  std::string subject() const;

  Answer page(unsigned status, const std::string& html, const std::string& styleNonce) const;
  Answer failurePage(unsigned status, std::string_view message) const;
  Answer redirect(std::string_view parameters, const std::string& state) const;

  const ProviderSettings m_settings;
  const JsonWebKey m_key;
  DatabaseWorkers& m_workers;
  const std::function<Moment()> m_now;
};

}  // namespace vemo::service
