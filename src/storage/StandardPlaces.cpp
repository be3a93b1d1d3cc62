#include "storage/StandardPlaces.h"

#include <QDir>

namespace vemo::places {

using namespace Qt::Literals::StringLiterals;

namespace {

/// The folder that the variable names, else `fallback` below the home folder, else nothing.
QString folderFrom(const char* variable, const QString& fallback) {
  const QString named = qEnvironmentVariable(variable);
  if (QDir::isAbsolutePath(named)) return named;
  const QString home = qEnvironmentVariable("HOME");
  return QDir::isAbsolutePath(home) ? home + u'/' + fallback : QString();
}

QString stateFolder() {
  return folderFrom("XDG_STATE_HOME", u".local/state"_s);
}

}  // namespace

QString configFolder() {
  return folderFrom("XDG_CONFIG_HOME", u".config"_s);
}

QString settingsFile() {
  const QString folder = configFolder();
  return folder.isEmpty() ? QString() : folder + u"/vemo/settings.json"_s;
}

QString logFolder() {
  const QString folder = stateFolder();
  return folder.isEmpty() ? QString() : folder + u"/Logs/Vemo"_s;
}

QString crashFile() {
  const QString folder = stateFolder();
  return folder.isEmpty() ? QString() : folder + u"/vemo/crashes"_s;
}

QString secretsFolder() {
  const QString folder = stateFolder();
  return folder.isEmpty() ? QString() : folder + u"/vemo/secrets"_s;
}

QStringList deploymentConfigurationCandidates() {
  QStringList folders = qEnvironmentVariable("XDG_CONFIG_DIRS").split(u':', Qt::SkipEmptyParts);
  folders.removeIf([](const QString& folder) { return !QDir::isAbsolutePath(folder); });
  if (folders.isEmpty()) folders = {u"/etc/xdg"_s};
  if (const QString home = configFolder(); !home.isEmpty()) folders.prepend(home);
  for (QString& folder : folders) folder += u"/vemo/vemo.conf"_s;
  return folders;
}

}  // namespace vemo::places
