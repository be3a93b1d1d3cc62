#include "updates/ReleaseNotesView.h"

#include <md4c.h>

#include <QHash>
#include <QUrl>
#include <QXmlStreamReader>
#include <optional>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

using Block = ReleaseNotesView::Block;

bool isNewline(QChar character) {
  const char16_t code = character.unicode();
  return (code >= 0x0A && code <= 0x0D) || code == 0x85 || code == 0x2028 || code == 0x2029;
}

bool isBlank(QChar character) {
  return character == u'\t' || character.category() == QChar::Separator_Space;
}

QStringView trimmed(QStringView text) {
  while (!text.isEmpty() && isBlank(text.front())) text = text.sliced(1);
  while (!text.isEmpty() && isBlank(text.back())) text.chop(1);
  return text;
}

Block blockOf(QStringView line) {
  if (line.startsWith(u'#')) {
    while (line.startsWith(u'#')) line = line.sliced(1);
    return {Block::Kind::Heading, trimmed(line).toString()};
  }
  if (line.startsWith(u"- ") || line.startsWith(u"* "))
    return {Block::Kind::Bullet, line.sliced(2).toString()};
  return {Block::Kind::Paragraph, line.toString()};
}

/// Stands before the text, so that none of it is read as a list, a heading or another block, and is
/// taken off again. As a punctuation mark it lets every marker after it open.
constexpr char guard = '.';

struct Markup {
  QByteArray html;
  bool isGuardTaken = false;
  std::vector<bool> linkIsWritten;
  std::vector<InlineLink> links;
  QHash<QString, int> linksTo;  ///< how many there are to a page

  bool isInLink() const { return !linkIsWritten.empty() && linkIsWritten.back(); }
};

bool isPage(const QByteArray& address) {
  const QUrl url = QUrl::fromEncoded(address, QUrl::StrictMode);
  return url.isValid() && !url.host().isEmpty() &&
         (url.scheme() == u"https" || url.scheme() == u"http");
}

/// Others for each number, and none for zero.
QString blanksOf(int number) {
  QString blanks;
  for (; number > 0; number /= 2) blanks += number % 2 ? u'\t' : u' ';
  return blanks;
}

void openLink(Markup& markup, const MD_ATTRIBUTE& target) {
  const QByteArray page(target.text, target.size);
  markup.linkIsWritten.push_back(isPage(page));
  if (!markup.isInLink()) return;
  QString address = QString::fromUtf8(page);
  address += blanksOf(markup.linksTo.value(address));
  markup.links.push_back({.words = {}, .address = address});
  markup.html += "<a href=\"" + address.toHtmlEscaped().toUtf8() + "\">";
}

void closeLink(Markup& markup) {
  if (markup.isInLink()) {
    markup.html += "</a>";
    // One without words can be neither seen nor read out.
    if (markup.links.back().words.trimmed().isEmpty()) {
      markup.links.pop_back();
    } else {
      ++markup.linksTo[markup.links.back().address.trimmed()];
    }
  }
  markup.linkIsWritten.pop_back();
}

/// An entity that XML doesn't know stays as it is written.
QString wordsOf(MD_TEXTTYPE type, QByteArrayView bytes) {
  if (type == MD_TEXT_NULLCHAR) return QChar(QChar::ReplacementCharacter);
  const QString text = QString::fromUtf8(bytes);
  if (type != MD_TEXT_ENTITY) return text;
  QXmlStreamReader reader(u"<words>"_s + text + u"</words>"_s);
  reader.readNextStartElement();
  const QString words = reader.readElementText();
  return reader.hasError() ? text : words;
}

const char* tagOf(MD_SPANTYPE type) {
  switch (type) {
    case MD_SPAN_EM:
      return "i";
    case MD_SPAN_STRONG:
      return "b";
    case MD_SPAN_CODE:
      return "code";
    case MD_SPAN_DEL:
      return "s";
    default:
      return nullptr;
  }
}

int enterSpan(MD_SPANTYPE type, void* detail, void* user) {
  auto& markup = *static_cast<Markup*>(user);
  if (type == MD_SPAN_A) openLink(markup, static_cast<MD_SPAN_A_DETAIL*>(detail)->href);
  if (const char* tag = tagOf(type)) markup.html.append('<').append(tag).append('>');
  return 0;
}

int leaveSpan(MD_SPANTYPE type, void*, void* user) {
  auto& markup = *static_cast<Markup*>(user);
  if (type == MD_SPAN_A) closeLink(markup);
  if (const char* tag = tagOf(type)) markup.html.append("</").append(tag).append('>');
  return 0;
}

int addText(MD_TEXTTYPE type, const MD_CHAR* text, MD_SIZE size, void* user) {
  auto& markup = *static_cast<Markup*>(user);
  QByteArrayView bytes(text, size);
  if (!markup.isGuardTaken && bytes.startsWith(guard)) {
    bytes = bytes.sliced(1);
    markup.isGuardTaken = true;
  }
  if (markup.isInLink()) markup.links.back().words += wordsOf(type, bytes);
  if (type == MD_TEXT_ENTITY) {
    markup.html.append(bytes);
  } else if (type == MD_TEXT_NULLCHAR) {
    markup.html.append("\xEF\xBF\xBD");
  } else {
    markup.html.append(QString::fromUtf8(bytes).toHtmlEscaped().toUtf8());
  }
  return 0;
}

int passBlock(MD_BLOCKTYPE, void*, void*) {
  return 0;
}

/// Nothing where it can't be read.
std::optional<Markup> read(const QString& text) {
  Markup markup;
  const QByteArray guarded = guard + text.toUtf8();
  const MD_PARSER parser{.abi_version = 0,
                         .flags = MD_FLAG_NOHTML | MD_FLAG_STRIKETHROUGH,
                         .enter_block = passBlock,
                         .leave_block = passBlock,
                         .enter_span = enterSpan,
                         .leave_span = leaveSpan,
                         .text = addText,
                         .debug_log = nullptr,
                         .syntax = nullptr};
  const auto size = static_cast<MD_SIZE>(guarded.size());
  if (md_parse(guarded.constData(), size, &parser, &markup) != 0) return std::nullopt;
  return markup;
}

}  // namespace

ReleaseNotesView::ReleaseNotesView(const QString& markdown) {
  for (QStringView rest = markdown; !rest.isEmpty();) {
    const auto end = std::find_if(rest.begin(), rest.end(), isNewline);
    const QStringView line = trimmed(rest.first(end - rest.begin()));
    if (!line.isEmpty()) m_rows.push_back(blockOf(line));
    rest = rest.sliced(std::min<qsizetype>(end - rest.begin() + 1, rest.size()));
  }
}

QString inlineMarkup(const QString& text) {
  const auto markup = read(text);
  const QString html = markup ? QString::fromUtf8(markup->html) : text.toHtmlEscaped();
  return u"<span style=\"white-space: pre-wrap\">"_s + html + u"</span>"_s;
}

std::vector<InlineLink> inlineLinks(const QString& text) {
  const auto markup = read(text);
  return markup ? markup->links : std::vector<InlineLink>();
}

}  // namespace vemo
