// Where the program's files stand, by the XDG base directory rules. Any thread.
//
// A variable that isn't an absolute path counts as unset. A place is empty when not even the home
// folder is known.
#pragma once

#include <QString>
#include <QStringList>

namespace vemo::places {

/// XDG_CONFIG_HOME, where programs keep what the user has set up.
QString configFolder();

/// settings.json in XDG_CONFIG_HOME/vemo.
QString settingsFile();

/// The folder of debug.log: Logs/Vemo in XDG_STATE_HOME.
QString logFolder();

/// The notes of crashes: crashes in XDG_STATE_HOME/vemo.
QString crashFile();

/// Where secrets are sealed on desktops without a keyring: secrets in XDG_STATE_HOME/vemo.
QString secretsFolder();

/// vemo.conf in XDG_CONFIG_HOME/vemo, then in vemo below each folder of XDG_CONFIG_DIRS.
QStringList deploymentConfigurationCandidates();

}  // namespace vemo::places
