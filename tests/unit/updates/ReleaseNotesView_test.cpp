#include "updates/ReleaseNotesView.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QStringList>

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;
using Block = ReleaseNotesView::Block;

namespace {

std::vector<Block> rowsOf(const QString& markdown) {
  return ReleaseNotesView(markdown).rows();
}

Block heading(const QString& text) {
  return {Block::Kind::Heading, text};
}
Block bullet(const QString& text) {
  return {Block::Kind::Bullet, text};
}
Block paragraph(const QString& text) {
  return {Block::Kind::Paragraph, text};
}

/// Without the frame that keeps the blanks.
QString markupOf(const QString& text) {
  QString html = inlineMarkup(text);
  EXPECT_TRUE(html.startsWith(u"<span style=\"white-space: pre-wrap\">"_s));
  EXPECT_TRUE(html.endsWith(u"</span>"_s));
  return html.sliced(36).chopped(7);
}

}  // namespace

TEST(ReleaseNotesTest, AllHeadingsLookTheSame) {
  EXPECT_THAT(rowsOf(u"# Fixes"_s), ElementsAre(heading(u"Fixes"_s)));
  EXPECT_EQ(rowsOf(u"### Fixes"_s), rowsOf(u"# Fixes"_s));
  EXPECT_EQ(rowsOf(u"#Fixes"_s), rowsOf(u"# Fixes"_s));
  EXPECT_THAT(rowsOf(u"#"_s), ElementsAre(heading({})));
}

TEST(ReleaseNotesTest, ADashWithABlankIsABulletAndOneWithoutIsAParagraph) {
  EXPECT_THAT(rowsOf(u"  - item"_s), ElementsAre(bullet(u"item"_s)));
  EXPECT_THAT(rowsOf(u"-  item"_s), ElementsAre(bullet(u" item"_s)));
  EXPECT_THAT(rowsOf(u"-item"_s), ElementsAre(paragraph(u"-item"_s)));
  EXPECT_THAT(rowsOf(u"-"_s), ElementsAre(paragraph(u"-"_s)));
  EXPECT_THAT(rowsOf(u"- "_s), ElementsAre(paragraph(u"-"_s)));
}

TEST(ReleaseNotesTest, BoldAtTheStartIsAParagraphAndAStarWithABlankIsABullet) {
  EXPECT_THAT(rowsOf(u"*bold* start"_s), ElementsAre(paragraph(u"*bold* start"_s)));
  EXPECT_THAT(rowsOf(u"* bold"_s), ElementsAre(bullet(u"bold"_s)));
}

TEST(ReleaseNotesTest, BlankLinesAreNoRows) {
  EXPECT_THAT(rowsOf({}), IsEmpty());
  EXPECT_THAT(rowsOf(u"\n \r\n\t\n"_s), IsEmpty());
}

TEST(ReleaseNotesTest, EveryKindOfNewlineEndsALineAndConsecutiveLinesStayTwo) {
  EXPECT_THAT(rowsOf(u"a\nb\r\nc\rd\u2028e\u0085f"_s),
              ElementsAre(paragraph(u"a"_s), paragraph(u"b"_s), paragraph(u"c"_s),
                          paragraph(u"d"_s), paragraph(u"e"_s), paragraph(u"f"_s)));
}

TEST(ReleaseNotesTest, EqualRowsHashAlike) {
  EXPECT_EQ(qHash(heading(u"a"_s), 1), qHash(heading(u"a"_s), 1));
  EXPECT_NE(heading(u"a"_s), bullet(u"a"_s));
}

TEST(ReleaseNotesTest, EmphasisCodeAndLinksAreMarkedUp) {
  EXPECT_EQ(markupOf(u"*a* **b** `c` ~~d~~"_s), u"<i>a</i> <b>b</b> <code>c</code> <s>d</s>"_s);
  EXPECT_EQ(markupOf(u"_a_ (*b*)"_s), u"<i>a</i> (<i>b</i>)"_s);
  EXPECT_EQ(markupOf(u"[notes](https://example.com/a?b=1&c=2)"_s),
            u"<a href=\"https://example.com/a?b=1&amp;c=2\">notes</a>"_s);
}

TEST(ReleaseNotesTest, LinksAreNamedAsTheyAreReadAndInTheirOrder) {
  EXPECT_THAT(inlineLinks(u"See [the *notes*](https://e.com/a?b=1&c=2) or [all](http://e.com)"_s),
              ElementsAre(InlineLink{u"the notes"_s, u"https://e.com/a?b=1&c=2"_s},
                          InlineLink{u"all"_s, u"http://e.com"_s}));
  EXPECT_THAT(inlineLinks(u"[![seen](https://e.com/x.png)](https://e.com)"_s),
              ElementsAre(InlineLink{u"seen"_s, u"https://e.com"_s}));
  EXPECT_THAT(inlineLinks(u"[Terms &amp; &#8364; &nope; more](https://e.com)"_s),
              ElementsAre(InlineLink{u"Terms & € &nope; more"_s, u"https://e.com"_s}));
  EXPECT_THAT(inlineLinks(u"[](https://e.com) [ ](https://e.com) [b](https://e.com)"_s),
              ElementsAre(InlineLink{u"b"_s, u"https://e.com"_s}));
  EXPECT_THAT(inlineLinks(u"[a](file:///etc/passwd) [notes](https://exa mple"_s), IsEmpty());
}

TEST(ReleaseNotesTest, LinksToOnePageAreToldApartByBlanksThatHtmlPassesOver) {
  QStringList addresses;
  for (const auto& link : inlineLinks(u"[a](https://e.com) "_s.repeated(1000))) {
    EXPECT_EQ(link.address.trimmed(), u"https://e.com"_s);
    EXPECT_LE(link.address.size(), 13 + 10);
    addresses.append(link.address);
  }
  EXPECT_EQ(addresses.size(), 1000);
  EXPECT_EQ(addresses.removeDuplicates(), 0);
  EXPECT_EQ(addresses.front(), u"https://e.com"_s);
  EXPECT_EQ(markupOf(u"[a](http://e.com)[b](http://e.com)[c](http://e.com)"_s),
            u"<a href=\"http://e.com\">a</a><a href=\"http://e.com\t\">b</a>"
            u"<a href=\"http://e.com \t\">c</a>"_s);
  EXPECT_THAT(
      inlineLinks(u"[a](http://e.com) [b](http://e.com/b)"_s),
      ElementsAre(InlineLink{u"a"_s, u"http://e.com"_s}, InlineLink{u"b"_s, u"http://e.com/b"_s}));
}

TEST(ReleaseNotesTest, BlanksAreKept) {
  EXPECT_EQ(markupOf(u"a   b"_s), u"a   b"_s);
}

TEST(ReleaseNotesTest, AMalformedInlineLinkStaysLiteral) {
  EXPECT_EQ(markupOf(u"[notes](https://exa mple"_s), u"[notes](https://exa mple"_s);
  EXPECT_EQ(markupOf(u"[notes]("_s), u"[notes]("_s);
  EXPECT_EQ(markupOf(u"**half"_s), u"**half"_s);
}

TEST(ReleaseNotesTest, WhatWouldBeABlockElsewhereIsTextInARow) {
  for (const QString& text : {u"1. first"_s, u"&gt; quote"_s, u"---"_s, u"# x"_s, u"===="_s})
    EXPECT_EQ(markupOf(text), text);
}

TEST(ReleaseNotesTest, NoImageNoMarkupAndNoOtherAddressPassesThrough) {
  EXPECT_EQ(markupOf(u"![seen](https://example.com/x.png)"_s), u"seen"_s);
  EXPECT_EQ(markupOf(u"<img src=\"https://example.com\">"_s),
            u"&lt;img src=&quot;https://example.com&quot;&gt;"_s);
  EXPECT_EQ(markupOf(u"<script>x</script>"_s), u"&lt;script&gt;x&lt;/script&gt;"_s);
  EXPECT_EQ(markupOf(u"[a](javascript:alert(1))"_s), u"a"_s);
  EXPECT_EQ(markupOf(u"[a](file:///etc/passwd)"_s), u"a"_s);
  EXPECT_EQ(markupOf(u"[a](https://e.com/\"onclick=x)"_s).count(u"onclick=\""_s), 0);
}

}  // namespace vemo
