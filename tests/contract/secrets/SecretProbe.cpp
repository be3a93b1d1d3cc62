// Asks the keyring twice: secret_probe find|add|remove [LIMIT], in milliseconds when it isn't the
// default one.
//
// Prints each outcome and the milliseconds that the caller was held.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "platform/secretservice/SecretServiceBackend.h"

namespace {

using namespace vemo;
using namespace Qt::Literals::StringLiterals;

const char* nameOf(SecretError error) {
  switch (error) {
    case SecretError::NotFound:
      return "NotFound";
    case SecretError::Unavailable:
      return "Unavailable";
    case SecretError::Failed:
      break;
  }
  return "Failed";
}

using Milliseconds = std::chrono::milliseconds;

const char* outcomeOf(SecretServiceBackend& backend, const char* operation) {
  const QString service = u"brelmox.Vemo.probe"_s;
  const QString account = u"account"_s;
  if (std::strcmp(operation, "find") == 0) {
    const auto found = backend.find(service, account);
    return found ? "Found" : nameOf(found.error());
  }
  const auto done = std::strcmp(operation, "add") == 0 ? backend.add(service, account, "secret")
                                                       : backend.remove(service, account);
  return done ? "Done" : nameOf(done.error());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  std::optional<SecretServiceBackend> backend;
  if (argc > 2)
    backend.emplace(Milliseconds(std::atoi(argv[2])));
  else
    backend.emplace();
  for (int call = 0; call < 2; ++call) {
    const auto start = std::chrono::steady_clock::now();
    const char* outcome = outcomeOf(*backend, argv[1]);
    const auto held =
        std::chrono::duration_cast<Milliseconds>(std::chrono::steady_clock::now() - start);
    std::printf("%s %lld ", outcome, static_cast<long long>(held.count()));
  }
  return 0;
}
