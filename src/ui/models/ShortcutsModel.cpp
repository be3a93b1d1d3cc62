#include "ui/models/ShortcutsModel.h"

#include <utility>

#include "session/ShortcutList.h"

namespace vemo {

ShortcutsModel::ShortcutsModel(ShortcutList& list)
    : m_list(list), m_observation(list.changed.observe([this] { follow(); })) {
  follow();
}

void ShortcutsModel::remove(const QString& id) {
  m_list.remove(id);
}

void ShortcutsModel::add(const PhraseRow& row) {
  m_list.add(row.spoken, row.written);
}

bool ShortcutsModel::change(const PhraseRow& row) {
  return m_list.edit(row.id, row.spoken, row.written);
}

void ShortcutsModel::follow() {
  std::vector<PhraseRow> rows;
  rows.reserve(m_list.entries().size());
  for (const auto& entry : m_list.entries())
    rows.push_back({entry.id, entry.trigger, entry.snippet});
  show(std::move(rows));
}

}  // namespace vemo
