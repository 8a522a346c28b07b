// Arithmetic, bitwise, shift, comparison and logical operators of formulas
// and C-code.
#include "expr/operators.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "expr/numtext.h"
#include "expr/opcodes.h"
#include "base/raise.h"

namespace tz4 {

double CancellingAdd(double a, double b) { return CompareDouble(a, -b) == 0 ? 0.0 : a + b; }
double CancellingSub(double a, double b) { return CompareDouble(a, b) == 0 ? 0.0 : a - b; }

namespace {

const double kInfinity = std::numeric_limits<double>::infinity();

const char* OperatorText(int op) {
  switch (op) {
    case OP_OR: return "|";
    case OP_XOR: return "^";
    case OP_AND: return "&";
    case OP_SHR: return ">>";
    case OP_SHL: return "<<";
    case OP_LE: return "<=";
    case OP_LT: return "<";
    case OP_GE: return ">=";
    case OP_GT: return ">";
    default: return "?";
  }
}

[[noreturn]] void RaiseOperator(int op, const char* what) {
  std::string text = "Operator '";
  text += OperatorText(op);
  text += what;
  Raise(text);
}

// The kind of a mixed operation: the lowest type code, with bool counting
// as int.
int CommonKind(const TValue& a, const TValue& b) {
  if (a.Type == VT_COMPLEX || b.Type == VT_COMPLEX) return VT_COMPLEX;
  if (a.Type == VT_DOUBLE || b.Type == VT_DOUBLE) return VT_DOUBLE;
  if (a.Type == VT_INT64 || b.Type == VT_INT64) return VT_INT64;
  return VT_INT;
}

void CheckIntegerDivision(int64_t a, int64_t b, int64_t most_negative) {
  if (b == 0 || (b == -1 && a == most_negative)) Raise("Division by zero");
}

template <class T, class U>
T Arithmetic(int op, T a, T b) {
  U ua = static_cast<U>(a), ub = static_cast<U>(b);
  switch (op) {
    case OP_ADD: return static_cast<T>(ua + ub);
    case OP_SUB: return static_cast<T>(ua - ub);
    case OP_MUL: return static_cast<T>(ua * ub);
    default:
      CheckIntegerDivision(a, b, std::numeric_limits<T>::min());
      return a / b;
  }
}

void ApplyArithmetic(int op, TValue& a, TValue b, bool integerArithmetic) {
  if (!integerArithmetic && a.Type == VT_INT && b.Type == VT_INT) {
    ConvertValue(a, VT_DOUBLE);
    ConvertValue(b, VT_DOUBLE);
  }
  const int kind = CommonKind(a, b);
  ConvertValue(a, kind);
  ConvertValue(b, kind);
  switch (kind) {
    case VT_COMPLEX: {
      double ar = a.Dbl, ai = a.Im, br = b.Dbl, bi = b.Im;
      switch (op) {
        case OP_ADD: a = TValue::MakeComplex(CancellingAdd(ar, br), CancellingAdd(ai, bi)); break;
        case OP_SUB: a = TValue::MakeComplex(CancellingSub(ar, br), CancellingSub(ai, bi)); break;
        case OP_MUL: a = TValue::MakeComplex(ar * br - ai * bi, ar * bi + ai * br); break;
        default: {
          double d = br * br + bi * bi;
          if (d == 0)
            a = TValue::MakeComplex(kInfinity, 0.0);
          else
            a = TValue::MakeComplex((ai * bi + ar * br) / d, (ai * br - bi * ar) / d);
        }
      }
      break;
    }
    case VT_DOUBLE: {
      double x = a.Dbl, y = b.Dbl, r;
      switch (op) {
        case OP_ADD: r = CancellingAdd(x, y); break;
        case OP_SUB: r = CancellingSub(x, y); break;
        case OP_MUL: r = x * y; break;
        default:
          // Division by zero is +infinity whatever the sign of the dividend,
          // and by an infinity 0.
          if (y == 0)
            r = kInfinity;
          else if (std::isinf(y))
            r = 0.0;
          else
            r = x / y;
      }
      a = TValue::MakeDouble(r);
      break;
    }
    case VT_INT64: a = TValue::MakeInt64(Arithmetic<int64_t, uint64_t>(op, a.I64, b.I64)); break;
    default: a = TValue::MakeInt(Arithmetic<int32_t, uint32_t>(op, a.I32, b.I32)); break;
  }
}

void ApplyBitwise(int op, TValue& a, TValue b) {
  const int kind = CommonKind(a, b);
  if (kind == VT_COMPLEX) RaiseOperator(op, "' : complex arguments not allowed");
  if (kind == VT_DOUBLE) RaiseOperator(op, "' : floating point arguments not allowed");
  ConvertValue(a, kind);
  ConvertValue(b, kind);
  if (kind == VT_INT64) {
    int64_t x = a.I64, y = b.I64;
    a = TValue::MakeInt64(op == OP_OR ? (x | y) : op == OP_XOR ? (x ^ y) : (x & y));
  } else {
    int32_t x = a.I32, y = b.I32;
    a = TValue::MakeInt(op == OP_OR ? (x | y) : op == OP_XOR ? (x ^ y) : (x & y));
  }
}

void ApplyShift(int op, TValue& a, TValue b) {
  const int kind = CommonKind(a, b);
  if (kind == VT_COMPLEX) RaiseOperator(op, "' : complex arguments not allowed");
  if (kind == VT_DOUBLE) RaiseOperator(op, "' : floating point arguments not allowed");
  ConvertValue(b, VT_INT);
  if (a.Type == VT_INT64) {
    int count = b.I32 & 63;
    if (op == OP_SHR)
      a.I64 = a.I64 >> count;
    else
      a.I64 = static_cast<int64_t>(static_cast<uint64_t>(a.I64) << count);
  } else {
    ConvertValue(a, VT_INT);
    int count = b.I32 & 31;
    if (op == OP_SHR)
      a.I32 = a.I32 >> count;
    else
      a.I32 = static_cast<int32_t>(static_cast<uint32_t>(a.I32) << count);
  }
}

void ApplyComparison(int op, TValue& a, TValue b) {
  const int kind = CommonKind(a, b);
  ConvertValue(a, kind);
  ConvertValue(b, kind);
  int sign;  // -1, 0, 1 for a below, equal to, above b
  switch (kind) {
    case VT_COMPLEX: {
      bool equal = CompareDouble(a.Dbl, b.Dbl) == 0 && CompareDouble(a.Im, b.Im) == 0;
      if (op == OP_EQ || op == OP_NE) {
        a = TValue::MakeBool(op == OP_EQ ? equal : !equal);
        return;
      }
      RaiseOperator(op, "': complex arguments not allowed");
    }
    case VT_DOUBLE: sign = CompareDouble(a.Dbl, b.Dbl); break;
    case VT_INT64: sign = a.I64 < b.I64 ? -1 : a.I64 > b.I64 ? 1 : 0; break;
    default: sign = a.I32 < b.I32 ? -1 : a.I32 > b.I32 ? 1 : 0; break;
  }
  bool r = false;
  switch (op) {
    case OP_EQ: r = sign == 0; break;
    case OP_NE: r = sign != 0; break;
    case OP_LE: r = sign <= 0; break;
    case OP_LT: r = sign < 0; break;
    case OP_GE: r = sign >= 0; break;
    case OP_GT: r = sign > 0; break;
  }
  a = TValue::MakeBool(r);
}

bool Truth(TValue v) {
  ConvertValue(v, VT_BOOL);
  return v.Type == VT_BOOL && v.B;
}

}  // namespace

void ApplyBinaryOperator(int op, TValue& a, const TValue& b, bool integerArithmetic) {
  switch (op) {
    case OP_ADD:
    case OP_SUB:
    case OP_MUL:
    case OP_DIV: ApplyArithmetic(op, a, b, integerArithmetic); return;
    case OP_MOD:
      if (a.Type == VT_COMPLEX || b.Type == VT_COMPLEX)
        Raise("Function 'fmod' : complex arguments not allowed");
      a = TValue::MakeDouble(std::fmod(ValueToDouble(a), ValueToDouble(b)));
      return;
    case OP_OR:
    case OP_XOR:
    case OP_AND: ApplyBitwise(op, a, b); return;
    case OP_SHR:
    case OP_SHL: ApplyShift(op, a, b); return;
    case OP_EQ:
    case OP_NE:
    case OP_LE:
    case OP_LT:
    case OP_GE:
    case OP_GT: ApplyComparison(op, a, b); return;
    case OP_ANDAND: a = TValue::MakeBool(Truth(a) && Truth(b)); return;
    case OP_OROR: a = TValue::MakeBool(Truth(a) || Truth(b)); return;
  }
}

void ApplyUnaryOperator(int op, TValue& result, const TValue& operand) {
  TValue v = operand;
  switch (op) {
    case OP_NOT: result = TValue::MakeBool(!Truth(v)); return;
    case OP_INV:
      if (v.Type == VT_COMPLEX) Raise("Operator '~' : complex argument not allowed");
      if (v.Type == VT_DOUBLE) Raise("Operator '~' : floating point argument not allowed");
      if (v.Type == VT_INT64) {
        result = TValue::MakeInt64(~v.I64);
      } else {
        ConvertValue(v, VT_INT);
        result = TValue::MakeInt(~v.I32);
      }
      return;
    case OP_NEG:
      switch (v.Type) {
        case VT_COMPLEX: result = TValue::MakeComplex(v.Dbl == 0 ? 0.0 : -v.Dbl, -v.Im); return;
        case VT_DOUBLE: result = TValue::MakeDouble(-v.Dbl); return;
        case VT_INT64:
          result = TValue::MakeInt64(static_cast<int64_t>(0 - static_cast<uint64_t>(v.I64)));
          return;
        default:
          ConvertValue(v, VT_INT);
          result = TValue::MakeInt(static_cast<int32_t>(0 - static_cast<uint32_t>(v.I32)));
          return;
      }
  }
}

}  // namespace tz4
