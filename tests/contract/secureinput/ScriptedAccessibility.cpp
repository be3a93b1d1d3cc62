#include "ScriptedAccessibility.h"

#include <gtest/gtest.h>

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QMap>
#include <algorithm>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

/// A reference as the bus carries it: (so).
struct Reference {
  QString program;
  QDBusObjectPath path;
};

static QDBusArgument& operator<<(QDBusArgument& argument, const Reference& reference) {
  argument.beginStructure();
  argument << reference.program << reference.path;
  argument.endStructure();
  return argument;
}

static const QDBusArgument& operator>>(const QDBusArgument& argument, Reference& reference) {
  argument.beginStructure();
  argument >> reference.program >> reference.path;
  argument.endStructure();
  return argument;
}

}  // namespace vemo

Q_DECLARE_METATYPE(vemo::Reference)

namespace vemo {

namespace {

const QString rootPath = u"/org/a11y/atspi/accessible/root"_s;
const QString registryName = u"org.a11y.atspi.Registry"_s;
const QString objectInterface = u"org.a11y.atspi.Event.Object"_s;

constexpr unsigned activeBit = 1U << 1;
constexpr unsigned focusedBit = 1U << 12;

}  // namespace

ScriptedAccessibility::ScriptedAccessibility() {
  qDBusRegisterMetaType<Reference>();
  qDBusRegisterMetaType<QList<Reference>>();
  qDBusRegisterMetaType<QList<unsigned>>();
  m_thread.start();
  moveToThread(&m_thread);
}

ScriptedAccessibility::~ScriptedAccessibility() {
  m_thread.quit();
  m_thread.wait();
  for (const auto& name : {u"session"_s, u"registry"_s, u"program"_s})
    QDBusConnection::disconnectFromBus(name);
}

void ScriptedAccessibility::start() {
  m_bus.start();
  auto session = connect(m_sessionBus, u"session"_s);
  auto registry = connect(m_bus, u"registry"_s);
  ASSERT_TRUE(registry.registerService(registryName));
  auto program = connect(m_bus, u"program"_s);
  {
    const QMutexLocker lock(&m_mutex);
    m_programName = program.baseService();
    m_isListenedTo = false;
  }
  ASSERT_TRUE(session.registerService(u"org.a11y.Bus"_s));
}

QDBusConnection ScriptedAccessibility::connect(const PrivateBus& bus, const QString& name) {
  auto connection = bus.connect(name);
  QMetaObject::invokeMethod(
      this,
      [&] { connection.registerVirtualObject(u"/org/a11y"_s, this, QDBusConnection::SubPath); },
      Qt::BlockingQueuedConnection);
  return connection;
}

void ScriptedAccessibility::kill() {
  QDBusConnection(u"session"_s).unregisterService(u"org.a11y.Bus"_s);
  m_bus.kill();
}

void ScriptedAccessibility::set(const QString& path, const ScriptedObject& object) {
  const QMutexLocker lock(&m_mutex);
  m_objects.insert(path, object);
}

void ScriptedAccessibility::remove(const QString& path) {
  const QMutexLocker lock(&m_mutex);
  m_objects.remove(path);
}

void ScriptedAccessibility::reportFocus(const QString& path, bool isFocused) {
  auto report = QDBusMessage::createSignal(path, objectInterface, u"StateChanged"_s);
  report << u"focused"_s << (isFocused ? 1 : 0) << 0 << QVariant::fromValue(QDBusVariant(u""_s))
         << QVariantMap();
  ASSERT_TRUE(QDBusConnection(u"program"_s).send(report));
}

void ScriptedAccessibility::setSilent(bool isSilent) {
  const QMutexLocker lock(&m_mutex);
  m_isSilent = isSilent;
}

void ScriptedAccessibility::setAnswersNonsense(bool answersNonsense) {
  const QMutexLocker lock(&m_mutex);
  m_answersNonsense = answersNonsense;
}

int ScriptedAccessibility::questions() const {
  const QMutexLocker lock(&m_mutex);
  return m_questions;
}

bool ScriptedAccessibility::isListenedTo() const {
  const QMutexLocker lock(&m_mutex);
  return m_isListenedTo;
}

void ScriptedAccessibility::forgetListeners() {
  const QMutexLocker lock(&m_mutex);
  m_isListenedTo = false;
}

QString ScriptedAccessibility::introspect(const QString&) const {
  return {};
}

bool ScriptedAccessibility::handleMessage(const QDBusMessage& message,
                                          const QDBusConnection& connection) {
  const QMutexLocker lock(&m_mutex);
  const bool isQuestion = message.member().startsWith(u"Get"_s);
  if (isQuestion) ++m_questions;
  if (message.member() == u"RegisterEvent"_s)
    m_isListenedTo = message.arguments().value(0) == u"object:state-changed:focused"_s;
  if ((m_isSilent || m_objects.value(message.path()).isSilent) && isQuestion) return true;
  if (m_answersNonsense && isQuestion) return connection.send(message.createReply(u"nonsense"_s));
  return connection.send(answerTo(message, connection.name()));
}

QDBusMessage ScriptedAccessibility::answerTo(const QDBusMessage& message,
                                             const QString& asked) const {
  const QString member = message.member();
  if (member == u"GetAddress"_s) return message.createReply(m_bus.address());
  if (member == u"RegisterEvent"_s) return message.createReply();
  if (member == u"GetChildren"_s) {
    QList<Reference> children;
    if (asked == u"registry"_s) {
      children.append({m_programName, QDBusObjectPath(rootPath)});
    } else {
      for (const QString& path : childrenOf(message.path()))
        children.append({m_programName, QDBusObjectPath(path)});
    }
    return message.createReply(QVariant::fromValue(children));
  }
  const auto found = m_objects.constFind(message.path());
  if (found == m_objects.cend())
    return message.createErrorReply(QDBusError::UnknownObject, u"no such object"_s);
  if (member == u"GetRole"_s) return message.createReply(found->role);
  if (member == u"GetState"_s) {
    const QList<unsigned> words{
        (found->isFocused ? focusedBit : 0U) | (found->isActive ? activeBit : 0U), 0U};
    return message.createReply(QVariant::fromValue(words));
  }
  if (found->parent.isEmpty())
    return message.createReply(QVariant::fromValue(QDBusVariant(u"nobody"_s)));
  const Reference parent{m_programName, QDBusObjectPath(found->parent)};
  return message.createReply(QVariant::fromValue(QDBusVariant(QVariant::fromValue(parent))));
}

QStringList ScriptedAccessibility::childrenOf(const QString& path) const {
  QStringList children;
  for (auto object = m_objects.cbegin(); object != m_objects.cend(); ++object) {
    if (object->parent == path) children.append(object.key());
  }
  std::ranges::sort(children);
  return children;
}

}  // namespace vemo
