// Any notes are read without harm, and no markup but the few tags of rows comes out of them.
#include <QRegularExpression>

#include "Fuzzing.h"
#include "updates/ReleaseNotesView.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vemo;
  static const QRegularExpression allowed(
      QStringLiteral("</?(span|i|b|code|s)>|<span style=\"white-space: pre-wrap\">|"
                     "<a href=\"https?://[^\"<>]*\">|</a>"),
      QRegularExpression::CaseInsensitiveOption);
  const QString markdown = QString::fromUtf8(bytesOf(data, size));
  for (const auto& block : ReleaseNotesView(markdown).rows()) {
    QString markup = inlineMarkup(block.text);
    markup.remove(allowed);
    require(!markup.contains(QChar(u'<')) && !markup.contains(QChar(u'>')));
    for (const auto& link : inlineLinks(block.text))
      require(link.address.startsWith(QStringLiteral("http"), Qt::CaseInsensitive));
  }
  return 0;
}
