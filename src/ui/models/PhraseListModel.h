// What the dictionary tab and the shortcuts tab have in common: rows of "say this, write that", and
// the sheet in which a row is written or changed.
//
// Main thread only. A subclass tells which list of the session it stands for.
#pragma once

#include <QObject>
#include <QString>
#include <vector>

#include "ui/models/EntrySheet.h"
#include "ui/models/PhraseRows.h"

namespace vemo {

class PhraseListModel : public QObject {
  Q_OBJECT
  Q_PROPERTY(QObject* rows READ rows CONSTANT)
  Q_PROPERTY(QObject* sheet READ sheet CONSTANT)
  /// Whether the account's list is on its way.
  Q_PROPERTY(bool isLoading READ isLoading NOTIFY changed)

 public:
  PhraseRows* rows() { return &m_rows; }
  EntrySheet* sheet() { return &m_sheet; }
  const EntrySheet& sheet() const { return m_sheet; }
  virtual bool isLoading() const { return false; }

  /// Opens the sheet for the row of this identifier; does nothing when it has gone.
  Q_INVOKABLE void edit(const QString& id);
  Q_INVOKABLE virtual void remove(const QString& id) = 0;

  Q_SIGNAL void changed();

 protected:
  void show(std::vector<PhraseRow> rows);

  virtual void add(const PhraseRow& row) = 0;
  /// False when the row has gone.
  virtual bool change(const PhraseRow& row) = 0;

 private:
  void save(const PhraseRow& row);

  PhraseRows m_rows;
  EntrySheet m_sheet{[this](const PhraseRow& row) { save(row); }};
};

}  // namespace vemo
