#include "accounts/AccountServices.h"

#include <boost/asio/post.hpp>

#include "accounts/SignInGuard.h"
#include "database/DatabasePreparation.h"
#include "identity/RemoteKeys.h"
#include "telemetry/TelemetryStore.h"

namespace vemo::service {

namespace {

/// The identity provider of the configuration; none when no client identifier is taken.
std::expected<std::optional<TrustedProvider>, std::string> providerOf(
    const AccountSettings& settings) {
  if (settings.clientIdentifiers.empty()) return std::nullopt;
  auto server = WebServer::at(settings.jwksAddress);
  if (!server) return std::unexpected("jwks-address " + server.error());
  const auto keys = std::make_shared<RemoteKeys>(*std::move(server));
  return TrustedProvider{
      .rules = {.issuers = settings.issuers, .audiences = settings.clientIdentifiers},
      .keys = [keys](const std::string& identifier) { return keys->find(identifier); }};
}

}  // namespace

std::expected<std::unique_ptr<AccountServices>, std::string> AccountServices::open(
    const Configuration& configuration, boost::asio::io_context& io, AccessLog& log,
    std::vector<TrustedProvider> ownProviders, Now now) {
  const auto& settings = configuration.accounts;
  auto provider = providerOf(settings);
  if (!provider) return std::unexpected(std::move(provider).error());
  if (*provider) ownProviders.push_back(**std::move(provider));
  if (auto prepared = prepareDatabase(settings.database); !prepared)
    return std::unexpected(std::move(prepared).error());
  const auto report = [&io, &log](std::string_view line) {
    boost::asio::post(io, [&log, line = "vemo-service: " + std::string(line)] { log.note(line); });
  };
  return std::unique_ptr<AccountServices>(
      new AccountServices(configuration, io, report, std::move(ownProviders), now));
}

AccountServices::AccountServices(const Configuration& configuration, boost::asio::io_context& io,
                                 const Report& report, std::vector<TrustedProvider> providers,
                                 const Now& now)
    : m_checks(std::move(providers)),
      m_database(configuration.accounts.database, databaseSize, report),
      m_usage(m_database, io.get_executor(), now),
      m_accounts(m_database,
                 configuration.accounts.betaUpdates ? BetaUpdates::Yes : BetaUpdates::No, now),
      m_signIns(configuration, m_database, m_checks, now, report),
      m_telemetry(m_database, configuration.behindProxy, now),
      m_telemetrySettings(configuration.telemetry),
      m_now(now),
      m_clearing(io) {
  clearLater();
}

void AccountServices::addTo(Router& router) {
  m_accounts.addTo(router);
  m_signIns.addTo(router);
  if (m_telemetrySettings.enabled) m_telemetry.addTo(router);
}

void AccountServices::clearLater() {
  m_clearing.expires_after(clearingInterval);
  m_clearing.async_wait([this](const boost::system::error_code& error) {
    if (error) return;
    m_database.ask(
        [now = m_now(),
         kept = std::chrono::days(m_telemetrySettings.keptDays)](Database& database) {
          SignInGuard(database).forgetOutdated(now);
          TelemetryStore(database).forgetBefore(now - kept);
          return true;
        },
        [](const auto&) {});
    clearLater();
  });
}

void AccountServices::stop() {
  m_clearing.cancel();
}

}  // namespace vemo::service
