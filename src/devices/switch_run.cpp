// The run behaviour of the switches: their checks, the contacts they stamp,
// and how the control or the time moves them.
#include <cmath>

#include "devices/logic_generator.h"
#include "devices/signal_drive.h"
#include "devices/switch.h"
#include "solver/calc.h"

namespace tz4 {

namespace {

constexpr double kPi = 3.14159265358;

// Due when not later than t, within 1e-12 of the smaller magnitude.
bool Due(double eventTime, double t) {
  return eventTime <= t ||
         std::fabs(t - eventTime) <= 1e-12 * std::fmin(std::fabs(t), std::fabs(eventTime));
}

// A resistance of "Steps": formula error, infinite, then negative or, for
// the logarithmic slope, not positive.
bool CheckResistance(CCmp* cmp, const CFormula& value, const char* name, bool logSlope) {
  if (!CheckFinite(cmp, value, name)) return false;
  if (logSlope && value.Value <= 0) return ComponentError(cmp, std::string(name) + " <= 0");
  if (!logSlope && value.Value < 0) return ComponentError(cmp, std::string(name) + " < 0");
  return true;
}

}  // namespace

void StampContacts(CCalc& calc, int32_t level, int a, int b, int r, int e, int s) {
  if (level != 0)
    calc.StampVSource(a, b, r, 0.0);
  else
    calc.SetCoupling(r, r, 1.0);
  if (e < 0 || s < 0) return;
  if (level != 1)
    calc.StampVSource(e, b, s, 0.0);
  else
    calc.SetCoupling(s, s, 1.0);
}

// ---------------------------------------------------------------- CElemCS

bool CElemCS::CheckParams() {
  const int32_t model = ModelId();
  bool ok = CheckFinite(this, Threshold, "Threshold");
  if (model == MODEL_SW_PULSE) {
    if (!CheckValid(this, Width, "Width"))
      ok = false;
    else if (Width.Value < 0)
      ok = ComponentError(this, "Width < 0");
  }
  if (model == MODEL_SW_SWITCH || model == MODEL_SW_STEP)
    ok &= CheckNonNegative(this, Hysteresis, "Hysteresis");
  if (model == MODEL_SW_STEP) {
    const bool logSlope = Slope.Index == SLOPE_LOG;
    ok &= CheckResistance(this, Roff, "Roff", logSlope);
    ok &= CheckResistance(this, Ron, "Ron", logSlope);
    ok &= CheckNonNegative(this, Width, "Width");
    ok &= CheckNonNegative(this, Steps, "Steps");
  }
  return ok;
}

int CElemCS::SecondPin() const {
  if (IsTypeIn({"S_VCS3", "S_CCS3"})) return Pin(4);
  if (IsType("S_LCS3")) return Pin(3);
  return -1;
}

int CElemCS::SecondRow() const {
  if (IsType("S_CCS3")) return firstRow + 2;
  if (IsTypeIn({"S_VCS3", "S_LCS3"})) return firstRow + 1;
  return -1;
}

double CElemCS::Control(const CCalc& calc) const {
  if (IsTypeIn({"S_VCS", "S_VCS3"})) return calc.V(Pin(3)) - calc.V(Pin(2)) - Threshold.Value;
  if (IsTypeIn({"S_CCS", "S_CCS3"})) return calc.V(firstRow + 1) - Threshold.Value;
  return calc.V(Pin(2)) - calc.thr;
}

double CElemCS::StepResistance(int32_t k) const {
  const int32_t n = stepCount;
  if (n <= 1) return k == 0 ? Roff.Value : Ron.Value;
  const double fraction = static_cast<double>(k) / n;
  switch (Slope.Index) {
    case SLOPE_COS:
      return (1.0 - std::cos(k * kPi / n)) * (Ron.Value - Roff.Value) * 0.5 + Roff.Value;
    case SLOPE_LOG:
      return std::pow(10.0, std::log10(Ron.Value / Roff.Value) * fraction + std::log10(Roff.Value));
    default:
      return (Ron.Value - Roff.Value) * fraction + Roff.Value;
  }
}

void CElemCS::StampSteps(CCalc& calc) const {
  const int a = Pin(0), b = Pin(1), r = firstRow;
  calc.StampResistor(a, b, r, StepResistance(stepIndex));
  const int e = SecondPin(), s = SecondRow();
  if (e < 0 || s < 0) return;
  const int32_t other = stepCount - stepIndex;
  const double second =
      stepCount == 1 ? (other != 0 ? Ron.Value : Roff.Value) : StepResistance(other);
  calc.StampResistor(e, b, s, second);
}

int CElemCS::Stamp(CCalc& calc, int phase, double /*t*/) {
  const int32_t model = ModelId();
  switch (phase) {
    case STAMP_INIT: {
      if (model == MODEL_SW_STEP) {
        const double wanted = std::floor(Steps.Value + 1.5);
        const int32_t count = wanted >= 1 && wanted < 1e9 ? static_cast<int32_t>(wanted) : 1;
        if (count != stepCount || model != prevModelId) {
          stepCount = count;
          contact = IC;
          eventTime = 0.0;
          stepIndex = IC != 0 ? count : 0;
        }
        return 0;
      }
      if (model == prevModelId) return 0;
      if (model == MODEL_SW_SWITCH) contact = IC;
      if (model == MODEL_SW_PULSE) {
        contact = 1 - Active;
        eventTime = 0.0;
        armed = 0;
      }
      return 0;
    }
    case STAMP_MATRIX:
      if (calc.pass != 0 || model == MODEL_SUBCIR) return 0;
      if (IsTypeIn({"S_CCS", "S_CCS3"})) calc.StampVSource(Pin(2), Pin(3), firstRow + 1, 0.0);
      if (model == MODEL_SW_STEP)
        StampSteps(calc);
      else
        StampContacts(calc, contact, Pin(0), Pin(1), firstRow, SecondPin(), SecondRow());
      return 0;
    case STAMP_SAVE_IC:
      IC = contact;
      return 0;
    default:
      return 0;
  }
}

bool CElemCS::PostStep(CCalc& calc, bool apply, double t, bool& changed) {
  changed = false;
  const int32_t model = ModelId();
  if (model != MODEL_SW_SWITCH && model != MODEL_SW_PULSE && model != MODEL_SW_STEP) return true;
  const double u = Control(calc), h = Hysteresis.Value * 0.5;
  if (model == MODEL_SW_SWITCH) {
    const bool opens = contact == Active && u + h < 0;
    const bool closes = contact != Active && u - h > 0;
    if (opens || closes) {
      changed = true;
      if (apply) contact = opens ? 1 - Active : Active;
    }
  } else if (model == MODEL_SW_PULSE) {
    // The pulse runs its full width once started; a new pulse needs a fall
    // below the level first.
    int32_t nowArmed = armed;
    if (nowArmed == 0 && u > 0) {
      changed = true;
      nowArmed = 1;
      if (apply) {
        eventTime = t + Width.Value;
        contact = Active;
      }
    }
    if (nowArmed == 1 && u < 0) {
      changed = true;
      nowArmed = 0;
    }
    if (apply) armed = nowArmed;
  } else {
    const double d = stepCount > 1 ? Width.Value / (stepCount - 1) : 0.0;
    if (contact == 1 && u + h < 0) {
      changed = true;
      if (apply) {
        contact = 0;
        if (stepIndex > 0) --stepIndex;
        if (stepIndex >= 1) eventTime = t + d;
      }
    } else if (contact == 0 && u - h > 0) {
      changed = true;
      if (apply) {
        contact = 1;
        if (stepIndex < stepCount) ++stepIndex;
        if (stepIndex < stepCount) eventTime = t + d;
      }
    }
  }
  return true;
}

void CElemCS::NextStepEvent(double t, double& nextTime, double& maxStep) {
  const int32_t n = stepCount;
  if (n <= 1) return;
  const double d = Width.Value / (n - 1);
  const bool rising = contact == 1;
  if (rising ? stepIndex >= n : stepIndex < 1) return;
  if (Due(eventTime, t)) {
    stepIndex += rising ? 1 : -1;
    if (rising ? stepIndex >= n : stepIndex < 1) return;
    eventTime += d;
  }
  nextTime = std::fmin(nextTime, eventTime);
  maxStep = std::fmin(maxStep, d * 0.25);
}

void CElemCS::NextEvent(CCalc& /*calc*/, double t, double& nextTime, double& maxStep) {
  const int32_t model = ModelId();
  if (model == MODEL_SW_STEP) {
    NextStepEvent(t, nextTime, maxStep);
    return;
  }
  if (model != MODEL_SW_PULSE || contact != Active) return;
  if (Due(eventTime, t)) {
    contact = 1 - Active;
    return;
  }
  nextTime = std::fmin(nextTime, eventTime);
  maxStep = std::fmin(maxStep, Width.Value * 0.25);
}

// ----------------------------------------------------------------- CElemS

bool CElemS::CheckParams() { return CheckLogicSignal(*this, Signal); }

int CElemS::Stamp(CCalc& calc, int phase, double t) {
  if (phase != STAMP_MATRIX) return StampLogicSignal(*this, Signal, calc, phase, t);
  const int32_t model = ModelId();
  if (calc.pass != 0 || model == MODEL_SUBCIR) return 0;
  int32_t level = Active;
  if (IsTimedSignalModel(model)) level = (Signal.IsHigh() ? 1 : 0) ^ (Active == 0 ? 1 : 0);
  const bool spdt = IsType("S_S3");
  StampContacts(calc, level, Pin(0), Pin(1), firstRow, spdt ? Pin(2) : -1,
                spdt ? firstRow + 1 : -1);
  return 0;
}

void CElemS::NextEvent(CCalc& /*calc*/, double t, double& nextTime, double& maxStep) {
  SignalNextEvent(Signal, ModelId(), t, nextTime, maxStep);
}

}  // namespace tz4
