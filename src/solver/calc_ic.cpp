// Initial conditions: a solution at one instant that agrees with what the
// reactive elements hold and with the states of the switching devices.
//
// The state form of the system is solved as a pair. A capacitor or inductor
// with a known value is a source of that value, and its coefficient in B
// says how an impulse in the unknowns would move that value. Three orders
// are solved, one after the other:
//
//   impulses q:     A q = 0
//   values x:       A x + B q + c = 0
//   next order y:   A y + B x + sB = 0
//
// A is eliminated once, carrying B and both constant terms along. The rows
// that keep a pivot fix the unknowns of their columns in terms of the
// columns without one; the rows left without a pivot have no A part any
// more, and only their B part ties the free columns: it decides the size of
// the impulses, and one order later the values that A leaves open (the
// current that a capacitor shares with a source in parallel). An unknown
// with an impulse would have to be infinite: its row is marked, and its
// neighbours are marked to be forced, so that the next pass treats them as
// sources and the capacitors take their values from the solution.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "components/cmp.h"
#include "solver/calc.h"
#include "solver/cancel.h"

namespace tz4 {

namespace {

constexpr int kAdjustRounds = 10;
constexpr int kNotSettled = 99;
constexpr uint8_t kContradiction = 255;

bool IsSubcircuit(const CCmp* component) { return component->ModelId() == MODEL_SUBCIR; }

bool HasNode(const CCmp* component, int32_t node) {
  return std::find(component->pins.begin(), component->pins.end(), node) != component->pins.end();
}

// to -= f * from over the listed columns; an entry not yet in the mask of
// `to` is written outright.
void SubtractOver(double* to, uint8_t* toMask, const double* from, const std::vector<int>& cols,
                  double f, double zero) {
  for (int j : cols) {
    const double p = f * from[j];
    if (!toMask[j]) {
      to[j] = -p;
      toMask[j] = 1;
    } else {
      CancelMasked(to[j], toMask[j], p, zero);
    }
  }
}

// The small dense system of the columns that A leaves without a pivot,
// solved by Gauss-Jordan with the largest pivot of each column (the first of
// equals). Unknowns without a pivot are 0. A row left without a pivot whose
// right side is not 0 cannot be met: for each such row, an unknown without a
// pivot, paired in order, goes into `conflicts`.
void SolveFreeColumns(std::vector<double> m, std::vector<double> rhs, int size, double zero,
                      std::vector<double>& u, std::vector<int>& conflicts) {
  const auto at = [size](int a, int b) { return static_cast<size_t>(a * size + b); };
  std::vector<int> rowOf(static_cast<size_t>(size), -1);
  std::vector<uint8_t> used(static_cast<size_t>(size), 0);
  for (int b = 0; b < size; ++b) {
    int p = -1;
    double largest = 0.0;
    for (int a = 0; a < size; ++a) {
      if (used[static_cast<size_t>(a)]) continue;
      const double v = std::fabs(m[at(a, b)]);
      if (v > largest) {
        p = a;
        largest = v;
      }
    }
    if (p < 0) continue;
    used[static_cast<size_t>(p)] = 1;
    rowOf[static_cast<size_t>(b)] = p;
    const double inv = 1.0 / m[at(p, b)];
    for (int c = 0; c < size; ++c) m[at(p, c)] *= inv;
    m[at(p, b)] = 1.0;
    rhs[static_cast<size_t>(p)] *= inv;
    for (int a = 0; a < size; ++a) {
      const double f = m[at(a, b)];
      if (a == p || f == 0.0) continue;
      for (int c = 0; c < size; ++c)
        if (c != b) m[at(a, c)] = Cancel(m[at(a, c)], f * m[at(p, c)], zero);
      m[at(a, b)] = 0.0;
      double& side = rhs[static_cast<size_t>(a)];
      side = Cancel(side, f * rhs[static_cast<size_t>(p)], zero);
    }
  }
  u.assign(static_cast<size_t>(size), 0.0);
  std::vector<int> open;  // unknowns without a pivot
  for (int b = 0; b < size; ++b) {
    const int p = rowOf[static_cast<size_t>(b)];
    if (p >= 0)
      u[static_cast<size_t>(b)] = rhs[static_cast<size_t>(p)];
    else
      open.push_back(b);
  }
  size_t next = 0;
  for (int a = 0; a < size; ++a) {
    if (used[static_cast<size_t>(a)]) continue;
    const int b = next < open.size() ? open[next] : -1;
    ++next;
    if (rhs[static_cast<size_t>(a)] != 0.0 && b >= 0) conflicts.push_back(b);
  }
}

}  // namespace

int CCalc::SolveIC(bool mark) {
  if (dim < 1) return 0;
  const double zero = Zero();
  const int n = dim;
  const size_t un = static_cast<size_t>(n);
  for (size_t i = 1; i < un; ++i) {
    A[i][0] = x[i];
    B[i][0] = sB[i];
  }

  // Elimination of A with the pivot rule of Solve: the largest entry of the
  // column among the rows at or below it and the rows above that have no
  // pivot of their own. B and the two constants go along with every row
  // operation.
  std::vector<uint8_t> pivot(un, 0);
  std::vector<int> colsOfA, colsOfB;
  colsOfA.reserve(un);
  colsOfB.reserve(un);
  const auto eligible = [&](int r, int k) {
    const size_t ri = static_cast<size_t>(r);
    return !rowFree[ri] && (r >= k || !pivot[ri]);
  };
  for (int k = 1; k < n; ++k) {
    const size_t ki = static_cast<size_t>(k);
    if (rowFree[ki]) continue;
    int p = -1;
    double largest = 0.0;
    for (int r = 1; r < n; ++r) {
      const size_t ri = static_cast<size_t>(r);
      if (!maskA[ri][k] || !eligible(r, k)) continue;
      const double v = std::fabs(A[ri][k]);
      if (v > largest) {
        p = r;
        largest = v;
      }
    }
    if (p < 0) continue;
    if (p != k) SwapRows(p, k, true, false);
    pivot[ki] = 1;
    colsOfA.clear();
    colsOfB.clear();
    for (int j = 1; j < n; ++j) {
      if (maskA[ki][j] && j != k) colsOfA.push_back(j);
      if (maskB[ki][j]) colsOfB.push_back(j);
    }
    const double d = A[ki][k];
    if (d != 1.0) {
      const double inv = 1.0 / d;
      for (int j : colsOfA) A[ki][j] *= inv;
      for (int j : colsOfB) B[ki][j] *= inv;
      A[ki][0] *= inv;
      B[ki][0] *= inv;
      A[ki][k] = 1.0;
    }
    for (int r = 1; r < n; ++r) {
      const size_t ri = static_cast<size_t>(r);
      if (r == k || !maskA[ri][k] || !eligible(r, k)) continue;
      const double f = A[ri][k];
      SubtractOver(A[ri], maskA[ri], A[ki], colsOfA, f, zero);
      if (!colsOfB.empty()) {
        SubtractOver(B[ri], maskB[ri], B[ki], colsOfB, f, zero);
        maskB[ri][0] = 1;
      }
      A[ri][0] = Cancel(A[ri][0], f * A[ki][0], zero);
      B[ri][0] = Cancel(B[ri][0], f * B[ki][0], zero);
      A[ri][k] = 0.0;
      maskA[ri][k] = 0;
    }
  }

  // The columns without a pivot. The rows at their places are the rows left
  // without one, with nothing in A.
  std::vector<int> freeCols;
  for (int k = 1; k < n; ++k)
    if (!rowFree[static_cast<size_t>(k)] && !pivot[static_cast<size_t>(k)]) freeCols.push_back(k);
  const int m = static_cast<int>(freeCols.size());

  // The entries each row still has, columns of free rows left out: to the
  // right of the pivot in A (there is nothing to its left), and all of B.
  std::vector<std::vector<int>> upper(un), ofB(un);
  for (int i = 1; i < n; ++i) {
    const size_t ii = static_cast<size_t>(i);
    if (rowFree[ii]) continue;
    for (int j = 1; j < n; ++j) {
      const size_t ji = static_cast<size_t>(j);
      if (rowFree[ji]) continue;
      if (pivot[ii] && j > i && maskA[ii][j] && A[ii][j] != 0.0) upper[ii].push_back(j);
      if (maskB[ii][j] && B[ii][j] != 0.0) ofB[ii].push_back(j);
    }
  }

  // The rows with a pivot, from the last up: v_i = -constant_i - sum of
  // A(i,j) v_j over the columns to the right. The entries of the columns
  // without a pivot are taken as they stand in v.
  const auto backSubstitute = [&](std::vector<double>& v, const std::vector<double>& constant) {
    for (int i = n - 1; i >= 1; --i) {
      const size_t ii = static_cast<size_t>(i);
      if (rowFree[ii] || !pivot[ii]) continue;
      double value = -constant[ii];
      const double* ai = A[ii];
      for (int j : upper[ii]) {
        const double vj = v[static_cast<size_t>(j)];
        if (vj != 0.0) value = Cancel(value, ai[j] * vj, zero);
      }
      v[ii] = value;
    }
  };
  // B(i,.) v added to a start value, under the rule.
  const auto rowOfB = [&](size_t i, const std::vector<double>& v, double start) {
    double value = start;
    const double* bi = B[i];
    for (int j : ofB[i]) {
      const double vj = v[static_cast<size_t>(j)];
      if (vj != 0.0) value = Cancel(value, -bi[j] * vj, zero);
    }
    return value;
  };
  // The constant of each row (column 0 of A, or of B one order later) with
  // B(i,.) v added.
  const auto withB = [&](std::vector<double>& out, const std::vector<double>& v, int column0) {
    for (size_t i = 1; i < un; ++i)
      out[i] = rowFree[i] ? 0.0 : rowOfB(i, v, column0 == 0 ? A[i][0] : B[i][0]);
  };
  const auto spread = [&](std::vector<double>& v, int column) {
    std::fill(v.begin(), v.end(), 0.0);
    v[static_cast<size_t>(column)] = 1.0;
    backSubstitute(v, std::vector<double>(un, 0.0));
  };

  // How the B part of each row without a pivot acts on each free column,
  // the pivot columns following it through A.
  std::vector<double> tie(static_cast<size_t>(m) * static_cast<size_t>(m), 0.0);
  std::vector<double> v(un, 0.0);
  for (int b = 0; b < m; ++b) {
    spread(v, freeCols[static_cast<size_t>(b)]);
    for (int a = 0; a < m; ++a)
      tie[static_cast<size_t>(a * m + b)] =
          rowOfB(static_cast<size_t>(freeCols[static_cast<size_t>(a)]), v, 0.0);
  }

  std::vector<int> conflicts;
  std::vector<double> rhs(static_cast<size_t>(m)), u;
  const auto setFree = [&](std::vector<double>& target) {
    std::fill(target.begin(), target.end(), 0.0);
    for (int b = 0; b < m; ++b)
      target[static_cast<size_t>(freeCols[static_cast<size_t>(b)])] = u[static_cast<size_t>(b)];
  };

  // Impulses: A q = 0, and the rows without a pivot, B q + c = 0.
  const auto freeRow = [&](int a) { return static_cast<size_t>(freeCols[static_cast<size_t>(a)]); };
  for (int a = 0; a < m; ++a) rhs[static_cast<size_t>(a)] = -A[freeRow(a)][0];
  SolveFreeColumns(tie, rhs, m, zero, u, conflicts);
  std::vector<double> q(un, 0.0);
  setFree(q);
  backSubstitute(q, std::vector<double>(un, 0.0));

  // Values: A x + B q + c = 0. The free columns are fixed one order later by
  // the rows without a pivot: B x + sB = 0.
  std::vector<double> valueConstant(un, 0.0), value(un, 0.0), nextConstant(un, 0.0);
  withB(valueConstant, q, 0);
  backSubstitute(value, valueConstant);
  withB(nextConstant, value, 1);
  for (int a = 0; a < m; ++a) rhs[static_cast<size_t>(a)] = -nextConstant[freeRow(a)];
  SolveFreeColumns(tie, rhs, m, zero, u, conflicts);
  setFree(value);
  backSubstitute(value, valueConstant);

  // The next order of the rows with a pivot: A y + B x + sB = 0.
  std::vector<double> next(un, 0.0);
  withB(nextConstant, value, 1);
  backSubstitute(next, nextConstant);

  // x takes the values, column 0 of A the impulses, column 0 of B the next
  // order.
  for (size_t i = 1; i < un; ++i) {
    const bool used = !rowFree[i];
    x[i] = used ? value[i] : 0.0;
    A[i][0] = used ? q[i] : 0.0;
    B[i][0] = used ? next[i] : 0.0;
    rowMark[i] = 0;
  }
  // A condition that no impulse can meet: the free unknown it stands for
  // and every unknown that depends on it are contradictory.
  for (int b : conflicts) {
    const int column = freeCols[static_cast<size_t>(b)];
    spread(v, column);
    for (size_t i = 1; i < un; ++i)
      if (!rowFree[i] && (static_cast<int>(i) == column || (pivot[i] && v[i] != 0.0)))
        rowMark[i] = kContradiction;
  }

  int result = 0;
  for (int i = 1; i < n; ++i) {
    const size_t ii = static_cast<size_t>(i);
    if (rowFree[ii]) continue;
    if (rowMark[ii] == 0 && A[ii][0] != 0.0) rowMark[ii] = 1;
    if (rowMark[ii] == 0) continue;
    result = std::max(result, 1);
    error = "Infinity at node " + std::to_string(i) + " : " + NamesAtRow(i);
    if (mark)
      for (size_t index : ComponentsAtRow(i))
        if (MarkNeighbours(index) == kNotSettled) result = kNotSettled;
  }
  return result;
}

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
