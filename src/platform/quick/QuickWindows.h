// The windows themselves: the QML engine, from the first window that opens to the last that closes.
//
// Main thread only; made by the program through makeVemoWindowSet().
#pragma once

#include <QQmlEngine>
#include <QQuickView>
#include <functional>
#include <map>
#include <memory>

#include "platform/quick/WindowSet.h"

namespace vemo {

class QuickWindows : public QObject, public WindowSet {
 public:
  QuickWindows(QString symbolsFolder, std::function<void()> onClosed);
  ~QuickWindows() override;

  void open(Scene scene, QObject& model) override;
  void close(Scene scene) override;
  bool isOpen(Scene scene) const override { return m_views.contains(scene); }
  void setLook(const WindowLook& look) override;
  std::vector<quintptr> identifiers() const override;

 private:
  struct Shown {
    std::unique_ptr<QQuickView> view;
    QObject* model;
  };

  void makeEngine();
  std::unique_ptr<QQuickView> makeView(Scene scene, QObject& model);
  void closed(Scene scene);

  const QString m_symbolsFolder;
  const std::function<void()> m_onClosed;
  WindowLook m_look;
  std::unique_ptr<QQmlEngine> m_engine;
  std::map<Scene, Shown> m_views;
};

}  // namespace vemo
