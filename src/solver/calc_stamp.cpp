// The matrix primitives through which devices write their equations, and the
// state check of ideal clamps.
//
// Nodes and rows outside the matrix (an unconnected pin has a negative
// number, a logic node one at or above `dim`) are not written: such a pin
// simply has no equation to take part in.
#include <cmath>

#include "solver/calc.h"

namespace tz4 {

void CCalc::AddA(int r, int col, double v) {
  if (InMatrix(r) && InMatrix(col)) A[static_cast<size_t>(r)][col] += v;
}

void CCalc::SetA(int r, int col, double v) {
  if (InMatrix(r) && InMatrix(col)) A[static_cast<size_t>(r)][col] = v;
}

void CCalc::SetC(int r, double v) {
  if (InMatrix(r)) c[static_cast<size_t>(r)] = v;
}

void CCalc::StampConductance(int a, int b, double R) {
  if (a == b) return;
  const double g = std::isinf(R) ? 0.0 : 1.0 / R;
  AddA(a, a, -g);
  AddA(a, b, g);
  AddA(b, a, g);
  AddA(b, b, -g);
}

// V(b) - V(a) = v; the row's unknown is the current.
bool CCalc::StampVSource(int a, int b, int r, double v) {
  if (a == b) return true;
  AddA(a, r, 1.0);
  AddA(b, r, -1.0);
  AddA(r, a, -1.0);
  AddA(r, b, 1.0);
  SetC(r, -v);
  return true;
}

bool CCalc::StampOutVoltage(int a, int b, int r, double v) {
  if (a == b) return true;
  AddA(a, r, -1.0);
  AddA(b, r, 1.0);
  AddA(r, a, -1.0);
  AddA(r, b, 1.0);
  SetC(r, -v);
  return true;
}

// x[r] = i, the current from b to a.
void CCalc::StampISource(int a, int b, int r, double i) {
  if (a != b) {
    AddA(a, r, 1.0);
    AddA(b, r, -1.0);
  }
  SetA(r, r, 1.0);
  SetC(r, -i);
}

void CCalc::StampOutCurrent(int a, int b, int r, double i) {
  if (a != b) {
    AddA(a, r, -1.0);
    AddA(b, r, 1.0);
  }
  SetA(r, r, 1.0);
  SetC(r, -i);
}

// A resistor with its current as the row's unknown; R may be 0 or infinite.
void CCalc::StampResistor(int a, int b, int r, double R) {
  if (a == b) {
    SetA(r, r, 1.0);
    return;
  }
  AddA(a, r, 1.0);
  AddA(b, r, -1.0);
  if (R == 0.0) {
    AddA(r, a, -1.0);
    AddA(r, b, 1.0);
  } else if (std::isinf(R)) {
    SetA(r, r, 1.0);
  } else {
    AddA(r, a, -1.0 / R);
    AddA(r, b, 1.0 / R);
    SetA(r, r, -1.0);
  }
}

void CCalc::StampTransconductance(int a, int b, int c_, int d, int r, double g) {
  if (std::isinf(g)) {
    if (a != b) {
      AddA(a, r, -1.0);
      AddA(b, r, 1.0);
    }
    if (c_ != d) {
      AddA(r, c_, 1.0);
      AddA(r, d, -1.0);
    }
    return;
  }
  StampOutCurrent(a, b, r, 0.0);
  if (c_ != d) {
    AddA(r, c_, g);
    AddA(r, d, -g);
  }
}

void CCalc::StampGainVV(int a, int b, int c_, int d, int r, double g) {
  if (std::isinf(g)) {
    if (a != b) {
      AddA(a, r, -1.0);
      AddA(b, r, 1.0);
    }
    if (c_ != d) {
      AddA(r, c_, 1.0);
      AddA(r, d, -1.0);
    }
    return;
  }
  StampOutVoltage(a, b, r, 0.0);
  if (c_ != d) {
    AddA(r, c_, g);
    AddA(r, d, -g);
  }
}

void CCalc::StampGainVI(int a, int b, int r, int ctrl, double g) {
  if (std::isinf(g)) {
    if (a != b) {
      AddA(a, r, -1.0);
      AddA(b, r, 1.0);
    }
    SetA(r, ctrl, -1.0);
    return;
  }
  StampOutVoltage(a, b, r, 0.0);
  AddA(r, ctrl, -g);
}

void CCalc::StampCurrentGain(int a, int b, int r, int ctrl, double g) {
  if (std::isinf(g)) {
    if (a != b) {
      AddA(a, r, -1.0);
      AddA(b, r, 1.0);
    }
    SetA(r, ctrl, -1.0);
    return;
  }
  StampOutCurrent(a, b, r, 0.0);
  AddA(r, ctrl, -g);
}

// An ideal clamp: a voltage source while on; while off its current row is
// taken out of the elimination, so the current is 0.
void CCalc::StampClamp(int a, int b, int r, bool on, double v) {
  if (on && std::isfinite(v)) {
    StampVSource(a, b, r, v);
    return;
  }
  SetA(r, r, 1.0);
  if (a == b) return;
  if (InMatrix(r)) rowFree[static_cast<size_t>(r)] = 1;
  StampVSource(a, b, r, 0.0);
}

// A logic level driven onto a node: inside the matrix the node's equation
// becomes V = level; outside it the level is written into the solution.
void CCalc::StampLogicOutput(int node, int level) {
  const double value = level == 1 ? high : low;
  if (node < 0) return;
  if (node < dim) {
    const size_t n = static_cast<size_t>(node);
    for (int j = 0; j < dim; ++j) {
      A[n][j] = 0.0;
      B[n][j] = 0.0;
    }
    c[n] = 0.0;
    A[n][n] = -1.0;
    c[n] = value;
    return;
  }
  if (node < total) x[static_cast<size_t>(node)] = value;
}

bool CCalc::CheckClamp(bool apply, int32_t& state, int a, int b, int r, double von, double voff,
                       bool twoSided) {
  const double tol = Zero();
  const double current = V(r);
  if (state != 0) {
    if ((current < 0.0 && state == 1) || (current > 0.0 && state == -1)) {
      if (apply) state = 0;
      return true;
    }
  } else {
    const double va = V(a);
    double d = V(b) - va;
    if (std::fabs(va) * tol >= std::fabs(d)) d = 0.0;
    if (std::isfinite(von) && std::fabs(von) * tol < std::fabs(d - von) && d - von > 0.0) {
      if (apply) state = 1;
      return true;
    }
    if (twoSided && std::isfinite(voff) && std::fabs(voff) * tol < std::fabs(d - voff) &&
        d - voff < 0.0) {
      if (apply) state = -1;
      return true;
    }
  }
  if (!apply) return false;
  // The marks of the last solve decide: an unknown current means the clamp
  // cannot stay on; nodes of different status mean it must conduct.
  auto mark = [this](int i) -> uint8_t {
    return InMatrix(i) ? rowMark[static_cast<size_t>(i)] : 0;
  };
  if (state != 0) {
    if (mark(r) != 0) {
      state = 0;
      return true;
    }
  } else if (mark(a) != mark(b)) {
    state = 1;
    return true;
  }
  return false;
}

}  // namespace tz4
