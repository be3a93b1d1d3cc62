#include "accounts/AccountServices.h"

#include <boost/asio/post.hpp>

#include "database/DatabasePreparation.h"

namespace vemo::service {

std::expected<std::unique_ptr<AccountServices>, std::string> AccountServices::open(
    const Configuration& configuration, boost::asio::io_context& io, AccessLog& log) {
  if (auto prepared = prepareDatabase(configuration.accounts.database); !prepared)
    return std::unexpected(std::move(prepared).error());
  return std::unique_ptr<AccountServices>(new AccountServices(configuration, io, log));
}

AccountServices::AccountServices(const Configuration& configuration, boost::asio::io_context& io,
                                 AccessLog& log)
    : m_database(configuration.accounts.database, databaseSize, [&io, &log](std::string_view line) {
        boost::asio::post(io,
                          [&log, line = "vemo-service: " + std::string(line)] { log.note(line); });
      }) {}

void AccountServices::addTo(Router&) {}

}  // namespace vemo::service
