#include "ui/models/EntrySheet.h"

#include <utility>

#include "base/Text.h"

namespace vemo {

void EntrySheet::setSpoken(const QString& text) {
  if (text == m_row.spoken) return;
  m_row.spoken = text;
  Q_EMIT changed();
}

void EntrySheet::setWritten(const QString& text) {
  if (text == m_row.written) return;
  m_row.written = text;
  Q_EMIT changed();
}

bool EntrySheet::canSave() const {
  return m_isOpen && !trimmed(m_row.spoken).isEmpty() && !trimmed(m_row.written).isEmpty();
}

void EntrySheet::open() {
  set(true, {});
}

void EntrySheet::openFor(const PhraseRow& row) {
  set(true, row);
}

void EntrySheet::save() {
  if (!canSave()) return;
  const PhraseRow row = m_row;
  dismiss();
  m_save(row);
}

void EntrySheet::dismiss() {
  if (m_isOpen) set(false, {});
}

void EntrySheet::set(bool isOpen, PhraseRow row) {
  m_isOpen = isOpen;
  m_row = std::move(row);
  Q_EMIT changed();
}

}  // namespace vemo
