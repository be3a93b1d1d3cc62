#include "ui/SpokenPill.h"

#include <QAccessibleObject>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

class AccessibleRoot : public QAccessibleObject {
 public:
  explicit AccessibleRoot(SpokenPill& pill) : QAccessibleObject(&pill), m_pill(pill) {}

  QAccessibleInterface* parent() const override {
    return QAccessible::queryAccessibleInterface(qApp);
  }
  int childCount() const override { return m_pill.accessibleText() ? 1 : 0; }
  QAccessibleInterface* child(int index) const override {
    return index == 0 ? m_pill.accessibleText() : nullptr;
  }
  int indexOfChild(const QAccessibleInterface* child) const override {
    return child && child == m_pill.accessibleText() ? 0 : -1;
  }
  QString text(QAccessible::Text kind) const override {
    return kind == QAccessible::Name ? u"Vemo"_s : QString();
  }
  QAccessible::Role role() const override { return QAccessible::Notification; }
  QAccessible::State state() const override { return {}; }

 private:
  SpokenPill& m_pill;
};

class AccessibleText : public QAccessibleObject {
 public:
  AccessibleText(SpokenPill& pill, QObject& object) : QAccessibleObject(&object), m_pill(pill) {}

  QAccessibleInterface* parent() const override { return m_pill.accessibleRoot(); }
  int childCount() const override { return 0; }
  QAccessibleInterface* child(int) const override { return nullptr; }
  int indexOfChild(const QAccessibleInterface*) const override { return -1; }
  QString text(QAccessible::Text kind) const override {
    if (kind == QAccessible::Name) return u"Dictated so far"_s;
    return kind == QAccessible::Value ? m_pill.liveText() : QString();
  }
  QAccessible::Role role() const override { return QAccessible::StaticText; }
  QAccessible::State state() const override {
    QAccessible::State state;
    state.readOnly = true;
    return state;
  }

 private:
  SpokenPill& m_pill;
};

}  // namespace

// Qt's cache owns the interfaces until they are deleted by their numbers.
// NOLINTBEGIN(clang-analyzer-cplusplus.NewDeleteLeaks)
SpokenPill::SpokenPill()
    : m_root(QAccessible::registerAccessibleInterface(new AccessibleRoot(*this))),
      m_text(QAccessible::registerAccessibleInterface(new AccessibleText(*this, m_textObject))) {}
// NOLINTEND(clang-analyzer-cplusplus.NewDeleteLeaks)

SpokenPill::~SpokenPill() {
  QAccessible::deleteAccessibleInterface(m_text);
  QAccessible::deleteAccessibleInterface(m_root);
}

void SpokenPill::setLiveText(const QString& text) {
  if (text == m_liveText) return;
  const bool comesOrGoes = text.isEmpty() != m_liveText.isEmpty();
  QAccessibleInterface* element = QAccessible::accessibleInterface(m_text);
  if (comesOrGoes && text.isEmpty()) {
    QAccessibleEvent gone(element, QAccessible::ObjectHide);
    QAccessible::updateAccessibility(&gone);
  }
  m_liveText = text;
  if (comesOrGoes && !text.isEmpty()) {
    QAccessibleEvent shown(element, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&shown);
  }
  if (!text.isEmpty()) {
    QAccessibleValueChangeEvent changed(element, text);
    QAccessible::updateAccessibility(&changed);
  }
}

QAccessibleInterface* SpokenPill::accessibleRoot() const {
  return QAccessible::accessibleInterface(m_root);
}

QAccessibleInterface* SpokenPill::accessibleText() const {
  return m_liveText.isEmpty() ? nullptr : QAccessible::accessibleInterface(m_text);
}

}  // namespace vemo
