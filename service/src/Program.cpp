#include "Program.h"

#include <sys/resource.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/signal_set.hpp>
#include <csignal>
#include <ostream>

#include "accounts/AccountServices.h"
#include "http/DictationApi.h"
#include "http/HttpServer.h"
#include "provider/LocalSignIn.h"
#include "updates/UpdatesApi.h"

namespace vemo::service {

namespace {

namespace net = boost::asio;

/// Descriptors beside those of connections: libraries, models, the log, engines' own connections.
constexpr rlim_t spareDescriptors = 256;

void allowDescriptors(std::size_t connections) {
  rlimit limit = {};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  const rlim_t wanted = std::min<rlim_t>(connections + spareDescriptors, limit.rlim_max);
  if (limit.rlim_cur >= wanted) return;
  limit.rlim_cur = wanted;
  ::setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace

int serve(const Configuration& configuration, const EngineKind& engine, std::ostream& output,
          std::ostream& errors) {
  TokenFile tokens(configuration.tokensFile);
  if (const auto problem = tokens.problem()) {
    errors << "vemo-service: " << *problem << std::endl;
    return 1;
  }
  if (!tokens.exists() && !configuration.accounts.enabled)
    errors << "vemo-service: no tokens yet, so every request is refused; make one with "
              "vemo-service add-token"
           << std::endl;
  allowDescriptors(configuration.limits.connections);

  int exitCode = 0;
  net::io_context io(1);
  net::signal_set signals(io, SIGTERM, SIGINT);
  AccessLog log(errors);
  std::unique_ptr<LocalSignIn> localSignIn;
  if (configuration.localProvider.enabled) {
    auto opened = LocalSignIn::open(configuration.localProvider, io, log);
    if (!opened) {
      errors << "vemo-service: " << opened.error() << std::endl;
      return 1;
    }
    localSignIn = *std::move(opened);
  }
  std::unique_ptr<AccountServices> accounts;
  if (configuration.accounts.enabled) {
    std::vector<TrustedProvider> ownProviders;
    if (localSignIn) ownProviders.push_back(localSignIn->trusted());
    auto opened = AccountServices::open(configuration, io, log, std::move(ownProviders));
    if (!opened) {
      errors << "vemo-service: " << opened.error() << std::endl;
      return 1;
    }
    accounts = *std::move(opened);
  }
  std::function<void()> stop;
  RecognitionQueue queue(
      engine, {.workers = configuration.effectiveWorkers(), .waiting = configuration.waiting},
      [&](std::expected<void, std::string> loaded) {
        net::post(io, [&, loaded = std::move(loaded)] {
          log.note(loaded ? "vemo-service: " + engine.name + " is ready"
                          : "vemo-service: " + loaded.error());
          if (loaded) return;
          exitCode = 1;
          stop();
        });
      });
  Router router;
  DictationApi dictations(engine, queue, accounts ? &accounts->usage() : nullptr, io.get_executor(),
                          configuration.limits);
  dictations.addTo(router);
  if (accounts) accounts->addTo(router);
  if (!configuration.updatesFolder.empty()) UpdatesApi(configuration.updatesFolder).addTo(router);
  Admission admission(tokens, accounts ? &accounts->database() : nullptr);
  HttpServer server(io, configuration.limits, router, admission, log);
  stop = [&] {
    if (localSignIn) localSignIn->stop();
    server.stop([&] {
      dictations.equalRequests().forget();
      if (accounts) accounts->stop();
      signals.cancel();
    });
  };
  if (const auto listening = server.listen(configuration.address, configuration.port); !listening) {
    errors << "vemo-service: " << listening.error() << std::endl;
    return 1;
  }
  output << "Listening on " << server.address() << std::endl;
  if (localSignIn) {
    localSignIn->serve(accounts->database());
    output << "Local sign-in on " << localSignIn->address() << std::endl;
  }

  signals.async_wait([&](const boost::system::error_code& error, int) {
    if (error) return;
    // Whoever signals twice doesn't want to wait.
    signals.async_wait([&](const boost::system::error_code& again, int) {
      if (!again) std::quick_exit(1);
    });
    stop();
  });
  io.run();
  return exitCode;
}

}  // namespace vemo::service
