// What assistive tools are told of a critical message: an alert by the message's name, which holds
// the informative text and a button that has the keyboard and can be pressed.
//
// Main thread only; owned by Qt's cache until the window deletes them.
#pragma once

#include <QAccessibleObject>
#include <QWindow>

#include "platform/qt/QtAlertWindow.h"

namespace vemo {

class AccessibleAlert : public QAccessibleObject {
 public:
  explicit AccessibleAlert(QtAlertWindow& window) : QAccessibleObject(&window), m_window(window) {}

  QAccessibleInterface* parent() const override {
    return QAccessible::queryAccessibleInterface(qApp);
  }
  int childCount() const override { return 2; }
  QAccessibleInterface* child(int index) const override;
  int indexOfChild(const QAccessibleInterface* child) const override;
  QAccessibleInterface* focusChild() const override { return m_window.accessibleButton(); }
  QString text(QAccessible::Text kind) const override;
  QRect rect() const override { return m_window.geometry(); }
  QWindow* window() const override { return &m_window; }
  QAccessible::Role role() const override { return QAccessible::AlertMessage; }
  QAccessible::State state() const override;

 private:
  QtAlertWindow& m_window;
};

/// One of the two things in it.
class AccessibleAlertPart : public QAccessibleObject {
 public:
  AccessibleAlertPart(QtAlertWindow& window, QObject& object)
      : QAccessibleObject(&object), m_window(window) {}

  QAccessibleInterface* parent() const override { return m_window.accessibleRoot(); }
  int childCount() const override { return 0; }
  QAccessibleInterface* child(int) const override { return nullptr; }
  int indexOfChild(const QAccessibleInterface*) const override { return -1; }
  QWindow* window() const override { return &m_window; }

 protected:
  QRect onScreen(const QRect& place) const {
    return {m_window.mapToGlobal(place.topLeft()), place.size()};
  }

  QtAlertWindow& m_window;
};

class AccessibleAlertText : public AccessibleAlertPart {
 public:
  using AccessibleAlertPart::AccessibleAlertPart;

  QString text(QAccessible::Text kind) const override;
  QRect rect() const override { return onScreen(m_window.informativePlace()); }
  QAccessible::Role role() const override { return QAccessible::StaticText; }
  QAccessible::State state() const override;
};

class AccessibleAlertButton : public AccessibleAlertPart, public QAccessibleActionInterface {
 public:
  using AccessibleAlertPart::AccessibleAlertPart;

  QString text(QAccessible::Text kind) const override;
  QRect rect() const override { return onScreen(m_window.buttonPlace()); }
  QAccessible::Role role() const override { return QAccessible::Button; }
  QAccessible::State state() const override;

  void* interface_cast(QAccessible::InterfaceType type) override;
  QStringList actionNames() const override { return {pressAction()}; }
  void doAction(const QString& name) override;
  QStringList keyBindingsForAction(const QString&) const override { return {}; }
};

}  // namespace vemo
