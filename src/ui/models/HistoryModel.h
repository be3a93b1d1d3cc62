// The recent transcriptions as rows, newest first, each with its age and a copy button.
//
// Main thread only. Follows the history row by row, never as a whole. The ages are kept current
// only while somebody can see them, so that a closed window wakes nobody.
#pragma once

#include <QAbstractListModel>
#include <QUuid>
#include <chrono>
#include <vector>

#include "base/Clock.h"
#include "base/Notifier.h"
#include "base/TaskScope.h"
#include "session/DictationItem.h"

namespace vemo {

class AppState;
class ToastModel;

class HistoryModel : public QAbstractListModel {
  Q_OBJECT
  Q_PROPERTY(int count READ count NOTIFY countChanged)

 public:
  enum Role {
    Text = Qt::UserRole + 1,
    Age,
    CopySymbol,
    CopyLabel,
  };

  /// What it works with; all of it outlives the model.
  struct With {
    MainThread& mainThread;
    Clock& clock;
    AppState& appState;
    ToastModel& toast;
  };

  /// How long a row says that it has been copied.
  static constexpr auto timeCopied = std::chrono::seconds(2);

  explicit HistoryModel(With with);

  int count() const { return static_cast<int>(m_items.size()); }
  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

  /// Puts a row's text on the clipboard; a row that isn't there does nothing.
  Q_INVOKABLE void copy(int row);

  /// Whether a window shows the rows.
  void setShown(bool isShown);

  Q_SIGNAL void countChanged();

 private:
  void follow();
  void removeRowsThatWent(const std::vector<DictationItem>& current);
  void insertRowsThatCame(const std::vector<DictationItem>& current);
  void setCopied(const QUuid& id);
  void updateAll(Role role);
  void watchAges();
  Clock::Duration age(const DictationItem& item) const;
  Task<> keepAgesCurrent(std::stop_token stop);
  Task<> forgetCopied(std::stop_token stop);

  With m_with;
  std::vector<DictationItem> m_items;
  QUuid m_copied;
  bool m_isShown = false;
  StartedTask m_ageTask;
  StartedTask m_copiedTask;
  Observation m_observation;
  TaskScope m_tasks;
};

}  // namespace vemo
