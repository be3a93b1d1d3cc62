// The shortcuts tab: the user's trigger phrases with their texts. Main thread only; follows the
// ShortcutList, which outlives it.
#pragma once

#include "base/Notifier.h"
#include "ui/models/PhraseListModel.h"

namespace vemo {

class ShortcutList;

class ShortcutsModel : public PhraseListModel {
  Q_OBJECT

 public:
  explicit ShortcutsModel(ShortcutList& list);

  void remove(const QString& id) override;

 protected:
  void add(const PhraseRow& row) override;
  bool change(const PhraseRow& row) override;

 private:
  void follow();

  ShortcutList& m_list;
  Observation m_observation;
};

}  // namespace vemo
