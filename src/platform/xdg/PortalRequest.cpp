#include "platform/xdg/PortalRequest.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QGuiApplication>
#include <QUuid>
#include <QWindow>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

const QString service = u"org.freedesktop.portal.Desktop"_s;
const QString requestInterface = u"org.freedesktop.portal.Request"_s;
/// A portal that is started by the question may take its time; one that hangs must not.
constexpr int askTimeoutMs = 10'000;

/// As portals name the window that the question belongs to; empty for none.
QString parentWindow() {
  const QWindow* window = QGuiApplication::focusWindow();
  return window && QGuiApplication::platformName() == u"xcb"
             ? u"x11:"_s + QString::number(window->winId(), 16)
             : QString();
}

QString requestPath(const QString& token) {
  QString caller = QDBusConnection::sessionBus().baseService().mid(1);
  return u"/org/freedesktop/portal/desktop/request/"_s + caller.replace(u'.', u'_') + u'/' + token;
}

}  // namespace

PortalRequest::PortalRequest(MainThread& mainThread)
    : m_token(u"vemo"_s + QUuid::createUuid().toString(QUuid::Id128)), m_answer(mainThread) {}

PortalRequest::~PortalRequest() {
  takeBack();
}

void PortalRequest::takeBack() {
  if (m_path.isEmpty() || m_answer.isComplete()) return;
  QDBusConnection::sessionBus().send(
      QDBusMessage::createMethodCall(service, m_path, requestInterface, u"Close"_s));
  m_answer.complete(Results());
}

void PortalRequest::ask(const QString& interface, const QString& method, const QString& title,
                        QVariantMap options) {
  // Before the call, since the answer may come before the call's own.
  listenAt(requestPath(m_token));
  options.insert(u"handle_token"_s, m_token);
  auto call = QDBusMessage::createMethodCall(service, u"/org/freedesktop/portal/desktop"_s,
                                             interface, method);
  call << parentWindow() << title << options;
  auto* watcher = new QDBusPendingCallWatcher(
      QDBusConnection::sessionBus().asyncCall(call, askTimeoutMs), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
    watcher->deleteLater();
    const QDBusPendingReply<QDBusObjectPath> reply = *watcher;
    if (reply.isError()) return m_answer.complete(std::unexpected(Unavailable()));
    // Portals of before 0.9 choose the path themselves.
    if (reply.value().path() != m_path) listenAt(reply.value().path());
  });
}

void PortalRequest::listenAt(const QString& path) {
  m_path = path;
  QDBusConnection::sessionBus().connect(service, path, requestInterface, u"Response"_s, this,
                                        SLOT(response(uint, QVariantMap)));
}

void PortalRequest::response(uint code, const QVariantMap& results) {
  m_answer.complete(code == 0 ? results : Results());
}

}  // namespace vemo
