// The functions of the formula language: the name table and what each
// function computes. Angles are in degrees.
#pragma once
#include <string>

#include "expr/context.h"
#include "expr/value.h"

namespace tz4 {

// π as every device and formula uses it: twelve digits, and its half.
constexpr double kFormulaPi = 3.14159265358;
constexpr double kFormulaHalfPi = 1.57079632679;

// Function code (36 to 79) of a name, ignoring case; 0 when the name is no
// function.
int FindFunction(const std::string& name);

// Evaluates function code with its count arguments into result. component
// is what the first argument names for V, I and P (null if nothing).
void ApplyFunction(int code, TValue& result, const TValue* args, int count, CCmp* component,
                   CEvalContext* context, CEvalSimulation* simulation);

// The standard library's rand scaled to 0..32767, the range that random()
// and gauss() are defined on; seeded by srand.
int Rand15();

}  // namespace tz4
