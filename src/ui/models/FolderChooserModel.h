// Choosing a folder by its path in a sheet of this program's own, for desktops that have none to
// offer.
//
// Main thread only. One question at a time: another one meanwhile is one decided against. A
// question stands until the dialog answers it.
#pragma once

#include <QObject>
#include <QString>
#include <optional>

#include "base/Completion.h"
#include "ports/FolderChooser.h"

namespace vemo {

class FolderChooserModel : public QObject, public FolderChooser {
  Q_OBJECT
  Q_PROPERTY(bool isOpen READ isOpen NOTIFY changed)
  Q_PROPERTY(QString message READ message NOTIFY changed)
  Q_PROPERTY(QString prompt READ prompt NOTIFY changed)
  /// With what was entered last; empty when there is none.
  Q_PROPERTY(QString problem READ problem NOTIFY changed)

 public:
  explicit FolderChooserModel(MainThread& mainThread) : m_mainThread(mainThread) {}

  Task<std::optional<QString>> chooseFolder(FolderQuestion question, std::stop_token stop) override;

  bool isOpen() const { return m_end.has_value(); }
  const QString& message() const { return m_question.message; }
  const QString& prompt() const { return m_question.prompt; }

  const QString& problem() const { return m_problem; }

  /// "~" stands for the home folder. What is no folder keeps the dialog open and says so.
  Q_INVOKABLE void acceptPath(const QString& path);
  Q_INVOKABLE void reject();

  Q_SIGNAL void changed();

 private:
  void finish(const std::optional<QString>& path);

  MainThread& m_mainThread;
  FolderQuestion m_question;
  QString m_problem;
  std::optional<Completion<std::optional<QString>>> m_end;  ///< there while the dialog is open
};

}  // namespace vemo
