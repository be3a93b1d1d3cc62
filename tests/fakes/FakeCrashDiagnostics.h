// Crashes that are told when the test says so. A crash that nobody listens for fails the test.
#pragma once

#include <gtest/gtest.h>

#include <utility>

#include "ports/CrashDiagnostics.h"

namespace vemo {

class FakeCrashDiagnostics : public CrashDiagnostics {
 public:
  void subscribe(std::function<void(Payload)> receive) override { m_receive = std::move(receive); }

  bool isSubscribed() const { return m_receive != nullptr; }

  void deliver(Payload payload) const {
    if (m_receive)
      m_receive(std::move(payload));
    else
      ADD_FAILURE() << "a crash is told, and nobody listens";
  }

 private:
  std::function<void(Payload)> m_receive;
};

}  // namespace vemo
