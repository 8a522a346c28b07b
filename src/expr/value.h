// The tagged value of formulas and C-code: a type code, an 8-byte payload
// and an imaginary part that only complex values use.
#pragma once
#include <cstdint>
#include <string>

namespace tz4 {

struct TVariable;

// Type codes in order of promotion: in a mixed operation the lower code wins.
enum TValueType : int32_t {
  VT_COMPLEX = 0,
  VT_DOUBLE = 1,
  VT_INT64 = 2,
  VT_INT = 3,
  VT_BOOL = 4,
  VT_ARRAY = 5,  // payload points to the TVariable of an array
};

struct TValue {
  int32_t Type = VT_INT;
  union {
    double Dbl = 0.0;  // double, or the real part of a complex
    int64_t I64;
    int32_t I32;
    bool B;
    TVariable* Var;    // VT_ARRAY only
  };
  double Im = 0.0;     // imaginary part, VT_COMPLEX only

  static TValue MakeComplex(double re, double im);
  static TValue MakeDouble(double x);
  static TValue MakeInt64(int64_t n);
  static TValue MakeInt(int32_t n);
  static TValue MakeBool(bool b);
  static TValue MakeArray(TVariable* variable);

  bool IsReal() const { return Type != VT_COMPLEX; }
};

// Converts in place; a null value or an equal type does nothing. An array
// converted to a number gives zero of that type (its pointer is no number),
// and a number converted to VT_ARRAY a null array reference.
void ConvertValue(TValue* value, int type);
inline void ConvertValue(TValue& value, int type) { ConvertValue(&value, type); }

// Converts a copy of source to the destination's type and stores it; the
// destination's type never changes.
void AssignValue(TValue& destination, TValue source);

// The value as a double: complex gives its real part, integers are cast.
double ValueToDouble(const TValue& value);

// Assignment with operator (op codes of opcodes.h: 20 "=", 17..19, 26..32).
// Integer division or remainder by zero, and the most negative integer
// divided by -1, raise "Division by zero".
void ApplyAssignOperator(int op, TValue& target, const TValue& source);

// Increment/decrement modes.
enum IncDecMode : int {
  INCDEC_NONE = 0,
  INCDEC_PRE_INC = 1,
  INCDEC_PRE_DEC = 2,
  INCDEC_POST_INC = 3,
  INCDEC_POST_DEC = 4,
};

// Modes 1 and 2 change the variable, then copy it to out; 3 and 4 copy,
// then change; 0 only copies. A bool is inverted by both directions.
// out may be null.
void ApplyIncDec(int mode, TValue* out, TValue& variable);

// Any value to text: doubles at 12 digits, "true"/"false", "1+2j".
std::string ValueToText(const TValue& value);

// Truncation of a double toward zero as the processor does it: NaN and
// out-of-range values give the most negative integer.
int64_t TruncateToInt64(double x);
int32_t TruncateToInt32(double x);

}  // namespace tz4
