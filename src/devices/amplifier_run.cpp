// The run behaviour of amplifiers and comparators: the output is a voltage
// source to ground whose row holds a gain, a lagging gain, a limit, a
// comparator level, a table segment or a function of the input.
#include <cmath>
#include <exception>

#include "components/cmps.h"
#include "devices/amplifier.h"
#include "expr/evaluate.h"
#include "expr/numtext.h"
#include "solver/calc.h"
#include "solver/calc_simulation.h"

namespace tz4 {

namespace {

constexpr double kPi = 3.14159265358;

}  // namespace

double CElemO::Input(const CCalc& calc) const {
  if (IsType("O_OD")) return calc.V(Pin(0)) - calc.V(Pin(2));
  if (IsType("O_OS")) return calc.V(Pin(0)) + calc.V(Pin(2));
  if (IsType("O_VCG")) return calc.V(Pin(3)) - calc.V(Pin(2));
  if (IsType("O_CCG")) return calc.V(firstRow + 1);
  return calc.V(Pin(0));
}

bool CElemO::CheckParams() {
  const int32_t model = ModelId();
  auto limits = [this] {
    const bool ok = CheckFinite(this, Vhi, "Vhi") & CheckFinite(this, Vlo, "Vlo");
    return ok && (!(Vhi.Value < Vlo.Value) || ComponentError(this, "Vhi < Vlo"));
  };
  auto bandwidth = [this] {
    if (!CheckValid(this, F1, "f1")) return false;
    return !(F1.Value < 0) || ComponentError(this, "f1 < 0");
  };
  switch (model) {
    case MODEL_O_FUNCTION:
      return CheckFinite(this, FunctionIc, "IC");
    case MODEL_O_LINEAR:
      return CheckValid(this, K, "K") & bandwidth();
    case MODEL_O_OPAMP:
      return CheckValid(this, K, "K") & bandwidth() & limits() & CheckValid(this, OpAmpIc, "IC");
    case MODEL_O_COMPARATOR:
      return CheckNonNegative(this, Hysteresis, "Hysteresis") & limits() &
             CheckNonNegative(this, Delay, "Delay");
    default:
      return true;
  }
}

void CElemO::StampAmplifier(CCalc& calc, int in, int in2, double g) const {
  const int out = Pin(1), r = firstRow;
  calc.AddCoupling(out, r, 1.0);
  if (std::isinf(g)) {
    g = 1.0;
  } else {
    calc.AddCoupling(r, out, 1.0);
  }
  calc.AddCoupling(r, in, -g);
  calc.AddCoupling(r, in2, IsType("O_OS") ? -g : g);
}

void CElemO::StampOutput(CCalc& calc, double value) const {
  const int out = Pin(1), r = firstRow;
  calc.AddCoupling(out, r, 1.0);
  calc.SetCoupling(r, out, 1.0);
  calc.SetConstant(r, -value);
}

bool CElemO::LimitedOpAmp(bool finiteBandwidth) const {
  if (ModelId() != MODEL_O_OPAMP || K.Value == 0 || !(F1.Value > 0)) return false;
  return std::isinf(F1.Value) != finiteBandwidth;
}

int CElemO::StampLinear(CCalc& calc) const {
  if (state == 1 || state == -1) {
    StampOutput(calc, state == 1 ? Vhi.Value : Vlo.Value);
    return 0;
  }
  const int in2 = IsType("O_O") ? -1 : Pin(2);
  if (K.Value == 0 || !(F1.Value > 0)) {
    StampOutput(calc, 0.0);
  } else if (std::isinf(F1.Value)) {
    StampAmplifier(calc, Pin(0), in2, K.Value);
  } else if (calc.stampMode != 0) {
    // The output lags the input with the time constant of the bandwidth.
    StampAmplifier(calc, Pin(0), in2, K.Value);
    calc.SetDerivative(firstRow, Pin(1), Tau);
  } else if ((HasIc && !ignoreIC) || forceIC) {
    StampOutput(calc, HasIc ? IcValue : 0.0);
  } else {
    StampAmplifier(calc, Pin(0), in2, K.Value);
  }
  return 0;
}

int CElemO::Stamp(CCalc& calc, int phase, double t) {
  const int32_t model = ModelId();
  if (model == MODEL_SUBCIR) return 0;
  const int out = Pin(1), r = firstRow;
  switch (phase) {
    case STAMP_INIT:
      if (model != prevModelId) {
        if (model == MODEL_O_FUNCTION) IcValue = FunctionIc.Value;
        if (model == MODEL_O_COMPARATOR) {
          TargetState = state = ComparatorIc;
          SwitchTime = 0.0;
        }
      }
      if (prevModelId == 0 && model == MODEL_O_LINEAR) {
        state = 0;
        HasIc = !LinearIc.empty();
        try {
          IcValue = HasIc ? TextToDouble(LinearIc) : 0.0;
        } catch (const std::exception&) {
          calc.error = GetFullName() + " : IC : formula error";
          return -1;
        }
      }
      if (prevModelId == 0 && model == MODEL_O_OPAMP) {
        state = 0;
        IcValue = OpAmpIc.Value;
        HasIc = true;
        if (CompareDouble(IcValue, Vlo.Value) <= 0) {
          state = -1;
          IcValue = Vlo.Value;
        } else if (CompareDouble(IcValue, Vhi.Value) >= 0) {
          state = 1;
          IcValue = Vhi.Value;
        }
      }
      if (model == MODEL_O_LINEAR || model == MODEL_O_OPAMP) {
        Tau = 0.0;
        if (F1.Value > 0 && std::isfinite(F1.Value)) {
          Tau = 0.5 / F1.Value / kPi;
          if (std::isfinite(K.Value)) Tau *= std::fabs(K.Value);
        }
      }
      return 0;
    case STAMP_ACCEPT:
      IcValue = calc.V(out);
      HasIc = true;
      return 0;
    case STAMP_SAVE_IC:
      if (model == MODEL_O_COMPARATOR) ComparatorIc = state;
      if (model == MODEL_O_LINEAR) LinearIc = HasIc ? FormatNumber(IcValue, 12) : std::string();
      if (model == MODEL_O_OPAMP || model == MODEL_O_FUNCTION) {
        CFormula& ic = model == MODEL_O_OPAMP ? OpAmpIc : FunctionIc;
        ic.Value = IcValue;
        ic.Text.clear();
      }
      return 0;
    case STAMP_MATRIX:
      if (calc.pass != 0) return 0;
      if (out == 0) {
        calc.error = GetFullName() + " : grounded output";
        return -1;
      }
      switch (model) {
        case MODEL_O_LINEAR:
        case MODEL_O_OPAMP:
          return StampLinear(calc);
        case MODEL_O_COMPARATOR:
          StampOutput(calc, state == 1 ? Vhi.Value : Vlo.Value);
          return 0;
        case MODEL_O_FUNCTION:
          StampOutput(calc, 0.0);
          calc.MarkRow(r);
          return 0;
        default: {
          // The table's segment gives the gain; only the first input takes
          // part in the matrix.
          const int index = pwl.Index();
          const bool valid = index >= 0 && static_cast<size_t>(index) < pwl.Slope.size();
          const size_t i = static_cast<size_t>(index);
          StampAmplifier(calc, Pin(0), 0, valid ? pwl.Slope[i] : 0.0);
          if (IsType("O_CCG")) calc.StampVSource(Pin(2), Pin(3), r + 1, 0.0);
          if (!IsTypeIn({"O_VCG", "O_CCG"}) && valid && i < pwl.Intercept.size())
            calc.SetConstant(r, -pwl.Intercept[i]);
          return 0;
        }
      }
    case STAMP_SOURCE: {
      if (model != MODEL_O_FUNCTION) return 0;
      double value = IcValue;
      if (calc.stampMode != 0) {
        Variables[0]->Values[0] = TValue::MakeDouble(t);
        Variables[1]->Values[0] = TValue::MakeDouble(Input(calc));
        try {
          CCalcSimulation simulation(calc);
          value = EvaluateExpression(Fx, owner, &Variables, &simulation, nullptr, false);
        } catch (const std::exception& e) {
          calc.error = GetFullName() + " : " + e.what();
          return -1;
        }
      }
      calc.SetSource(r, -value);
      return 0;
    }
    default:
      return 0;
  }
}

bool CElemO::GetStateRange(int& low, int& high) {
  if (!LimitedOpAmp(false)) return false;
  low = -1;
  high = 1;
  return true;
}

bool CElemO::LimitMove(const CCalc& calc, int32_t& next) const {
  if (state == 0) {
    const double v = calc.V(Pin(1)), tol = calc.Zero();
    if (v > Vhi.Value + std::fabs(Vhi.Value) * tol) return (next = 1), true;
    if (v < Vlo.Value - std::fabs(Vlo.Value) * tol) return (next = -1), true;
    return false;
  }
  const double x = Input(calc), k = K.Value;
  bool leaves;
  if (std::isfinite(k)) {
    const double limit = (state == 1 ? Vhi.Value : Vlo.Value) / k;
    leaves = (state == 1) == (k > 0) ? x < limit : x > limit;
  } else {
    leaves = (state == 1) == (k > 0) ? x < 0 : x > 0;
  }
  if (leaves) next = 0;
  return leaves;
}

bool CElemO::CheckSwitching(CCalc& calc, bool apply) {
  if (!LimitedOpAmp(false)) return false;
  int32_t next = state;
  if (LimitMove(calc, next)) {
    if (apply) state = next;
    return true;
  }
  // The search of initial conditions left the output unknown: the output
  // goes to a limit without the values calling for it.
  if (apply && calc.RowMark(firstRow) != 0) {
    state = state == 1 ? -1 : 1;
    return true;
  }
  return false;
}

bool CElemO::PostStep(CCalc& calc, bool apply, double t, bool& changed) {
  changed = false;
  const int32_t model = ModelId();
  if (model == MODEL_O_PWL) {
    changed = pwl.FindSegment(Input(calc), apply);
  } else if (LimitedOpAmp(true)) {
    int32_t next = state;
    changed = LimitMove(calc, next);
    if (changed && apply) state = next;
  } else if (model == MODEL_O_COMPARATOR) {
    const double x = Input(calc), h = Hysteresis.Value * 0.5;
    int32_t s = state;
    if (s == 0 && x - h > 0) s = 1;
    if (s == 1 && x + h < 0) s = 0;
    if (s != TargetState) {
      changed = true;
      if (apply) {
        TargetState = s;
        if (Delay.Value > 0)
          SwitchTime = t + Delay.Value;
        else
          state = s;
      }
    }
  }
  return true;
}

void CElemO::NextEvent(CCalc& /*calc*/, double t, double& nextTime, double& maxStep) {
  if (ModelId() != MODEL_O_COMPARATOR || !(Delay.Value > 0)) return;
  const bool ahead = SwitchTime > t && std::fabs(SwitchTime - t) >
                                           1e-12 * std::fmin(std::fabs(SwitchTime), std::fabs(t));
  if (ahead) {
    if (state != TargetState) {
      nextTime = std::fmin(nextTime, SwitchTime);
      maxStep = std::fmin(maxStep, Delay.Value);
    }
  } else {
    state = TargetState;
  }
}

}  // namespace tz4
