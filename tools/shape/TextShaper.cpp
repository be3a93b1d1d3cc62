#include "TextShaper.h"

#include <time.h>

#include <QTemporaryDir>
#include <stop_token>

#include "ShapeOptions.h"
#include "integrations/FolderFiles.h"
#include "integrations/SlackDirectory.h"
#include "integrations/WorkspaceScanner.h"
#include "platform/qt/QtClock.h"
#include "platform/qt/QtMainThread.h"
#include "ports/FocusedApplication.h"
#include "shaping/ContextProcessor.h"
#include "storage/DebugLog.h"
#include "storage/Settings.h"
#include "storage/SettingsKeys.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

/// Time that this program has had of the processor: what comes out is the same on a busy machine.
class ProcessorClock final : public QtClock {
 public:
  using QtClock::QtClock;

  MonotonicTime monotonicTime() const override {
    timespec used{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return MonotonicTime(std::chrono::seconds(used.tv_sec) +
                         std::chrono::nanoseconds(used.tv_nsec));
  }
};

/// An application in front that has never been there.
class NamedApplication final : public FocusedApplication {
 public:
  explicit NamedApplication(RunningApplication application)
      : m_application(std::move(application)) {}

  std::optional<RunningApplication> frontmost() const override { return m_application; }
  std::vector<RunningApplication> running() const override { return {m_application}; }

 private:
  RunningApplication m_application;
};

}  // namespace

struct TextShaper::Parts {
  explicit Parts(const ShapeOptions& options)
      : application({.identifier = options.bundleId, .name = options.appName}),
        files(options.workspace ? scanWorkspace(*options.workspace, std::stop_token())
                                : WorkspaceFiles()),
        directory(options.users, options.channels) {
    if (options.dictionary) settings.set(keys::customDictionaryEntries, *options.dictionary);
    if (options.snippets) settings.set(keys::customShortcutEntries, *options.snippets);
    for (const auto& key : {keys::integrationVSCode, keys::integrationSlack}) {
      const auto value = options.switches.find(QString::fromUtf16(key.name));
      if (value != options.switches.end()) settings.set(key, value->second);
    }
  }

  QtMainThread mainThread;
  ProcessorClock clock{mainThread};
  QTemporaryDir folder;  ///< the settings': for the user alone, and gone with the program
  DebugLog debugLog{clock, QString()};
  Settings settings{folder.filePath(u"settings.json"_s), debugLog};
  NamedApplication application;
  FolderFiles files;
  SlackDirectory directory;
  ContextProcessor processor{{.applications = application,
                              .settings = settings,
                              .files = files,
                              .directory = directory,
                              .clock = clock,
                              .debugLog = debugLog}};
};

TextShaper::TextShaper(std::unique_ptr<Parts> parts) : m_parts(std::move(parts)) {}
TextShaper::~TextShaper() = default;

std::unique_ptr<TextShaper> TextShaper::create(const ShapeOptions& options) {
  auto parts = std::make_unique<Parts>(options);
  if (!parts->folder.isValid()) return nullptr;
  return std::unique_ptr<TextShaper>(new TextShaper(std::move(parts)));
}

QString TextShaper::shape(const QString& text) {
  return m_parts->processor.process(text);
}

}  // namespace vemo
