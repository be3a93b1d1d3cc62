// The home tab: the keys to dictate with, the language, the start/stop button, what is still
// missing for a dictation, and the recent transcriptions.
//
// Main thread only.
#pragma once

#include <QObject>
#include <QString>
#include <QVariantList>
#include <vector>

#include "base/Notifier.h"
#include "ui/models/HistoryModel.h"

namespace vemo {

class PermissionsManager;
class Settings;

class HomeModel : public QObject {
  Q_OBJECT
  Q_PROPERTY(QString keysLine READ keysLine NOTIFY changed)
  Q_PROPERTY(QString languageTitle READ languageTitle NOTIFY languageChanged)
  /// Rows with `code`, `text` and `isCurrent`.
  Q_PROPERTY(QVariantList languages READ languages NOTIFY languageChanged)
  Q_PROPERTY(QString dictationLabel READ dictationLabel NOTIFY changed)
  Q_PROPERTY(QString dictationSymbol READ dictationSymbol NOTIFY changed)
  Q_PROPERTY(bool isRecording READ isRecording NOTIFY changed)
  /// Whether the button does anything: while Vemo is off, it can only stop.
  Q_PROPERTY(bool canToggleDictation READ canToggleDictation NOTIFY changed)
  /// Beside the button; empty while nothing is recorded.
  Q_PROPERTY(QString stateLabel READ stateLabel NOTIFY changed)
  /// Stands in place of the transcriptions while there are none.
  Q_PROPERTY(QString emptyText READ emptyText NOTIFY changed)
  Q_PROPERTY(bool needsMicrophone READ needsMicrophone NOTIFY changed)
  Q_PROPERTY(bool needsAccessibility READ needsAccessibility NOTIFY changed)
  Q_PROPERTY(QObject* history READ history CONSTANT)

 public:
  struct With {
    MainThread& mainThread;
    Clock& clock;
    Settings& settings;
    AppState& appState;
    PermissionsManager& permissions;
    ToastModel& toast;
  };

  explicit HomeModel(With with);

  QString keysLine() const;
  QString languageTitle() const;
  QVariantList languages() const;
  QString dictationLabel() const;
  QString dictationSymbol() const;
  bool isRecording() const;
  bool canToggleDictation() const;
  QString stateLabel() const;
  QString emptyText() const;
  bool needsMicrophone() const;
  bool needsAccessibility() const;
  HistoryModel* history() { return &m_history; }

  Q_INVOKABLE void toggleDictation();
  /// A code that no language has changes nothing.
  Q_INVOKABLE void chooseLanguage(const QString& code);
  Q_INVOKABLE void grantMicrophone();
  Q_INVOKABLE void grantAccessibility();

  Q_SIGNAL void changed();
  Q_SIGNAL void languageChanged();

 private:
  void settingChanged(const QString& name);

  With m_with;
  HistoryModel m_history;
  std::vector<Observation> m_observations;
};

}  // namespace vemo
