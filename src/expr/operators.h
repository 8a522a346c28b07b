// What the operators of an expression compute.
#pragma once
#include "expr/value.h"

namespace tz4 {

// A binary operator (codes 15 to 32) with a as left operand and result.
// With integerArithmetic false, two ints are turned into doubles before
// "+", "-", "*" and "/".
void ApplyBinaryOperator(int op, TValue& a, const TValue& b, bool integerArithmetic);

// A unary operator: 33 "!", 34 "~", 35 "-".
void ApplyUnaryOperator(int op, TValue& result, const TValue& operand);

// Sum and difference of doubles that cancel to within the tolerance of
// CompareDouble are exactly 0.
double CancellingAdd(double a, double b);
double CancellingSub(double a, double b);

}  // namespace tz4
