// The program: the resident one, or the command line that reaches it.

#include <fcntl.h>
#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <QGuiApplication>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "app/Application.h"
#include "app/CommandLine.h"
#include "app/Desktop.h"
#include "app/TerminationSignals.h"
#include "app/Updating.h"
#include "platform/xdg/BusRemoteControl.h"
#include "storage/StandardPlaces.h"

namespace {

using namespace vemo;
using namespace Qt::Literals::StringLiterals;

constexpr int failure = 1;
constexpr int usageError = 2;

int complain(const QString& message, int status) {
  std::fprintf(stderr, "%s\n", qUtf8Printable(message));
  return status;
}

/// A core file would hold what the user said. A limit of one byte means none at all, also where
/// cores are piped to a collector, which a limit of zero doesn't.
void forbidCoreFiles() {
  rlimit cores{};
  getrlimit(RLIMIT_CORE, &cores);
  cores.rlim_cur = std::min<rlim_t>(1, cores.rlim_max);
  setrlimit(RLIMIT_CORE, &cores);
}

/// Recordings get pages of their own, which go back to the system as soon as they are done with.
void returnLargeMemory() {
  constexpr int large = 128 * 1024;
  mallopt(M_MMAP_THRESHOLD, large);
}

/// A standard descriptor that the caller left closed would be taken by the next file opened, and
/// what is printed would go there.
void openStandardDescriptors() {
  int descriptor = open("/dev/null", O_RDWR | O_CLOEXEC);
  while (descriptor >= 0 && descriptor <= STDERR_FILENO) descriptor = dup(descriptor);
  if (descriptor > STDERR_FILENO) close(descriptor);
}

/// Qt's own end waits for its threads, and one may be asking a name server that doesn't answer.
void limitTheWaitForThreads() {
  constexpr unsigned seconds = 1;
  std::signal(SIGALRM, [](int) { _exit(EXIT_SUCCESS); });
  alarm(seconds);
}

/// The start of a version on trial, which counts until the program ends as it should.
std::optional<SelfContainedCopy> ownCopy;

void takeBackStart() {
  if (ownCopy) ownCopy->takeBackStart();
}

int runResident(int argc, char** argv, const RunCommand& command) {
  forbidCoreFiles();
  returnLargeMemory();
  ownCopy = beginStartOfOwnCopy(argv);
  TerminationSignals::block();
  auto configuration = DeploymentConfiguration::load(places::deploymentConfigurationCandidates());
  if (!configuration) return complain(configuration.error(), usageError);
  if (qEnvironmentVariableIsEmpty("DISPLAY")) {
    takeBackStart();
    return complain(u"Vemo needs an X display; DISPLAY isn't set."_s, failure);
  }
  qputenv("QT_QPA_PLATFORM", "xcb");

  QGuiApplication qtApplication(argc, argv);
  QGuiApplication::setQuitOnLastWindowClosed(false);
  QGuiApplication::setDesktopFileName(u"brelmox.Vemo"_s);
  auto application = Application::create(*std::move(configuration), ownCopy, command.address);
  if (!application) {
    if (application.error().isOfTheSurroundings) takeBackStart();
    return complain(application.error().text, failure);
  }
  // Also where Qt ends the program because its display has gone.
  std::atexit(takeBackStart);
  if (!*application) return EXIT_SUCCESS;
  const int status = QGuiApplication::exec();
  takeBackStart();
  application->reset();
  becomeUpdatedProgram();
  limitTheWaitForThreads();
  return status;
}

int runCheck(int argc, char** argv, const CheckCommand& command) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QGuiApplication qtApplication(argc, argv);
  QuickScenes scenes(windowPlaces());
  if (!scenes.load()) return failure;
  std::fputs(qUtf8Printable(command.text), stdout);
  return EXIT_SUCCESS;
}

/// Ends the program at once: Qt's thread for the bus would complain of types that the usual end has
/// taken from under it.
[[noreturn]] void runRemote(int argc, char** argv, const RemoteCommand& command) {
  const QCoreApplication qtApplication(argc, argv);
  const auto answer = sendCommand(command.name, command.arguments);
  if (answer && !answer->isEmpty()) std::printf("%s\n", qUtf8Printable(*answer));
  const int status = answer ? EXIT_SUCCESS : complain(answer.error(), failure);
  std::fflush(stdout);
  std::_Exit(status);
}

}  // namespace

int main(int argc, char** argv) {
  openStandardDescriptors();
  QStringList arguments;
  for (int i = 1; i < argc; ++i) arguments.append(QString::fromLocal8Bit(argv[i]));
  const auto commandLine = parseCommandLine(arguments);
  if (!commandLine) return complain(commandLine.error(), usageError);
  if (const auto* print = std::get_if<PrintCommand>(&*commandLine)) {
    std::fputs(qUtf8Printable(print->text), stdout);
    return 0;
  }
  if (const auto* remote = std::get_if<RemoteCommand>(&*commandLine))
    runRemote(argc, argv, *remote);
  if (const auto* check = std::get_if<CheckCommand>(&*commandLine))
    return runCheck(argc, argv, *check);
  return runResident(argc, argv, std::get<RunCommand>(*commandLine));
}
