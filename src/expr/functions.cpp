// The functions of the formula language.
#include "expr/functions.h"

#include <cmath>
#include <cstdlib>
#include <limits>

#include "expr/lists.h"
#include "expr/opcodes.h"
#include "base/raise.h"
#include "expr/text.h"

namespace tz4 {

namespace {

struct FunctionName {
  int code;
  const char* name;
};

// Names grouped by length, each group ended by code 0.
const FunctionName kLength1[] = {{69, "V"}, {70, "I"}, {71, "P"}, {0, nullptr}};
const FunctionName kLength2[] = {{49, "sq"}, {52, "lg"}, {51, "ln"}, {53, "lb"}, {41, "tg"},
                                 {58, "db"}, {72, "re"}, {73, "im"}, {0, nullptr}};
const FunctionName kLength3[] = {{56, "abs"}, {59, "min"}, {60, "max"}, {50, "exp"}, {54, "pow"},
                                 {55, "pwr"}, {48, "sqr"}, {63, "int"}, {51, "log"}, {56, "mag"},
                                 {39, "sin"}, {40, "cos"}, {41, "tan"}, {76, "par"}, {77, "lim"},
                                 {62, "sum"}, {0, nullptr}};
const FunctionName kLength4[] = {{47, "sqrt"}, {68, "bool"}, {57, "sign"}, {53, "log2"},
                                 {42, "asin"}, {43, "acos"}, {44, "atan"}, {37, "ceil"},
                                 {61, "mean"}, {74, "rand"}, {0, nullptr}};
const FunctionName kLength5[] = {{64, "int64"}, {38, "round"}, {78, "islow"}, {52, "log10"},
                                 {46, "phase"}, {45, "atan2"}, {66, "float"}, {36, "floor"},
                                 {77, "limit"}, {75, "gauss"}, {0, nullptr}};
const FunctionName kLength6[] = {{65, "double"}, {79, "ishigh"}, {74, "random"}, {0, nullptr}};
const FunctionName kLength7[] = {{67, "complex"}, {61, "average"}, {0, nullptr}};
const FunctionName* const kFormulaFunctionTable[] = {kLength1, kLength2, kLength3, kLength4,
                                                     kLength5, kLength6, kLength7};

// The name used in the messages of each code.
const char* MessageName(int code) {
  switch (code) {
    case 36: return "floor";
    case 37: return "ceil";
    case 38: return "round";
    case 39: return "sin";
    case 40: return "cos";
    case 41: return "tan";
    case 42: return "asin";
    case 43: return "acos";
    case 44: return "atan";
    case 45: return "atan2";
    case 46: return "phase";
    case 47: return "sqrt";
    case 48: return "sqr";
    case 49: return "sq";
    case 50: return "exp";
    case 51: return "log";
    case 52: return "log10";
    case 53: return "log2";
    case 54: return "pow";
    case 55: return "pwr";
    case 56: return "abs";
    case 57: return "sign";
    case 58: return "db";
    case 63: return "int";
    case 64: return "int64";
    case 65:
    case 66: return "double";
    case 67: return "complex";
    case 68: return "bool";
    case 69: return "V";
    case 70: return "I";
    case 71: return "P";
    case 72: return "re";
    case 73: return "im";
    case 74: return "random";
    case 75: return "gauss";
    case 76: return "par";
    case 77: return "limit";
    case 78: return "islow";
    case 79: return "ishigh";
    default: return "?";
  }
}

[[noreturn]] void RaiseFunction(int code, const char* what) {
  std::string text = "Function '";
  text += MessageName(code);
  text += "' : ";
  text += what;
  Raise(text);
}

void CheckCount(int code, int count, int least, int most) {
  if (count < least || count > most) RaiseFunction(code, "wrong number of parameters");
}

// All arguments must be real; they are read as doubles.
void CheckReal(int code, const TValue* args, int count) {
  for (int i = 0; i < count; i++)
    if (args[i].Type == VT_COMPLEX)
      RaiseFunction(code, count == 1 ? "complex argument not allowed" : "complex arguments not allowed");
}

double Real(const TValue& v) { return ValueToDouble(v); }

TValue AsComplex(TValue v) {
  ConvertValue(v, VT_COMPLEX);
  if (v.Type != VT_COMPLEX) v = TValue::MakeComplex(0, 0);
  return v;
}

double Magnitude(const TValue& v) {
  if (v.Type == VT_COMPLEX) return std::sqrt(v.Dbl * v.Dbl + v.Im * v.Im);
  return std::fabs(Real(v));
}

// A complex number from polar form, with parts that vanish within 1e-15 of
// their zeros set exactly to 0.
TValue SnappedPolar(double magnitude, double angle) {
  TValue r = TValue::MakeComplex(0.0, 0.0);
  if (std::fabs(std::fmod(angle, kFormulaPi)) >= 1e-15) r.Im = std::sin(angle) * magnitude;
  if (std::fabs(std::fmod(angle + kFormulaHalfPi, kFormulaPi)) >= 1e-15)
    r.Dbl = std::cos(angle) * magnitude;
  return r;
}

TValue ComplexLog(const TValue& v) {
  return TValue::MakeComplex(std::log(std::sqrt(v.Dbl * v.Dbl + v.Im * v.Im)),
                             std::atan2(v.Im, v.Dbl));
}

// Logarithm to a base: complex arguments divide both parts.
TValue LogToBase(const TValue& x, double base, bool exactBase10, bool exactBase2) {
  if (x.Type == VT_COMPLEX) {
    TValue r = ComplexLog(x);
    double d = std::log(base);
    return TValue::MakeComplex(r.Dbl / d, r.Im / d);
  }
  double v = Real(x);
  if (exactBase10) return TValue::MakeDouble(std::log10(v));
  if (exactBase2) return TValue::MakeDouble(std::log2(v));
  return TValue::MakeDouble(std::log(v) / std::log(base));
}

void MinMax(int code, TValue& result, const TValue* args, int count) {
  const bool isMax = code == 60;
  if (count == 1 && args[0].Type == VT_ARRAY) {
    const TVariable* var = args[0].Var;
    if (var == nullptr || var->Size < 1 || var->Values.empty())
      Raise("Functions 'min' and 'max' : wrong number of parameters");
    const int type = var->Values[0].Type;
    if (type == VT_COMPLEX) Raise("Functions 'min' and 'max' : complex arguments not allowed");
    const size_t size = std::min(static_cast<size_t>(var->Size), var->Values.size());
    TValue best = var->Values[0];
    for (size_t i = 1; i < size; i++) {
      TValue v = var->Values[i];
      ConvertValue(v, type);
      switch (type) {
        case VT_DOUBLE:
          if (isMax ? v.Dbl > best.Dbl : v.Dbl < best.Dbl) best = v;
          break;
        case VT_INT64:
          if (isMax ? v.I64 > best.I64 : v.I64 < best.I64) best = v;
          break;
        case VT_INT:
          if (isMax ? v.I32 > best.I32 : v.I32 < best.I32) best = v;
          break;
        case VT_BOOL: best.B = isMax ? (best.B || v.B) : (best.B && v.B); break;
      }
    }
    result = best;
    return;
  }
  int type = VT_BOOL;
  for (int i = 0; i < count; i++) {
    if (args[i].Type == VT_ARRAY) Raise("Functions 'min' and 'max' : wrong number of parameters");
    if (args[i].Type < type) type = args[i].Type;
  }
  if (type == VT_COMPLEX) Raise("Functions 'min' and 'max' : complex arguments not allowed");
  TValue best = args[0];
  ConvertValue(best, type);
  for (int i = 1; i < count; i++) {
    TValue v = args[i];
    ConvertValue(v, type);
    bool better = false;
    switch (type) {
      case VT_DOUBLE: better = isMax ? v.Dbl > best.Dbl : v.Dbl < best.Dbl; break;
      case VT_INT64: better = isMax ? v.I64 > best.I64 : v.I64 < best.I64; break;
      case VT_INT: better = isMax ? v.I32 > best.I32 : v.I32 < best.I32; break;
      case VT_BOOL: better = isMax ? (v.B && !best.B) : (!v.B && best.B); break;
    }
    if (better) best = v;
  }
  result = best;
}

void MeanSum(int code, TValue& result, const TValue* args, int count) {
  const bool mean = code == 61;
  if (count == 1 && args[0].Type == VT_ARRAY) {
    const TVariable* var = args[0].Var;
    if (var == nullptr || var->Size < 1 || var->Values.empty())
      Raise("Functions 'mean' and 'sum' : wrong number of parameters");
    const size_t size = std::min(static_cast<size_t>(var->Size), var->Values.size());
    if (var->Values[0].Type == VT_COMPLEX) {
      double re = 0, im = 0;
      for (size_t i = 0; i < size; i++) {
        TValue v = AsComplex(var->Values[i]);
        re += v.Dbl;
        im += v.Im;
      }
      if (mean) {
        re /= static_cast<double>(size);
        im /= static_cast<double>(size);
      }
      result = TValue::MakeComplex(re, im);
    } else {
      double sum = 0;
      for (size_t i = 0; i < size; i++) sum += Real(var->Values[i]);
      result = TValue::MakeDouble(mean ? sum / static_cast<double>(size) : sum);
    }
    return;
  }
  bool complex = false;
  for (int i = 0; i < count; i++) {
    if (args[i].Type == VT_ARRAY) Raise("Functions 'mean' and 'sum' : wrong number of parameters");
    if (args[i].Type == VT_COMPLEX) complex = true;
  }
  double re = 0, im = 0;
  for (int i = 0; i < count; i++) {
    if (complex) {
      TValue v = AsComplex(args[i]);
      re += v.Dbl;
      im += v.Im;
    } else {
      re += Real(args[i]);
    }
  }
  if (mean) {
    re /= count;
    im /= count;
  }
  result = complex ? TValue::MakeComplex(re, im) : TValue::MakeDouble(re);
}

void Parallel(TValue& result, const TValue* args, int count) {
  bool complex = false;
  for (int i = 0; i < count; i++)
    if (args[i].Type == VT_COMPLEX) complex = true;
  if (!complex) {
    double a = Real(args[0]);
    for (int i = 1; i < count; i++) {
      double b = Real(args[i]);
      a = a * b / (a + b);
    }
    result = TValue::MakeDouble(a);
    return;
  }
  TValue a = AsComplex(args[0]);
  for (int i = 1; i < count; i++) {
    TValue b = AsComplex(args[i]);
    double pr = a.Dbl * b.Dbl - a.Im * b.Im;
    double pi = a.Dbl * b.Im + a.Im * b.Dbl;
    double sr = a.Dbl + b.Dbl;
    double si = a.Im + b.Im;
    double k = 1.0 / (sr * sr + si * si);
    a = TValue::MakeComplex((pr * sr + pi * si) * k, (pi * sr - pr * si) * k);
  }
  result = a;
}

double Gauss(double mean, double sigma) {
  double u, s;
  do {
    u = 2.0 * Rand15() / 32767.0 - 1.0;
    double v = 2.0 * Rand15() / 32767.0 - 1.0;
    s = u * u + v * v;
  } while (s >= 1 || s <= 0);
  return mean + std::sqrt(-2.0 * std::log(s) / s) * u * sigma;
}

void Trace(int code, TValue& result, CCmp* component, CEvalSimulation* simulation) {
  const int kind = code - 69;  // 0 V, 1 I, 2 P
  const char* letter = kind == 0 ? "V" : kind == 1 ? "I" : "P";
  if (simulation == nullptr) Raise(std::string("Function '") + letter + "' not allowed");
  if (component == nullptr) return;
  if ((simulation->TraceMask(component) & (1 << kind)) == 0)
    Raise(std::string("'") + letter + "' trace not supported by " +
          simulation->ComponentName(component));
  int nodeA = -1, nodeB = -1, row = -1;
  double resistance = 0;
  bool info = simulation->GetTraceInfo(component, kind, nodeA, nodeB, row, resistance);
  double value = 0;
  if (kind == 0) {
    if (nodeA != -1 && nodeB != -1) value = simulation->Solution(nodeB) - simulation->Solution(nodeA);
  } else if (!info) {
    value = simulation->GetTraceValue(component, kind);
  } else if (nodeA != -1 && nodeB != -1) {
    double v = simulation->Solution(nodeB) - simulation->Solution(nodeA);
    if (kind == 1) {
      if (row > 0)
        value = simulation->Solution(row);
      else if (resistance != 0)
        value = v / resistance;
    } else {
      if (row > 0)
        value = v * simulation->Solution(row);
      else if (resistance != 0)
        value = v * (v / resistance);
    }
  }
  result = TValue::MakeDouble(value);
}

double Degrees(double radians) { return radians * 180 / kFormulaPi; }

}  // namespace

int Rand15() {
  return static_cast<int>(static_cast<long long>(std::rand()) * 32768 /
                          (static_cast<long long>(RAND_MAX) + 1));
}

int FindFunction(const std::string& name) {
  if (name.empty() || name.size() > 7) return 0;
  for (const FunctionName* f = kFormulaFunctionTable[name.size() - 1]; f->code != 0; f++)
    if (SameText(name, f->name)) return f->code;
  return 0;
}

void ApplyFunction(int code, TValue& result, const TValue* args, int count, CCmp* component,
                   CEvalContext* context, CEvalSimulation* simulation) {
  switch (code) {
    case 36:
    case 37:
      CheckCount(code, count, 1, 1);
      CheckReal(code, args, count);
      result = TValue::MakeDouble(code == 36 ? std::floor(Real(args[0])) : std::ceil(Real(args[0])));
      return;
    case 38: {
      CheckCount(code, count, 1, 2);
      CheckReal(code, args, count);
      double x = Real(args[0]);
      if (count == 1) {
        result = TValue::MakeDouble(std::floor(x + 0.5));
      } else {
        double step = Real(args[1]);
        result = TValue::MakeDouble(step > 0 ? std::floor(x / step + 0.5) * step : x);
      }
      return;
    }
    case 39:
    case 40:
    case 41: {
      CheckCount(code, count, 1, 1);
      CheckReal(code, args, count);
      double x = Real(args[0]);
      double zeroAt = code == 40 ? x + 90 : x;
      double r;
      if (std::fabs(std::fmod(zeroAt, 180)) < 1e-15)
        r = 0.0;
      else if (code == 39)
        r = std::sin(x / 180 * kFormulaPi);
      else if (code == 40)
        r = std::cos(x / 180 * kFormulaPi);
      else
        r = std::tan(x / 180 * kFormulaPi);
      result = TValue::MakeDouble(r);
      return;
    }
    case 42:
    case 43:
    case 44: {
      CheckCount(code, count, 1, 1);
      CheckReal(code, args, count);
      double x = Real(args[0]);
      double r = code == 42 ? std::asin(x) : code == 43 ? std::acos(x) : std::atan(x);
      result = TValue::MakeDouble(Degrees(r));
      return;
    }
    case 45: {
      CheckCount(code, count, 1, 2);
      CheckReal(code, args, count);
      double y = Real(args[0]);
      if (count == 1) {
        result = TValue::MakeDouble(Degrees(std::atan2(y, 1.0)));
      } else {
        double x = Real(args[1]);
        result = TValue::MakeDouble(x == 0 && y == 0 ? 0.0 : Degrees(std::atan2(y, x)));
      }
      return;
    }
    case 46: {
      CheckCount(code, count, 1, 1);
      TValue v = AsComplex(args[0]);
      result = TValue::MakeDouble(v.Dbl == 0 && v.Im == 0 ? 0.0 : Degrees(std::atan2(v.Im, v.Dbl)));
      return;
    }
    case 47: {
      CheckCount(code, count, 1, 1);
      const TValue& v = args[0];
      if (v.Type != VT_COMPLEX) {
        result = TValue::MakeDouble(std::sqrt(Real(v)));
      } else if (v.Im == 0) {
        result = v.Dbl >= 0 ? TValue::MakeComplex(std::sqrt(v.Dbl), 0.0)
                            : TValue::MakeComplex(0.0, std::sqrt(-v.Dbl));
      } else {
        result = SnappedPolar(std::sqrt(std::sqrt(v.Dbl * v.Dbl + v.Im * v.Im)),
                              std::atan2(v.Im, v.Dbl) * 0.5);
      }
      return;
    }
    case 48: {
      CheckCount(code, count, 1, 1);
      CheckReal(code, args, count);
      double x = Real(args[0]);
      result = TValue::MakeDouble(x >= 0 ? std::sqrt(x) : -std::sqrt(-x));
      return;
    }
    case 49: {
      CheckCount(code, count, 1, 1);
      const TValue& v = args[0];
      if (v.Type == VT_COMPLEX) {
        result = TValue::MakeComplex(v.Dbl * v.Dbl - v.Im * v.Im, 2 * v.Dbl * v.Im);
      } else {
        double x = Real(v);
        result = TValue::MakeDouble(x * x);
      }
      return;
    }
    case 50: {
      CheckCount(code, count, 1, 1);
      const TValue& v = args[0];
      if (v.Type != VT_COMPLEX) {
        result = TValue::MakeDouble(std::exp(Real(v)));
        return;
      }
      double r = std::sqrt(v.Dbl * v.Dbl + v.Im * v.Im);
      double t = r == 0 ? 0.0 : std::atan2(v.Im, v.Dbl);
      double a = r * std::cos(t);
      double b = r * std::sin(t);
      result = SnappedPolar(std::exp(a), b);
      return;
    }
    case 51: {
      CheckCount(code, count, 1, 2);
      if (count == 2) {
        if (args[1].Type == VT_COMPLEX) Raise("Function 'log' : complex base not allowed");
        result = LogToBase(args[0], Real(args[1]), false, false);
      } else if (args[0].Type == VT_COMPLEX) {
        result = ComplexLog(args[0]);
      } else {
        result = TValue::MakeDouble(std::log(Real(args[0])));
      }
      return;
    }
    case 52:
    case 53:
      CheckCount(code, count, 1, 1);
      result = LogToBase(args[0], code == 52 ? 10.0 : 2.0, code == 52, code == 53);
      return;
    case 54: {
      CheckCount(code, count, 2, 2);
      if (args[1].Type == VT_COMPLEX) Raise("Function 'pow' : complex power not allowed");
      double p = Real(args[1]);
      const TValue& base = args[0];
      if (base.Type == VT_COMPLEX) {
        if (base.Dbl == 0 && base.Im == 0) {
          result = TValue::MakeComplex(0.0, 0.0);
        } else {
          double m = std::pow(std::sqrt(base.Dbl * base.Dbl + base.Im * base.Im), p);
          result = SnappedPolar(m, std::atan2(base.Im, base.Dbl) * p);
        }
      } else {
        double x = Real(base);
        result = TValue::MakeDouble(x == 0 ? 0.0 : std::pow(x, p));
      }
      return;
    }
    case 55: {
      CheckCount(code, count, 2, 2);
      CheckReal(code, args, count);
      double x = Real(args[0]), y = Real(args[1]);
      result = TValue::MakeDouble(x > 0 ? std::pow(x, y) : -std::pow(-x, y));
      return;
    }
    case 56: {
      CheckCount(code, count, 1, std::numeric_limits<int>::max());
      if (count > 1) {
        double sum = 0;
        for (int i = 0; i < count; i++) sum += Magnitude(args[i]);
        result = TValue::MakeDouble(sum);
        return;
      }
      const TValue& v = args[0];
      switch (v.Type) {
        case VT_COMPLEX: result = TValue::MakeDouble(Magnitude(v)); break;
        case VT_DOUBLE: result = TValue::MakeDouble(std::fabs(v.Dbl)); break;
        case VT_INT64:
          result = TValue::MakeInt64(v.I64 < 0 ? static_cast<int64_t>(0 - static_cast<uint64_t>(v.I64)) : v.I64);
          break;
        default: {
          TValue i = v;
          ConvertValue(i, VT_INT);
          result = TValue::MakeInt(i.I32 < 0 ? static_cast<int32_t>(0 - static_cast<uint32_t>(i.I32)) : i.I32);
        }
      }
      return;
    }
    case 57: {
      CheckCount(code, count, 1, 1);
      CheckReal(code, args, count);
      double x = Real(args[0]);
      result = TValue::MakeInt(x > 0 ? 1 : x < 0 ? -1 : 0);
      return;
    }
    case 58: {
      CheckCount(code, count, 1, 2);
      CheckReal(code, args, count);
      double x = Real(args[0]);
      if (count == 2) x /= Real(args[1]);
      result = TValue::MakeDouble(20 * std::log10(std::fabs(x)));
      return;
    }
    case 59:
    case 60:
      if (count < 1) Raise("Functions 'min' and 'max' : wrong number of parameters");
      MinMax(code, result, args, count);
      return;
    case 61:
    case 62:
      if (count < 1) Raise("Functions 'mean' and 'sum' : wrong number of parameters");
      MeanSum(code, result, args, count);
      return;
    case OP_CAST_INT:
    case OP_CAST_INT64:
    case OP_CAST_DOUBLE:
    case OP_CAST_FLOAT:
    case OP_CAST_COMPLEX:
    case OP_CAST_BOOL: {
      CheckCount(code, count, 1, 1);
      static const int kTypes[] = {VT_INT, VT_INT64, VT_DOUBLE, VT_DOUBLE, VT_COMPLEX, VT_BOOL};
      TValue v = args[0];
      ConvertValue(v, kTypes[code - OP_CAST_INT]);
      result = v;
      return;
    }
    case 69:
    case 70:
    case 71: Trace(code, result, component, simulation); return;
    case 72:
    case 73: {
      CheckCount(code, count, 1, 1);
      TValue v = AsComplex(args[0]);
      result = TValue::MakeDouble(code == 72 ? v.Dbl : v.Im);
      return;
    }
    case 74:
      CheckCount(code, count, 1, 1);
      CheckReal(code, args, count);
      result = TValue::MakeDouble(Rand15() * Real(args[0]) / 32767.0);
      return;
    case 75:
      CheckCount(code, count, 2, 2);
      CheckReal(code, args, count);
      result = TValue::MakeDouble(Gauss(Real(args[0]), Real(args[1])));
      return;
    case 76:
      CheckCount(code, count, 1, std::numeric_limits<int>::max());
      Parallel(result, args, count);
      return;
    case 77: {
      CheckCount(code, count, 3, 3);
      CheckReal(code, args, count);
      double x = Real(args[0]), lo = Real(args[1]), hi = Real(args[2]);
      result = TValue::MakeDouble(lo > x ? lo : x > hi ? hi : x);
      return;
    }
    case 78:
    case 79: {
      CheckCount(code, count, 1, 1);
      CheckReal(code, args, count);
      double threshold = context != nullptr ? context->LogicThreshold() : CEvalContext().LogicThreshold();
      double x = Real(args[0]);
      result = TValue::MakeBool(code == 78 ? x < threshold : x >= threshold);
      return;
    }
  }
}

}  // namespace tz4
