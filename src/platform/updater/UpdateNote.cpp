#include "platform/updater/UpdateNote.h"

#include <QCoreApplication>

namespace vemo {

namespace {

QString tr(const char* text) {
  return QCoreApplication::translate("Updates", text);
}

QString howItComes(const UpdateItem& update, UpdateComesBy way) {
  if (way == UpdateComesBy::PackageManager)
    return tr("Install it the way you installed Vemo, such as with your package manager.");
  return update.isCritical ? tr("It is an important update. Please check for updates to get it.")
                           : tr("Check for updates to get it.");
}

}  // namespace

UpdateNote noteOfUpdate(const UpdateItem& update, UpdateComesBy way) {
  std::vector<UpdateChoice> choices;
  if (!update.isCritical) choices.push_back(UpdateChoice::Skip);
  choices.push_back(UpdateChoice::Dismiss);
  return {tr("Vemo %1 is available").arg(update.displayVersion), howItComes(update, way), choices};
}

UpdateNote noteOfReadyUpdate(const UpdateItem& update) {
  return {tr("Update ready"),
          tr("Vemo %1 is downloaded and ready to install.").arg(update.displayVersion)};
}

UpdateNote noteOfNoUpdate(const QString& runningVersion) {
  return {tr("Vemo is up to date"), tr("Vemo %1 is the newest version.").arg(runningVersion)};
}

UpdateNote noteOfAnotherSession() {
  return {tr("Update under way"), tr("Another session of yours is updating Vemo.")};
}

UpdateNote noteOfReturn(const QString& runningVersion) {
  return {tr("Back to Vemo %1").arg(runningVersion),
          tr("The new version didn't start well on this computer.")};
}

UpdateNote noteOfUpdateTrouble() {
  return {tr("The update didn't work"), tr("Please try again later.")};
}

}  // namespace vemo
