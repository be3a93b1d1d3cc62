// A list of "say this, write that" rows, as the dictionary and the shortcuts show it.
//
// Main thread only. A new list is told to the view as the rows that differ, so that a change of one
// row among thousands costs one row, and the view stays where the user has scrolled it.
#pragma once

#include <QAbstractListModel>
#include <QString>
#include <vector>

namespace vemo {

struct PhraseRow {
  QString id;
  QString spoken;
  QString written;

  friend bool operator==(const PhraseRow&, const PhraseRow&) = default;
};

class PhraseRows : public QAbstractListModel {
  Q_OBJECT
  Q_PROPERTY(int count READ count NOTIFY countChanged)

 public:
  enum Role { Id = Qt::UserRole + 1, Spoken, Written };

  int count() const { return static_cast<int>(m_rows.size()); }
  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

  const std::vector<PhraseRow>& rows() const { return m_rows; }
  /// Null when no row has the identifier.
  const PhraseRow* find(const QString& id) const;

  void setRows(std::vector<PhraseRow> rows);

  Q_SIGNAL void countChanged();

 private:
  std::vector<PhraseRow> m_rows;
};

}  // namespace vemo
