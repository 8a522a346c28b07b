// The run behaviour of the function blocks. A block writes its result as the
// source of its output row at each time point, from the solution of the
// point before, so it never couples its inputs to its output in the matrix;
// the integrator and the "Linear" bus are the exceptions and take part in
// the solve.
#include <cmath>
#include <exception>

#include "components/cmps.h"
#include "devices/function_block.h"
#include "expr/evaluate.h"
#include "expr/numtext.h"
#include "expr/text.h"
#include "solver/calc.h"
#include "solver/calc_simulation.h"

namespace tz4 {

namespace {

constexpr double kPi = 3.14159265358;

// The segment of a sorted axis for x: the smallest i from 1 to n - 2 with
// axis[i] > x, else n - 1; the fraction along it is not limited, so values
// beyond either end are extrapolated; equal ends give 0.
void Locate(const double* axis, int n, double x, int& lower, double& fraction) {
  lower = 0;
  fraction = 0.0;
  if (n < 2) return;
  int i = n - 1;
  for (int k = 1; k <= n - 2; ++k)
    if (axis[k] > x) {
      i = k;
      break;
    }
  lower = i - 1;
  if (CompareDouble(axis[i - 1], axis[i]) == 0) return;
  fraction = (x - axis[i - 1]) / (axis[i] - axis[i - 1]);
}

bool ReadNumbers(const std::string& text, std::vector<double>& out, std::string& failure) {
  TStringList words;
  SplitWords(text, words);
  try {
    for (int i = 0; i < words.Count(); ++i) out.push_back(TextToDouble(words[i]));
  } catch (const std::exception& e) {
    failure = e.what();
    return false;
  }
  return true;
}

}  // namespace

bool CElemF::CheckParams() {
  const int32_t model = ModelId();
  if (model == MODEL_SUBCIR || IsLogicFunction()) return true;
  bool ok = true;
  auto ic = [&] { ok &= CheckFinite(this, Ic, "IC"); };
  auto k = [&] { ok &= CheckFinite(this, K, "K"); };
  switch (model) {
    case MODEL_F_FUNCTION:
    case MODEL_F_TABLE:
      if (!IsBus()) ic();
      break;
    case MODEL_F_PWR:
      k();
      if (IsType("F_1")) ok &= CheckFinite(this, Power, "power");
      ic();
      break;
    case MODEL_F_INT:
      k();
      if (!CheckValid(this, Resolution, "Resolution"))
        ok = false;
      else if (Resolution.Value < 0)
        ok = ComponentError(this, "Resolution < 0");
      else if (std::isinf(Resolution.Value))
        ok = ComponentError(this, "Resolution = infinite");
      ic();
      break;
    case MODEL_F_LIM: {
      const bool limits = CheckFinite(this, Max, "Max") & CheckFinite(this, Min, "Min");
      if (limits && Max.Value < Min.Value) ok = ComponentError(this, "Max < Min");
      ok &= limits;
      break;
    }
    case MODEL_F_GT:
    case MODEL_F_LT:
    case MODEL_F_LINEAR:
      break;
    default:
      k();
      ic();
      break;
  }
  return ok;
}

bool CElemF::ReadTables(CCalc& calc) {
  TableData.clear();
  TableCount = TableNx = TableNy = 0;
  if (ModelId() != MODEL_F_TABLE) return true;
  std::string failure;
  const std::string wrongCount = GetFullName() + " : wrong number of Table parameters";
  if (IsType("F_1")) {
    if (!ReadNumbers(Table, TableData, failure)) {
      calc.error = GetFullName() + " : " + failure;
      return false;
    }
    if (TableData.size() % 2 != 0) {
      calc.error = wrongCount;
      return false;
    }
    TableCount = static_cast<int32_t>(TableData.size() / 2);
    return true;
  }
  std::vector<double> x, y, entries;
  if (!ReadNumbers(TableX, x, failure) || !ReadNumbers(TableY, y, failure) ||
      !ReadNumbers(Table, entries, failure)) {
    calc.error = GetFullName() + " : " + failure;
    return false;
  }
  if (entries.size() != x.size() * y.size() || entries.empty()) {
    calc.error = wrongCount;
    return false;
  }
  TableNx = static_cast<int32_t>(x.size());
  TableNy = static_cast<int32_t>(y.size());
  TableData = x;
  TableData.insert(TableData.end(), y.begin(), y.end());
  TableData.insert(TableData.end(), entries.begin(), entries.end());
  return true;
}

double CElemF::Table1(double a) const {
  const int n = TableCount;
  if (n == 0) return 0.0;
  if (n == 1) return TableData[1];
  std::vector<double> x(static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) x[static_cast<size_t>(i)] = TableData[static_cast<size_t>(2 * i)];
  int lower = 0;
  double u = 0.0;
  Locate(x.data(), n, a, lower, u);
  const double y0 = TableData[static_cast<size_t>(2 * lower + 1)];
  const double y1 = TableData[static_cast<size_t>(2 * lower + 3)];
  return y0 + u * (y1 - y0);
}

double CElemF::Table2(double a, double b) const {
  const int nx = TableNx, ny = TableNy;
  const double* x = TableData.data();
  const double* y = x + nx;
  const double* table = y + ny;
  int i = 0, j = 0;
  double u = 0.0, v = 0.0;
  Locate(x, nx, a, i, u);
  Locate(y, ny, b, j, v);
  const int i1 = nx > 1 ? i + 1 : i, j1 = ny > 1 ? j + 1 : j;
  auto at = [&](int col, int row) { return table[row * nx + col]; };
  return (1 - u) * (1 - v) * at(i, j) + u * (1 - v) * at(i1, j) + (1 - u) * v * at(i, j1) +
         u * v * at(i1, j1);
}

double CElemF::BusSum(const CCalc& calc, bool levels) const {
  const int n = InputCount();
  double sum = 0.0;
  for (int i = 0; i < n; ++i) {
    const double weight = std::ldexp(1.0, n - 1 - i) * (i == 0 && Format.Index == 1 ? -1.0 : 1.0);
    const double v = calc.V(Pin(static_cast<size_t>(i)));
    sum += weight * (levels ? (v > calc.thr ? 1.0 : 0.0) : (v - calc.low) / (calc.high - calc.low));
  }
  return sum;
}

double CElemF::Arithmetic(const CCalc& calc, double a, double b) const {
  const double k = K.Value;
  switch (ModelId()) {
    case MODEL_F_PWR: {
      const double p = IsType("F_1") ? Power.Value : b;
      const double sign = a > 0 ? 1.0 : -1.0;
      if (a == 0) return 0.0;
      if (p == 0) return sign * k;
      if (p == 1) return a * k;
      if (p == 0.5) return sign * std::sqrt(std::fabs(a)) * k;
      return sign * std::pow(std::fabs(a), p) * k;
    }
    case MODEL_F_ABS:
      return std::fabs(a) * k;
    case MODEL_F_INT:
      return Resolution.Value > 0 ? std::floor(a / Resolution.Value + 0.5) * Resolution.Value * k
                                  : a * k;
    case MODEL_F_LIM:
      return a >= Max.Value ? Max.Value : a <= Min.Value ? Min.Value : a;
    case MODEL_F_MUL:
      return a * b * k;
    case MODEL_F_DIV:
      return b == 0 ? 0.0 : a / b * k;
    case MODEL_F_SUM:
      return (a + b) * k;
    case MODEL_F_SUB:
      return (a - b) * k;
    case MODEL_F_MAX:
      return std::fmax(a, b) * k;
    case MODEL_F_MIN:
      return std::fmin(a, b) * k;
    case MODEL_F_GT:
      return a > b ? calc.high : calc.low;
    case MODEL_F_LT:
      return a < b ? calc.high : calc.low;
    case MODEL_F_MAG:
      return std::sqrt(b * b + a * a) * k;
    case MODEL_F_PHASE:
      return a == 0 && b == 0 ? 0.0 : std::atan2(a, b) * 180.0 / kPi * k;
    case MODEL_F_TABLE:
      return IsType("F_1") ? Table1(a) : Table2(a, b);
    default:
      return 0.0;
  }
}

bool CElemF::Evaluate(CCalc& calc, double t, double& out) {
  const bool logic = IsLogicFunction();
  if ((*Variables[0]).Values.empty()) return false;
  Variables[0]->Values[0] = TValue::MakeDouble(t);
  const int n = InputCount();
  for (int i = 0; i < n && i + 1 < Variables.Count(); ++i) {
    const double v = calc.V(Pin(static_cast<size_t>(i)));
    Variables[i + 1]->Values[0] = logic ? TValue::MakeBool(v > calc.thr) : TValue::MakeDouble(v);
  }
  try {
    CCalcSimulation simulation(calc);
    TValue result = TValue::MakeDouble(0.0);
    const double value = EvaluateExpression(Func, owner, &Variables, &simulation, &result, false);
    if (logic) {
      ConvertValue(result, VT_BOOL);
      out = result.B ? calc.high : calc.low;
    } else {
      out = value;
    }
  } catch (const std::exception& e) {
    calc.error = GetFullName() + " : " + e.what();
    return false;
  }
  return true;
}

bool CElemF::Compute(CCalc& calc, double t, double& out) {
  if (ModelId() == MODEL_F_FUNCTION) {
    if (IsBus()) {
      out = BusSum(calc, true);
      return true;
    }
    return Evaluate(calc, t, out);
  }
  const int n = InputCount();
  const double a = n >= 1 ? calc.V(Pin(0)) : 0.0;
  const double b = n >= 2 ? calc.V(Pin(1)) : 0.0;
  out = Arithmetic(calc, a, b);
  return true;
}

void CElemF::StampOutput(CCalc& calc) const {
  const int out = Pin(static_cast<size_t>(OutputPin())), r = firstRow;
  const int32_t model = ModelId();
  if (model == MODEL_F_LINEAR) {
    // V(out) = the weighted sum of the inputs as fractions of the logic span.
    calc.AddCoupling(out, r, 1.0);
    calc.SetCoupling(r, out, 1.0);
    const int n = InputCount();
    const double span = calc.high - calc.low;
    double constant = 0.0;
    for (int i = 0; i < n; ++i) {
      const double w = std::ldexp(1.0, n - 1 - i) * (i == 0 && Format.Index == 1 ? -1.0 : 1.0);
      calc.AddCoupling(r, Pin(static_cast<size_t>(i)), -w / span);
      constant += w * calc.low / span;
    }
    calc.SetConstant(r, constant);
    return;
  }
  if (model == MODEL_F_INTEGRAL && calc.stampMode != 0) {
    // dV(out)/dt = K V(in).
    calc.AddCoupling(out, r, 1.0);
    calc.AddCoupling(r, Pin(0), -K.Value);
    calc.SetDerivative(r, out, 1.0);
    return;
  }
  calc.StampOutVoltage(0, out, r, 0.0);
  if (Clocked != 0 && model != MODEL_F_INTEGRAL)
    calc.SetConstant(r, -Value);
  else
    calc.MarkRow(r);
}

int CElemF::Stamp(CCalc& calc, int phase, double t) {
  const int32_t model = ModelId();
  if (model == MODEL_SUBCIR) return 0;
  switch (phase) {
    case STAMP_INIT:
      if (model != prevModelId) {
        Value = IsLogicFunction() ? (LogicIc != 0 ? calc.high : calc.low) : Ic.Value;
        state = 0;
      }
      return ReadTables(calc) ? 0 : -1;
    case STAMP_RESET:
      TableData.clear();
      return 0;
    case STAMP_ACCEPT:
      Value = calc.V(Pin(static_cast<size_t>(OutputPin())));
      return 0;
    case STAMP_MATRIX:
      if (calc.pass != 0) return 0;
      if (OutputPin() < 0 || Pin(static_cast<size_t>(OutputPin())) == 0) {
        calc.error = GetFullName() + " : grounded output";
        return -1;
      }
      StampOutput(calc);
      return 0;
    case STAMP_SOURCE: {
      if (Clocked != 0 || model == MODEL_F_LINEAR) return 0;
      if (model == MODEL_F_INTEGRAL && calc.stampMode != 0) return 0;
      double out = Value;
      if (calc.stampMode != 0 && !Compute(calc, t, out)) return -1;
      calc.SetSource(firstRow, -out);
      return 0;
    }
    case STAMP_SAVE_IC:
      if (model == MODEL_F_LINEAR) return 0;
      Ic.Value = Value;
      Ic.Text.clear();
      LogicIc = calc.thr <= Value ? 1 : 0;
      return 0;
    default:
      return 0;
  }
}

bool CElemF::PostStep(CCalc& calc, bool apply, double t, bool& changed) {
  changed = false;
  if (Clocked == 0 || pins.empty()) return true;
  const int32_t level = calc.V(pins.back()) > calc.thr ? 1 : 0;
  if (level == state) return true;
  changed = true;
  if (!apply) return true;
  if (level == 1) {
    double out = Value;
    if (!Compute(calc, t, out)) return false;
    Value = out;
  }
  state = level;
  return true;
}

}  // namespace tz4
