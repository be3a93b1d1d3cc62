// One file of the project that the user is working in. A value.
#pragma once

#include <QString>
#include <QUuid>

namespace vemo {

struct WorkspaceFile {
  QUuid id;              ///< made anew by every scan
  QString fileName;      ///< as on disk, like all but the last
  QString baseName;      ///< without the last extension
  QString relativePath;  ///< below the project's root
  QString fullPath;
  QString ext;  ///< lower-cased, without its point; empty when there is none

  friend bool operator==(const WorkspaceFile&, const WorkspaceFile&) = default;
};

}  // namespace vemo
