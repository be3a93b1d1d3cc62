#include "platform/xdg/BusRemoteControl.h"

#include <QDBusConnection>
#include <QDBusMessage>

#include "ports/RemoteControl.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

const QString busName = u"brelmox.Vemo"_s;
const QString objectPath = u"/brelmox/Vemo"_s;
constexpr int answerTimeoutMs = 5000;

}  // namespace

class BusRemoteControl::Adaptor : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "brelmox.Vemo")

 public:
  explicit Adaptor(RemoteControl& control) : m_control(control) {}

 public Q_SLOTS:
  QString toggle() { return m_control.toggle(); }
  QString start() { return m_control.start(); }
  QString stop() { return m_control.stop(); }
  QString status() { return m_control.status(); }
  void quit() { m_control.quit(); }
  QString signIn() { return m_control.signIn(); }
  QString cancelSignIn() { return m_control.cancelSignIn(); }
  QString signOut() { return m_control.signOut(); }
  void reopen() { m_control.reopen(); }
  void open(const QString& address) { m_control.open(address); }

 private:
  RemoteControl& m_control;
};

BusRemoteControl::BusRemoteControl() = default;

BusRemoteControl::~BusRemoteControl() {
  auto bus = QDBusConnection::sessionBus();
  bus.unregisterService(busName);
  if (m_adaptor) bus.unregisterObject(objectPath);
}

std::expected<std::unique_ptr<BusRemoteControl>, BusNameError> BusRemoteControl::create() {
  auto bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return std::unexpected(BusNameError::NoBus);
  if (!bus.registerService(busName)) return std::unexpected(BusNameError::Taken);
  return std::unique_ptr<BusRemoteControl>(new BusRemoteControl);
}

void BusRemoteControl::serve(RemoteControl& control) {
  m_adaptor = std::make_unique<Adaptor>(control);
  QDBusConnection::sessionBus().registerObject(objectPath, m_adaptor.get(),
                                               QDBusConnection::ExportAllSlots);
}

std::expected<QString, QString> sendCommand(const QString& command, const QStringList& arguments) {
  const auto bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return std::unexpected(u"There is no session bus to reach Vemo on."_s);
  auto call = QDBusMessage::createMethodCall(busName, objectPath, busName, command);
  // A command is for the program that runs: it starts none, though the bus could.
  call.setAutoStartService(false);
  for (const QString& argument : arguments) call << argument;
  const auto answer = bus.call(call, QDBus::Block, answerTimeoutMs);
  if (answer.type() == QDBusMessage::ErrorMessage) {
    if (answer.errorName() == u"org.freedesktop.DBus.Error.NameHasNoOwner" ||
        answer.errorName() == u"org.freedesktop.DBus.Error.ServiceUnknown")
      return std::unexpected(u"Vemo isn't running."_s);
    if (answer.errorName() == u"org.freedesktop.DBus.Error.UnknownObject")
      return std::unexpected(u"Vemo is still starting."_s);
    return std::unexpected(u"Vemo doesn't answer: "_s + answer.errorMessage());
  }
  return answer.arguments().value(0).toString();
}

}  // namespace vemo

#include "BusRemoteControl.moc"
