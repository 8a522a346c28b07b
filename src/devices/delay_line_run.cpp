// The run behaviour of the delay block and the lossless transmission line:
// both read their past from a CDelay store of the samples they append at
// each stored point.
#include <cmath>
#include <exception>

#include "devices/delay_line.h"
#include "expr/numtext.h"
#include "solver/calc.h"

namespace tz4 {

namespace {

// The forms of a lossless line, chosen by its parameters.
enum : int32_t {
  LINE_DELAY = 0,    // t0 > 0 finite, z0 > 0 finite: two ports joined by waves
  LINE_SHORTED = 1,  // z0 <= 0: each port shorted by itself
  LINE_OPEN = 2,     // z0 infinite: each port open
  LINE_WIRE = 3,     // t0 <= 0: an ideal 1:1 transformer
  LINE_MATCHED = 4,  // t0 infinite: each port a resistance z0
};

bool CheckDelayTime(CCmp* cmp, const CFormula& t0) {
  if (!CheckValid(cmp, t0, "t")) return false;
  return !(t0.Value < 0) || ComponentError(cmp, "t < 0");
}

}  // namespace

// ------------------------------------------------------------- CElemDelay

bool CElemDelay::CheckParams() { return ModelId() != MODEL_X_DELAY || CheckDelayTime(this, T0); }

int CElemDelay::Stamp(CCalc& calc, int phase, double t) {
  if (ModelId() != MODEL_X_DELAY) return 0;
  const int in = Pin(0), out = Pin(1), r = firstRow;
  const double t0 = T0.Value;
  switch (phase) {
    case STAMP_INIT:
      if (prevModelId != MODEL_X_DELAY) History.Clear();
      if (prevModelId != 0) return 0;
      HasIc = false;
      if (IcText.empty()) return 0;
      try {
        IcValue = TextToDouble(IcText);
      } catch (const std::exception&) {
        calc.error = GetFullName() + " : IC : formula error";
        return -1;
      }
      HasIc = true;
      if (!History.Append(0.0, IcValue, 0.0)) {
        calc.error = GetFullName() + " : no enough memory";
        return -1;
      }
      return 0;
    case STAMP_RESET:
      History.Clear();
      return 0;
    case STAMP_ACCEPT:
      IcValue = calc.V(out);
      HasIc = true;
      return 0;
    case STAMP_MATRIX:
      if (calc.pass != 0) return 0;
      if (out == 0) {
        calc.error = GetFullName() + " : grounded output";
        return -1;
      }
      calc.AddCoupling(out, r, 1.0);
      calc.SetCoupling(r, out, -1.0);
      // A delay of 0 is a wire; so is the start without an initial value.
      if (!(t0 > 0) || (calc.stampMode == 0 && !HasIc)) calc.AddCoupling(r, in, 1.0);
      if (t0 > 0) calc.MarkRow(r);
      return 0;
    case STAMP_SOURCE: {
      if (!(t0 > 0) || (calc.stampMode == 0 && !HasIc)) return 0;
      double a = 0.0, b = 0.0;
      History.Read(t - t0, a, b);
      calc.SetSource(r, a);
      return 0;
    }
    case STAMP_SAMPLE:
      if (t0 > 0 && std::isfinite(t0) && !History.Append(t, calc.V(in), 0.0)) {
        calc.error = GetFullName() + " : no enough memory";
        return -1;
      }
      return 0;
    default:
      return 0;
  }
}

void CElemDelay::NextEvent(CCalc& /*calc*/, double /*t*/, double& /*nextTime*/, double& maxStep) {
  const double t0 = T0.Value;
  if (ModelId() == MODEL_X_DELAY && t0 > 0 && std::isfinite(t0))
    maxStep = std::fmin(maxStep, t0 * 0.5);
}

// -------------------------------------------------------------- CElemLine

bool CElemLine::CheckParams() {
  const bool lossy = ModelId() == MODEL_X_LOSSY;
  // A value that must not be negative, or with `positive` must be above 0.
  auto check = [this](const CFormula& value, const char* name, bool positive) {
    if (!CheckValid(this, value, name)) return false;
    if (positive && !(value.Value > 0)) return ComponentError(this, std::string(name) + " <= 0");
    return !(value.Value < 0) || ComponentError(this, std::string(name) + " < 0");
  };
  bool ok = check(T0, "t", lossy);
  ok &= check(Z0, "z0", false);
  if (!lossy) return ok;
  ok &= check(R, "r", false);
  ok &= check(Fr, "fr", true);
  ok &= check(G, "G", false);
  ok &= check(Fg, "fG", true);
  return ok;
}

// A lossy line is set up anew when it was not lossy before or one of its
// six parameters changed.
bool CElemLine::SetupLossy(CCalc& calc) {
  CLossyLine& l = Lossy;
  const bool same = prevModelId == MODEL_X_LOSSY && l.Delay == T0.Value && l.Z0 == Z0.Value &&
                    l.R == R.Value && l.G == G.Value && l.Fr == Fr.Value && l.Fg == Fg.Value;
  if (same) return true;
  l.Delay = T0.Value;
  l.Z0 = Z0.Value;
  l.R = R.Value;
  l.G = G.Value;
  l.Fr = Fr.Value;
  l.Fg = Fg.Value;
  if (l.Setup(calc.step) == 0) return true;
  calc.error = GetFullName() + " : No enough memory";
  return false;
}

// At the initial solution the rows carry the two port currents, and the
// line joins its ports as a wire with the initial voltage and current asked
// for.
void CElemLine::StampInitialSolution(CCalc& calc) const {
  const int a = Pin(0), b = Pin(1), c = Pin(2), d = Pin(3), r = firstRow;
  const double g = 1.0 / Z0.Value;
  calc.AddCoupling(a, r, -1.0);
  calc.AddCoupling(a, r + 1, 1.0);
  calc.AddCoupling(b, r, 1.0);
  calc.AddCoupling(b, r + 1, -1.0);
  calc.AddCoupling(c, r, 1.0);
  calc.AddCoupling(c, r + 1, -1.0);
  calc.AddCoupling(d, r, -1.0);
  calc.AddCoupling(d, r + 1, 1.0);
  double vic = 0.0, iic = 0.0;
  const bool hasV = !VIC.empty(), hasI = !IIC.empty();
  try {
    if (hasV) vic = TextToDouble(VIC);
    if (hasI) iic = TextToDouble(IIC);
  } catch (const std::exception&) {
  }
  if (!hasI) {
    calc.AddCoupling(r, a, 1.0);
    calc.AddCoupling(r, b, -1.0);
    calc.AddCoupling(r, c, -1.0);
    calc.AddCoupling(r, d, 1.0);
  } else {
    calc.AddCoupling(r, r, 1.0);
    calc.AddCoupling(r, r + 1, 1.0);
    if (hasV) calc.SetConstant(r, vic * g);
  }
  if (hasI) {
    calc.AddCoupling(r + 1, r, 1.0);
    calc.AddCoupling(r + 1, r + 1, -1.0);
    calc.SetConstant(r + 1, iic);
  } else if (hasV) {
    calc.AddCoupling(r + 1, r, 1.0);
    calc.AddCoupling(r + 1, r + 1, 1.0);
    calc.SetConstant(r + 1, vic * g);
  } else {
    calc.AddCoupling(r + 1, a, g);
    calc.AddCoupling(r + 1, b, -g);
    calc.AddCoupling(r + 1, r, -1.0);
    calc.AddCoupling(r + 1, r + 1, -1.0);
  }
}

// In a time step each port is a conductance 1 / z0 fed by twice the wave
// arriving from the far end; rows r and r + 1 hold the waves (as currents)
// leaving ports 1 and 2, which the far port reads t0 later.
void CElemLine::StampWaves(CCalc& calc) const {
  const double g = 1.0 / Z0.Value;
  const int ports[2][2] = {{Pin(0), Pin(1)}, {Pin(2), Pin(3)}};
  for (int k = 0; k < 2; ++k) {
    const int p = ports[k][0], q = ports[k][1], row = firstRow + k;
    calc.AddCoupling(p, p, g);
    calc.AddCoupling(p, q, -g);
    calc.AddCoupling(q, q, g);
    calc.AddCoupling(q, p, -g);
    calc.AddCoupling(p, row, -2.0);
    calc.AddCoupling(q, row, 2.0);
    calc.AddCoupling(row, p, g);
    calc.AddCoupling(row, q, -g);
    calc.SetCoupling(row, row, -1.0);
    calc.MarkRow(row);
  }
}

int CElemLine::Stamp(CCalc& calc, int phase, double t) {
  const int32_t model = ModelId();
  if (model == MODEL_X_LOSSY) return StampLossy(calc, phase, t);
  if (model != MODEL_X_LINE) return 0;
  const int a = Pin(0), b = Pin(1), c = Pin(2), d = Pin(3), r = firstRow;
  const double t0 = T0.Value, z0 = Z0.Value;
  switch (phase) {
    case STAMP_INIT:
      if (prevModelId != MODEL_X_LINE) History.Clear();
      if (!(t0 > 0))
        Form = LINE_WIRE;
      else if (std::isinf(t0))
        Form = LINE_MATCHED;
      else if (!(z0 > 0))
        Form = LINE_SHORTED;
      else if (std::isinf(z0))
        Form = LINE_OPEN;
      else
        Form = LINE_DELAY;
      return 0;
    case STAMP_RESET:
      History.Clear();
      return 0;
    case STAMP_MATRIX:
      if (calc.pass != 0) return 0;
      switch (Form) {
        case LINE_SHORTED:
          calc.StampVSource(a, b, r, 0.0);
          calc.StampVSource(c, d, r + 1, 0.0);
          return 0;
        case LINE_OPEN:
          calc.StampISource(a, b, r, 0.0);
          calc.StampISource(c, d, r + 1, 0.0);
          return 0;
        case LINE_WIRE:
          // An ideal 1:1 transformer: V(c, d) = V(a, b), and the current
          // taken in at port 1 is given out at port 2.
          calc.AddCoupling(r, a, -1.0);
          calc.AddCoupling(r, b, 1.0);
          calc.AddCoupling(r, c, 1.0);
          calc.AddCoupling(r, d, -1.0);
          calc.AddCoupling(a, r, -1.0);
          calc.AddCoupling(b, r, 1.0);
          calc.AddCoupling(c, r, 1.0);
          calc.AddCoupling(d, r, -1.0);
          calc.SetCoupling(r + 1, r + 1, 1.0);
          return 0;
        case LINE_MATCHED:
          calc.StampConductance(a, b, z0);
          calc.StampConductance(c, d, z0);
          calc.SetCoupling(r, r, 1.0);
          calc.SetCoupling(r + 1, r + 1, 1.0);
          return 0;
        default:
          if (calc.stampMode == 0 && calc.lineUpdate == 0)
            StampInitialSolution(calc);
          else
            StampWaves(calc);
          return 0;
      }
    case STAMP_SOURCE: {
      if (Form != LINE_DELAY || (calc.stampMode == 0 && calc.lineUpdate == 0)) return 0;
      double waveOut1 = 0.0, waveOut2 = 0.0;
      History.Read(t - t0, waveOut1, waveOut2);
      // Each port receives what left the other one t0 ago.
      calc.SetSource(r, -waveOut2);
      calc.SetSource(r + 1, -waveOut1);
      return 0;
    }
    case STAMP_SAMPLE:
      if (Form == LINE_DELAY && !History.Append(t, calc.V(r), calc.V(r + 1))) {
        calc.error = GetFullName() + " : no enough memory";
        return -1;
      }
      return 0;
    default:
      return 0;
  }
}

// The lossy line stamps as the delay form; its waves come from the section
// model instead of the store.
int CElemLine::StampLossy(CCalc& calc, int phase, double t) {
  const int r = firstRow;
  const bool initial = calc.stampMode == 0 && calc.lineUpdate == 0;
  switch (phase) {
    case STAMP_INIT:
      if (prevModelId != MODEL_X_LOSSY) History.Clear();
      Form = LINE_DELAY;
      return SetupLossy(calc) ? 0 : -1;
    case STAMP_RESET:
      History.Clear();
      Lossy.Clear();
      return 0;
    case STAMP_MATRIX:
      if (calc.pass != 0) return 0;
      if (initial)
        StampInitialSolution(calc);
      else
        StampWaves(calc);
      return 0;
    case STAMP_SOURCE:
      if (initial || !(calc.step > 0) || Lossy.Waves.empty()) return 0;
      calc.SetSource(r, -Lossy.Waves.front().second);
      calc.SetSource(r + 1, -Lossy.Waves.back().first);
      return 0;
    case STAMP_SAMPLE:
      Lossy.Advance(t, calc.V(r), calc.V(r + 1));
      return 0;
    default:
      return 0;
  }
}

void CElemLine::NextEvent(CCalc& /*calc*/, double /*t*/, double& /*nextTime*/, double& maxStep) {
  if (ModelId() == MODEL_X_LINE && Form == LINE_DELAY && T0.Value > 0)
    maxStep = std::fmin(maxStep, T0.Value * 0.5);
}

}  // namespace tz4
