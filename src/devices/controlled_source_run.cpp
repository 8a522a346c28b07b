// The run behaviour of the controlled sources: a linear gain, a table, a
// function of the control, a controlled oscillator, a one-shot pulse and a
// pulse-width modulator, each driving a voltage or a current output.
#include <cmath>
#include <exception>

#include "components/cmps.h"
#include "devices/controlled_source.h"
#include "expr/evaluate.h"
#include "solver/calc.h"
#include "solver/calc_simulation.h"

namespace tz4 {

namespace {

constexpr double kPi = 3.14159265358;

enum : int32_t { WAVE_SIN = 0, WAVE_SQUARE = 1, WAVE_TRIANGLE = 2, WAVE_SAWTOOTH = 3 };

bool Near(double a, double b) {
  return std::fabs(a - b) <= 1e-12 * std::fmin(std::fabs(a), std::fabs(b));
}

}  // namespace

bool CElemVCVS::CurrentOutput() const { return IsTypeIn({"I_VCCS", "I_CCCS"}); }

bool CElemVCVS::CurrentControl() const { return IsTypeIn({"V_CCVS", "I_CCCS"}); }

double CElemVCVS::Control(const CCalc& calc) const {
  return CurrentControl() ? calc.V(firstRow + 1) : calc.V(Pin(3)) - calc.V(Pin(2));
}

bool CElemVCVS::CheckParams() {
  const int32_t model = ModelId();
  const std::string out = CurrentOutput() ? "I" : "V";
  const std::string rate = CurrentControl() ? "dFdI" : "dFdV";
  const std::string max = CurrentControl() ? "Imax" : "Vmax";
  auto positive = [this](const CFormula& value, const std::string& name) {
    if (!CheckValid(this, value, name)) return false;
    if (!(value.Value > 0)) return ComponentError(this, name + " <= 0");
    return !std::isinf(value.Value) || ComponentError(this, name + " = infinite");
  };
  auto levels = [&] { return CheckFinite(this, V0, out + "0") & CheckFinite(this, V1, out + "1"); };
  switch (model) {
    case MODEL_CS_FUNCTION:
      return CheckFinite(this, Ic, "IC");
    case MODEL_CS_LINEAR:
      return CheckValid(this, K, "K");
    case MODEL_CS_OSCILLATOR:
    case MODEL_CS_PULSE:
    case MODEL_CS_PWM:
      break;
    default:
      return true;
  }
  bool ok = true;
  if (model == MODEL_CS_OSCILLATOR)  // block A
    ok &= levels() & CheckFinite(this, Rate, rate) & CheckFinite(this, Phase, "Phase");
  if (model != MODEL_CS_PWM) {  // block B
    ok &= levels();
    ok &= CheckValid(this, Width, "Width") &&
          (!(Width.Value < 0) || ComponentError(this, "Width < 0"));
  }
  // Block C, which the oscillator passes through as well.
  ok &= levels() & positive(Max, max) & positive(Rate, "F");
  if (!CheckValid(this, Phase, "Phase"))
    ok = false;
  else if (Phase.Value < 0)
    ok = ComponentError(this, "Phase < 0");
  else if (std::isinf(Phase.Value))
    ok = ComponentError(this, "Phase = infinite");
  return ok;
}

void CElemVCVS::StampGain(CCalc& calc, double g) const {
  const int a = Pin(0), b = Pin(1), r = firstRow;
  if (IsType("V_VCVS")) calc.StampGainVV(a, b, Pin(2), Pin(3), r, g);
  if (IsType("V_CCVS")) calc.StampGainVI(a, b, r, r + 1, g);
  if (IsType("I_VCCS")) calc.StampTransconductance(a, b, Pin(2), Pin(3), r, g);
  if (IsType("I_CCCS")) calc.StampCurrentGain(a, b, r, r + 1, g);
}

void CElemVCVS::StampLevel(CCalc& calc, double value) const {
  if (CurrentOutput())
    calc.StampOutCurrent(Pin(0), Pin(1), firstRow, value);
  else
    calc.StampOutVoltage(Pin(0), Pin(1), firstRow, value);
}

bool CElemVCVS::Evaluate(CCalc& calc, double t, double& out) {
  Variables[0]->Values[0] = TValue::MakeDouble(t);
  Variables[1]->Values[0] = TValue::MakeDouble(Control(calc));
  try {
    CCalcSimulation simulation(calc);
    out = EvaluateExpression(Fx, owner, &Variables, &simulation, nullptr, false);
  } catch (const std::exception& e) {
    calc.error = GetFullName() + " : " + e.what();
    return false;
  }
  return true;
}

// The oscillator's phase grows by the frequency c * rate over the time since
// it was last read; a control of 0 holds it.
double CElemVCVS::Oscillate(const CCalc& calc, double t, double& slope) {
  const double df = Control(calc) * Rate.Value;
  PhaseAcc += (t - EventTime) * df;
  EventTime = t;
  const double p = Phase.Value / 360.0 + PhaseAcc;
  const double f = std::fmod(p, 1.0);
  const double v0 = V0.Value, v1 = V1.Value;
  slope = 0.0;
  switch (Type.Index) {
    case WAVE_SQUARE:
      return f < 0.5 ? v0 : v1;
    case WAVE_TRIANGLE:
      return f <= 0.5 ? (v1 - v0) * f * 2 + v0 : (v1 - v0) * (1 - f) * 2 + v0;
    case WAVE_SAWTOOTH:
      return f * (v1 - v0) + v0;
    default:
      slope = std::cos(p * 2 * kPi) * df * v1 * 2 * kPi;
      return std::sin(p * 2 * kPi) * v1 + v0;
  }
}

int CElemVCVS::Stamp(CCalc& calc, int phase, double t) {
  const int32_t model = ModelId();
  if (model == MODEL_SUBCIR) return 0;
  const int r = firstRow;
  switch (phase) {
    case STAMP_INIT:
      if (model == prevModelId) return 0;
      LastValue = Ic.Value;
      if (model == MODEL_CS_OSCILLATOR) {
        EventTime = t;
        PhaseAcc = 0.0;
      } else if (model == MODEL_CS_PULSE) {
        Output = Latch = 0;
        EventTime = 0.0;
      } else if (model == MODEL_CS_PWM) {
        Output = 0;
        PhaseAcc = EventTime = Phase.Value / 360.0 / Rate.Value;
      }
      return 0;
    case STAMP_ACCEPT:
      LastValue = CurrentOutput() ? calc.V(r) : calc.V(Pin(1)) - calc.V(Pin(0));
      return 0;
    case STAMP_SAVE_IC:
      if (model == MODEL_CS_FUNCTION) {
        Ic.Value = LastValue;
        Ic.Text.clear();
      }
      return 0;
    case STAMP_MATRIX: {
      if (calc.pass != 0) return 0;
      if (CurrentControl()) calc.StampVSource(Pin(2), Pin(3), r + 1, 0.0);
      switch (model) {
        case MODEL_CS_LINEAR:
          StampGain(calc, K.Value);
          return 0;
        case MODEL_CS_PWL: {
          const int index = pwl.Index();
          const bool valid = index >= 0 && static_cast<size_t>(index) < pwl.Slope.size();
          StampGain(calc, valid ? pwl.Slope[static_cast<size_t>(index)] : 0.0);
          const size_t i = static_cast<size_t>(index);
          calc.SetConstant(r, valid && i < pwl.Intercept.size() ? -pwl.Intercept[i] : 0.0);
          return 0;
        }
        case MODEL_CS_FUNCTION:
        case MODEL_CS_OSCILLATOR:
          StampLevel(calc, 0.0);
          calc.MarkRow(r);
          return 0;
        default:
          StampLevel(calc, Output == 1 ? V1.Value : V0.Value);
          return 0;
      }
    }
    case STAMP_SOURCE: {
      double value = 0.0, slope = 0.0;
      if (model == MODEL_CS_FUNCTION) {
        value = LastValue;
        if (calc.stampMode != 0 && !Evaluate(calc, t, value)) return -1;
      } else if (model == MODEL_CS_OSCILLATOR) {
        value = Oscillate(calc, t, slope);
      } else {
        return 0;
      }
      calc.SetSource(r, -value);
      if (calc.stampMode == 0 && slope != 0.0) calc.SetSourceSlope(r, -slope);
      return 0;
    }
    default:
      return 0;
  }
}

bool CElemVCVS::PostStep(CCalc& calc, bool apply, double t, bool& changed) {
  changed = false;
  const int32_t model = ModelId();
  if (model == MODEL_CS_PWL) {
    changed = pwl.FindSegment(Control(calc), apply);
  } else if (model == MODEL_CS_PULSE) {
    // Fires on the rising crossing only and lasts its width whatever the
    // control does next.
    const double d = Control(calc) - Threshold.Value;
    if (Latch == 0 && d > 0) {
      changed = true;
      if (apply) {
        Latch = Output = 1;
        EventTime = t + Width.Value;
      }
    } else if (Latch == 1 && d < 0) {
      changed = true;
      if (apply) Latch = 0;
    }
  }
  return true;
}

// The modulator samples its control at the start of each period. A period
// with no high part has its next corner at the next period's start, never
// at the present time.
void CElemVCVS::NextPwmEvent(const CCalc& calc, double t, double& nextTime, double& maxStep) {
  if (EventTime > t && !Near(EventTime, t)) {
    nextTime = std::fmin(nextTime, EventTime);
    return;
  }
  if (Output == 1) {
    const double previous = EventTime;
    EventTime = PhaseAcc;
    nextTime = std::fmin(nextTime, EventTime);
    maxStep = std::fmin(maxStep, (EventTime - previous) * 0.25);
    Output = 0;
    return;
  }
  const double period = 1.0 / Rate.Value;
  double on = std::fmax(Control(calc) * period / Max.Value, 0.0);
  if (on > period) on = period;
  if (!(on > 0)) {
    PhaseAcc += period;
    EventTime = PhaseAcc;
    nextTime = std::fmin(nextTime, EventTime);
    maxStep = std::fmin(maxStep, period * 0.25);
    return;
  }
  EventTime = on + PhaseAcc;
  maxStep = std::fmin(maxStep, on * 0.25);
  PhaseAcc += period;
  nextTime = std::fmin(nextTime, EventTime);
  Output = 1;
}

void CElemVCVS::NextEvent(CCalc& calc, double t, double& nextTime, double& maxStep) {
  const int32_t model = ModelId();
  if (model == MODEL_CS_PWM) {
    NextPwmEvent(calc, t, nextTime, maxStep);
  } else if (model == MODEL_CS_PULSE && Output == 1) {
    if (EventTime > t && !Near(EventTime, t)) {
      nextTime = std::fmin(nextTime, EventTime);
      maxStep = std::fmin(maxStep, Width.Value * 0.25);
    } else {
      Output = 0;
    }
  }
}

}  // namespace tz4
