#include <malloc.h>
#include <sys/resource.h>

#include <csignal>
#include <iostream>

#include "Program.h"
#include "accounts/AccountCommands.h"
#include "setup/CommandLine.h"
#include "setup/Engines.h"
#include "setup/TokenFile.h"
#include "telemetry/TelemetrySummary.h"

namespace {

using namespace vemo::service;

constexpr int failure = 1;
/// The words on the command line or in the configuration won't be better the next time: the unit
/// doesn't start it again after this.
constexpr int unusable = 2;

int fail(const std::string& line, int status = failure) {
  std::cerr << "vemo-service: " << line << std::endl;
  return status;
}

int addToken(const Configuration& configuration) {
  const auto token = TokenFile::add(configuration.tokensFile);
  if (!token) return fail(token.error());
  std::cout << *token << std::endl;
  return 0;
}

int print(const CommandResult& result) {
  if (!result) return fail(result.error());
  std::cout << *result;
  return 0;
}

/// A core file would hold what people said. A limit of one byte means none at all, also where cores
/// are piped to a collector, which a limit of zero doesn't.
void forbidCoreFiles() {
  const rlimit oneByte{1, 1};
  setrlimit(RLIMIT_CORE, &oneByte);
}

}  // namespace

int main(int argc, char** argv) {
  forbidCoreFiles();
  std::signal(SIGPIPE, SIG_IGN);
  // Recordings get pages of their own, which go back to the system as soon as they are done with.
  ::mallopt(M_MMAP_THRESHOLD, 128 * 1024);
  const auto commandLine = CommandLine::parse({argv + 1, static_cast<std::size_t>(argc - 1)});
  if (!commandLine) return fail(commandLine.error() + "; see vemo-service --help", unusable);
  if (commandLine->action == CommandLine::Action::Help) {
    std::cout << helpText;
    return 0;
  }
  if (commandLine->action == CommandLine::Action::Version) {
    std::cout << "vemo-service " VEMO_VERSION "\n";
    return 0;
  }
  const auto configuration = Configuration::read(commandLine->configurationFile);
  if (!configuration) return fail(configuration.error(), unusable);
  switch (commandLine->action) {
    case CommandLine::Action::AddToken:
      return addToken(*configuration);
    case CommandLine::Action::Accounts:
      return print(listAccounts(configuration->accounts));
    case CommandLine::Action::RevokeTokens:
      return print(revokeTokens(configuration->accounts, commandLine->account));
    case CommandLine::Action::Stats:
      return print(telemetrySummary(configuration->accounts));
    case CommandLine::Action::Serve:
    case CommandLine::Action::Help:
    case CommandLine::Action::Version:
      break;
  }
  return serve(*configuration, engineOf(*configuration), std::cout, std::cerr);
}
