#include "ui/models/DictionaryModel.h"

#include <utility>

#include "session/DictionaryList.h"

namespace vemo {

DictionaryModel::DictionaryModel(DictionaryList& list)
    : m_list(list), m_observation(list.changed.observe([this] { follow(); })) {
  follow();
}

bool DictionaryModel::isLoading() const {
  return m_list.isDictionaryLoading();
}

void DictionaryModel::remove(const QString& id) {
  m_list.remove(id);
}

void DictionaryModel::add(const PhraseRow& row) {
  m_list.add(row.spoken, row.written);
}

bool DictionaryModel::change(const PhraseRow& row) {
  return m_list.edit(row.id, row.spoken, row.written);
}

void DictionaryModel::follow() {
  std::vector<PhraseRow> rows;
  rows.reserve(m_list.entries().size());
  for (const auto& entry : m_list.entries())
    rows.push_back({entry.id, entry.phrase, entry.replacement});
  show(std::move(rows));
}

}  // namespace vemo
