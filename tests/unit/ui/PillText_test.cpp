#include "ui/PillText.h"

#include <gtest/gtest.h>

#include <QFontMetricsF>
#include <QGuiApplication>

#include "UiFixture.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

class PillTextTest : public UiFixture {
 protected:
  /// Whether the two texts look the same on a pill.
  bool looksSame(const QString& message, const QString& other) {
    return drawnMessage(message) == drawnMessage(other);
  }
  QImage drawnMessage(const QString& message) {
    QImage image(320, 20, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::black);
    QPainter painter(&image);
    painter.setPen(Qt::white);
    text.drawMessage(painter, {2, 2, 300, 16}, message);
    return image;
  }
  QImage drawnLiveText(const QString& liveText) {
    QImage image(380, 40, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::black);
    QPainter painter(&image);
    painter.setPen(Qt::white);
    const PillSize size = text.liveTextSize(liveText);
    text.drawLiveText(painter, {190 - size.width / 2, 2, size.width, size.height}, liveText);
    return image;
  }

  PillText text{u"DejaVu Sans"_s};
};

TEST_F(PillTextTest, AShortMessageIsAsWideAsItsLetters) {
  EXPECT_LT(text.messageSize(u"i"_s).width, text.messageSize(u"mmm"_s).width);
  EXPECT_GT(text.messageSize(u"i"_s).height, 10);
  EXPECT_LT(text.messageSize(u"i"_s).height, 20);
}

TEST_F(PillTextTest, AMessageIsTruncatedAtItsTailAndAtMost300Wide) {
  const QString message = u"The service could not be reached because of a network "_s.repeated(3);
  EXPECT_LE(text.messageSize(message).width, 300);
  EXPECT_GT(text.messageSize(message).width, 280);
  EXPECT_TRUE(looksSame(message, message + u"more"_s));
  EXPECT_FALSE(looksSame(message, u"A"_s + message));
}

TEST_F(PillTextTest, AMessageIsOneLineWhateverItHolds) {
  EXPECT_TRUE(looksSame(u"one two"_s, u" one\n\r\n\ttwo\x1b"_s));
  EXPECT_EQ(text.messageSize(u"a\nb\nc"_s).height, text.messageSize(u"a"_s).height);
  EXPECT_EQ(text.messageSize(QString()).width, 0);
}

TEST_F(PillTextTest, AMessageOfManyMegabytesIsShownWithoutDelay) {
  EXPECT_LE(text.messageSize(QString(20'000'000, u'x')).width, 300);
}

TEST_F(PillTextTest, LiveTextHasOneLineAndThenTwoAndNotMore) {
  const double line = text.liveTextSize(u"word"_s).height;
  EXPECT_EQ(text.liveTextSize(u"word "_s.repeated(15)).height, 2 * line);
  EXPECT_EQ(text.liveTextSize(u"word "_s.repeated(15'000)).height, 2 * line);
  EXPECT_LE(text.liveTextSize(u"word "_s.repeated(15'000)).width, 360);
  EXPECT_EQ(text.liveTextSize(QString(5'000, u'x')).height, 2 * line);
}

TEST_F(PillTextTest, LiveTextIsTruncatedAtItsHeadSoThatTheNewestWordsStayInView) {
  const QString end = u"the newest words of all that were said "_s.repeated(4) + u"stay in view"_s;
  const QString longer = u"older words "_s.repeated(30) + end;
  EXPECT_EQ(drawnLiveText(longer), drawnLiveText(u"something else entirely "_s.repeated(20) + end));
  EXPECT_NE(drawnLiveText(longer), drawnLiveText(longer + u"!"_s));
}

}  // namespace
}  // namespace vemo
