// A modifier key that is held to speak isn't meant for the application in front, but many take an
// Alt or Super that comes up alone for a wish: they put the focus into their menu bar, or open the
// desktop's overview.
//
// Main thread only.
#pragma once

namespace vemo {

class LoneModifier {
 public:
  virtual ~LoneModifier() = default;

  /// Lets the application in front see a key that means nothing, so that the modifiers now held no
  /// longer come up alone. Types nothing and changes nothing that is held. Where no such key can be
  /// had, does nothing.
  virtual void accompany() = 0;
};

}  // namespace vemo
