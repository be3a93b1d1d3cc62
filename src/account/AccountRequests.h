// The requests of the account service. The headers differ from endpoint to endpoint, "mac" beside
// "macos" among them, and each is as its endpoint expects it. Main thread; nothing here fails.
#pragma once

#include <QString>

#include "account/AccountRecords.h"
#include "ports/HttpSession.h"

namespace vemo {

struct DeploymentConfiguration;
struct SystemInformation;

class AccountRequests {
 public:
  AccountRequests(const DeploymentConfiguration& configuration, const SystemInformation& system)
      : m_configuration(configuration), m_system(system) {}

  HttpRequest signIn(const QString& idToken, const QString& deviceId) const;
  HttpRequest profile(const QString& token) const;
  HttpRequest nameChange(const QString& name, const QString& token) const;
  HttpRequest accountDeletion(const QString& token) const;
  /// The one request that also goes out without a token.
  HttpRequest languages(const QString& token) const;

  HttpRequest dictionary(const QString& token) const;
  HttpRequest dictionaryAddition(const QString& phrase, const QString& replacement,
                                 const QString& token) const;
  HttpRequest dictionaryDeletion(const QString& id, const QString& token) const;

 private:
  HttpRequest request(const QByteArray& method, const QString& path) const;
  HttpRequest authorized(const QByteArray& method, const QString& path, const QString& token,
                         const QByteArray& platform) const;

  const DeploymentConfiguration& m_configuration;
  const SystemInformation& m_system;
};

}  // namespace vemo
