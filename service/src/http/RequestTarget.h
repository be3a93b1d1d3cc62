// What a request line asks for: a path and the items of its query.
//
// A plain value, made of hostile text. Of a name that comes twice in the query, the first counts.
#pragma once

#include <boost/url/url.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace vemo::service {

class RequestTarget {
 public:
  /// None when the target cannot be read.
  static std::optional<RequestTarget> parse(std::string_view target);

  /// As it came, with its escapes.
  std::string_view path() const { return m_url.encoded_path(); }
  /// Without escapes; empty when absent.
  std::string parameter(std::string_view name) const;

 private:
  explicit RequestTarget(boost::urls::url url) : m_url(std::move(url)) {}

  boost::urls::url m_url;
};

}  // namespace vemo::service
