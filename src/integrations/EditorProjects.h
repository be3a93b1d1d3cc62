// The project that an editor has opened last, from the files that editors of one family keep: each
// has a folder `workspaceStorage`, with a folder per project that holds a `workspace.json`.
//
// Any thread; blocks for as long as the disk takes. What can't be read is passed over.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <optional>

namespace vemo {

/// The storage folders to look into for the application in front, below the user's configuration
/// folder: those of the editor that its identifier or name tells, else those of all three.
QStringList editorStorageFolders(const QString& configFolder, const QString& bundleIdentifier,
                                 const QString& appName);

/// The project of the `workspace.json` that was written last, over all folders given and of those
/// that name one folder on this machine; of equally old ones the first. It may not exist any more.
std::optional<QString> lastOpenedProject(const QStringList& storageFolders);

/// The folder on this machine that a `workspace.json` names, if it does.
std::optional<QString> projectFolderIn(const QByteArray& workspaceJson);

}  // namespace vemo
