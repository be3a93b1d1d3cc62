#include "app/Updating.h"

#include <unistd.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QFile>
#include <QFileInfo>
#include <QVariantMap>

#include "platform/updater/SelfUpdater.h"
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

std::optional<SelfContainedCopy> ownCopy() {
  return SelfContainedCopy::around(QCoreApplication::applicationFilePath());
}

void become(const QString& program) {
  const QByteArray path = QFile::encodeName(program);
  const char* arguments[] = {path.constData(), nullptr};
  ::execv(path.constData(), const_cast<char**>(arguments));
}

/// A note of the desktop's own; where nobody shows such notes, the menu still tells of the update.
void announce(const QString& title, const QString& text) {
  auto note = QDBusMessage::createMethodCall(u"org.freedesktop.Notifications"_s,
                                             u"/org/freedesktop/Notifications"_s,
                                             u"org.freedesktop.Notifications"_s, u"Notify"_s);
  note << u"Vemo"_s << 0U << u"brelmox.Vemo"_s << title << text.toHtmlEscaped() << QStringList()
       << QVariantMap() << -1;
  QDBusConnection::sessionBus().call(note, QDBus::NoBlock);
}

}  // namespace

MakeUpdater makeUpdaterOver(HttpSession& session, Foundation& foundation,
                            const DeploymentConfiguration& configuration,
                            std::function<void()> quit) {
  return [&session, &foundation, &configuration, quit](UpdaterDelegate& delegate,
                                                       UpdateUserDriverDelegate& userDriver) {
    auto copy = ownCopy();
    const auto relaunch = [quit, program = copy ? copy->program() : QString()] {
      QCoreApplication::instance()->setProperty(nextProgram, program);
      quit();
    };
    auto updater = std::make_unique<SelfUpdater>(
        SelfUpdater::With{.mainThread = foundation.mainThread,
                          .clock = foundation.clock,
                          .session = session,
                          .publicKey = configuration.updateFeedPublicKey.toUtf8(),
                          .system = foundation.information,
                          .copy = std::move(copy),
                          .memoryFile = memoryFile(),
                          .log = [&foundation](const QString& line) { foundation.debugLog(line); },
                          .announce = announce,
                          .relaunch = relaunch},
        delegate, userDriver);
    // The updater goes after the event loop has ended.
    QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit,
                     [updater = updater.get()] { updater->installOnQuit(); });
    return updater;
  };
}

std::optional<SelfContainedCopy> beginStartOfOwnCopy() {
  auto copy = ownCopy();
  if (copy && copy->beginStart() == SelfContainedCopy::Start::RolledBack) become(copy->program());
  return copy;
}

Task<> keepOwnCopyWhenStartedWell(std::optional<SelfContainedCopy> copy, Clock& clock,
                                  std::stop_token stop) {
  if (!copy) co_return;
  if (co_await clock.sleep(provenAfter, stop) == SleepEnd::Elapsed) copy->startedWell();
}

void becomeUpdatedProgram() {
  const QString program = QCoreApplication::instance()->property(nextProgram).toString();
  if (!program.isEmpty()) become(program);
}

}  // namespace vemo
