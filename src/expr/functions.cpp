// The functions of the formula language.
#include "expr/functions.h"

#include <cmath>
#include <cstdlib>
#include <iterator>
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
const FunctionName kLength1[] = {{FN_V, "V"}, {FN_I, "I"}, {FN_P, "P"}, {0, nullptr}};
const FunctionName kLength2[] = {{FN_SQ, "sq"}, {FN_LOG10, "lg"}, {FN_LOG, "ln"}, {FN_LOG2, "lb"}, {FN_TAN, "tg"},
                                 {FN_DB, "db"}, {FN_RE, "re"}, {FN_IM, "im"}, {0, nullptr}};
const FunctionName kLength3[] = {{FN_ABS, "abs"}, {FN_MIN, "min"}, {FN_MAX, "max"}, {FN_EXP, "exp"}, {FN_POW, "pow"},
                                 {FN_PWR, "pwr"}, {FN_SQR, "sqr"}, {OP_CAST_INT, "int"}, {FN_LOG, "log"}, {FN_ABS, "mag"},
                                 {FN_SIN, "sin"}, {FN_COS, "cos"}, {FN_TAN, "tan"}, {FN_PAR, "par"}, {FN_LIMIT, "lim"},
                                 {FN_SUM, "sum"}, {0, nullptr}};
const FunctionName kLength4[] = {{FN_SQRT, "sqrt"}, {OP_CAST_BOOL, "bool"}, {FN_SIGN, "sign"}, {FN_LOG2, "log2"},
                                 {FN_ASIN, "asin"}, {FN_ACOS, "acos"}, {FN_ATAN, "atan"}, {FN_CEIL, "ceil"},
                                 {FN_MEAN, "mean"}, {FN_RANDOM, "rand"}, {0, nullptr}};
const FunctionName kLength5[] = {{OP_CAST_INT64, "int64"}, {FN_ROUND, "round"}, {FN_ISLOW, "islow"}, {FN_LOG10, "log10"},
                                 {FN_PHASE, "phase"}, {FN_ATAN2, "atan2"}, {OP_CAST_FLOAT, "float"}, {FN_FLOOR, "floor"},
                                 {FN_LIMIT, "limit"}, {FN_GAUSS, "gauss"}, {0, nullptr}};
const FunctionName kLength6[] = {{OP_CAST_DOUBLE, "double"}, {FN_ISHIGH, "ishigh"}, {FN_RANDOM, "random"}, {0, nullptr}};
const FunctionName kLength7[] = {{OP_CAST_COMPLEX, "complex"}, {FN_MEAN, "average"}, {0, nullptr}};
const FunctionName* const kFormulaFunctionTable[] = {kLength1, kLength2, kLength3, kLength4,
                                                     kLength5, kLength6, kLength7};

// The name by which the messages of a function code call it.
const char* MessageName(int code);

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
  const bool isMax = code == FN_MAX;
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
  const bool mean = code == FN_MEAN;
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
  const int kind = code - FN_V;  // 0 V, 1 I, 2 P
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

// ---- the functions ----

namespace {

// One call of a function: its code, its arguments and where it may look.
struct Call {
  int code;
  TValue& result;
  const TValue* args;
  int count;
  CCmp* component;
  CEvalContext* context;
  CEvalSimulation* simulation;

  // Checks the count, and with `real` that no argument is complex.
  void Expect(int least, int most, bool real = false) const {
    CheckCount(code, count, least, most);
    if (real) CheckReal(code, args, count);
  }
  double Arg(int i) const { return Real(args[i]); }
};

constexpr int kMany = std::numeric_limits<int>::max();

void FloorCeil(const Call& c) {
  c.Expect(1, 1, true);
  c.result = TValue::MakeDouble(c.code == FN_FLOOR ? std::floor(c.Arg(0)) : std::ceil(c.Arg(0)));
}

void Round(const Call& c) {
  c.Expect(1, 2, true);
  const double x = c.Arg(0);
  if (c.count == 1) {
    c.result = TValue::MakeDouble(std::floor(x + 0.5));
  } else {
    const double step = c.Arg(1);
    c.result = TValue::MakeDouble(step > 0 ? std::floor(x / step + 0.5) * step : x);
  }
}

// sin, cos and tan of degrees, exactly 0 within 1e-15 of their zeros.
void Trigonometric(const Call& c) {
  c.Expect(1, 1, true);
  const double x = c.Arg(0);
  const double zeroAt = c.code == FN_COS ? x + 90 : x;
  double r;
  if (std::fabs(std::fmod(zeroAt, 180)) < 1e-15)
    r = 0.0;
  else if (c.code == FN_SIN)
    r = std::sin(x / 180 * kFormulaPi);
  else if (c.code == FN_COS)
    r = std::cos(x / 180 * kFormulaPi);
  else
    r = std::tan(x / 180 * kFormulaPi);
  c.result = TValue::MakeDouble(r);
}

void InverseTrigonometric(const Call& c) {
  c.Expect(1, 1, true);
  const double x = c.Arg(0);
  const double r = c.code == FN_ASIN ? std::asin(x) : c.code == FN_ACOS ? std::acos(x) : std::atan(x);
  c.result = TValue::MakeDouble(Degrees(r));
}

void Atan2(const Call& c) {
  c.Expect(1, 2, true);
  const double y = c.Arg(0);
  if (c.count == 1) {
    c.result = TValue::MakeDouble(Degrees(std::atan2(y, 1.0)));
  } else {
    const double x = c.Arg(1);
    c.result = TValue::MakeDouble(x == 0 && y == 0 ? 0.0 : Degrees(std::atan2(y, x)));
  }
}

void Phase(const Call& c) {
  c.Expect(1, 1);
  const TValue v = AsComplex(c.args[0]);
  c.result = TValue::MakeDouble(v.Dbl == 0 && v.Im == 0 ? 0.0 : Degrees(std::atan2(v.Im, v.Dbl)));
}

void Sqrt(const Call& c) {
  c.Expect(1, 1);
  const TValue& v = c.args[0];
  if (v.Type != VT_COMPLEX) {
    c.result = TValue::MakeDouble(std::sqrt(Real(v)));
  } else if (v.Im == 0) {
    c.result = v.Dbl >= 0 ? TValue::MakeComplex(std::sqrt(v.Dbl), 0.0)
                          : TValue::MakeComplex(0.0, std::sqrt(-v.Dbl));
  } else {
    c.result = SnappedPolar(std::sqrt(std::sqrt(v.Dbl * v.Dbl + v.Im * v.Im)),
                            std::atan2(v.Im, v.Dbl) * 0.5);
  }
}

void SignedSqrt(const Call& c) {
  c.Expect(1, 1, true);
  const double x = c.Arg(0);
  c.result = TValue::MakeDouble(x >= 0 ? std::sqrt(x) : -std::sqrt(-x));
}

void Square(const Call& c) {
  c.Expect(1, 1);
  const TValue& v = c.args[0];
  if (v.Type == VT_COMPLEX) {
    c.result = TValue::MakeComplex(v.Dbl * v.Dbl - v.Im * v.Im, 2 * v.Dbl * v.Im);
  } else {
    const double x = Real(v);
    c.result = TValue::MakeDouble(x * x);
  }
}

void Exp(const Call& c) {
  c.Expect(1, 1);
  const TValue& v = c.args[0];
  if (v.Type != VT_COMPLEX) {
    c.result = TValue::MakeDouble(std::exp(Real(v)));
    return;
  }
  const double r = std::sqrt(v.Dbl * v.Dbl + v.Im * v.Im);
  const double t = r == 0 ? 0.0 : std::atan2(v.Im, v.Dbl);
  c.result = SnappedPolar(std::exp(r * std::cos(t)), r * std::sin(t));
}

void Log(const Call& c) {
  c.Expect(1, 2);
  if (c.count == 2) {
    if (c.args[1].Type == VT_COMPLEX) Raise("Function 'log' : complex base not allowed");
    c.result = LogToBase(c.args[0], c.Arg(1), false, false);
  } else if (c.args[0].Type == VT_COMPLEX) {
    c.result = ComplexLog(c.args[0]);
  } else {
    c.result = TValue::MakeDouble(std::log(c.Arg(0)));
  }
}

void Log10Log2(const Call& c) {
  c.Expect(1, 1);
  const bool ten = c.code == FN_LOG10;
  c.result = LogToBase(c.args[0], ten ? 10.0 : 2.0, ten, !ten);
}

void Pow(const Call& c) {
  c.Expect(2, 2);
  if (c.args[1].Type == VT_COMPLEX) Raise("Function 'pow' : complex power not allowed");
  const double p = c.Arg(1);
  const TValue& base = c.args[0];
  if (base.Type == VT_COMPLEX) {
    if (base.Dbl == 0 && base.Im == 0) {
      c.result = TValue::MakeComplex(0.0, 0.0);
    } else {
      const double m = std::pow(std::sqrt(base.Dbl * base.Dbl + base.Im * base.Im), p);
      c.result = SnappedPolar(m, std::atan2(base.Im, base.Dbl) * p);
    }
  } else {
    const double x = Real(base);
    c.result = TValue::MakeDouble(x == 0 ? 0.0 : std::pow(x, p));
  }
}

void SignedPow(const Call& c) {
  c.Expect(2, 2, true);
  const double x = c.Arg(0), y = c.Arg(1);
  c.result = TValue::MakeDouble(x > 0 ? std::pow(x, y) : -std::pow(-x, y));
}

// abs of one value keeps its type; of several, the sum of the magnitudes.
void Abs(const Call& c) {
  c.Expect(1, kMany);
  if (c.count > 1) {
    double sum = 0;
    for (int i = 0; i < c.count; i++) sum += Magnitude(c.args[i]);
    c.result = TValue::MakeDouble(sum);
    return;
  }
  const TValue& v = c.args[0];
  switch (v.Type) {
    case VT_COMPLEX: c.result = TValue::MakeDouble(Magnitude(v)); break;
    case VT_DOUBLE: c.result = TValue::MakeDouble(std::fabs(v.Dbl)); break;
    case VT_INT64:
      c.result = TValue::MakeInt64(
          v.I64 < 0 ? static_cast<int64_t>(0 - static_cast<uint64_t>(v.I64)) : v.I64);
      break;
    default: {
      TValue i = v;
      ConvertValue(i, VT_INT);
      c.result = TValue::MakeInt(
          i.I32 < 0 ? static_cast<int32_t>(0 - static_cast<uint32_t>(i.I32)) : i.I32);
    }
  }
}

void Sign(const Call& c) {
  c.Expect(1, 1, true);
  const double x = c.Arg(0);
  c.result = TValue::MakeInt(x > 0 ? 1 : x < 0 ? -1 : 0);
}

void Decibel(const Call& c) {
  c.Expect(1, 2, true);
  double x = c.Arg(0);
  if (c.count == 2) x /= c.Arg(1);
  c.result = TValue::MakeDouble(20 * std::log10(std::fabs(x)));
}

void MinOrMax(const Call& c) {
  if (c.count < 1) Raise("Functions 'min' and 'max' : wrong number of parameters");
  MinMax(c.code, c.result, c.args, c.count);
}

void MeanOrSum(const Call& c) {
  if (c.count < 1) Raise("Functions 'mean' and 'sum' : wrong number of parameters");
  MeanSum(c.code, c.result, c.args, c.count);
}

void Cast(const Call& c) {
  c.Expect(1, 1);
  static const int kTypes[] = {VT_INT, VT_INT64, VT_DOUBLE, VT_DOUBLE, VT_COMPLEX, VT_BOOL};
  TValue v = c.args[0];
  ConvertValue(v, kTypes[c.code - OP_CAST_INT]);
  c.result = v;
}

void TraceFunction(const Call& c) { Trace(c.code, c.result, c.component, c.simulation); }

void RealImaginary(const Call& c) {
  c.Expect(1, 1);
  const TValue v = AsComplex(c.args[0]);
  c.result = TValue::MakeDouble(c.code == FN_RE ? v.Dbl : v.Im);
}

void Random(const Call& c) {
  c.Expect(1, 1, true);
  c.result = TValue::MakeDouble(Rand15() * c.Arg(0) / 32767.0);
}

void GaussFunction(const Call& c) {
  c.Expect(2, 2, true);
  c.result = TValue::MakeDouble(Gauss(c.Arg(0), c.Arg(1)));
}

void ParallelFunction(const Call& c) {
  c.Expect(1, kMany);
  Parallel(c.result, c.args, c.count);
}

void Limit(const Call& c) {
  c.Expect(3, 3, true);
  const double x = c.Arg(0), lo = c.Arg(1), hi = c.Arg(2);
  c.result = TValue::MakeDouble(lo > x ? lo : x > hi ? hi : x);
}

void LogicLevel(const Call& c) {
  c.Expect(1, 1, true);
  const double threshold =
      c.context != nullptr ? c.context->LogicThreshold() : CEvalContext().LogicThreshold();
  const double x = c.Arg(0);
  c.result = TValue::MakeBool(c.code == FN_ISLOW ? x < threshold : x >= threshold);
}

// One row per code from FN_FLOOR to FN_ISHIGH, in code order: the name the
// messages use and what the function computes.
struct FunctionEntry {
  int code;
  const char* name;
  void (*apply)(const Call&);
};

constexpr FunctionEntry kFunctions[] = {
    {.code = FN_FLOOR, .name = "floor", .apply = FloorCeil},
    {.code = FN_CEIL, .name = "ceil", .apply = FloorCeil},
    {.code = FN_ROUND, .name = "round", .apply = Round},
    {.code = FN_SIN, .name = "sin", .apply = Trigonometric},
    {.code = FN_COS, .name = "cos", .apply = Trigonometric},
    {.code = FN_TAN, .name = "tan", .apply = Trigonometric},
    {.code = FN_ASIN, .name = "asin", .apply = InverseTrigonometric},
    {.code = FN_ACOS, .name = "acos", .apply = InverseTrigonometric},
    {.code = FN_ATAN, .name = "atan", .apply = InverseTrigonometric},
    {.code = FN_ATAN2, .name = "atan2", .apply = Atan2},
    {.code = FN_PHASE, .name = "phase", .apply = Phase},
    {.code = FN_SQRT, .name = "sqrt", .apply = Sqrt},
    {.code = FN_SQR, .name = "sqr", .apply = SignedSqrt},
    {.code = FN_SQ, .name = "sq", .apply = Square},
    {.code = FN_EXP, .name = "exp", .apply = Exp},
    {.code = FN_LOG, .name = "log", .apply = Log},
    {.code = FN_LOG10, .name = "log10", .apply = Log10Log2},
    {.code = FN_LOG2, .name = "log2", .apply = Log10Log2},
    {.code = FN_POW, .name = "pow", .apply = Pow},
    {.code = FN_PWR, .name = "pwr", .apply = SignedPow},
    {.code = FN_ABS, .name = "abs", .apply = Abs},
    {.code = FN_SIGN, .name = "sign", .apply = Sign},
    {.code = FN_DB, .name = "db", .apply = Decibel},
    {.code = FN_MIN, .name = "?", .apply = MinOrMax},
    {.code = FN_MAX, .name = "?", .apply = MinOrMax},
    {.code = FN_MEAN, .name = "?", .apply = MeanOrSum},
    {.code = FN_SUM, .name = "?", .apply = MeanOrSum},
    {.code = OP_CAST_INT, .name = "int", .apply = Cast},
    {.code = OP_CAST_INT64, .name = "int64", .apply = Cast},
    {.code = OP_CAST_DOUBLE, .name = "double", .apply = Cast},
    {.code = OP_CAST_FLOAT, .name = "double", .apply = Cast},
    {.code = OP_CAST_COMPLEX, .name = "complex", .apply = Cast},
    {.code = OP_CAST_BOOL, .name = "bool", .apply = Cast},
    {.code = FN_V, .name = "V", .apply = TraceFunction},
    {.code = FN_I, .name = "I", .apply = TraceFunction},
    {.code = FN_P, .name = "P", .apply = TraceFunction},
    {.code = FN_RE, .name = "re", .apply = RealImaginary},
    {.code = FN_IM, .name = "im", .apply = RealImaginary},
    {.code = FN_RANDOM, .name = "random", .apply = Random},
    {.code = FN_GAUSS, .name = "gauss", .apply = GaussFunction},
    {.code = FN_PAR, .name = "par", .apply = ParallelFunction},
    {.code = FN_LIMIT, .name = "limit", .apply = Limit},
    {.code = FN_ISLOW, .name = "islow", .apply = LogicLevel},
    {.code = FN_ISHIGH, .name = "ishigh", .apply = LogicLevel},
};
static_assert(std::size(kFunctions) == OP_LAST_FUNCTION - OP_FIRST_FUNCTION + 1);

constexpr bool InCodeOrder() {
  for (size_t i = 0; i < std::size(kFunctions); ++i)
    if (kFunctions[i].code != OP_FIRST_FUNCTION + static_cast<int>(i)) return false;
  return true;
}
static_assert(InCodeOrder(), "kFunctions must list the codes in order");

const FunctionEntry* EntryOf(int code) {
  if (code < OP_FIRST_FUNCTION || code > OP_LAST_FUNCTION) return nullptr;
  return &kFunctions[code - OP_FIRST_FUNCTION];
}

const char* MessageName(int code) {
  const FunctionEntry* entry = EntryOf(code);
  return entry != nullptr ? entry->name : "?";
}

}  // namespace

void ApplyFunction(int code, TValue& result, const TValue* args, int count, CCmp* component,
                   CEvalContext* context, CEvalSimulation* simulation) {
  const FunctionEntry* entry = EntryOf(code);
  if (entry == nullptr) return;
  entry->apply(Call{code, result, args, count, component, context, simulation});
}

}  // namespace tz4
