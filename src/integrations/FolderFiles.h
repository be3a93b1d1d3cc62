// The files that a folder had when it was read, as what the user may mean by a spoken file name:
// for programs that look at one folder once.
//
// Any one thread.
#pragma once

#include <utility>

#include "integrations/FileTagLookup.h"
#include "integrations/WorkspaceFiles.h"

namespace vemo {

class FolderFiles final : public FileTagLookup {
 public:
  explicit FolderFiles(WorkspaceFiles files) : m_files(std::move(files)) {}

  void refreshActiveWorkspace() override {}
  std::optional<QString> resolveFileTag(const QString& spokenName,
                                        const QString& spokenExtension) const override {
    return m_files.tagFor(spokenName, spokenExtension);
  }

 private:
  WorkspaceFiles m_files;
};

}  // namespace vemo
