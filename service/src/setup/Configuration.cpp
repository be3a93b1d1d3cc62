#include "setup/Configuration.h"

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>
#include <boost/asio/ip/address.hpp>
#include <boost/property_tree/ini_parser.hpp>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <map>
#include <regex>
#include <thread>

namespace vemo::service {

namespace {

namespace ptree = boost::property_tree;

/// Stores a value; false when it doesn't parse.
using Setter = std::function<bool(const std::string&)>;

struct Key {
  std::string_view expected;  ///< ends the sentence "… must be"
  Setter set;
};

template <typename Number>
Setter number(Number& target, std::type_identity_t<Number> least,
              std::type_identity_t<Number> most) {
  return [&target, least, most](const std::string& text) {
    Number value{};
    const auto end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end || value < least || value > most) return false;
    target = value;
    return true;
  };
}

Setter seconds(std::chrono::milliseconds& target) {
  return [&target](const std::string& text) {
    double value = 0;
    if (!number(value, 0.001, 86'400.0)(text) || !std::isfinite(value)) return false;
    target = std::chrono::milliseconds(std::llround(value * 1000));
    return true;
  };
}

template <typename Text>
Setter nonEmpty(Text& target) {
  return [&target](const std::string& text) {
    target = text;
    return !text.empty();
  };
}

Setter numericAddress(std::string& target) {
  return [&target](const std::string& text) {
    boost::system::error_code error;
    boost::asio::ip::make_address(text, error);
    target = text;
    return !error;
  };
}

Setter loopbackAddress(std::string& target) {
  return [&target](const std::string& text) {
    boost::system::error_code error;
    target = text;
    return boost::asio::ip::make_address(text, error).is_loopback() && !error;
  };
}

/// Its parts become the scheme of an address, which begins with a letter.
Setter clientIdentifier(std::string& target) {
  return [&target](const std::string& text) {
    static const std::regex form("[a-z0-9-]+(\\.[a-z0-9-]+)*\\.[a-z][a-z0-9-]*");
    target = text;
    return std::regex_match(text, form);
  };
}

Setter webAddress(std::string& target) {
  return [&target](const std::string& text) {
    target = text;
    while (target.ends_with('/')) target.pop_back();
    return target.starts_with("http://") || target.starts_with("https://");
  };
}

Setter engineName(Configuration::EngineName& target) {
  return [&target](const std::string& text) {
    target = text == "openai" ? Configuration::EngineName::OpenAi
                              : Configuration::EngineName::Pocketsphinx;
    return text == "openai" || text == "pocketsphinx";
  };
}

Setter yesOrNo(bool& target) {
  return [&target](const std::string& text) {
    target = text == "yes";
    return text == "yes" || text == "no";
  };
}

/// Divided by spaces, commas or both.
Setter list(std::vector<std::string>& target) {
  return [&target](const std::string& text) {
    boost::algorithm::split(target, text, boost::algorithm::is_any_of(", \t"),
                            boost::algorithm::token_compress_on);
    std::erase(target, "");
    return !target.empty();
  };
}

Setter databaseAddress(DatabaseAddress& target) {
  return [&target](const std::string& text) {
    const auto address = DatabaseAddress::parse(text);
    if (address) target = *address;
    return address.has_value();
  };
}

std::map<std::string, Key, std::less<>> keysOf(Configuration& c) {
  constexpr std::string_view time = "a number of seconds above 0";
  constexpr std::string_view path = "a path";
  constexpr std::string_view truth = "yes or no";
  return {
      {"server.address", {"a numeric IP address", numericAddress(c.address)}},
      {"server.port", {"a port number, or 0 for any", number(c.port, 0, 65'535)}},
      {"server.behind-proxy", {truth, yesOrNo(c.behindProxy)}},
      {"server.tokens-file", {path, nonEmpty(c.tokensFile)}},
      {"engine.name", {"pocketsphinx or openai", engineName(c.engine)}},
      {"engine.workers", {"a number from 1 to 64", number(c.workers, 1, 64)}},
      {"engine.waiting", {"a number from 0 to 10000", number(c.waiting, 0, 10'000)}},
      {"pocketsphinx.acoustic-model", {path, nonEmpty(c.pocketsphinx.acousticModel)}},
      {"pocketsphinx.language-model", {path, nonEmpty(c.pocketsphinx.languageModel)}},
      {"pocketsphinx.dictionary", {path, nonEmpty(c.pocketsphinx.dictionary)}},
      {"openai.address", {"an http or https address", webAddress(c.openAi.address)}},
      {"openai.model", {"a model's name", nonEmpty(c.openAi.model)}},
      {"openai.key-file", {path, nonEmpty(c.openAi.keyFile)}},
      {"openai.certificate-authorities", {path, nonEmpty(c.openAi.certificateAuthorities)}},
      {"openai.timeout-seconds", {time, seconds(c.openAi.timeout)}},
      {"accounts.enabled", {truth, yesOrNo(c.accounts.enabled)}},
      {"accounts.database",
       {"sqlite: and an absolute path, or a postgresql:// address",
        databaseAddress(c.accounts.database)}},
      {"accounts.client-identifiers",
       {"one client identifier or more", list(c.accounts.clientIdentifiers)}},
      {"accounts.issuers", {"one issuer or more", list(c.accounts.issuers)}},
      {"accounts.jwks-address", {"an http or https address", webAddress(c.accounts.jwksAddress)}},
      {"accounts.sign-ins-a-minute",
       {"a number from 1 to 100000", number(c.accounts.signInsAMinute, 1, 100'000)}},
      {"accounts.beta-updates", {truth, yesOrNo(c.accounts.betaUpdates)}},
      {"local-provider.enabled", {truth, yesOrNo(c.localProvider.enabled)}},
      {"local-provider.address",
       {"a numeric IP address of loopback", loopbackAddress(c.localProvider.address)}},
      {"local-provider.port",
       {"a port number, or 0 for any", number(c.localProvider.port, 0, 65'535)}},
      {"local-provider.client-identifier",
       {"parts of lower-case letters, digits and hyphens, two or more, with dots between",
        clientIdentifier(c.localProvider.clientIdentifier)}},
      {"local-provider.name", {"a name", nonEmpty(c.localProvider.name)}},
      {"local-provider.email", {"an e-mail address", nonEmpty(c.localProvider.email)}},
      {"local-provider.key-file", {path, nonEmpty(c.localProvider.keyFile)}},
      {"updates.folder", {path, nonEmpty(c.updatesFolder)}},
      {"telemetry.enabled", {truth, yesOrNo(c.telemetry.enabled)}},
      {"telemetry.kept-days",
       {"a number of days from 1 to 3650", number(c.telemetry.keptDays, 1, 3650)}},
      {"limits.body-bytes",
       {"a number of bytes from 44", number(c.limits.bodyBytes, 44, std::size_t{1} << 30)}},
      {"limits.header-bytes",
       {"a number of bytes from 256 to 65536", number(c.limits.headerBytes, 256, 65'536)}},
      {"limits.connections",
       {"a number from 1 to 100000", number(c.limits.connections, 1, 100'000)}},
      {"limits.header-seconds", {time, seconds(c.limits.headerTime)}},
      {"limits.body-seconds", {time, seconds(c.limits.bodyTime)}},
      {"limits.answer-seconds", {time, seconds(c.limits.answerTime)}},
      {"limits.idle-seconds", {time, seconds(c.limits.idleTime)}},
      {"limits.refused-seconds", {time, seconds(c.limits.refusedTime)}},
      {"limits.repeat-seconds", {time, seconds(c.limits.repeatTime)}},
      {"limits.repeat-answers",
       {"a number from 0 to 100000", number(c.limits.repeatAnswers, 0, 100'000)}},
      {"limits.shutdown-seconds", {time, seconds(c.limits.shutdownTime)}},
  };
}

std::filesystem::path userFolder(const char* variable, std::string_view belowHome) {
  const char* configured = std::getenv(variable);
  if (configured && *configured == '/') return configured;
  const char* home = std::getenv("HOME");
  return std::filesystem::path(home ? home : "/") / belowHome;
}

}  // namespace

std::size_t Configuration::effectiveWorkers() const {
  if (workers > 0) return workers;
  // A forwarded request only waits; an embedded decoder fills a core and 110 MB.
  if (engine == EngineName::OpenAi) return 8;
  return std::min(2U, std::max(1U, std::thread::hardware_concurrency()));
}

std::filesystem::path Configuration::defaultFolder() {
  return userFolder("XDG_CONFIG_HOME", ".config") / "vemo-service";
}

std::filesystem::path Configuration::dataFolder() {
  return userFolder("XDG_DATA_HOME", ".local/share") / "vemo-service";
}

std::expected<Configuration, std::string> Configuration::read(const std::filesystem::path& path) {
  Configuration configuration;
  configuration.tokensFile = defaultFolder() / "tokens";
  configuration.accounts.database = DatabaseAddress::sqlite(dataFolder() / "accounts.db");
  configuration.localProvider.keyFile = dataFolder() / "sign-in-key.json";
  std::error_code absent;
  if (path == defaultFolder() / "vemo-service.conf" && !std::filesystem::exists(path, absent))
    return configuration;

  ptree::ptree file;
  try {
    ptree::read_ini(path.string(), file);
  } catch (const ptree::ini_parser_error& error) {
    return std::unexpected(path.string() + ", line " + std::to_string(error.line()) + ": " +
                           error.message());
  }
  const auto keys = keysOf(configuration);
  for (const auto& [section, entries] : file) {
    if (entries.empty() && !entries.data().empty())
      return std::unexpected(path.string() + ": " + section + " stands outside a section");
    for (const auto& [name, value] : entries) {
      const auto key = keys.find(section + "." + name);
      if (key == keys.end())
        return std::unexpected(path.string() + ": unknown key " + name + " in [" + section + "]");
      if (!key->second.set(value.data()))
        return std::unexpected(path.string() + ": " + name + " in [" + section + "] must be " +
                               std::string(key->second.expected) + ", not \"" + value.data() +
                               "\"");
    }
  }
  if (configuration.engine == EngineName::OpenAi && configuration.openAi.address.empty())
    return std::unexpected(path.string() + ": the engine openai needs an address in [openai]");
  if (configuration.localProvider.enabled && !configuration.accounts.enabled)
    return std::unexpected(path.string() + ": [local-provider] needs enabled = yes in [accounts]");
  return configuration;
}

}  // namespace vemo::service
