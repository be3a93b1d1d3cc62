// The texts on the pill: fitted into their lines, measured and drawn. Keeps the last of each kind,
// as a pill shows one for a while.
//
// Main thread only; needs a QGuiApplication once there is a text.
#pragma once

#include <QFont>
#include <QPainter>
#include <QStringList>
#include <optional>

#include "ui/PillLayout.h"

namespace vemo {

class PillText : public PillTextMetrics {
 public:
  /// In the desktop's font, or in the one of that family.
  explicit PillText(QString fontFamily = {}) : m_family(std::move(fontFamily)) {}

  PillSize messageSize(const QString& message) const override;
  PillSize liveTextSize(const QString& text) const override;

  void drawMessage(QPainter& painter, const ScreenRect& place, const QString& message) const;
  void drawLiveText(QPainter& painter, const ScreenRect& place, const QString& text) const;

 private:
  /// A text, and the lines that it comes out as.
  struct Fitted {
    QString text;
    QStringList lines;
    PillSize size;
  };

  const Fitted& fittedMessage(const QString& message) const;
  const Fitted& fittedLiveText(const QString& text) const;
  QFont font(double size, QFont::Weight weight) const;

  QString m_family;
  mutable std::optional<Fitted> m_message;
  mutable std::optional<Fitted> m_liveText;
};

}  // namespace vemo
