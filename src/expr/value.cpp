// The tagged value: conversion, assignment with operator, increment and
// decrement, and text.
#include "expr/value.h"

#include <cmath>
#include <cstdio>
#include <limits>

#include "expr/numtext.h"
#include "expr/opcodes.h"
#include "base/raise.h"

namespace tz4 {

TValue TValue::MakeComplex(double re, double im) {
  TValue v;
  v.Type = VT_COMPLEX;
  v.Dbl = re;
  v.Im = im;
  return v;
}

TValue TValue::MakeDouble(double x) {
  TValue v;
  v.Type = VT_DOUBLE;
  v.Dbl = x;
  return v;
}

TValue TValue::MakeInt64(int64_t n) {
  TValue v;
  v.Type = VT_INT64;
  v.I64 = n;
  return v;
}

TValue TValue::MakeInt(int32_t n) {
  TValue v;
  v.Type = VT_INT;
  v.I64 = 0;
  v.I32 = n;
  return v;
}

TValue TValue::MakeBool(bool b) {
  TValue v;
  v.Type = VT_BOOL;
  v.I64 = 0;
  v.B = b;
  return v;
}

TValue TValue::MakeArray(TVariable* variable) {
  TValue v;
  v.Type = VT_ARRAY;
  v.I64 = 0;
  v.Var = variable;
  return v;
}

int64_t TruncateToInt64(double x) {
  // The processor's "integer indefinite" for what does not fit.
  if (!(x >= -9223372036854775808.0 && x < 9223372036854775808.0))
    return std::numeric_limits<int64_t>::min();
  return static_cast<int64_t>(x);
}

int32_t TruncateToInt32(double x) {
  if (!(x > -2147483649.0 && x < 2147483648.0)) return std::numeric_limits<int32_t>::min();
  return static_cast<int32_t>(x);
}

namespace {

bool IsNumeric(int type) { return type >= VT_COMPLEX && type <= VT_BOOL; }

}  // namespace

void ConvertValue(TValue* value, int type) {
  if (value == nullptr || value->Type == type) return;
  const TValue v = *value;
  if (type == VT_ARRAY) {
    // A number carries no array: the reference is null, never a reading of
    // the number's bits as an address.
    *value = TValue::MakeArray(nullptr);
    return;
  }
  if (!IsNumeric(type)) {
    value->Type = type;
    return;
  }
  if (v.Type == VT_ARRAY) {
    // An array reference carries no number.
    TValue zero;
    zero.Type = type;
    *value = zero;
    return;
  }
  if (!IsNumeric(v.Type)) {
    value->Type = type;
    return;
  }
  switch (type) {
    case VT_COMPLEX:
      switch (v.Type) {
        case VT_DOUBLE: *value = TValue::MakeComplex(v.Dbl, 0.0); break;
        case VT_INT64: *value = TValue::MakeComplex(static_cast<double>(v.I64), 0.0); break;
        case VT_INT: *value = TValue::MakeComplex(static_cast<double>(v.I32), 0.0); break;
        case VT_BOOL: *value = TValue::MakeComplex(v.B ? 1.0 : 0.0, 0.0); break;
      }
      break;
    case VT_DOUBLE:
      switch (v.Type) {
        case VT_COMPLEX: *value = TValue::MakeDouble(v.Dbl); break;
        case VT_INT64: *value = TValue::MakeDouble(static_cast<double>(v.I64)); break;
        case VT_INT: *value = TValue::MakeDouble(static_cast<double>(v.I32)); break;
        case VT_BOOL: *value = TValue::MakeDouble(v.B ? 1.0 : 0.0); break;
      }
      break;
    case VT_INT64:
      switch (v.Type) {
        case VT_COMPLEX:
        case VT_DOUBLE: *value = TValue::MakeInt64(TruncateToInt64(v.Dbl)); break;
        case VT_INT: *value = TValue::MakeInt64(v.I32); break;
        case VT_BOOL: *value = TValue::MakeInt64(v.B ? 1 : 0); break;
      }
      break;
    case VT_INT:
      switch (v.Type) {
        case VT_COMPLEX:
        case VT_DOUBLE: *value = TValue::MakeInt(TruncateToInt32(v.Dbl)); break;
        case VT_INT64:
          *value = TValue::MakeInt(static_cast<int32_t>(static_cast<uint32_t>(v.I64 & 0xFFFFFFFF)));
          break;
        case VT_BOOL: *value = TValue::MakeInt(v.B ? 1 : 0); break;
      }
      break;
    case VT_BOOL:
      switch (v.Type) {
        case VT_COMPLEX: *value = TValue::MakeBool(v.Dbl != 0 || v.Im != 0); break;
        case VT_DOUBLE: *value = TValue::MakeBool(v.Dbl != 0); break;
        case VT_INT64: *value = TValue::MakeBool(v.I64 != 0); break;
        case VT_INT: *value = TValue::MakeBool(v.I32 != 0); break;
      }
      break;
  }
}

void AssignValue(TValue& destination, TValue source) {
  ConvertValue(&source, destination.Type);
  destination = source;
}

double ValueToDouble(const TValue& value) {
  TValue v = value;
  ConvertValue(&v, VT_DOUBLE);
  return v.Type == VT_DOUBLE ? v.Dbl : 0.0;
}

namespace {

const char* AssignOperatorText(int op) {
  switch (op) {
    case OP_OR: return "|=";
    case OP_XOR: return "^=";
    case OP_AND: return "&=";
    case OP_SHR: return ">>=";
    case OP_SHL: return "<<=";
    default: return "";
  }
}

[[noreturn]] void RaiseArguments(int op, const char* kind) {
  std::string text = "Operator '";
  text += AssignOperatorText(op);
  text += "' : ";
  text += kind;
  text += " arguments not allowed";
  Raise(text);
}

// Sum and difference that cancel to within the comparison tolerance are
// exactly zero.
double SnappedAdd(double a, double b) { return CompareDouble(a, -b) == 0 ? 0.0 : a + b; }
double SnappedSub(double a, double b) { return CompareDouble(a, b) == 0 ? 0.0 : a - b; }

template <class T, class U>
T IntegerOperation(int op, T a, T b, int shiftMask) {
  U ua = static_cast<U>(a);
  U ub = static_cast<U>(b);
  switch (op) {
    case OP_OR: return a | b;
    case OP_XOR: return a ^ b;
    case OP_AND: return a & b;
    case OP_SHR: return a >> (b & shiftMask);
    case OP_SHL: return static_cast<T>(ua << (b & shiftMask));
    case OP_ADD: return static_cast<T>(ua + ub);
    case OP_SUB: return static_cast<T>(ua - ub);
    case OP_MUL: return static_cast<T>(ua * ub);
    case OP_DIV:
    case OP_MOD:
      if (b == 0 || (b == -1 && a == std::numeric_limits<T>::min())) Raise("Division by zero");
      return op == OP_DIV ? a / b : a % b;
  }
  Raise("Syntax error");
}

}  // namespace

void ApplyAssignOperator(int op, TValue& target, const TValue& source) {
  if (op == OP_EQ) {
    AssignValue(target, source);
    return;
  }
  TValue a = target;
  TValue b = source;
  int kind;
  if (a.Type == VT_COMPLEX || b.Type == VT_COMPLEX)
    kind = VT_COMPLEX;
  else if (a.Type == VT_DOUBLE || b.Type == VT_DOUBLE)
    kind = VT_DOUBLE;
  else if (a.Type == VT_INT64 || b.Type == VT_INT64)
    kind = VT_INT64;
  else
    kind = VT_INT;
  ConvertValue(&a, kind);
  ConvertValue(&b, kind);

  TValue r;
  switch (op) {
    case OP_OR:
    case OP_XOR:
    case OP_AND:
    case OP_SHR:
    case OP_SHL:
      if (kind == VT_COMPLEX) RaiseArguments(op, "complex");
      if (kind == VT_DOUBLE) RaiseArguments(op, "floating point");
      break;
    case OP_ADD:
    case OP_SUB:
    case OP_MUL:
    case OP_DIV:
    case OP_MOD:
      break;
    default:
      Raise("Syntax error");
  }

  if (kind == VT_INT64) {
    r = TValue::MakeInt64(IntegerOperation<int64_t, uint64_t>(op, a.I64, b.I64, 63));
  } else if (kind == VT_INT) {
    r = TValue::MakeInt(IntegerOperation<int32_t, uint32_t>(op, a.I32, b.I32, 31));
  } else if (kind == VT_DOUBLE) {
    double t = a.Dbl, s = b.Dbl, x = 0;
    switch (op) {
      case OP_ADD: x = SnappedAdd(t, s); break;
      case OP_SUB: x = SnappedSub(t, s); break;
      case OP_MUL: x = t * s; break;
      case OP_DIV: x = t / s; break;
      case OP_MOD: x = std::fmod(t, s); break;
    }
    r = TValue::MakeDouble(x);
  } else {
    double tr = a.Dbl, ti = a.Im, sr = b.Dbl, si = b.Im;
    switch (op) {
      case OP_ADD: r = TValue::MakeComplex(SnappedAdd(tr, sr), SnappedAdd(ti, si)); break;
      case OP_SUB: r = TValue::MakeComplex(SnappedSub(tr, sr), SnappedSub(ti, si)); break;
      case OP_MUL:
        if (ti == 0 && si == 0)
          r = TValue::MakeComplex(tr * sr, 0.0);
        else
          r = TValue::MakeComplex(tr * sr - ti * si, tr * si + ti * sr);
        break;
      case OP_DIV:
        if (ti == 0 && si == 0) {
          r = TValue::MakeComplex(tr / sr, 0.0);
        } else {
          double k = 1.0 / (sr * sr + si * si);
          r = TValue::MakeComplex((ti * si + tr * sr) * k, (ti * sr - si * tr) * k);
        }
        break;
      case OP_MOD:
        // This message is shared with the shift and names "<<=" on purpose.
        Raise("Operator '<<=' : complex arguments not allowed");
    }
  }
  ConvertValue(&r, target.Type);
  target = r;
}

namespace {

void Step(TValue& v, int direction) {
  switch (v.Type) {
    case VT_COMPLEX:
    case VT_DOUBLE: v.Dbl += direction; break;
    case VT_INT64: v.I64 = static_cast<int64_t>(static_cast<uint64_t>(v.I64) + static_cast<uint64_t>(direction)); break;
    case VT_INT: v.I32 = static_cast<int32_t>(static_cast<uint32_t>(v.I32) + static_cast<uint32_t>(direction)); break;
    case VT_BOOL: v.B = !v.B; break;
  }
}

}  // namespace

void ApplyIncDec(int mode, TValue* out, TValue& variable) {
  switch (mode) {
    case INCDEC_PRE_INC:
    case INCDEC_PRE_DEC:
      Step(variable, mode == INCDEC_PRE_INC ? 1 : -1);
      if (out != nullptr) *out = variable;
      break;
    case INCDEC_POST_INC:
    case INCDEC_POST_DEC:
      if (out != nullptr) *out = variable;
      Step(variable, mode == INCDEC_POST_INC ? 1 : -1);
      break;
    default:
      if (out != nullptr) *out = variable;
      break;
  }
}

std::string ValueToText(const TValue& value) {
  char buffer[32];
  switch (value.Type) {
    case VT_DOUBLE: return FormatNumber(value.Dbl, 12);
    case VT_INT64:
      std::snprintf(buffer, sizeof buffer, "%lld", static_cast<long long>(value.I64));
      return buffer;
    case VT_INT:
      std::snprintf(buffer, sizeof buffer, "%d", value.I32);
      return buffer;
    case VT_BOOL: return value.B ? "true" : "false";
    case VT_COMPLEX: {
      std::string text = FormatNumber(value.Dbl, 12);
      if (value.Im > 0)
        text += "+" + FormatNumber(value.Im, 12) + "j";
      else if (value.Im < 0)
        text += "-" + FormatNumber(-value.Im, 12) + "j";
      return text;
    }
    default: return "";
  }
}

}  // namespace tz4
