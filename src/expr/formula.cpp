// Formula values of component parameters and the test for circular
// references between them.
#include "expr/formula.h"

#include <unordered_set>
#include <vector>

#include "expr/evaluate.h"
#include "expr/numtext.h"
#include "base/raise.h"
#include "expr/text.h"

namespace tz4 {

bool CFormula::Update(CEvalContext* context) {
  if (Text.empty()) return false;
  Invalid = true;
  const double result = EvaluateExpression(Text, context, nullptr, nullptr, nullptr, false);
  // Values pass through their 12-digit text, so that a formula's value is
  // what the user would see and type.
  const std::string rounded = FormatNumber(result, 12);
  const double value = rounded.empty() ? result : TextToDouble(rounded);
  if (Text[0] != '=') Text.clear();
  Invalid = false;
  const bool changed = !(value == Value) && !(value != value && Value != Value);
  Value = value;
  return changed;
}

void ResolveCircularity(const CFormula* owner, const std::string& text, CEvalContext* context) {
  if (context == nullptr || text.empty()) return;
  // Walks the formulas that text refers to, each one once, so that a cycle
  // that does not pass through owner ends the walk instead of looping.
  std::vector<std::string> pending{text};
  std::unordered_set<const CFormula*> visited;
  while (!pending.empty()) {
    const std::string current = std::move(pending.back());
    pending.pop_back();
    int position = 1;
    for (;;) {
      int start = 0;
      const std::string name = NextIdentifier(current, position, start);
      if (name.empty()) break;
      const CFormula* formula = context->FindFormula(name);
      if (formula == nullptr) continue;
      if (formula == owner) Raise("Circular reference");
      if (visited.insert(formula).second && !formula->Text.empty()) pending.push_back(formula->Text);
    }
  }
}

}  // namespace tz4
