// Where the website explains what the user agrees to. Any thread.
#pragma once

#include <QUrl>

#include "storage/DeploymentConfiguration.h"

namespace vemo {

inline QUrl pageOfWebsite(const DeploymentConfiguration& configuration, const QString& page) {
  QUrl address = configuration.websiteURL;
  const QString folder = address.path();
  address.setPath((folder.endsWith(u'/') ? folder : folder + u'/') + page);
  return address;
}

inline QUrl termsPage(const DeploymentConfiguration& configuration) {
  return pageOfWebsite(configuration, QStringLiteral("terms"));
}

inline QUrl privacyPage(const DeploymentConfiguration& configuration) {
  return pageOfWebsite(configuration, QStringLiteral("privacy"));
}

}  // namespace vemo
