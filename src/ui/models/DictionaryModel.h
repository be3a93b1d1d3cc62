// The dictionary tab: the user's words. Main thread only; follows the DictionaryList, which
// outlives it.
#pragma once

#include "base/Notifier.h"
#include "ui/models/PhraseListModel.h"

namespace vemo {

class DictionaryList;

class DictionaryModel : public PhraseListModel {
  Q_OBJECT

 public:
  explicit DictionaryModel(DictionaryList& list);

  bool isLoading() const override;
  void remove(const QString& id) override;

 protected:
  void add(const PhraseRow& row) override;
  bool change(const PhraseRow& row) override;

 private:
  void follow();

  DictionaryList& m_list;
  Observation m_observation;
};

}  // namespace vemo
