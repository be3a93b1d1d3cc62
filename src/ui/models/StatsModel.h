// What the account's usage comes to, as the statistics tab shows it.
//
// Main thread only. A reading of the account that lasts shows its progress after half a second; one
// that fails leaves the figures as they are.
#pragma once

#include <QLocale>
#include <QObject>
#include <QString>
#include <chrono>

#include "base/Clock.h"
#include "base/Notifier.h"
#include "base/TaskScope.h"
#include "ui/models/Statistics.h"

namespace vemo {

class AuthManager;

class StatsModel : public QObject {
  Q_OBJECT
  Q_PROPERTY(QString speed READ speed NOTIFY changed)
  Q_PROPERTY(QString speedComparison READ speedComparison NOTIFY changed)
  Q_PROPERTY(QString speedLine READ speedLine NOTIFY changed)
  Q_PROPERTY(QString timeSaved READ timeSaved NOTIFY changed)
  Q_PROPERTY(QString timeSavedDetail READ timeSavedDetail NOTIFY changed)
  Q_PROPERTY(QString audio READ audio NOTIFY changed)
  Q_PROPERTY(QString audioUnit READ audioUnit NOTIFY changed)
  Q_PROPERTY(QString dictations READ dictations NOTIFY changed)
  Q_PROPERTY(bool isRefreshing READ isRefreshing NOTIFY changed)
  Q_PROPERTY(bool showsProgress READ showsProgress NOTIFY changed)

 public:
  struct With {
    MainThread& mainThread;
    Clock& clock;
    AuthManager& auth;
    QLocale locale = QLocale::system();  ///< of digits and their grouping
  };

  static constexpr auto timeWithoutProgress = std::chrono::milliseconds(500);

  explicit StatsModel(With with);

  QString speed() const;
  QString speedComparison() const;
  QString speedLine() const;
  QString timeSaved() const;
  QString timeSavedDetail() const;
  QString audio() const;
  QString audioUnit() const;
  QString dictations() const;

  bool isRefreshing() const { return m_isRefreshing; }
  bool showsProgress() const { return m_showsProgress; }

  /// Reads the usage anew; while that runs, once more does nothing.
  Q_INVOKABLE void refresh();

  Q_SIGNAL void changed();

 private:
  UsageTotals totals() const;
  Task<> readUsage(std::stop_token stop);
  Task<> showProgressInTime(std::stop_token stop);

  With m_with;
  bool m_isRefreshing = false;
  bool m_showsProgress = false;
  Observation m_observation;
  TaskScope m_tasks;
};

}  // namespace vemo
