// What finding a spoken file name costs, against a plain walk over the records.
//
// The names are made of common words, so that parts of them repeat as they do in projects. The walk
// lower-cases every name at each comparison; of a million files it would need minutes, so the ratio
// is taken on a hundred thousand.
#include <QStringList>
#include <cstdio>
#include <random>

#include "PlainLookups.h"
#include "Stopwatch.h"
#include "integrations/WorkspaceFiles.h"

using namespace vemo;
using namespace Qt::Literals::StringLiterals;

namespace {

struct Query {
  const char* what;
  QString name;
  QString extension;
};

WorkspaceFiles makeFiles(int count) {
  static const char* const words[] = {"User",  "App",   "State", "Login", "View",   "Model",
                                      "Index", "List",  "Item",  "Auth",  "Config", "Manager",
                                      "Token", "Store", "Event", "Queue", "Main",   "Window"};
  static const char* const extensions[] = {".ts", ".swift", ".py", ".json", ".md", ".cpp", ".h"};
  std::mt19937 random(1);
  WorkspaceFiles files(u"/project"_s);
  std::uint32_t folder = 0;
  for (int i = 0; i < count; ++i) {
    if (i % 20 == 0) folder = files.addFolder("/project/module" + std::to_string(i));
    std::string name;
    for (int part = 0; part < 3; ++part) name += words[random() % std::size(words)];
    files.addFile(folder, name + std::to_string(i) + extensions[random() % std::size(extensions)]);
  }
  files.addFile(folder, "Makefile.only");
  files.finish();
  return files;
}

void measure(int count, bool againstPlainWalk) {
  Rounds making;
  WorkspaceFiles files;
  making.add(millisecondsFor([&] { files = makeFiles(count); }));
  const QString last = files.fileName(files.size() - 2);
  const Query queries[] = {
      {"exact, the last file", last.section(u'.', 0, 0), last.section(u'.', 1)},
      {"a part, at the beginning", u"user"_s, u"ts"_s},
      {"a part, only in the last file", QString::number(count - 1), last.section(u'.', 1)},
      {"a part, without an extension", QString::number(count - 1), u""_s},
      {"nothing, a common part otherwise", u"user"_s, u"only"_s},
      {"nothing, of common parts", u"user user view config user"_s, u"ts"_s},
      {"nothing, parts of other extension", last.section(u'.', 0, 0), u"zzz"_s},
      {"nothing, three rare letters", u"zqx"_s, u"ts"_s},
      {"nothing, two rare letters", u"zq"_s, u"ts"_s},
      {"nothing, one rare letter", u"z"_s, u"ts"_s},
      {"nothing, long", u"some quite different thing that nobody has"_s, u"py"_s},
  };
  std::vector<WorkspaceFile> records;
  if (againstPlainWalk)
    for (std::size_t place = 0; place < files.size(); ++place) records.push_back(files[place]);

  std::printf("\n%d files, %.1f bytes each, made in %.0f ms\n", count,
              static_cast<double>(files.memoryUsed()) / count, making.best());
  for (const auto& [what, name, extension] : queries) {
    Rounds lookup;
    std::optional<WorkspaceFiles::Place> found;
    for (int round = 0; round < 200; ++round)
      lookup.add(processorMillisecondsFor([&] { found = files.find(name, extension); }));
    std::printf("  %-36s median %.4f ms, worst %.4f ms", what, lookup.median(), lookup.worst());
    if (againstPlainWalk) {
      std::optional<std::size_t> expected;
      const double plain =
          millisecondsFor([&] { expected = plain::findFile(records, name, extension); });
      std::printf(", plain %.1f ms, %.0f times faster%s", plain, plain / lookup.median(),
                  std::optional<std::size_t>(found) == expected ? "" : ", ANOTHER FILE");
    }
    std::printf("\n");
  }
}

}  // namespace

int main() {
  measure(100'000, true);
  measure(1'000'000, false);
}
