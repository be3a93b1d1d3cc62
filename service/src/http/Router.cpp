#include "http/Router.h"

#include <algorithm>
#include <boost/url.hpp>

namespace vemo::service {

namespace {

namespace http = boost::beast::http;

/// The last segment of a path that fits a pattern with a "*", "" for one without; none when it
/// doesn't fit.
std::optional<std::string> itemOf(std::string_view pattern, std::string_view path) {
  if (!pattern.ends_with("/*")) return path == pattern ? std::optional("") : std::nullopt;
  pattern.remove_suffix(1);
  if (!path.starts_with(pattern) || path.size() == pattern.size()) return std::nullopt;
  path.remove_prefix(pattern.size());
  if (path.contains('/')) return std::nullopt;
  const auto item = boost::urls::make_pct_string_view({path.data(), path.size()});
  return item ? std::optional(item->decode()) : std::nullopt;
}

}  // namespace

std::expected<Router::Match, Answer> Router::find(http::verb method, std::string_view text) const {
  auto target = RequestTarget::parse(text);
  if (!target) return std::unexpected(errorAnswer(400, "The address cannot be read."));
  std::string allowed;
  for (const auto& route : m_routes) {
    auto item = itemOf(route.path, target->path());
    if (!item) continue;
    if (route.method == method) return Match{&route, *std::move(target), *std::move(item)};
    if (!allowed.empty()) allowed += ", ";
    allowed += std::string_view(http::to_string(route.method));
  }
  if (allowed.empty())
    return std::unexpected(errorAnswer(404, "There is nothing at this address."));
  auto answer = errorAnswer(405, "This address does not take that method.");
  answer.allow = std::move(allowed);
  return std::unexpected(std::move(answer));
}

std::string_view Router::knownPath(std::string_view text) const {
  const auto target = RequestTarget::parse(text);
  if (!target) return "-";
  const auto known = std::ranges::find_if(
      m_routes, [&](const Route& route) { return itemOf(route.path, target->path()).has_value(); });
  return known == m_routes.end() ? "-" : known->path;
}

}  // namespace vemo::service
