// Initial conditions: a solution at one instant that agrees with what the
// reactive elements hold and with the states of the switching devices.
//
// The state form of the system is solved as a pair: a capacitor or inductor
// with a known value is a source of that value, and the B side carries the
// next order, so that an unknown that would have to jump to infinity shows up
// as a marked row instead of a wrong number. Marked neighbours are then
// forced to a value (or told to forget theirs) and the solve is repeated.
#include <algorithm>

#include "components/cmp.h"
#include "solver/calc.h"

namespace tz4 {

namespace {

constexpr int kAdjustRounds = 10;
constexpr int kNotSettled = 99;

bool IsSubcircuit(const CCmp* component) { return component->ModelId() == MODEL_SUBCIR; }

bool HasNode(const CCmp* component, int32_t node) {
  return std::find(component->pins.begin(), component->pins.end(), node) != component->pins.end();
}

}  // namespace

int CCalc::CalcIC(double t, double h) {
  int retry = 0;
  int r = 0;
  for (;;) {
    // Solve the pair; components whose value the solve fixed take it over
    // (STAMP_IC_ADJUST) and the solve runs again while any did.
    for (int round = 1;; ++round) {
      r = SolveInitial(t, true, false);
      if (r == 0) break;
      if (r == -1) return -1;
      error.clear();
      if (AdjustIC() != 0 && round < kAdjustRounds) continue;
      break;
    }
    // At the very start, neighbours that were newly forced get one more
    // complete pass before the caller is told.
    if (t == 0.0 && retry != 1 && r == kNotSettled) {
      for (CCmp* component : cmps) component->icRetry = true;
      ++retry;
      if (retry > 1) return r;
      continue;
    }
    break;
  }
  if (r == kNotSettled) return r;

  // The switching devices settle with the values found, first changing only
  // those that want to.
  r = Calculate(t, h, false, true);
  if (r < -1 || (r > -1 && r != 0)) return r;

  if (r == -1) {
    // No consistent state: the components around each device that switched
    // act as if they knew no value, which frees their voltages or currents.
    bool marked = false;
    for (CCmp* component : cmps) {
      if (IsSubcircuit(component) || !component->switched) continue;
      for (int32_t node : component->pins) {
        if (node <= 0) continue;
        for (CCmp* other : cmps) {
          if (other == component || IsSubcircuit(other) || other->ignoreIC) continue;
          if (!HasNode(other, node)) continue;
          other->ignoreIC = true;
          marked = true;
        }
      }
    }
    if (marked) {
      r = kNotSettled;
    } else {
      // Nothing left to free: let the search try every component.
      error.clear();
      r = Calculate(t, h, false, false);
    }
  }

  // The solution and row marks that the run starts from.
  if (r == 0) SolveInitial(t, false, true);
  return r;
}

}  // namespace tz4
