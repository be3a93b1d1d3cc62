// Any list of names and any spoken name: the index finds the file that a plain walk finds.
//
// The input's first line is what is said, its second the extension; the others are file names.
#include <QByteArrayList>

#include "Fuzzing.h"
#include "PlainLookups.h"
#include "integrations/WorkspaceFiles.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vemo;
  using namespace Qt::Literals::StringLiterals;
  QByteArrayList lines = bytesOf(data, size).split('\n');
  if (lines.size() < 3) return 0;
  const QString name = QString::fromUtf8(lines.takeFirst());
  const QString extension = QString::fromUtf8(lines.takeFirst());
  WorkspaceFiles files(u"/project"_s);
  const auto folder = files.addFolder("/project");
  for (const QByteArray& line : lines) {
    if (!line.isEmpty() && line.size() <= 255 && !line.contains('\0') && line.isValidUtf8())
      files.addFile(folder, line.toStdString());
  }
  files.finish();
  std::vector<WorkspaceFile> records;
  for (std::size_t place = 0; place < files.size(); ++place) records.push_back(files[place]);
  const auto found = files.find(name, extension);
  const auto expected = plain::findFile(records, name, extension);
  require(found.has_value() == expected.has_value());
  require(!found || *found == *expected);
  return 0;
}
