// Where this installation's services are: vemo.conf, apart from the user's settings.
//
// Looked for in XDG_CONFIG_HOME/vemo, then in each folder of XDG_CONFIG_DIRS/vemo; the first file
// found counts as a whole, and what it doesn't name has its built-in value. Lines of `name =
// value`, comments begin with ";" or "#", sections only group. A name that isn't a field of this
// structure is an error, so that a slip of the pen can't send what is said to another place than
// was meant. Read once, at start.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <expected>

namespace vemo {

struct DeploymentConfiguration {
  QUrl
      apiBaseURL;  ///< every path of the service is appended to it; built in: the companion service
  QUrl websiteURL;
  QUrl googleAuthorizationEndpoint;
  QUrl googleTokenEndpoint;
  QString googleClientId;
  QUrl slackApiBaseURL;
  QString updateFeedPublicKey;

  /// The built-in values.
  static DeploymentConfiguration builtIn();

  /// Reads the first file of `candidates` that exists. The error is one line for the person who
  /// starts the program: file, key and what is wrong with it.
  static std::expected<DeploymentConfiguration, QString> load(const QStringList& candidates);

  /// Reads the content of a file; `path` is what the error calls it.
  static std::expected<DeploymentConfiguration, QString> parse(const QString& path,
                                                               const QByteArray& content);

  /// The places named above, in order.
  static QStringList standardCandidates();

  /// The address of a path of the service, such as "desktop/dictate", percent-encoded where needed.
  QUrl api(const QString& path) const;
};

}  // namespace vemo
