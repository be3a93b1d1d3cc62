// A sound server of the test's own, which it may freeze, kill and start again. While it lives,
// PULSE_SERVER points to it.
//
// It has a null sink "mic", whose monitor stands in for a microphone as the default source
// "virtmic", unless the test gives other modules.
#pragma once

#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

namespace vemo {

class SoundServer {
 public:
  static QStringList microphoneModules();
  static QStringList monitorAlone();

  explicit SoundServer(QStringList modules = microphoneModules());
  ~SoundServer();

  /// Starts the server and waits until it answers.
  void start();
  void kill();

  /// A frozen server keeps its connections and answers nothing.
  void freeze();
  void thaw();

  /// Points PULSE_SERVER to this server, which is there or not.
  void pointTo() const;

  /// Runs pactl with these arguments and returns what it prints.
  QString control(const QStringList& arguments) const;

  /// Loads a module and returns its index.
  QString load(const QString& module) const;

 private:
  void signal(int number) const;

  QTemporaryDir m_folder;
  const QStringList m_modules;
  QProcess m_process;
};

}  // namespace vemo
