// Any `workspace.json` reads without harm, and a folder that it names can be asked for on disk: it
// is whole text without a NUL.
#include "Fuzzing.h"
#include "integrations/EditorProjects.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const QByteArray bytes = vemo::bytesOf(data, size);
  for (const QByteArray& json : {bytes, "{\"folder\":\"file:///" + bytes + "\"}"}) {
    const auto folder = vemo::projectFolderIn(json);
    if (!folder) continue;
    vemo::require(folder->isValidUtf16());
    vemo::require(!folder->contains(QChar(u'\0')));
    vemo::require(folder->size() <= 1 || !folder->endsWith(u'/'));
  }
  return 0;
}
