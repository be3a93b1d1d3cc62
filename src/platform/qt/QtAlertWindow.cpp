#include "platform/qt/QtAlertWindow.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPalette>
#include <QScreen>
#include <utility>

#include "platform/qt/QtAlertAccessibility.h"

namespace vemo {

namespace {

constexpr int alertWidth = 460;
constexpr int margin = 24;
constexpr int gap = 14;
constexpr int buttonWidth = 104;
constexpr int buttonHeight = 34;
constexpr int unlimited = 10'000;

QFont boldFont() {
  QFont font = QGuiApplication::font();
  font.setBold(true);
  font.setPointSizeF(font.pointSizeF() * 1.15);
  return font;
}

int heightOf(const QString& text, const QFont& font) {
  return QFontMetrics(font)
      .boundingRect(QRect(0, 0, alertWidth - 2 * margin, unlimited), Qt::TextWordWrap, text)
      .height();
}

}  // namespace

// Qt's cache owns the interfaces until they are deleted by their numbers.
// NOLINTBEGIN(clang-analyzer-cplusplus.NewDeleteLeaks)
QtAlertWindow::QtAlertWindow(AlertText text, std::function<void()> onClosed)
    : m_text(std::move(text)),
      m_onClosed(std::move(onClosed)),
      m_root(QAccessible::registerAccessibleInterface(new AccessibleAlert(*this))),
      m_informative(QAccessible::registerAccessibleInterface(
          new AccessibleAlertText(*this, m_informativeObject))),
      m_button(QAccessible::registerAccessibleInterface(
          new AccessibleAlertButton(*this, m_buttonObject))) {
  // NOLINTEND(clang-analyzer-cplusplus.NewDeleteLeaks)
  setFlag(Qt::Dialog);
  setModality(Qt::ApplicationModal);
  setTitle(m_text.message);
  const QSize size(alertWidth, informativePlace().bottom() + 1 + gap + buttonHeight + margin);
  setMinimumSize(size);
  setMaximumSize(size);
  QRect place(QPoint(), size);
  place.moveCenter(screen()->availableGeometry().center());
  setGeometry(place);
}

QtAlertWindow::~QtAlertWindow() {
  for (const QAccessible::Id id : {m_button, m_informative, m_root})
    QAccessible::deleteAccessibleInterface(id);
}

QRect QtAlertWindow::informativePlace() const {
  return {margin, margin + heightOf(m_text.message, boldFont()) + gap, alertWidth - 2 * margin,
          heightOf(m_text.informative, QGuiApplication::font())};
}

QRect QtAlertWindow::buttonPlace() const {
  return {alertWidth - margin - buttonWidth, height() - margin - buttonHeight, buttonWidth,
          buttonHeight};
}

void QtAlertWindow::paintEvent(QPaintEvent*) {
  const QPalette palette = QGuiApplication::palette();
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.fillRect(QRect(QPoint(), size()), palette.window());
  painter.setPen(palette.windowText().color());
  painter.setFont(boldFont());
  painter.drawText(QRect(margin, margin, alertWidth - 2 * margin, unlimited), Qt::TextWordWrap,
                   m_text.message);
  painter.setFont(QGuiApplication::font());
  painter.drawText(informativePlace(), Qt::TextWordWrap, m_text.informative);
  painter.setPen(Qt::NoPen);
  painter.setBrush(palette.highlight());
  painter.drawRoundedRect(buttonPlace(), buttonHeight / 2.0, buttonHeight / 2.0);
  painter.setPen(palette.highlightedText().color());
  painter.drawText(buttonPlace(), Qt::AlignCenter, m_text.button);
}

void QtAlertWindow::keyPressEvent(QKeyEvent* event) {
  for (const int key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape, Qt::Key_Space})
    if (event->key() == key) close();
}

void QtAlertWindow::mouseReleaseEvent(QMouseEvent* event) {
  if (buttonPlace().contains(event->position().toPoint())) close();
}

void QtAlertWindow::closeEvent(QCloseEvent* event) {
  event->accept();
  if (m_onClosed)
    QMetaObject::invokeMethod(this, std::exchange(m_onClosed, {}), Qt::QueuedConnection);
}

QAccessibleInterface* QtAlertWindow::accessibleRoot() const {
  return QAccessible::accessibleInterface(m_root);
}

QAccessibleInterface* QtAlertWindow::accessibleInformative() const {
  return QAccessible::accessibleInterface(m_informative);
}

QAccessibleInterface* QtAlertWindow::accessibleButton() const {
  return QAccessible::accessibleInterface(m_button);
}

}  // namespace vemo
