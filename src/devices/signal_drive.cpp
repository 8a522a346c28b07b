#include "devices/signal_drive.h"

#include "components/cmp.h"
#include "components/cmps.h"
#include "expr/numtext.h"
#include "solver/calc.h"
#include "solver/calc_simulation.h"

namespace tz4 {

namespace {

// Relative tolerance of time points: a delay within this fraction of a
// period from 0 after a shift of the time origin is taken as exactly 0.
constexpr double kTimeTolerance = 1e-12;

}  // namespace

bool IsSignalModel(int32_t model) {
  switch (model) {
    case SIGNAL_PULSE:
    case SIGNAL_STEP:
    case SIGNAL_SIN:
    case SIGNAL_FUNCTION:
    case SIGNAL_FILE:
    case SIGNAL_PWL:
    case SIGNAL_TRACE:
      return true;
    default:
      return false;
  }
}

bool HasTimeOrigin(int32_t model) { return IsSignalModel(model) && model != SIGNAL_FUNCTION; }

int StartSignal(CCmp& owner, CSignal& signal, int32_t model, CCalc& calc, double t) {
  SignalEnv env;
  env.context = owner.owner;
  env.folder = calc.settings.folder;
  double start = t;
  if (owner.prevModelId == 0) {
    signal.Start(SIGNAL_NONE, t, &owner, env);
  } else if (calc.lastTime > start) {
    start = calc.lastTime;
  }
  return signal.Start(model, start, &owner, env) ? 0 : -1;
}

int SignalToRow(CCmp& owner, CSignal& signal, CCalc& calc, int row, double t) {
  if (!calc.InMatrix(row)) return 0;
  // The time derivative is the next order of the state form, which the pair
  // solve of the initial conditions reads from the slope of s.
  CCalcSimulation simulation(calc);
  SignalEnv env;
  env.context = owner.owner;
  env.simulation = &simulation;
  env.integrating = calc.stampMode == 0;
  env.h = calc.step;
  SignalValue value;
  std::string failure;
  if (!signal.Value(t, env, value, failure)) {
    calc.error = owner.GetFullName() + ": " + failure;
    return -1;
  }
  calc.SetSource(row, -value.value);
  if (value.hasDerivative) calc.SetSourceSlope(row, -value.derivative);
  return 0;
}

void ShiftSignalOrigin(CSignal& signal, int32_t model, const CCalc& calc, double t) {
  if (HasTimeOrigin(model)) signal.ShiftTime(t, calc.settings.nsr, kTimeTolerance);
}

void SignalNextEvent(CSignal& signal, int32_t model, double t, double& nextTime, double& maxStep) {
  switch (model) {
    case SIGNAL_PULSE:
    case SIGNAL_STEP:
    case SIGNAL_SIN:
    case SIGNAL_FILE:
    case SIGNAL_PWL:
      signal.NextEvent(t, nextTime, maxStep);
      return;
    default:
      return;
  }
}

std::string SignalICText(const CCmp& owner, const CSignal& signal, int32_t model) {
  if (!HasTimeOrigin(model)) return "";
  return owner.GetFullName() + ".Delay=" + FormatNumber(signal.Delay.Value, 12);
}

}  // namespace tz4
