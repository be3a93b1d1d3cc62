#include "shaping/CodeRules.h"

#include "shaping/OperatorRules.h"
#include "shaping/VocabularyRules.h"

namespace vemo {

CodeRules::CodeRules() {
  m_rules.add(vocabularyRules, CaseMatching::Insensitive);
  m_rules.add(operatorRules, CaseMatching::Sensitive);
}

}  // namespace vemo
