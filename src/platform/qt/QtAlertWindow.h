// The window of a critical message: drawn by QPainter, with one button that always has the
// keyboard, and told to assistive tools as an alert with a text and a button.
//
// Main thread only; owned by QtCriticalAlert.
#pragma once

#include <QAccessible>
#include <QRasterWindow>
#include <functional>

#include "ports/CriticalAlert.h"

namespace vemo {

class QtAlertWindow : public QRasterWindow {
 public:
  /// `onClosed` is called once, from the event loop.
  QtAlertWindow(AlertText text, std::function<void()> onClosed);
  ~QtAlertWindow() override;

  const AlertText& text() const { return m_text; }
  /// Within the window.
  QRect informativePlace() const;
  QRect buttonPlace() const;

  QAccessibleInterface* accessibleRoot() const override;
  QAccessibleInterface* accessibleInformative() const;
  QAccessibleInterface* accessibleButton() const;

 protected:
  void paintEvent(QPaintEvent*) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  const AlertText m_text;
  std::function<void()> m_onClosed;
  QObject m_informativeObject;
  QObject m_buttonObject;
  QAccessible::Id m_root;
  QAccessible::Id m_informative;
  QAccessible::Id m_button;
};

}  // namespace vemo
