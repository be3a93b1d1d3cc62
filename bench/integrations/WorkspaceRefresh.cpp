// What the refresh of each dictation costs when nothing has changed: of the main thread, and until
// the last step is done.
//
// Automatic mode reads three storage folders with 500 entries together.
#include <cstdio>

#include "Stopwatch.h"
#include "TestTree.h"
#include "base/SerialQueue.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeFocusedApplication.h"
#include "fakes/FakeMainThread.h"
#include "fakes/TestStorage.h"
#include "integrations/WorkspaceIndexer.h"
#include "storage/SettingsKeys.h"

using namespace vemo;

namespace {

constexpr int rounds = 500;
constexpr int entryCount = 500;

class Bench {
 public:
  Bench() {
    const char* const editors[] = {"Code", "Cursor", "Antigravity"};
    for (int i = 0; i < entryCount; ++i) {
      const QByteArray project = "projects/p" + QByteArray::number(i);
      m_tree.write(project + "/a.ts");
      m_tree.write("config/"_ba + editors[i % 3] + "/User/workspaceStorage/" +
                       QByteArray::number(i) + "/workspace.json",
                   "{\"folder\":\"file://" + m_tree.nativePath(project) + "\"}");
    }
  }

  void measure(const char* what) {
    WorkspaceIndexer indexer({.mainThread = m_mainThread,
                              .diskReader = m_diskReader,
                              .settings = storage.settings,
                              .focusedApplication = m_applications,
                              .configFolder = m_tree.path(u"config"_s)});
    settle();
    if (indexer.indexedFiles().isEmpty()) std::abort();
    Rounds onMainThread;
    Rounds untilDone;
    for (int round = 0; round < rounds; ++round) {
      double main = 0;
      untilDone.add(millisecondsFor([&] {
        main = millisecondsFor([&] {
          indexer.refreshActiveWorkspace();
          m_mainThread.drain();
        });
        m_diskReader.waitUntilIdle();
        main += millisecondsFor([&] { m_mainThread.drain(); });
      }));
      onMainThread.add(main);
    }
    std::printf("%-10s main thread median %.4f ms, worst %.4f ms; until done median %.3f ms\n",
                what, onMainThread.median(), onMainThread.worst(), untilDone.median());
  }

  QString project() const { return m_tree.path(u"projects/p1"_s); }

 private:
  void settle() {
    do {
      m_mainThread.drain();
      m_diskReader.waitUntilIdle();
    } while (!m_mainThread.isEmpty());
  }

  TestTree m_tree;
  FakeMainThread m_mainThread;
  FakeClock m_clock{m_mainThread};
  FakeFocusedApplication m_applications;

 public:
  TestStorage storage{m_clock};

 private:
  SerialQueue m_diskReader{"disk reader"};
};

}  // namespace

int main() {
  Bench bench;
  bench.measure("automatic");
  bench.storage.settings.set(keys::customWorkspacePath, bench.project());
  bench.measure("manual");
}
