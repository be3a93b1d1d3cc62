// The pill for screen readers: a window that is never put on the screen, whose one child is the
// running text while there is some. The pill's own window is none that Qt could tell them of.
//
// Main thread only. Costs nothing while no screen reader asks.
#pragma once

#include <QAccessible>
#include <QWindow>

namespace vemo {

class SpokenPill : public QWindow {
 public:
  SpokenPill();
  ~SpokenPill() override;

  void setLiveText(const QString& text);
  const QString& liveText() const { return m_liveText; }

  QAccessibleInterface* accessibleRoot() const override;
  /// The running text; null while there's none.
  QAccessibleInterface* accessibleText() const;

 private:
  QString m_liveText;
  QObject m_textObject;
  QAccessible::Id m_root;
  QAccessible::Id m_text;
};

}  // namespace vemo
