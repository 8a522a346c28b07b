// The cancellation rule shared by every solver and set-up step.
//
// A difference v = p - q stands only if it is larger than the rounding noise
// of its subtrahend, |q| * zero < |v|; otherwise it becomes exactly 0. This is
// what lets a singular circuit come out as singular: two equal paths cancel
// to a true zero instead of a residue of 1e-17.
#pragma once
#include <cmath>
#include <cstdint>

namespace tz4 {

// p - q under the rule.
inline double Cancel(double p, double q, double zero) {
  const double v = p - q;
  return std::fabs(q) * zero < std::fabs(v) ? v : 0.0;
}

// a -= q under the rule; the mask entry follows the outcome.
inline void CancelMasked(double& a, uint8_t& mask, double q, double zero) {
  const double v = a - q;
  if (std::fabs(q) * zero < std::fabs(v)) {
    a = v;
    mask = 1;
  } else {
    a = 0.0;
    mask = 0;
  }
}

}  // namespace tz4
