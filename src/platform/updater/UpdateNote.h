// What an updater tells the user on its own: short notes, one of them with choices.
//
// Plain values. Any thread.
#pragma once

#include <QString>
#include <vector>

#include "ports/Updater.h"

namespace vemo {

struct UpdateNote {
  QString title;
  QString text;
  std::vector<UpdateChoice> choices = {};  ///< what the user is asked; empty for nothing
};

enum class UpdateComesBy { PackageManager, Check };

/// Skipping or putting off: there is no skipping a critical one.
UpdateNote noteOfUpdate(const UpdateItem& update, UpdateComesBy way);
UpdateNote noteOfReadyUpdate(const UpdateItem& update);
UpdateNote noteOfNoUpdate(const QString& runningVersion);
UpdateNote noteOfUpdateTrouble();
UpdateNote noteOfAnotherSession();
/// The one that was put in place has given way to the one that runs.
UpdateNote noteOfReturn(const QString& runningVersion);

}  // namespace vemo
