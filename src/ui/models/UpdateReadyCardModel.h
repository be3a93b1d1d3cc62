// The card of a downloaded update: its version, the button that installs it, its notes.
//
// Main thread only. Shows what the UpdateManager holds; without a ready update it isn't shown.
#pragma once

#include <QObject>
#include <QString>
#include <vector>

#include "base/Notifier.h"
#include "ui/models/ReleaseNotesPages.h"
#include "updates/UpdateManager.h"

namespace vemo {

class AppState;

class UpdateReadyCardModel : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool isShown READ isShown NOTIFY changed)
  /// "Vemo 1.4.0".
  Q_PROPERTY(QString versionLine READ versionLine NOTIFY changed)
  Q_PROPERTY(bool canRestart READ canRestart NOTIFY changed)
  /// Of the button.
  Q_PROPERTY(QString tooltip READ tooltip NOTIFY changed)
  Q_PROPERTY(bool hasNotes READ hasNotes NOTIFY changed)
  Q_PROPERTY(bool showNotes READ showNotes NOTIFY changed)
  /// Changes with the ready update alone.
  Q_PROPERTY(vemo::ReleaseNotesPages* notes READ notes CONSTANT)

 public:
  /// Both outlive it.
  UpdateReadyCardModel(UpdateManager& updates, AppState& appState);

  bool isShown() const { return m_updates.readyUpdate().has_value(); }
  QString versionLine() const;
  bool canRestart() const { return m_updates.canRestartNow(); }
  QString tooltip() const;
  bool hasNotes() const;
  bool showNotes() const { return m_showNotes; }
  ReleaseNotesPages* notes() { return &m_notes; }

  Q_INVOKABLE void restart() { m_updates.restartToUpdate(); }
  Q_INVOKABLE void toggleNotes();

  Q_SIGNAL void changed();

 private:
  void readUpdate();

  UpdateManager& m_updates;
  ReleaseNotesPages m_notes;
  bool m_showNotes = false;
  std::vector<Observation> m_observations;
};

}  // namespace vemo
