#include "ui/models/PhraseListModel.h"

#include <utility>

namespace vemo {

void PhraseListModel::edit(const QString& id) {
  if (const auto* row = m_rows.find(id)) m_sheet.openFor(*row);
}

void PhraseListModel::show(std::vector<PhraseRow> rows) {
  m_rows.setRows(std::move(rows));
  Q_EMIT changed();
}

/// A row that has gone while it was being changed is written anew, so that nothing typed is lost.
void PhraseListModel::save(const PhraseRow& row) {
  if (row.id.isEmpty() || !change(row)) add(row);
}

}  // namespace vemo
