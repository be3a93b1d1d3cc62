// The sheet in which one row of the dictionary or of the shortcuts is written or changed.
//
// Main thread only; owned by the model of its list. Dismissing it drops what was typed.
#pragma once

#include <QObject>
#include <QString>
#include <functional>

#include "ui/models/PhraseRows.h"

namespace vemo {

class EntrySheet : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool isOpen READ isOpen NOTIFY changed)
  Q_PROPERTY(bool isEditing READ isEditing NOTIFY changed)
  Q_PROPERTY(QString spoken READ spoken WRITE setSpoken NOTIFY changed)
  Q_PROPERTY(QString written READ written WRITE setWritten NOTIFY changed)
  Q_PROPERTY(bool canSave READ canSave NOTIFY changed)

 public:
  /// Takes what was typed; a row without identifier is a new one.
  using Save = std::function<void(const PhraseRow& row)>;

  explicit EntrySheet(Save save) : m_save(std::move(save)) {}

  bool isOpen() const { return m_isOpen; }
  bool isEditing() const { return !m_row.id.isEmpty(); }
  const QString& spoken() const { return m_row.spoken; }
  const QString& written() const { return m_row.written; }
  void setSpoken(const QString& text);
  void setWritten(const QString& text);

  /// Neither text is blank.
  bool canSave() const;

  Q_INVOKABLE void open();
  void openFor(const PhraseRow& row);

  /// Hands over what was typed and closes; does nothing while canSave() is false.
  Q_INVOKABLE void save();
  Q_INVOKABLE void dismiss();

  Q_SIGNAL void changed();

 private:
  void set(bool isOpen, PhraseRow row);

  const Save m_save;
  bool m_isOpen = false;
  PhraseRow m_row;
};

}  // namespace vemo
