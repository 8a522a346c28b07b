// A number or formula text held by a component.
// (Class layout fixed with the component layer; the evaluator implements
// Update in formula.cpp.)
#pragma once
#include <string>

namespace tz4 {

class CEvalContext;  // name resolution for formulas: document, components, simulation

class CFormula {
 public:
  CFormula() = default;
  explicit CFormula(double value) : Value(value) {}
  virtual ~CFormula() = default;

  // Re-evaluates Text (when not empty) with `context` resolving names
  // (null: constants and numbers only). Plain numbers are evaluated once and
  // their text emptied; text beginning with "=" stays a formula. Returns true
  // when Value changed. A raised failure passes through and leaves Invalid set.
  bool Update(CEvalContext* context);

  std::string Text;      // formula text; empty means a plain number
  double Value = 0.0;    // the last value
  bool Invalid = false;  // true while an evaluation runs; stays true when one failed
};

}  // namespace tz4
