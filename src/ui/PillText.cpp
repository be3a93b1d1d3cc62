#include "ui/PillText.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QTextBoundaryFinder>
#include <QTextLayout>
#include <algorithm>
#include <cmath>

namespace vemo {

namespace {

/// More than fits, however narrow the letters.
constexpr qsizetype maximumLength = 600;
constexpr int maximumLiveTextLines = 2;
constexpr QChar ellipsis(u'…');

/// In one line, whatever it holds.
QString inOneLine(QString text) {
  for (QChar& character : text) {
    if (character.category() == QChar::Other_Control) character = u' ';
  }
  return text.simplified();
}

QStringList wrapped(const QString& text, const QFont& font) {
  QTextLayout layout(text, font);
  QTextOption option;
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  layout.setTextOption(option);
  layout.beginLayout();
  QStringList lines;
  // One line more than may be tells that it's too long.
  while (lines.size() <= maximumLiveTextLines) {
    QTextLine line = layout.createLine();
    if (!line.isValid()) break;
    line.setLineWidth(PillTextMetrics::maximumLiveTextWidth);
    lines.append(text.mid(line.textStart(), line.textLength()).trimmed());
  }
  layout.endLayout();
  return lines;
}

/// The lines of the longest end of the text that fits, after an ellipsis unless it's all of it.
QStringList fittedAtTheEnd(const QString& text, const QFont& font) {
  const QString end = text.right(maximumLength);
  if (end.size() == text.size()) {
    if (auto lines = wrapped(text, font); lines.size() <= maximumLiveTextLines) return lines;
  }
  QList<qsizetype> starts;
  QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, end);
  for (qsizetype start = finder.toNextBoundary(); start >= 0; start = finder.toNextBoundary())
    starts.append(start);
  const auto linesFrom = [&](qsizetype start) {
    return wrapped(ellipsis + end.sliced(start).trimmed(), font);
  };
  const auto first = std::ranges::partition_point(
      starts, [&](qsizetype start) { return linesFrom(start).size() > maximumLiveTextLines; });
  return first == starts.end() ? QStringList() : linesFrom(*first);
}

PillSize sizeOf(const QStringList& lines, const QFontMetricsF& metrics, double maximumWidth) {
  double width = 0;
  for (const QString& line : lines) width = std::max(width, metrics.horizontalAdvance(line));
  return {std::min(std::ceil(width), maximumWidth),
          std::ceil(metrics.height()) * static_cast<double>(lines.size())};
}

void drawLines(QPainter& painter, const ScreenRect& place, const QStringList& lines,
               Qt::Alignment alignment) {
  const double lineHeight = place.height / static_cast<double>(lines.size());
  // A line that is as wide as its place may be wider by a rounding.
  QRectF line(place.x - 1, place.y, place.width + 2, lineHeight);
  if (alignment & Qt::AlignLeft) line.setLeft(place.x);
  for (const QString& text : lines) {
    painter.drawText(line, int(alignment | Qt::AlignVCenter) | Qt::TextSingleLine, text);
    line.translate(0, lineHeight);
  }
}

}  // namespace

QFont PillText::font(double size, QFont::Weight weight) const {
  QFont font = m_family.isEmpty() ? QGuiApplication::font() : QFont(m_family);
  font.setPixelSize(static_cast<int>(size));
  font.setWeight(weight);
  return font;
}

const PillText::Fitted& PillText::fittedMessage(const QString& message) const {
  if (!m_message || m_message->text != message) {
    const QFontMetricsF metrics(font(messageFontSize, QFont::Medium));
    const QString line = metrics.elidedText(inOneLine(message.left(maximumLength)), Qt::ElideRight,
                                            maximumMessageWidth);
    m_message = {message, {line}, sizeOf({line}, metrics, maximumMessageWidth)};
  }
  return *m_message;
}

const PillText::Fitted& PillText::fittedLiveText(const QString& text) const {
  if (!m_liveText || m_liveText->text != text) {
    const QFont textFont = font(liveTextFontSize, QFont::Normal);
    const QStringList lines = fittedAtTheEnd(inOneLine(text), textFont);
    m_liveText = {text, lines, sizeOf(lines, QFontMetricsF(textFont), maximumLiveTextWidth)};
  }
  return *m_liveText;
}

PillSize PillText::messageSize(const QString& message) const {
  return fittedMessage(message).size;
}

PillSize PillText::liveTextSize(const QString& text) const {
  return fittedLiveText(text).size;
}

void PillText::drawMessage(QPainter& painter, const ScreenRect& place,
                           const QString& message) const {
  painter.setFont(font(messageFontSize, QFont::Medium));
  drawLines(painter, place, fittedMessage(message).lines, Qt::AlignLeft);
}

void PillText::drawLiveText(QPainter& painter, const ScreenRect& place, const QString& text) const {
  painter.setFont(font(liveTextFontSize, QFont::Normal));
  drawLines(painter, place, fittedLiveText(text).lines, Qt::AlignHCenter);
}

}  // namespace vemo
