// A dictionary list beside a service whose answers a test scripts.
#pragma once

#include <optional>
#include <vector>

#include "EntryListFixture.h"
#include "session/DictionaryList.h"

namespace vemo {

class DictionaryListFixture : public EntryListFixture {
 protected:
  using Entry = CustomDictionaryEntry;

  void makeList() {
    list.emplace(mainThread, storage.settings, *auth);
    observation = list->changed.observe([this] { ++changes; });
  }

  void makeSignedInList() {
    startSignedIn();
    makeList();
  }

  void store(const std::vector<Entry>& entries) {
    storage.settings.set(keys::customDictionaryEntries, encodeDictionary(entries).value());
  }
  std::vector<Entry> stored() const {
    return decodeDictionary(storage.settings.get(keys::customDictionaryEntries, "[]"_ba)).value();
  }

  void storeFifty() {
    for (int number = 0; number < 50; ++number)
      fifty.push_back({QString::number(number), u"phrase"_s, u"replacement"_s});
    store(fifty);
  }

  static QByteArray row(const Entry& entry) {
    return compactJson(QJsonObject{
        {u"id"_s, entry.id}, {u"phrase"_s, entry.phrase}, {u"replacement"_s, entry.replacement}});
  }
  void serverHolds(const std::vector<Entry>& entries, Clock::Duration delay = {}) {
    QByteArrayList rows;
    for (const Entry& entry : entries) rows.append(row(entry));
    http.answer(dictionaryPath, 200, R"({"status":"ok","dictionary":[)" + rows.join(',') + "]}",
                delay);
  }
  void serverAdds(const Entry& entry, Clock::Duration delay = {}) {
    http.answer(dictionaryPath, 201, R"({"status":"ok","entry":)" + row(entry) + "}", delay);
  }

  void load() {
    list->load();
    settle();
  }

  void add(const QString& phrase, const QString& replacement) {
    list->add(phrase, replacement);
    settle();
  }

  std::optional<DictionaryList> list;
  std::vector<Entry> fifty;
  Observation observation;
  int changes = 0;
};

}  // namespace vemo
