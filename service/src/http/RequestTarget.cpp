#include "http/RequestTarget.h"

#include <boost/url.hpp>

namespace vemo::service {

std::optional<RequestTarget> RequestTarget::parse(std::string_view target) {
  const auto url = boost::urls::parse_origin_form({target.data(), target.size()});
  if (!url) return std::nullopt;
  return RequestTarget(boost::urls::url(*url));
}

std::string RequestTarget::parameter(std::string_view name) const {
  const auto parameters = boost::urls::url_view(m_url).params();
  const auto parameter = parameters.find({name.data(), name.size()});
  return parameter == parameters.end() ? std::string() : (*parameter).value;
}

}  // namespace vemo::service
