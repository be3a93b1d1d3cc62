// vemo-shape: shows what Vemo's rules, and the user's own lists, make of a transcript.
//
// Exit status: 0 the text is on standard output; 1 it couldn't be written; 2 something that was
// given can't be used. In both cases a line on standard error says what.
#include <fcntl.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QFile>
#include <QStringDecoder>
#include <cstdio>
#include <optional>

#include "JsonString.h"
#include "ShapeOptions.h"
#include "TextShaper.h"

namespace {

using namespace Qt::Literals::StringLiterals;

void complain(const QString& reason) {
  std::fprintf(stderr, "vemo-shape: %s\n", qUtf8Printable(reason));
}

int refuse(const QString& reason) {
  complain(reason);
  return 2;
}

int cantWrite(const QString& reason) {
  complain(u"standard output can't be written: "_s + reason);
  return 1;
}

/// Standard output for the text alone: what parts of the program print elsewhere goes nowhere.
std::optional<int> takeStandardOutput() {
  const int output = ::dup(STDOUT_FILENO);
  const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (output < 0 || nowhere < 0 || ::dup2(nowhere, STDOUT_FILENO) < 0) return std::nullopt;
  ::close(nowhere);
  return output;
}

std::optional<QString> decoded(const QByteArray& bytes) {
  QStringDecoder decoder(QStringDecoder::Utf8,
                         QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
  const QString text = decoder.decode(bytes);
  return decoder.hasError() ? std::nullopt : std::optional(text);
}

bool writeAll(QFile& output, const QByteArray& bytes) {
  return output.write(bytes) == bytes.size() && output.flush();
}

int shapeWhole(vemo::TextShaper& shaper, QFile& input, QFile& output) {
  const auto text = decoded(input.readAll());
  if (!text) return refuse(u"standard input isn't UTF-8"_s);
  return writeAll(output, shaper.shape(*text).toUtf8()) ? 0 : cantWrite(output.errorString());
}

int shapeLines(vemo::TextShaper& shaper, QFile& input, QFile& output) {
  for (int number = 1; true; ++number) {
    QByteArray line = input.readLine();
    if (line.isEmpty()) return 0;
    const bool hasLineEnd = line.endsWith('\n');
    if (hasLineEnd) line.chop(1);
    const auto text = vemo::parseJsonString(line);
    if (!text) return refuse(u"line %1 of standard input isn't a JSON string"_s.arg(number));
    const QByteArray shaped = vemo::jsonString(shaper.shape(*text));
    if (!writeAll(output, hasLineEnd ? shaped + '\n' : shaped))
      return cantWrite(output.errorString());
  }
}

}  // namespace

int main(int argc, char* argv[]) {
  const QCoreApplication application(argc, argv);
  const auto options = vemo::parseShapeOptions(QCoreApplication::arguments().sliced(1));
  if (!options) return refuse(options.error());
  if (options->isHelpWanted) {
    std::fputs(vemo::shapeUsage, stdout);
    return 0;
  }

  const auto outputDescriptor = takeStandardOutput();
  QFile input;
  QFile output;
  if (!outputDescriptor ||
      !output.open(*outputDescriptor, QIODevice::WriteOnly, QFile::AutoCloseHandle))
    return cantWrite(output.errorString());
  if (!input.open(STDIN_FILENO, QIODevice::ReadOnly)) return refuse(u"standard input is closed"_s);
  const auto shaper = vemo::TextShaper::create(*options);
  if (!shaper) return refuse(u"there is no place for temporary files"_s);
  return options->isJsonLines ? shapeLines(*shaper, input, output)
                              : shapeWhole(*shaper, input, output);
}
