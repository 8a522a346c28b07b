// A number or formula text held by a component parameter.
#pragma once
#include <string>

#include "expr/context.h"

namespace tz4 {

class CFormula {
 public:
  CFormula() = default;
  // A plain number as the initial value (a component's default).
  CFormula(double value) : Value(value) {}
  virtual ~CFormula() = default;

  std::string Text;     // formula text; empty means a plain number
  double Value = 0.0;   // the last value
  bool Invalid = false; // true while an evaluation runs; stays true after a failure

  // Evaluates Text (no variables, no simulation) and stores the result
  // rounded to 12 significant digits. A text not beginning with "=" is a
  // plain number: it is evaluated once and then emptied. Returns whether
  // Value changed; with empty Text nothing runs and the result is false.
  // A failure is raised and leaves Invalid true, Value and Text unchanged.
  bool Update(CEvalContext* context);
};

// Raises "Circular reference" when text depends, directly or through other
// parameter formulas, on owner. Does nothing without a context or text.
void ResolveCircularity(const CFormula* owner, const std::string& text, CEvalContext* context);

}  // namespace tz4
