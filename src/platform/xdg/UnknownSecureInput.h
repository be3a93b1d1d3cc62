// A desktop that doesn't tell what kind of field has the focus: unknown is not secure.
#pragma once

#include "ports/SecureInput.h"

namespace vemo {

class UnknownSecureInput : public SecureInput {
 public:
  bool isActive() const override { return false; }
};

}  // namespace vemo
