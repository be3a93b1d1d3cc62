#include "app/Updating.h"

#include <unistd.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QStorageInfo>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>

#include "base/RunElsewhere.h"
#include "platform/updater/SelfUpdater.h"
#include "platform/xdg/DesktopNotes.h"
#include "storage/StandardPlaces.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto provenAfter = 30s;
constexpr auto nextProgram = "vemo.nextProgram";

QString memoryFile() {
  return QFileInfo(places::crashFile()).path() + u"/updates.json"_s;
}

qint64 freeSpace(const QString& folder) {
  return QStorageInfo(folder).bytesAvailable();
}

/// Returns where that can't be.
void become(const QString& program, char** arguments) {
  ::execv(QFile::encodeName(program).constData(), arguments);
  std::fprintf(stderr, "Vemo: %s doesn't start: %s\n", qUtf8Printable(program),
               std::strerror(errno));
}

QString labelOf(UpdateChoice choice) {
  return choice == UpdateChoice::Skip ? QCoreApplication::translate("Updates", "Skip This Version")
                                      : QCoreApplication::translate("Updates", "Remind Me Later");
}

/// Where nobody shows such notes, the menu still tells of an update that came while no window was
/// in front.
void announce(DesktopNotes& notes, const UpdateNote& note,
              const std::function<void(UpdateChoice)>& choose) {
  DesktopNotes::Note shown{note.title, note.text, {}, {}};
  for (const UpdateChoice choice : note.choices)
    shown.choices.push_back({labelOf(choice), [choose, choice] { choose(choice); }});
  if (!note.choices.empty()) shown.dismiss = [choose] { choose(UpdateChoice::Dismiss); };
  notes.show(std::move(shown));
}

}  // namespace

std::optional<SelfContainedCopy> beginStartOfOwnCopy(char** arguments) {
  auto copy = SelfContainedCopy::around(u"/proc/self/exe"_s);
  if (copy && copy->beginStart() == SelfContainedCopy::Start::RolledBack)
    become(copy->program(), arguments);
  return copy;
}

QString programToStart(const Foundation& foundation) {
  return foundation.copy ? foundation.copy->program() : QCoreApplication::applicationFilePath();
}

MakeUpdater makeUpdaterOver(HttpSession& session, Foundation& foundation,
                            const DeploymentConfiguration& configuration,
                            std::function<void()> quit) {
  return [&session, &foundation, &configuration, quit](UpdaterDelegate& delegate,
                                                       UpdateUserDriverDelegate& userDriver) {
    const auto relaunch = [quit, program = programToStart(foundation)] {
      QCoreApplication::instance()->setProperty(nextProgram, program);
      quit();
    };
    auto updater = std::make_unique<SelfUpdater>(
        SelfUpdater::With{.mainThread = foundation.mainThread,
                          .clock = foundation.clock,
                          .session = session,
                          .publicKey = configuration.updateFeedPublicKey.toUtf8(),
                          .system = foundation.information,
                          .copy = foundation.copy,
                          .memoryFile = memoryFile(),
                          .freeSpace = freeSpace,
                          .log = [&foundation](const QString& line) { foundation.debugLog(line); },
                          .announce = [notes = std::make_shared<DesktopNotes>()](
                                          const auto& note,
                                          const auto& choose) { announce(*notes, note, choose); },
                          .isInFront = [] { return QGuiApplication::focusWindow() != nullptr; },
                          .relaunch = relaunch},
        delegate, userDriver);
    // The updater goes after the event loop has ended.
    QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit,
                     [updater = updater.get()] { updater->installOnQuit(); });
    return updater;
  };
}

Task<> keepOwnCopyWhenStartedWell(Foundation& foundation, std::stop_token stop) {
  if (!foundation.copy) co_return;
  if (co_await foundation.clock.sleep(provenAfter, stop) != SleepEnd::Elapsed) co_return;
  SerialQueue queue("vemo.versions");
  co_await runElsewhere(queue, foundation.mainThread,
                        [&copy = *foundation.copy] { copy.startedWell(); });
}

void becomeUpdatedProgram() {
  const QString program = QCoreApplication::instance()->property(nextProgram).toString();
  if (program.isEmpty()) return;
  QByteArray name = QFile::encodeName(program);
  char* arguments[] = {name.data(), nullptr};
  become(program, arguments);
}

}  // namespace vemo
