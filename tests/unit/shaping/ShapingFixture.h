// Shaping on a desktop, settings and directories that a test makes up.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonObject>
#include <memory>
#include <utility>
#include <vector>

#include "base/Json.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeFocusedApplication.h"
#include "fakes/TestStorage.h"
#include "plain/PlainLookups.h"
#include "shaping/ContextProcessor.h"
#include "storage/SettingsKeys.h"

namespace vemo {

using Pairs = std::vector<std::pair<QString, QString>>;

inline QByteArray storedList(const Pairs& pairs, const QString& heardKey,
                             const QString& writtenKey) {
  QJsonArray array;
  for (const auto& [heard, written] : pairs)
    array.append(QJsonObject{{u"id"_s, u"7E3B6C1A-9A55-4E0B-8F0B-0C7A4B1D2E3F"_s},
                             {heardKey, heard},
                             {writtenKey, written}});
  return compactJson(array);
}

inline QByteArray storedDictionary(const Pairs& pairs) {
  return storedList(pairs, u"phrase"_s, u"replacement"_s);
}

inline QByteArray storedShortcuts(const Pairs& pairs) {
  return storedList(pairs, u"trigger"_s, u"snippet"_s);
}

/// A clock that moves by a step whenever it is read, as it seems to one who has much to do.
class BusyClock : public FakeClock {
 public:
  using FakeClock::FakeClock;

  MonotonicTime monotonicTime() const override {
    return FakeClock::monotonicTime() + (m_passed += step);
  }

  Duration step{0};

 private:
  mutable Duration m_passed{0};
};

class ShapingFixture : public testing::Test {
 protected:
  void inFront(const QString& identifier, const QString& name) {
    applications.setFrontmost(RunningApplication{.identifier = identifier, .name = name});
  }
  void inDeveloperTool() { inFront(u"org.gnome.Terminal"_s, u"Terminal"_s); }

  void setDictionary(const Pairs& pairs) {
    storage.settings.set(keys::customDictionaryEntries, storedDictionary(pairs));
  }
  void setShortcuts(const Pairs& pairs) {
    storage.settings.set(keys::customShortcutEntries, storedShortcuts(pairs));
  }
  void switchOff(const keys::Bool& integration) { storage.settings.set(integration, false); }
  void switchIntegrationsOff() {
    switchOff(keys::integrationVSCode);
    switchOff(keys::integrationSlack);
  }
  void setFiles(const QStringList& fileNames) { files = PlainFileTags(fileNames); }

  QString shaped(const QString& text) { return processor.process(text); }

  FakeMainThread mainThread;
  BusyClock clock{mainThread};
  TestStorage storage{clock};
  FakeFocusedApplication applications;
  PlainFileTags files;
  PlainMentions directory;
  ContextProcessor processor{{.applications = applications,
                              .settings = storage.settings,
                              .files = files,
                              .directory = directory,
                              .clock = clock,
                              .debugLog = storage.debugLog}};
};

}  // namespace vemo
