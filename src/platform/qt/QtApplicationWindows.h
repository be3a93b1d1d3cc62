// This program's windows, as Qt lists them.
//
// How a window is kept out of the task bar depends on the desktop: whoever knows it gets told of
// each policy through onPolicyChanged.
#pragma once

#include <functional>

#include "ports/ApplicationWindows.h"

namespace vemo {

class QtApplicationWindows : public ApplicationWindows {
 public:
  std::function<void(ActivationPolicy)> onPolicyChanged;

  void bringForward() override;
  void activate() override;
  ActivationPolicy activationPolicy() const override { return m_policy; }
  void setActivationPolicy(ActivationPolicy policy) override;

 private:
  ActivationPolicy m_policy = ActivationPolicy::Regular;
};

}  // namespace vemo
