#include "http/Answer.h"

#include <boost/json.hpp>

namespace vemo::service {

namespace json = boost::json;

Answer errorAnswer(unsigned status, std::string_view message) {
  return {.status = status,
          .body = json::serialize(json::object{{"status", "error"}, {"error", message}})};
}

Answer unavailableAnswer() {
  return errorAnswer(503, "The service cannot reach its database. Try again in a moment.");
}

}  // namespace vemo::service
