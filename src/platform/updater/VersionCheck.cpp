#include "platform/updater/VersionCheck.h"

#include <QDeadlineTimer>
#include <QProcess>
#include <csignal>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int pollInterval = 100;  ///< milliseconds

std::unexpected<VersionCheckFailure> failure(const QString& why, bool isFinal) {
  return std::unexpected(VersionCheckFailure{why, isFinal});
}

}  // namespace

std::expected<void, VersionCheckFailure> checkVersion(const QString& folder, const QString& version,
                                                      quint64 build, const std::stop_token& stop,
                                                      std::chrono::milliseconds limit) {
  QProcess program;
  program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  program.start(folder + u"/bin/vemo"_s, {u"--check"_s}, QIODevice::ReadOnly);
  const QDeadlineTimer deadline(limit);
  while (!program.waitForFinished(pollInterval) && program.state() != QProcess::NotRunning) {
    if (!stop.stop_requested() && !deadline.hasExpired()) continue;
    program.kill();
    program.waitForFinished(-1);
    return failure(u"the new version doesn't answer"_s, false);
  }
  if (program.exitStatus() == QProcess::CrashExit && program.exitCode() == SIGKILL)
    return failure(u"the new version was ended while it checked itself"_s, false);
  if (program.error() == QProcess::FailedToStart || program.exitStatus() != QProcess::NormalExit ||
      program.exitCode() != 0)
    return failure(u"the new version doesn't start here"_s, true);
  const QString told = QString::fromUtf8(program.readAllStandardOutput().trimmed());
  if (told != u"Vemo %1 (%2)"_s.arg(version, QString::number(build)))
    return failure(u"the new version calls itself another one"_s, true);
  return {};
}

}  // namespace vemo
