#include "platform/qt/QtCriticalAlert.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPalette>
#include <QRasterWindow>
#include <QScreen>
#include <utility>

namespace vemo {

namespace {

constexpr int alertWidth = 460;
constexpr int margin = 24;
constexpr int gap = 14;
constexpr int buttonWidth = 104;
constexpr int buttonHeight = 34;

QFont boldFont() {
  QFont font = QGuiApplication::font();
  font.setBold(true);
  font.setPointSizeF(font.pointSizeF() * 1.15);
  return font;
}

int heightOf(const QString& text, const QFont& font) {
  return QFontMetrics(font)
      .boundingRect(QRect(0, 0, alertWidth - 2 * margin, 10'000), Qt::TextWordWrap, text)
      .height();
}

}  // namespace

class QtCriticalAlert::Window : public QRasterWindow {
 public:
  Window(AlertText text, std::function<void()> onClosed)
      : m_text(std::move(text)), m_onClosed(std::move(onClosed)) {
    setFlag(Qt::Dialog);
    setModality(Qt::ApplicationModal);
    setTitle(m_text.message);
    const int height = margin + heightOf(m_text.message, boldFont()) + gap +
                       heightOf(m_text.informative, QGuiApplication::font()) + gap + buttonHeight +
                       margin;
    const QSize size(alertWidth, height);
    setMinimumSize(size);
    setMaximumSize(size);
    QRect place(QPoint(), size);
    place.moveCenter(screen()->availableGeometry().center());
    setGeometry(place);
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    const QPalette palette = QGuiApplication::palette();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(QRect(QPoint(), size()), palette.window());
    painter.setPen(palette.windowText().color());
    QRect place(margin, margin, alertWidth - 2 * margin, 10'000);
    painter.setFont(boldFont());
    painter.drawText(place, Qt::TextWordWrap, m_text.message);
    place.translate(0, heightOf(m_text.message, boldFont()) + gap);
    painter.setFont(QGuiApplication::font());
    painter.drawText(place, Qt::TextWordWrap, m_text.informative);
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette.highlight());
    painter.drawRoundedRect(buttonPlace(), buttonHeight / 2.0, buttonHeight / 2.0);
    painter.setPen(palette.highlightedText().color());
    painter.drawText(buttonPlace(), Qt::AlignCenter, m_text.button);
  }

  void keyPressEvent(QKeyEvent* event) override {
    for (const int key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape, Qt::Key_Space})
      if (event->key() == key) close();
  }

  void mouseReleaseEvent(QMouseEvent* event) override {
    if (buttonPlace().contains(event->position().toPoint())) close();
  }

  void closeEvent(QCloseEvent* event) override {
    event->accept();
    if (m_onClosed)
      QMetaObject::invokeMethod(this, std::exchange(m_onClosed, {}), Qt::QueuedConnection);
  }

 private:
  QRect buttonPlace() const {
    return {alertWidth - margin - buttonWidth, height() - margin - buttonHeight, buttonWidth,
            buttonHeight};
  }

  const AlertText m_text;
  std::function<void()> m_onClosed;
};

QtCriticalAlert::QtCriticalAlert() = default;

QtCriticalAlert::~QtCriticalAlert() = default;

void QtCriticalAlert::show(const AlertText& text, std::function<void()> onClosed) {
  m_window = std::make_unique<Window>(text, std::move(onClosed));
  m_window->show();
  m_window->raise();
  m_window->requestActivate();
}

}  // namespace vemo
