// A context processor with all that a dictation has around it, in real time, for benchmarks.
#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QTemporaryDir>
#include <optional>
#include <vector>

#include "Stopwatch.h"
#include "base/Json.h"
#include "fakes/FakeFocusedApplication.h"
#include "integrations/FolderFiles.h"
#include "integrations/SlackDirectory.h"
#include "plain/PlainLookups.h"
#include "platform/qt/QtClock.h"
#include "platform/qt/QtMainThread.h"
#include "shaping/ContextProcessor.h"
#include "storage/DebugLog.h"
#include "storage/Settings.h"
#include "storage/SettingsKeys.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

/// The shortest of many rounds, in the processor's time: what a busy machine adds doesn't count.
template <typename Work>
double bestOf(int rounds, Work&& work) {
  Rounds times;
  for (int round = 0; round < rounds; ++round) times.add(processorMillisecondsFor(work));
  return times.best();
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

inline WorkspaceFiles filesNamed(const QStringList& names) {
  WorkspaceFiles files(u"/project"_s);
  const auto folder = files.addFolder("/project");
  for (const QString& name : names) files.addFile(folder, name.toStdString());
  files.finish();
  return files;
}

class BenchedShaping {
 public:
  BenchedShaping(const QStringList& fileNames, SlackUsers users, SlackChannels channels)
      : files(filesNamed(fileNames)), directory(std::move(users), std::move(channels)) {
    applications.setFrontmost(
        RunningApplication{.identifier = u"com.example.code"_s, .name = u"Code"_s});
  }

  QtMainThread mainThread;
  QtClock clock{mainThread};
  QTemporaryDir folder;
  DebugLog debugLog{clock, folder.path()};
  Settings settings{folder.filePath(u"settings.json"_s), debugLog};
  FakeFocusedApplication applications;
  FolderFiles files;
  SlackDirectory directory;
  ContextProcessor processor{{.applications = applications,
                              .settings = settings,
                              .files = files,
                              .directory = directory,
                              .clock = clock,
                              .debugLog = debugLog}};
};

}  // namespace vemo
