// Reads which files a project has.
//
// Any thread; blocks for as long as the disk takes. What can't be read is left out.
#pragma once

#include <QString>
#include <stop_token>

#include "integrations/WorkspaceFiles.h"

namespace vemo {

/// The regular files below `root` in the order in which they are met: a folder's own files, then
/// those of its folders, one after the other. Left out are
///   - hidden files and folders, whose names begin with a point;
///   - what lies within a package, a folder that desktops show as one document;
///   - symbolic links, which are neither followed nor listed, except that `root` may be one;
///   - all below a path with a component that is among the ignored directories, whatever its case;
///   - names that aren't UTF-8, which no text can mention.
/// Ends early, with what it has, when `stop` is requested.
WorkspaceFiles scanWorkspace(const QString& root, std::stop_token stop);

}  // namespace vemo
