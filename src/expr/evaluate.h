// The formula evaluator: one pass over the text with a single stack of
// value-and-pending-operator entries. Nothing is cached; every evaluation
// reads the text anew.
#pragma once
#include <string>

#include "expr/context.h"
#include "expr/lists.h"
#include "expr/value.h"

namespace tz4 {

// Evaluates text and returns the result as a double; result, when given,
// receives the full value. context (names, logic levels), variables (a code
// block's variables) and simulation (V, I, P) may each be null; without a
// simulation V, I and P raise "Function 'V' not allowed" and the like.
// With integerArithmetic false (formulas) two ints are divided and
// multiplied as doubles; with true (C-code) integers stay integers.
// Failures are raised as RaisedError and leave result untouched.
double EvaluateExpression(const std::string& text, CEvalContext* context, CVarList* variables,
                          CEvalSimulation* simulation, TValue* result, bool integerArithmetic);

// EvaluateExpression with integer arithmetic: what C-code uses.
double EvaluateInteger(const std::string& text, CEvalContext* context, CVarList* variables,
                       CEvalSimulation* simulation, TValue* result);

}  // namespace tz4
