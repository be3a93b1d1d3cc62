// Writes spoken code as code: vocabulary first, then operators.
//
// Main thread.
#pragma once

#include "shaping/RuleSequence.h"

namespace vemo {

class CodeRules {
 public:
  CodeRules();

  Shaped apply(const QString& text, const TimeBudget& budget) {
    return m_rules.apply(text, budget);
  }

 private:
  RuleSequence m_rules;
};

}  // namespace vemo
