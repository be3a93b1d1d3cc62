#include "platform/qt/QtAlertAccessibility.h"

namespace vemo {

QAccessibleInterface* AccessibleAlert::child(int index) const {
  if (index == 0) return m_window.accessibleInformative();
  return index == 1 ? m_window.accessibleButton() : nullptr;
}

int AccessibleAlert::indexOfChild(const QAccessibleInterface* wanted) const {
  for (int index = 0; index < childCount(); ++index)
    if (wanted && child(index) == wanted) return index;
  return -1;
}

QString AccessibleAlert::text(QAccessible::Text kind) const {
  if (kind == QAccessible::Name) return m_window.text().message;
  return kind == QAccessible::Description ? m_window.text().informative : QString();
}

QAccessible::State AccessibleAlert::state() const {
  QAccessible::State state;
  state.active = m_window.isActive();
  state.modal = true;
  state.invisible = !m_window.isVisible();
  return state;
}

QString AccessibleAlertText::text(QAccessible::Text kind) const {
  return kind == QAccessible::Name ? m_window.text().informative : QString();
}

QAccessible::State AccessibleAlertText::state() const {
  QAccessible::State state;
  state.readOnly = true;
  return state;
}

QString AccessibleAlertButton::text(QAccessible::Text kind) const {
  return kind == QAccessible::Name ? m_window.text().button : QString();
}

QAccessible::State AccessibleAlertButton::state() const {
  QAccessible::State state;
  state.focusable = true;
  state.focused = m_window.isActive();
  state.defaultButton = true;
  return state;
}

void* AccessibleAlertButton::interface_cast(QAccessible::InterfaceType type) {
  if (type == QAccessible::ActionInterface) return static_cast<QAccessibleActionInterface*>(this);
  return AccessibleAlertPart::interface_cast(type);
}

void AccessibleAlertButton::doAction(const QString& name) {
  if (name == pressAction()) m_window.close();
}

}  // namespace vemo
