#include "platform/xdg/DesktopNotes.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QVariantMap>
#include <utility>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

const QString service = u"org.freedesktop.Notifications"_s;
const QString path = u"/org/freedesktop/Notifications"_s;
constexpr uint closedByTheUser = 2;
constexpr int limitOfTheServicesOwn = -1;

QDBusMessage callOf(const QString& method) {
  return QDBusMessage::createMethodCall(service, path, service, method);
}

/// An action is named by its place among the choices.
QStringList actionsOf(const std::vector<DesktopNotes::Choice>& choices) {
  QStringList actions;
  for (std::size_t place = 0; place < choices.size(); ++place)
    actions << QString::number(place) << choices[place].label;
  return actions;
}

}  // namespace

DesktopNotes::DesktopNotes() {
  auto bus = QDBusConnection::sessionBus();
  bus.connect(service, path, service, u"ActionInvoked"_s, this, SLOT(actionInvoked(uint, QString)));
  bus.connect(service, path, service, u"NotificationClosed"_s, this,
              SLOT(notificationClosed(uint, uint)));
  // Another service counts its notes anew.
  auto* watcher =
      new QDBusServiceWatcher(service, bus, QDBusServiceWatcher::WatchForOwnerChange, this);
  connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, &DesktopNotes::forgetAll);
}

DesktopNotes::~DesktopNotes() {
  for (const auto& [id, note] : m_standing) {
    if (note.choices.empty()) continue;
    auto call = callOf(u"CloseNotification"_s);
    call << id;
    QDBusConnection::sessionBus().send(call);
  }
}

void DesktopNotes::show(Note note) {
  auto* watcher = new QDBusPendingCallWatcher(
      QDBusConnection::sessionBus().asyncCall(callOf(u"GetCapabilities"_s)), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this,
          [this, watcher, note = std::move(note)]() mutable {
            watcher->deleteLater();
            const QDBusPendingReply<QStringList> capabilities = *watcher;
            notify(std::move(note), capabilities.isValid() ? capabilities.value() : QStringList());
          });
}

void DesktopNotes::notify(Note note, const QStringList& capabilities) {
  if (!capabilities.contains(u"actions"_s)) note.choices.clear();
  const bool isMarkup = capabilities.contains(u"body-markup"_s);
  auto call = callOf(u"Notify"_s);
  call << u"Vemo"_s << m_last << u"brelmox.Vemo"_s << note.title
       << (isMarkup ? note.text.toHtmlEscaped() : note.text) << actionsOf(note.choices)
       << QVariantMap() << limitOfTheServicesOwn;
  auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this,
          [this, watcher, note = std::move(note)]() mutable {
            watcher->deleteLater();
            const QDBusPendingReply<uint> id = *watcher;
            if (!id.isValid()) return;
            m_last = id.value();
            m_standing[m_last] = std::move(note);
          });
}

void DesktopNotes::actionInvoked(uint id, const QString& action) {
  const auto note = m_standing.find(id);
  if (note == m_standing.end()) return;
  bool isNumber = false;
  const uint place = action.toUInt(&isNumber);
  if (!isNumber || place >= note->second.choices.size()) return;
  const auto choose = std::move(note->second.choices[place].choose);
  m_standing.erase(note);
  choose();
}

void DesktopNotes::notificationClosed(uint id, uint reason) {
  const auto note = m_standing.extract(id);
  if (note && reason == closedByTheUser && note.mapped().dismiss) note.mapped().dismiss();
}

void DesktopNotes::forgetAll(const QString&, const QString& ownerBefore) {
  if (ownerBefore.isEmpty()) return;
  m_standing.clear();
  m_last = 0;
}

}  // namespace vemo
