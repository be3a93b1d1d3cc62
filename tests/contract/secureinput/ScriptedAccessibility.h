// An accessibility bus, its registry and one program on it, all in the test's hand.
//
// The objects form one tree: the registry's root, below it the program's, and below that what the
// test adds. They are served by a thread of their own, so that they answer while the test waits.
#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QHash>
#include <QMutex>
#include <QThread>

#include "contract/bus/PrivateBus.h"

namespace vemo {

struct ScriptedObject {
  unsigned role = 0;
  bool isFocused = false;
  bool isActive = false;
  QString parent;         ///< a path; empty when the object gives a wrong answer
  bool isSilent = false;  ///< it takes questions and answers none
};

class ScriptedAccessibility : public QDBusVirtualObject {
 public:
  ScriptedAccessibility();
  ~ScriptedAccessibility() override;

  /// Starts the bus whose address the session bus tells, and with it registry and program.
  void start();
  void kill();
  PrivateBus& bus() { return m_bus; }
  PrivateBus& sessionBus() { return m_sessionBus; }

  /// Adds an object or changes it.
  void set(const QString& path, const ScriptedObject& object);
  void remove(const QString& path);

  /// Has the program report that the focus has come to an object, or left it.
  void reportFocus(const QString& path, bool isFocused = true);

  /// A silent program takes questions and answers none.
  void setSilent(bool isSilent);

  /// Answers of a type that nobody expects.
  void setAnswersNonsense(bool answersNonsense);

  /// How many questions objects have been asked so far.
  int questions() const;

  /// Whether somebody has asked the registry for reports of the focus.
  bool isListenedTo() const;
  void forgetListeners();

  QString introspect(const QString& path) const override;
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

 private:
  QDBusConnection connect(const PrivateBus& bus, const QString& name);
  QDBusMessage answerTo(const QDBusMessage& message, const QString& asked) const;
  QStringList childrenOf(const QString& path) const;

  PrivateBus m_sessionBus;
  PrivateBus m_bus;
  QThread m_thread;
  QString m_programName;

  mutable QMutex m_mutex;
  QHash<QString, ScriptedObject> m_objects;
  bool m_isSilent = false;
  bool m_answersNonsense = false;
  bool m_isListenedTo = false;
  int m_questions = 0;
};

}  // namespace vemo
