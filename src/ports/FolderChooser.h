// Lets the user point at a folder.
//
// Main thread only. The choice is shown at the window that the user works in, or on its own when
// there is none; it ends when the user decides or when `stop` is requested.
#pragma once

#include <QString>
#include <optional>
#include <stop_token>

#include "base/Task.h"

namespace vemo {

struct FolderQuestion {
  QString message;  ///< what the folder is for
  QString prompt;   ///< on the button that takes the folder
};

class FolderChooser {
 public:
  virtual ~FolderChooser() = default;

  /// The absolute path of one existing folder, or nothing when the user decides against it.
  virtual Task<std::optional<QString>> chooseFolder(FolderQuestion question,
                                                    std::stop_token stop) = 0;
};

}  // namespace vemo
