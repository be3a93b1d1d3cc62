// The table of what the service answers: methods and paths, and who handles them.
//
// It is filled at the start, by `addTo` of everything that has endpoints, and only read afterwards.
// Network thread only.
#pragma once

#include <boost/beast/http/fields.hpp>
#include <boost/beast/http/verb.hpp>
#include <expected>
#include <stop_token>
#include <vector>

#include "http/Answer.h"
#include "http/Caller.h"
#include "http/RequestTarget.h"

namespace vemo::service {

/// A whole request from a caller who has been let in.
struct Request {
  RequestTarget target;
  std::string item = {};  ///< what stood in the place of the route's "*"
  Caller caller = {};
  boost::beast::http::fields headers = {};
  std::string source = {};  ///< the network address that it comes from
  std::string body = {};

  std::string header(std::string_view name) const {
    return std::string(headers[boost::core::string_view(name.data(), name.size())]);
  }
};

/// Called on the network thread; calls its completion exactly once, at once or later and on any
/// thread. A stop request means that the client has left.
using Handler = std::function<void(Request request, std::stop_token stop, AnswerCompletion done)>;

struct Route {
  boost::beast::http::verb method;
  std::string_view path;  ///< one that ends in "/*" takes any last segment
  Access access;
  std::size_t bodyLimit;
  Handler handler;
  std::string_view tooLong = "The body is too long.";  ///< what a 413 says
};

class Router {
 public:
  struct Match {
    const Route* route;
    RequestTarget target;
    std::string item;
  };

  void add(Route route) { m_routes.push_back(std::move(route)); }

  /// The error is the answer: 400, 404 or 405.
  std::expected<Match, Answer> find(boost::beast::http::verb method, std::string_view target) const;

  /// A path that the log may hold: the route's own, or "-".
  std::string_view knownPath(std::string_view target) const;

 private:
  std::vector<Route> m_routes;
};

}  // namespace vemo::service
