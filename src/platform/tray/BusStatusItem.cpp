#include "platform/tray/BusStatusItem.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <utility>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

const QString watcherService = u"org.kde.StatusNotifierWatcher"_s;
const QString watcherPath = u"/StatusNotifierWatcher"_s;
const QString itemPath = u"/StatusNotifierItem"_s;
const QString menuPath = u"/MenuBar"_s;

/// The drawing of an image; they are drawn in one colour, which panels replace by their own.
QString iconName(const QString& image) {
  return u"vemo-"_s + (image == u"vemo_icon" ? u"idle"_s : image) + u"-symbolic"_s;
}

}  // namespace

class BusStatusItem::Item : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
  Q_PROPERTY(QString Category READ category CONSTANT)
  Q_PROPERTY(QString Id READ id CONSTANT)
  Q_PROPERTY(QString Title READ title CONSTANT)
  Q_PROPERTY(QString Status READ status CONSTANT)
  Q_PROPERTY(int WindowId READ windowId CONSTANT)
  Q_PROPERTY(QString IconName READ icon)
  Q_PROPERTY(QString IconThemePath READ iconThemePath CONSTANT)
  Q_PROPERTY(QString OverlayIconName READ none CONSTANT)
  Q_PROPERTY(QString AttentionIconName READ none CONSTANT)
  Q_PROPERTY(bool ItemIsMenu READ isMenu CONSTANT)
  Q_PROPERTY(QDBusObjectPath Menu READ menu CONSTANT)

 public:
  Item(BusStatusItem& owner, QString imagesFolder)
      : m_owner(owner), m_imagesFolder(std::move(imagesFolder)) {}

  QString category() const { return u"ApplicationStatus"_s; }
  QString id() const { return u"brelmox.Vemo"_s; }
  QString title() const { return u"Vemo"_s; }
  QString status() const { return u"Active"_s; }
  int windowId() const { return 0; }
  QString icon() const { return m_icon; }
  QString iconThemePath() const { return m_imagesFolder; }
  QString none() const { return {}; }
  bool isMenu() const { return false; }
  QDBusObjectPath menu() const { return QDBusObjectPath(menuPath); }

  void setIcon(const QString& icon) {
    if (icon == m_icon) return;
    m_icon = icon;
    Q_EMIT NewIcon();
  }

 public Q_SLOTS:
  void Activate(int, int) {
    if (m_owner.onActivated) m_owner.onActivated();
  }
  void SecondaryActivate(int, int) {}
  void ContextMenu(int, int) {}
  void Scroll(int, const QString&) {}

 Q_SIGNALS:
  void NewIcon();
  void NewTitle();
  void NewStatus(const QString& status);

 private:
  BusStatusItem& m_owner;
  const QString m_imagesFolder;
  QString m_icon = iconName(u"vemo_icon"_s);
};

BusStatusItem::BusStatusItem(QString imagesFolder)
    : m_connectionName(u"vemo.status-item"_s),
      m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, m_connectionName)),
      m_watcherWatch(std::make_unique<QDBusServiceWatcher>(
          watcherService, m_bus, QDBusServiceWatcher::WatchForOwnerChange)),
      m_item(std::make_unique<Item>(*this, std::move(imagesFolder))) {
  const auto exported = QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties |
                        QDBusConnection::ExportAllSignals;
  m_bus.registerObject(itemPath, m_item.get(), exported);
  m_bus.registerObject(menuPath, &m_menu, exported);
  connect(m_watcherWatch.get(), &QDBusServiceWatcher::serviceOwnerChanged, this,
          [this](const QString&, const QString&, const QString& owner) {
            owner.isEmpty() ? setHasHost(false) : registerWithWatcher();
          });
  m_bus.connect(watcherService, watcherPath, watcherService, u"StatusNotifierHostRegistered"_s,
                this, SLOT(hostRegistered()));
  m_bus.connect(watcherService, watcherPath, watcherService, u"StatusNotifierHostUnregistered"_s,
                this, SLOT(hostUnregistered()));
  registerWithWatcher();
}

BusStatusItem::~BusStatusItem() {
  m_watcherWatch.reset();
  m_bus.unregisterObject(itemPath);
  m_bus.unregisterObject(menuPath);
  QDBusConnection::disconnectFromBus(m_connectionName);
}

void BusStatusItem::setMenu(std::vector<MenuItem> items) {
  m_menu.set(std::move(items));
}

void BusStatusItem::setImage(const QString& name) {
  m_item->setIcon(iconName(name));
}

void BusStatusItem::registerWithWatcher() {
  auto call = QDBusMessage::createMethodCall(watcherService, watcherPath, watcherService,
                                             u"RegisterStatusNotifierItem"_s);
  // Nobody is started for this: without a watcher there's no panel to be shown in.
  call.setAutoStartService(false);
  call << m_bus.baseService();
  auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
    watcher->deleteLater();
    watcher->isError() ? setHasHost(false) : askForHost();
  });
}

void BusStatusItem::askForHost() {
  auto call = QDBusMessage::createMethodCall(watcherService, watcherPath,
                                             u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
  call << watcherService << u"IsStatusNotifierHostRegistered"_s;
  auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
    watcher->deleteLater();
    const QDBusPendingReply<QDBusVariant> reply = *watcher;
    setHasHost(!reply.isError() && reply.value().variant().toBool());
  });
}

void BusStatusItem::hostRegistered() {
  askForHost();
}

void BusStatusItem::hostUnregistered() {
  askForHost();
}

void BusStatusItem::setHasHost(bool hasHost) {
  if (m_isHostKnown && hasHost == m_hasHost) return;
  m_isHostKnown = true;
  m_hasHost = hasHost;
  if (onHostKnown) onHostKnown();
}

}  // namespace vemo

#include "BusStatusItem.moc"
