#include "ui/models/PhraseRows.h"

#include <algorithm>
#include <utility>

namespace vemo {

int PhraseRows::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : count();
}

QHash<int, QByteArray> PhraseRows::roleNames() const {
  return {{Id, "entryId"}, {Spoken, "spoken"}, {Written, "written"}};
}

QVariant PhraseRows::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
  const auto& row = m_rows[static_cast<std::size_t>(index.row())];
  switch (role) {
    case Id:
      return row.id;
    case Spoken:
      return row.spoken;
    case Written:
      return row.written;
    default:
      return {};
  }
}

const PhraseRow* PhraseRows::find(const QString& id) const {
  const auto row = std::ranges::find(m_rows, id, &PhraseRow::id);
  return row == m_rows.end() ? nullptr : &*row;
}

/// What lies between an equal beginning and an equal end is changed in place as far as it goes, and
/// only the difference in length is inserted or removed.
void PhraseRows::setRows(std::vector<PhraseRow> rows) {
  const auto from = std::ranges::mismatch(m_rows, rows);
  const auto begin = from.in1 - m_rows.begin();
  auto oldEnd = std::ssize(m_rows);
  auto newEnd = std::ssize(rows);
  while (oldEnd > begin && newEnd > begin &&
         m_rows[static_cast<std::size_t>(oldEnd - 1)] == rows[static_cast<std::size_t>(newEnd - 1)])
    --oldEnd, --newEnd;

  const auto changedEnd = std::min(oldEnd, newEnd);
  std::move(rows.begin() + begin, rows.begin() + changedEnd, m_rows.begin() + begin);
  if (changedEnd > begin)
    Q_EMIT dataChanged(index(static_cast<int>(begin)), index(static_cast<int>(changedEnd) - 1));
  if (newEnd > changedEnd) {
    beginInsertRows({}, static_cast<int>(changedEnd), static_cast<int>(newEnd) - 1);
    m_rows.insert(m_rows.begin() + changedEnd, std::make_move_iterator(rows.begin() + changedEnd),
                  std::make_move_iterator(rows.begin() + newEnd));
    endInsertRows();
  }
  if (oldEnd > changedEnd) {
    beginRemoveRows({}, static_cast<int>(changedEnd), static_cast<int>(oldEnd) - 1);
    m_rows.erase(m_rows.begin() + changedEnd, m_rows.begin() + oldEnd);
    endRemoveRows();
  }
  if (newEnd != oldEnd) Q_EMIT countChanged();
}

}  // namespace vemo
