// A project whose files are what the test says: none, until then.
#pragma once

#include <map>
#include <utility>

#include "integrations/FileTagLookup.h"

namespace vemo {

class FakeFileTagLookup : public FileTagLookup {
 public:
  void refreshActiveWorkspace() override { ++m_refreshCount; }

  std::optional<QString> resolveFileTag(const QString& spokenName,
                                        const QString& spokenExtension) const override {
    const auto tag = m_tags.find({spokenName, spokenExtension});
    return tag == m_tags.end() ? std::nullopt : std::optional(tag->second);
  }

  int refreshCount() const { return m_refreshCount; }
  void setTag(const QString& spokenName, const QString& spokenExtension, const QString& tag) {
    m_tags[{spokenName, spokenExtension}] = tag;
  }

 private:
  int m_refreshCount = 0;
  std::map<std::pair<QString, QString>, QString> m_tags;
};

}  // namespace vemo
