// The matrix primitives through which devices write their equations, and the
// state check of ideal clamps.
//
// Nodes and rows outside the matrix (an unconnected pin has a negative
// number, a logic node one at or above `dim`) are not written: such a pin
// simply has no equation to take part in.
#include <algorithm>
#include <cmath>

#include "solver/calc.h"

namespace tz4 {

void CCalc::AddCoupling(int row, int col, double v) {
  if (InMatrix(row) && InMatrix(col)) A[static_cast<size_t>(row)][col] += v;
}

void CCalc::SetCoupling(int row, int col, double v) {
  if (InMatrix(row) && InMatrix(col)) A[static_cast<size_t>(row)][col] = v;
}

void CCalc::AddDerivative(int row, int col, double v) {
  if (InMatrix(row) && InMatrix(col)) B[static_cast<size_t>(row)][col] += v;
}

void CCalc::SetDerivative(int row, int col, double v) {
  if (InMatrix(row) && InMatrix(col)) B[static_cast<size_t>(row)][col] = v;
}

void CCalc::SetConstant(int row, double v) {
  if (InMatrix(row)) c[static_cast<size_t>(row)] = v;
}

void CCalc::AddConstant(int row, double v) {
  if (InMatrix(row)) c[static_cast<size_t>(row)] += v;
}

void CCalc::ClearRow(int row) {
  if (!InMatrix(row)) return;
  std::fill(A[static_cast<size_t>(row)], A[static_cast<size_t>(row)] + dim, 0.0);
  c[static_cast<size_t>(row)] = 0.0;
}

void CCalc::SetSource(int row, double v) {
  if (InMatrix(row)) s[static_cast<size_t>(row)] = v;
}

void CCalc::SetSourceSlope(int row, double v) {
  if (InMatrix(row)) sB[static_cast<size_t>(row)] = v;
}

void CCalc::MarkRow(int row) {
  if (InMatrix(row)) rowMark[static_cast<size_t>(row)] = 1;
}

uint8_t CCalc::RowMark(int row) const {
  return InMatrix(row) ? rowMark[static_cast<size_t>(row)] : 0;
}

void CCalc::KeepStepStart() {
  std::copy(x.begin(), x.end(), xPrev.begin());
  std::copy(s.begin(), s.end(), sPrev.begin());
}

void CCalc::RestoreStepStart() {
  std::copy(xPrev.begin(), xPrev.end(), x.begin());
  std::copy(sPrev.begin(), sPrev.end(), s.begin());
}

void CCalc::StampConductance(int a, int b, double R) {
  if (a == b) return;
  const double g = std::isinf(R) ? 0.0 : 1.0 / R;
  AddCoupling(a, a, -g);
  AddCoupling(a, b, g);
  AddCoupling(b, a, g);
  AddCoupling(b, b, -g);
}

// V(b) - V(a) = v; the row's unknown is the current.
bool CCalc::StampVSource(int a, int b, int r, double v) {
  if (a == b) return true;
  AddCoupling(a, r, 1.0);
  AddCoupling(b, r, -1.0);
  AddCoupling(r, a, -1.0);
  AddCoupling(r, b, 1.0);
  SetConstant(r, -v);
  return true;
}

bool CCalc::StampOutVoltage(int a, int b, int r, double v) {
  if (a == b) return true;
  AddCoupling(a, r, -1.0);
  AddCoupling(b, r, 1.0);
  AddCoupling(r, a, -1.0);
  AddCoupling(r, b, 1.0);
  SetConstant(r, -v);
  return true;
}

// x[r] = i, the current from b to a.
void CCalc::StampISource(int a, int b, int r, double i) {
  if (a != b) {
    AddCoupling(a, r, 1.0);
    AddCoupling(b, r, -1.0);
  }
  SetCoupling(r, r, 1.0);
  SetConstant(r, -i);
}

void CCalc::StampOutCurrent(int a, int b, int r, double i) {
  if (a != b) {
    AddCoupling(a, r, -1.0);
    AddCoupling(b, r, 1.0);
  }
  SetCoupling(r, r, 1.0);
  SetConstant(r, -i);
}

// A resistor with its current as the row's unknown; R may be 0 or infinite.
void CCalc::StampResistor(int a, int b, int r, double R) {
  if (a == b) {
    SetCoupling(r, r, 1.0);
    return;
  }
  AddCoupling(a, r, 1.0);
  AddCoupling(b, r, -1.0);
  if (R == 0.0) {
    AddCoupling(r, a, -1.0);
    AddCoupling(r, b, 1.0);
  } else if (std::isinf(R)) {
    SetCoupling(r, r, 1.0);
  } else {
    AddCoupling(r, a, -1.0 / R);
    AddCoupling(r, b, 1.0 / R);
    SetCoupling(r, r, -1.0);
  }
}

void CCalc::StampTransconductance(int a, int b, int c_, int d, int r, double g) {
  if (std::isinf(g)) {
    if (a != b) {
      AddCoupling(a, r, -1.0);
      AddCoupling(b, r, 1.0);
    }
    if (c_ != d) {
      AddCoupling(r, c_, 1.0);
      AddCoupling(r, d, -1.0);
    }
    return;
  }
  StampOutCurrent(a, b, r, 0.0);
  if (c_ != d) {
    AddCoupling(r, c_, g);
    AddCoupling(r, d, -g);
  }
}

void CCalc::StampGainVV(int a, int b, int c_, int d, int r, double g) {
  if (std::isinf(g)) {
    if (a != b) {
      AddCoupling(a, r, -1.0);
      AddCoupling(b, r, 1.0);
    }
    if (c_ != d) {
      AddCoupling(r, c_, 1.0);
      AddCoupling(r, d, -1.0);
    }
    return;
  }
  StampOutVoltage(a, b, r, 0.0);
  if (c_ != d) {
    AddCoupling(r, c_, g);
    AddCoupling(r, d, -g);
  }
}

void CCalc::StampGainVI(int a, int b, int r, int ctrl, double g) {
  if (std::isinf(g)) {
    if (a != b) {
      AddCoupling(a, r, -1.0);
      AddCoupling(b, r, 1.0);
    }
    SetCoupling(r, ctrl, -1.0);
    return;
  }
  StampOutVoltage(a, b, r, 0.0);
  AddCoupling(r, ctrl, -g);
}

void CCalc::StampCurrentGain(int a, int b, int r, int ctrl, double g) {
  if (std::isinf(g)) {
    if (a != b) {
      AddCoupling(a, r, -1.0);
      AddCoupling(b, r, 1.0);
    }
    SetCoupling(r, ctrl, -1.0);
    return;
  }
  StampOutCurrent(a, b, r, 0.0);
  AddCoupling(r, ctrl, -g);
}

// An ideal clamp: a voltage source while on; while off its current row is
// taken out of the elimination, so the current is 0.
void CCalc::StampClamp(int a, int b, int r, bool on, double v) {
  if (on && std::isfinite(v)) {
    StampVSource(a, b, r, v);
    return;
  }
  SetCoupling(r, r, 1.0);
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
  auto mark = [this](int i) { return RowMark(i); };
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
