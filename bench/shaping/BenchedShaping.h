// A context processor with all that a dictation has around it, in real time, for benchmarks.
#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <optional>
#include <vector>

#include "base/Json.h"
#include "fakes/FakeFocusedApplication.h"
#include "integrations/FileTagLookup.h"
#include "integrations/SlackDirectory.h"
#include "integrations/WorkspaceFiles.h"
#include "plain/PlainLookups.h"
#include "platform/qt/QtClock.h"
#include "platform/qt/QtMainThread.h"
#include "shaping/ContextProcessor.h"
#include "storage/DebugLog.h"
#include "storage/Settings.h"
#include "storage/SettingsKeys.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

template <typename Work>
double millisecondsFor(Work&& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
      .count();
}

/// The shortest of many rounds: what a busy machine adds doesn't count.
template <typename Work>
double bestOf(int rounds, Work&& work) {
  double best = millisecondsFor(work);
  for (int round = 1; round < rounds; ++round) best = std::min(best, millisecondsFor(work));
  return best;
}

inline QByteArray entryList(qsizetype count, const QString& heardKey, const QString& writtenKey,
                            auto&& heard, auto&& written) {
  QJsonArray array;
  for (qsizetype i = 0; i < count; ++i)
    array.append(QJsonObject{{u"id"_s, u"7e3b6c1a-9a55-4e0b-8f0b-%1"_s.arg(i, 12, 10, QChar(u'0'))},
                             {heardKey, heard(i)},
                             {writtenKey, written(i)}});
  return compactJson(array);
}

class IndexedFiles final : public FileTagLookup {
 public:
  explicit IndexedFiles(const QStringList& names) : m_files(u"/project"_s) {
    const auto folder = m_files.addFolder("/project");
    for (const QString& name : names) m_files.addFile(folder, name.toStdString());
    m_files.finish();
  }

  void refreshActiveWorkspace() override {}
  std::optional<QString> resolveFileTag(const QString& spokenName,
                                        const QString& spokenExtension) const override {
    const auto place = m_files.find(spokenName, spokenExtension);
    return place ? std::optional(u'@' + m_files.fileName(*place)) : std::nullopt;
  }

 private:
  WorkspaceFiles m_files;
};

class BenchedShaping {
 public:
  BenchedShaping(const QStringList& fileNames, SlackUsers users, SlackChannels channels)
      : files(fileNames), directory(std::move(users), std::move(channels)) {
    applications.setFrontmost(
        RunningApplication{.identifier = u"com.example.code"_s, .name = u"Code"_s});
  }

  QtMainThread mainThread;
  QtClock clock{mainThread};
  QTemporaryDir folder;
  DebugLog debugLog{clock, folder.path()};
  Settings settings{folder.filePath(u"settings.json"_s), debugLog};
  FakeFocusedApplication applications;
  IndexedFiles files;
  SlackDirectory directory;
  ContextProcessor processor{{.applications = applications,
                              .settings = settings,
                              .files = files,
                              .directory = directory,
                              .clock = clock,
                              .debugLog = debugLog}};
};

}  // namespace vemo
