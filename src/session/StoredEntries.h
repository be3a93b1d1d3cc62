// The rows of one list of the user's own words, in memory and in the settings.
//
// Every change is written at once and as a whole, so that the next dictation works with it. What
// can't be written stays in memory, and the settings keep what they have. Main thread only; owned
// by the list that shows it.
#pragma once

#include <QByteArray>
#include <QString>
#include <QUuid>
#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "storage/Settings.h"

namespace vemo {

/// Without the spaces and tabs at its two ends; line breaks stay.
inline QString withoutOuterBlanks(QStringView text) {
  const auto isBlank = [](QChar character) {
    return character == u'\t' || character.category() == QChar::Separator_Space;
  };
  while (!text.isEmpty() && isBlank(text.front())) text = text.sliced(1);
  while (!text.isEmpty() && isBlank(text.back())) text.chop(1);
  return text.toString();
}

template <typename Entry>
class StoredEntries {
 public:
  using Rows = std::vector<Entry>;

  struct Form {
    SettingKey<QByteArray> key;
    std::optional<Rows> (*decode)(const QByteArray&);
    std::optional<QByteArray> (*encode)(const Rows&);
  };

  StoredEntries(Settings& settings, Form form) : m_settings(settings), m_form(form) {}

  const Rows& rows() const { return m_rows; }

  /// Takes what is stored; bytes that are no list are an empty one.
  void read() {
    const auto stored = m_settings.get(m_form.key);
    m_rows = (stored ? m_form.decode(*stored) : std::nullopt).value_or(Rows());
  }

  static QString newId() { return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper(); }

  /// Empties the memory alone.
  void forget() { m_rows.clear(); }

  void replace(Rows rows) {
    m_rows = std::move(rows);
    write();
  }

  /// Appends a row of the two texts and returns the identifier that it was given.
  QString append(const QString& heard, const QString& written) {
    const QString id = newId();
    m_rows.push_back({id, heard, written});
    write();
    return id;
  }

  /// False when no row has the identifier.
  bool changeId(const QString& from, const QString& to) {
    const auto row = std::ranges::find(m_rows, from, &Entry::id);
    if (row == m_rows.end()) return false;
    Entry entry = *row;
    entry.id = to;
    return change(from, std::move(entry));
  }

  /// Puts `entry` where the row of the identifier is; false when there is none.
  bool change(const QString& id, Entry entry) {
    const auto row = std::ranges::find(m_rows, id, &Entry::id);
    if (row == m_rows.end()) return false;
    *row = std::move(entry);
    write();
    return true;
  }

  void remove(const QString& id) {
    std::erase_if(m_rows, [&id](const Entry& row) { return row.id == id; });
    write();
  }

 private:
  void write() {
    if (const auto stored = m_form.encode(m_rows)) m_settings.set(m_form.key, *stored);
  }

  Settings& m_settings;
  const Form m_form;
  Rows m_rows;
};

}  // namespace vemo
