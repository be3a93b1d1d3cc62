#include "platform/posix/SignalCrashRecorder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstring>
#include <ctime>

namespace vemo {

namespace {

constexpr std::array fatalSignals{SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP, SIGSYS};
constexpr qsizetype signalStackSize = 64 * 1024;

/// As it stands in the file, in this machine's byte order.
struct Note {
  std::array<char, 8> mark;
  std::int32_t signal;
  std::int32_t code;  ///< si_code: what kind of fault it was
  std::int64_t time;  ///< seconds since 1970
  std::array<char, 32> build;
};
static_assert(sizeof(Note) == 56);

constexpr std::array<char, 8> noteMark{'V', 'E', 'M', 'O', 'C', 'R', 'S', '1'};

/// A crash loop before anybody asks leaves this many notes and no more.
constexpr qsizetype mostNotes = 64;

// What the handler needs, made before the first signal can come.
std::array<char, 32> theBuild{};
std::atomic<int> theDescriptor{-1};
std::atomic_flag isHandling;

bool hasRoom(int file) {
  struct stat status{};
  return fstat(file, &status) == 0 && status.st_size < mostNotes * off_t(sizeof(Note));
}

void leaveNote(int signal, siginfo_t* information, void*) {
  if (!isHandling.test_and_set() && hasRoom(theDescriptor)) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const Note note{.mark = noteMark,
                    .signal = signal,
                    .code = information->si_code,
                    .time = now.tv_sec,
                    .build = theBuild};
    [[maybe_unused]] const auto written = write(theDescriptor, &note, sizeof note);
  }
  // SA_RESETHAND has put the system's own handling back; it takes over when this returns.
  raise(signal);
}

void handleFatalSignals(void (*handler)(int, siginfo_t*, void*)) {
  struct sigaction action{};
  if (handler) {
    action.sa_sigaction = handler;
    action.sa_flags = SA_SIGINFO | SA_RESETHAND | SA_ONSTACK;
  } else {
    action.sa_handler = SIG_DFL;
  }
  for (const int signal : fatalSignals) sigaction(signal, &action, nullptr);
}

QString textOf(const std::array<char, 32>& build) {
  return QString::fromUtf8(build.data(), qsizetype(strnlen(build.data(), build.size())));
}

}  // namespace

CrashDiagnostics::Payload crashNotesIn(QByteArrayView bytes) {
  CrashDiagnostics::Payload notes;
  while (bytes.size() >= qsizetype(sizeof(Note))) {
    Note note{};
    std::memcpy(&note, bytes.data(), sizeof note);
    bytes = bytes.sliced(qsizetype(sizeof note));
    if (note.mark != noteMark) continue;
    notes.push_back({.applicationBuildVersion = textOf(note.build),
                     .exceptionType = {},
                     .exceptionCode = note.code,
                     .signal = note.signal,
                     .terminationReason = {}});
  }
  return notes;
}

SignalCrashRecorder::SignalCrashRecorder(const QString& file, const QByteArray& build)
    : m_signalStack(signalStackSize, '\0') {
  constexpr int flags = O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW;
  m_descriptor = open(QFile::encodeName(file).constData(), flags, S_IRUSR | S_IWUSR);
  if (m_descriptor < 0) return;

  theBuild = {};
  std::copy_n(build.begin(), std::min<qsizetype>(build.size(), qsizetype(theBuild.size()) - 1),
              theBuild.begin());
  theDescriptor = m_descriptor;
  // A stack that has run over has no room for a handler.
  const stack_t stack{
      .ss_sp = m_signalStack.data(), .ss_flags = 0, .ss_size = std::size_t(signalStackSize)};
  sigaltstack(&stack, nullptr);
  handleFatalSignals(leaveNote);
}

SignalCrashRecorder::~SignalCrashRecorder() {
  if (m_descriptor < 0) return;
  handleFatalSignals(nullptr);
  const stack_t none{.ss_sp = nullptr, .ss_flags = SS_DISABLE, .ss_size = 0};
  sigaltstack(&none, nullptr);
  theDescriptor = -1;
  close(m_descriptor);
}

void SignalCrashRecorder::subscribe(std::function<void(Payload)> receive) {
  if (auto notes = takeNotes(); !notes.empty()) receive(std::move(notes));
}

CrashDiagnostics::Payload SignalCrashRecorder::takeNotes() {
  if (m_descriptor < 0) return {};
  QByteArray bytes(mostNotes * qsizetype(sizeof(Note)), '\0');
  const auto size = pread(m_descriptor, bytes.data(), std::size_t(bytes.size()), 0);
  [[maybe_unused]] const int emptied = ftruncate(m_descriptor, 0);
  return crashNotesIn(QByteArrayView(bytes).first(std::max<qsizetype>(size, 0)));
}

}  // namespace vemo
