#include "storage/DeploymentConfiguration.h"

#include <arpa/inet.h>

#include <QFile>
#include <QFileInfo>
#include <array>
#include <boost/property_tree/ini_parser.hpp>
#include <sstream>

#include "storage/StandardPlaces.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qint64 maximumSize = 1'000'000;

struct AddressKey {
  QStringView name;
  QUrl DeploymentConfiguration::* field;
};
struct TextKey {
  QStringView name;
  QString DeploymentConfiguration::* field;
};

constexpr std::array addressKeys{
    AddressKey{u"apiBaseURL", &DeploymentConfiguration::apiBaseURL},
    AddressKey{u"websiteURL", &DeploymentConfiguration::websiteURL},
    AddressKey{u"googleAuthorizationEndpoint",
               &DeploymentConfiguration::googleAuthorizationEndpoint},
    AddressKey{u"googleTokenEndpoint", &DeploymentConfiguration::googleTokenEndpoint},
    AddressKey{u"slackApiBaseURL", &DeploymentConfiguration::slackApiBaseURL},
};
constexpr std::array textKeys{
    TextKey{u"googleClientId", &DeploymentConfiguration::googleClientId},
    TextKey{u"updateFeedPublicKey", &DeploymentConfiguration::updateFeedPublicKey},
};

/// What never leaves this machine may go without encryption.
bool isLoopback(const QString& host) {
  if (host == u"localhost" || host == u"::1") return true;
  in_addr address{};
  constexpr std::uint32_t loopbackNetwork = 127;
  return inet_pton(AF_INET, host.toLatin1().constData(), &address) == 1 &&
         ntohl(address.s_addr) >> 24 == loopbackNetwork;
}

/// What is wrong with the address, or nothing. What the program appends to an address would land in
/// the wrong place behind a query or a fragment.
QString problemWith(const QUrl& address) {
  if (!address.isValid()) return u"is not a URL"_s;
  if (address.scheme() != u"http" && address.scheme() != u"https")
    return u"must begin with http:// or https://"_s;
  if (address.host().isEmpty()) return u"names no host"_s;
  if (address.scheme() == u"http" && !isLoopback(address.host()))
    return u"must begin with https:// unless it is on this machine"_s;
  if (!address.userInfo().isEmpty()) return u"must not hold a user name or password"_s;
  if (address.hasQuery() || address.hasFragment()) return u"must not have a query or fragment"_s;
  return {};
}

/// Takes one setting over. Returns what is wrong with it, or nothing.
QString apply(const QString& key, const QString& value, DeploymentConfiguration& configuration) {
  for (const auto& [name, field] : addressKeys) {
    if (name != key) continue;
    const QUrl address(value, QUrl::StrictMode);
    configuration.*field = address;
    return problemWith(address);
  }
  for (const auto& [name, field] : textKeys) {
    if (name != key) continue;
    configuration.*field = value;
    return {};
  }
  return u"is not a setting of this file"_s;
}

std::expected<QByteArray, QString> contentOf(const QString& path) {
  if (!QFileInfo(path).isFile()) return std::unexpected(u"%1: is not a file"_s.arg(path));
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly))
    return std::unexpected(u"%1: can't be read: %2"_s.arg(path, file.errorString()));
  const QByteArray content = file.read(maximumSize + 1);
  if (file.error() != QFileDevice::NoError)
    return std::unexpected(u"%1: can't be read: %2"_s.arg(path, file.errorString()));
  if (content.size() > maximumSize) return std::unexpected(u"%1: is too large"_s.arg(path));
  if (!QByteArrayView(content).isValidUtf8())
    return std::unexpected(u"%1: is not UTF-8 text"_s.arg(path));
  return content;
}

using IniTree = boost::property_tree::ptree;

std::expected<IniTree, QString> parseIni(const QString& path, const QByteArray& content) {
  std::istringstream stream(content.toStdString());
  IniTree tree;
  try {
    boost::property_tree::read_ini(stream, tree);
  } catch (const boost::property_tree::ini_parser_error& error) {
    return std::unexpected(u"%1: line %2: %3"_s.arg(path)
                               .arg(error.line())
                               .arg(QString::fromStdString(error.message())));
  }
  return tree;
}

/// Takes all settings over, those in sections too. Returns the first that is wrong and why, or
/// nothing.
QString applyAll(const IniTree& tree, DeploymentConfiguration& configuration) {
  for (const auto& [name, node] : tree) {
    const QString key = QString::fromStdString(name);
    const QString value = QString::fromStdString(node.data());
    const bool isSection = !node.empty();
    QString problem = isSection ? applyAll(node, configuration) : apply(key, value, configuration);
    if (!problem.isEmpty()) return isSection ? problem : key + u' ' + problem;
  }
  return {};
}

}  // namespace

DeploymentConfiguration DeploymentConfiguration::builtIn() {
  return {
      .apiBaseURL = QUrl(u"http://127.0.0.1:8750/"_s),
      .websiteURL = QUrl(u"https://vemo.invalid/"_s),
      .googleAuthorizationEndpoint = QUrl(u"https://accounts.google.com/o/oauth2/v2/auth"_s),
      .googleTokenEndpoint = QUrl(u"https://oauth2.googleapis.com/token"_s),
      .googleClientId = {},
      .slackApiBaseURL = QUrl(u"https://slack.com/api/"_s),
      .updateFeedPublicKey = {},
  };
}

std::expected<DeploymentConfiguration, QString> DeploymentConfiguration::load(
    const QStringList& candidates) {
  for (const QString& path : candidates) {
    const QFileInfo file(path);
    // A link to nowhere is a mistake to be told, not a missing file.
    if (!file.exists() && !file.isSymLink()) continue;
    const auto content = contentOf(path);
    if (!content) return std::unexpected(content.error());
    return parse(path, *content);
  }
  return builtIn();
}

std::expected<DeploymentConfiguration, QString> DeploymentConfiguration::parse(
    const QString& path, const QByteArray& content) {
  const auto tree = parseIni(path, content);
  if (!tree) return std::unexpected(tree.error());
  DeploymentConfiguration configuration = builtIn();
  if (const QString problem = applyAll(*tree, configuration); !problem.isEmpty())
    return std::unexpected(path + u": "_s + problem);
  return configuration;
}

QStringList DeploymentConfiguration::standardCandidates() {
  return places::deploymentConfigurationCandidates();
}

QUrl DeploymentConfiguration::api(const QString& path) const {
  QString base = apiBaseURL.path(QUrl::FullyEncoded);
  while (base.endsWith(u'/')) base.chop(1);
  QUrl address = apiBaseURL;
  address.setPath(base + u'/' + path, QUrl::TolerantMode);
  return address;
}

}  // namespace vemo
