// What reading a project of 100,000 files costs, against find and fd on the same tree.
//
//   workspace_scan [FOLDER]
//
// Makes the tree below FOLDER (/dev/shm), which must have no component that scans ignore, and
// removes it at the end. All take turns on a warm cache.
#include <sys/resource.h>

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <cstdio>
#include <cstdlib>

#include "Stopwatch.h"
#include "integrations/WorkspaceScanner.h"

using namespace vemo;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int rounds = 25;
constexpr int folderCount = 5000;
constexpr int filesPerFolder = 20;

void makeTree(const QString& root) {
  static const QString extensions[] = {u"ts"_s, u"swift"_s, u"py"_s, u"md"_s, u"json"_s};
  for (int i = 0; i < folderCount; ++i) {
    const QString folder =
        u"%1/package%2/source%3/module%4"_s.arg(root).arg(i % 20).arg(i % 7).arg(i);
    QDir().mkpath(folder);
    for (int j = 0; j < filesPerFolder; ++j) {
      QFile file(u"%1/ViewController%2_%3.%4"_s.arg(folder).arg(i).arg(j).arg(extensions[j % 5]));
      if (!file.open(QIODevice::WriteOnly)) std::abort();
    }
  }
}

/// Processor time so far, of this program or of the ones that it has run.
double cpuMilliseconds(int who) {
  rusage usage{};
  ::getrusage(who, &usage);
  const auto milliseconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
  };
  return milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime);
}

void run(const QByteArray& command) {
  if (const int status = std::system(command.constData()); status != 0) std::abort();
}

}  // namespace

int main(int argumentCount, char* arguments[]) {
  const QString base = argumentCount > 1 ? QString::fromLocal8Bit(arguments[1]) : u"/dev/shm"_s;
  const QTemporaryDir tree(base + u"/vemo-bench-XXXXXX"_s);
  if (!tree.isValid()) return 1;
  makeTree(tree.path());
  const QByteArray root = QFile::encodeName(tree.path());
  const bool hasFd = !QStandardPaths::findExecutable(u"fdfind"_s).isEmpty();

  WorkspaceFiles files;
  Rounds scan;
  Rounds scanCpu;
  Rounds findCpu;
  Rounds find;
  Rounds fd;
  for (int round = 0; round < rounds; ++round) {
    const double ownBefore = cpuMilliseconds(RUSAGE_SELF);
    scan.add(millisecondsFor([&] { files = scanWorkspace(tree.path(), {}); }));
    scanCpu.add(cpuMilliseconds(RUSAGE_SELF) - ownBefore);
    const double othersBefore = cpuMilliseconds(RUSAGE_CHILDREN);
    find.add(millisecondsFor([&] { run("find '" + root + "' -type f > /dev/null"); }));
    findCpu.add(cpuMilliseconds(RUSAGE_CHILDREN) - othersBefore);
    if (hasFd) fd.add(millisecondsFor([&] { run("fdfind -t f . '" + root + "' > /dev/null"); }));
  }

  std::printf("files found            %zu\n", files.size());
  std::printf("scan                   best %.1f ms, median %.1f ms\n", scan.best(), scan.median());
  std::printf("find ROOT -type f      best %.1f ms, median %.1f ms\n", find.best(), find.median());
  std::printf("scan / find            best %.2f, median %.2f\n", scan.best() / find.best(),
              scan.median() / find.median());
  std::printf("processor time         scan %.1f ms, find %.1f ms, ratio %.2f\n", scanCpu.median(),
              findCpu.median(), scanCpu.median() / findCpu.median());
  if (hasFd) {
    std::printf("fdfind -t f            best %.1f ms, median %.1f ms\n", fd.best(), fd.median());
    std::printf("scan / fd              best %.2f, median %.2f\n", scan.best() / fd.best(),
                scan.median() / fd.median());
  }
  std::printf("memory per file        %.1f bytes\n",
              static_cast<double>(files.memoryUsed()) / static_cast<double>(files.size()));
}
