#include "platform/xdg/BusRemoteControl.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <functional>
#include <type_traits>

#include "ports/RemoteControl.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

const QString busName = u"brelmox.Vemo"_s;
const QString objectPath = u"/brelmox/Vemo"_s;
const QString stillStarting = u"brelmox.Vemo.Error.Starting"_s;
constexpr int answerTimeoutMs = 5000;

}  // namespace

class BusRemoteControl::Adaptor : public QObject, protected QDBusContext {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "brelmox.Vemo")

  template <typename Operation, typename... Arguments>
  auto ask(Operation operation, const Arguments&... arguments) {
    using Answer = std::invoke_result_t<Operation, RemoteControl&, const Arguments&...>;
    if (m_control) return std::invoke(operation, *m_control, arguments...);
    sendErrorReply(stillStarting, u"It has only begun to start."_s);
    return Answer();
  }

 public:
  void serve(RemoteControl& control) { m_control = &control; }

 public Q_SLOTS:
  QString toggle() { return ask(&RemoteControl::toggle); }
  QString start() { return ask(&RemoteControl::start); }
  QString stop() { return ask(&RemoteControl::stop); }
  QString status() { return ask(&RemoteControl::status); }
  void quit() { ask(&RemoteControl::quit); }
  QString signIn() { return ask(&RemoteControl::signIn); }
  QString cancelSignIn() { return ask(&RemoteControl::cancelSignIn); }
  QString signOut() { return ask(&RemoteControl::signOut); }
  void reopen() { ask(&RemoteControl::reopen); }
  void open(const QString& address) { ask(&RemoteControl::open, address); }

 private:
  RemoteControl* m_control = nullptr;
};

BusRemoteControl::BusRemoteControl() : m_adaptor(std::make_unique<Adaptor>()) {
  // Before the name: the bus hands the call that made it start the program over with the name.
  QDBusConnection::sessionBus().registerObject(objectPath, m_adaptor.get(),
                                               QDBusConnection::ExportAllSlots);
}

BusRemoteControl::~BusRemoteControl() {
  auto bus = QDBusConnection::sessionBus();
  if (m_hasName) bus.unregisterService(busName);
  bus.unregisterObject(objectPath);
}

std::expected<std::unique_ptr<BusRemoteControl>, BusNameError> BusRemoteControl::create() {
  auto bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return std::unexpected(BusNameError::NoBus);
  std::unique_ptr<BusRemoteControl> remote(new BusRemoteControl);
  remote->m_hasName = bus.registerService(busName);
  if (!remote->m_hasName) return std::unexpected(BusNameError::Taken);
  return remote;
}

void BusRemoteControl::serve(RemoteControl& control) {
  m_adaptor->serve(control);
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
    if (answer.errorName() == stillStarting) return std::unexpected(u"Vemo is still starting."_s);
    return std::unexpected(u"Vemo doesn't answer: "_s + answer.errorMessage());
  }
  return answer.arguments().value(0).toString();
}

}  // namespace vemo

#include "BusRemoteControl.moc"
