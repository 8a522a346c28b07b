// The dense solvers: Solve (one step) and Factor (the kept factorisation of
// steady stepping). The pair solve of the initial conditions is in
// calc_ic.cpp.
//
// Both eliminate through the row pointers and touch only entries whose
// mask is set: the masked columns of the pivot row are collected once per
// pivot, and each row below is updated over that list. Every subtraction
// follows the cancellation rule of cancel.h. Neither fails: the status
// of each unknown is left in rowMark (0 solved, 1 free or infinite, 255
// contradictory).
#include <algorithm>
#include <cmath>
#include <string>

#include "solver/calc.h"
#include "solver/cancel.h"

namespace tz4 {

namespace {

// to -= f * from over the listed columns; an entry not yet in the mask is
// written outright.
inline void SubtractOver(double* to, uint8_t* toMask, const double* from, const int* cols,
                         int count, double f, double zero) {
  for (int n = 0; n < count; ++n) {
    const int j = cols[n];
    const double p = f * from[j];
    if (!toMask[j]) {
      to[j] = -p;
      toMask[j] = 1;
    } else {
      CancelMasked(to[j], toMask[j], p, zero);
    }
  }
}

// Columns j >= 1, other than `skip`, whose mask is set in the row.
inline int Collect(const uint8_t* maskRow, int dim, int skip, int* out) {
  int count = 0;
  for (int j = 1; j < dim; ++j)
    if (maskRow[j] && j != skip) out[count++] = j;
  return count;
}

inline void ScaleOver(double* row, const int* cols, int count, double factor) {
  for (int n = 0; n < count; ++n) row[cols[n]] *= factor;
}

}  // namespace

// A row may give the pivot of column k if it lies at or below k, or if it
// has no pivot of its own yet.
bool CCalc::Eligible(int r, int k, bool bothDiagonals) const {
  if (r >= k) return true;
  const size_t i = static_cast<size_t>(r);
  if (maskA[i][r]) return false;
  return !bothDiagonals || !maskB[i][r];
}

// The row with the largest |m(r,k)| among the eligible rows with the mask
// set; the first of equals wins. -1 when there is none or it is 0.
int CCalc::FindPivot(int k, const std::vector<uint8_t*>& mask, const std::vector<double*>& m,
                     bool bothDiagonals) const {
  int best = -1;
  double largest = 0.0;
  for (int r = 1; r < dim; ++r) {
    const size_t i = static_cast<size_t>(r);
    if (rowFree[i] || !mask[i][k] || !Eligible(r, k, bothDiagonals)) continue;
    const double v = std::fabs(m[i][k]);
    if (best < 0 || v > largest) {
      best = r;
      largest = v;
    }
  }
  return best < 0 || largest == 0.0 ? -1 : best;
}

void CCalc::SwapRows(int r, int k, bool withB, bool withC) {
  const size_t i = static_cast<size_t>(r), j = static_cast<size_t>(k);
  std::swap(A[i], A[j]);
  std::swap(maskA[i], maskA[j]);
  if (withB) {
    std::swap(B[i], B[j]);
    std::swap(maskB[i], maskB[j]);
  }
  if (withC) std::swap(c[i], c[j]);
}

void CCalc::RowSubtract(std::vector<double*>& matrix, std::vector<uint8_t*>& mask, int from,
                        int to, double f) {
  const double zero = Zero();
  const size_t fi = static_cast<size_t>(from), ti = static_cast<size_t>(to);
  const int count = Collect(mask[fi], dim, -1, colsB.data());
  SubtractOver(matrix[ti], mask[ti], matrix[fi], colsB.data(), count, f, zero);
  mask[ti][0] = 1;
}

int CCalc::Solve() {
  if (dim < 1) return 0;
  const double zero = Zero();
  const int n = dim;
  int* cols = colsA.data();
  for (int i = 1; i < n; ++i) A[static_cast<size_t>(i)][0] = x[static_cast<size_t>(i)];

  // Forward elimination.
  for (int k = 1; k < n; ++k) {
    if (rowFree[static_cast<size_t>(k)]) continue;
    const int p = FindPivot(k, maskA, A, false);
    if (p < 0) continue;
    if (p != k) SwapRows(p, k, false, false);
    double* rk = A[static_cast<size_t>(k)];
    uint8_t* mk = maskA[static_cast<size_t>(k)];
    const int count = Collect(mk, n, k, cols);
    const double d = rk[k];
    if (d != 1.0) {
      const double inv = 1.0 / d;
      ScaleOver(rk, cols, count, inv);
      rk[k] = 1.0;
      rk[0] *= inv;
    }
    for (int r = 1; r < n; ++r) {
      const size_t ri = static_cast<size_t>(r);
      if (r == k || rowFree[ri]) continue;
      uint8_t* mr = maskA[ri];
      if (!mr[k] || !Eligible(r, k, false)) continue;
      double* ar = A[ri];
      const double f = ar[k];
      SubtractOver(ar, mr, rk, cols, count, f, zero);
      ar[k] = 0.0;
      mr[k] = 0;
      ar[0] = Cancel(ar[0], f * rk[0], zero);
    }
  }

  // Rows left without a pivot but with a zero constant: reduce them against
  // the rows above; what remains either pivots or leaves its unknown free.
  for (int r = 1; r < n; ++r) {
    const size_t ri = static_cast<size_t>(r);
    double* ar = A[ri];
    uint8_t* mr = maskA[ri];
    if (rowFree[ri] || mr[r] || ar[0] != 0.0) continue;
    for (int j = 1; j < n; ++j) {
      const size_t ji = static_cast<size_t>(j);
      if (!rowFree[ji] || ar[j] == 0.0) continue;
      const double f = ar[j];
      const int count = Collect(maskA[ji], n, -1, cols);
      SubtractOver(ar, mr, A[ji], cols, count, f, zero);
      ar[j] = 0.0;
      mr[j] = 0;
    }
    for (int j = 1; j < r; ++j) {
      const size_t ji = static_cast<size_t>(j);
      if (rowFree[ji] || !mr[j]) continue;
      const double f = ar[j];
      const int count = Collect(maskA[ji], n, -1, cols);
      const int* above = std::upper_bound(cols, cols + count, j);
      SubtractOver(ar, mr, A[ji], above, static_cast<int>(cols + count - above), f, zero);
      ar[j] = 0.0;
      mr[j] = 0;
      ar[0] = Cancel(ar[0], f * A[ji][0], zero);
    }
    const double d = ar[r];
    if (d == 0.0) {
      // The unknown is free: its row holds nothing, and with no pivot
      // flag on the diagonal the back substitution marks it and leaves 0.
      std::fill(ar, ar + n, 0.0);
      std::fill(mr, mr + n, uint8_t{0});
      ar[r] = 1.0;
      mr[0] = 1;
    } else if (d != 1.0) {
      const double inv = 1.0 / d;
      for (int j = r + 1; j < n; ++j)
        if (mr[j]) ar[j] *= inv;
      ar[0] *= inv;
      ar[r] = 1.0;
    }
  }

  std::fill(rowMark.begin(), rowMark.end(), uint8_t{0});
  std::fill(x.begin(), x.begin() + n, 0.0);

  // Back substitution. Unknowns below that are marked stay unresolved in the
  // rows above, so that their marks can spread to what depends on them.
  int* marked = colsB.data();
  int markedCount = 0;
  for (int i = n - 1; i >= 1; --i) {
    const size_t ii = static_cast<size_t>(i);
    if (rowFree[ii]) continue;
    const double u = A[ii][0];
    if (!maskA[ii][i]) {
      rowMark[ii] = u == 0.0 ? 1 : 255;
      marked[markedCount++] = i;
      continue;
    }
    x[ii] = -u;
    const double* ai = A[ii];
    for (int r = i - 1; r >= 1; --r) {
      const size_t ri = static_cast<size_t>(r);
      if (rowFree[ri] || !maskA[ri][i]) continue;
      double* ar = A[ri];
      const double a = ar[i];
      ar[0] = Cancel(ar[0], u * a, zero);
      for (int q = 0; q < markedCount; ++q) {
        const int m = marked[q];
        CancelMasked(ar[m], maskA[ri][m], ai[m] * a, zero);
      }
    }
  }
  if (markedCount == 0) return 0;

  // A marked unknown passes its mark to every unknown that depends on it.
  bool contradiction = false, free = false;
  for (int i = 1; i < n; ++i) {
    const size_t ii = static_cast<size_t>(i);
    if (rowFree[ii] || !rowMark[ii]) continue;
    for (int r = i - 1; r >= 1; --r) {
      const size_t ri = static_cast<size_t>(r);
      if (rowFree[ri] || A[ri][i] == 0.0 || rowMark[ri] == 255) continue;
      rowMark[ri] = rowMark[ii];
    }
  }
  for (int i = 1; i < n; ++i) {
    const uint8_t m = rowMark[static_cast<size_t>(i)];
    if (m == 255) contradiction = true;
    if (m == 1) free = true;
  }
  if (contradiction) return -1;
  return free ? 1 : 0;
}

int CCalc::Factor() {
  if (dim < 1) return 0;
  const double zero = Zero();
  const int n = dim;
  int* colsOfA = colsA.data();
  int* colsOfB = colsB.data();

  for (int k = 1; k < n; ++k) {
    if (rowFree[static_cast<size_t>(k)]) continue;
    const int p = FindPivot(k, maskA, A, false);
    if (p < 0) continue;
    if (p != k) SwapRows(p, k, true, true);
    const size_t ki = static_cast<size_t>(k);
    double* rk = A[ki];
    double* bk = B[ki];
    const bool withB = maskB[ki][0] != 0;
    const int countA = Collect(maskA[ki], n, k, colsOfA);
    const int countB = withB ? Collect(maskB[ki], n, -1, colsOfB) : 0;
    const double d = rk[k];
    if (d != 1.0) {
      const double inv = 1.0 / d;
      ScaleOver(rk, colsOfA, countA, inv);
      rk[k] = 1.0;
      ScaleOver(bk, colsOfB, countB, inv);
      c[ki] *= inv;
    }
    for (int r = 1; r < n; ++r) {
      const size_t ri = static_cast<size_t>(r);
      if (r == k || rowFree[ri]) continue;
      uint8_t* mr = maskA[ri];
      if (!mr[k] || !Eligible(r, k, false)) continue;
      double* ar = A[ri];
      const double f = ar[k];
      SubtractOver(ar, mr, rk, colsOfA, countA, f, zero);
      ar[k] = 0.0;
      mr[k] = 0;
      if (withB) {
        SubtractOver(B[ri], maskB[ri], bk, colsOfB, countB, f, zero);
        maskB[ri][0] = 1;
      }
      c[ri] = Cancel(c[ri], f * c[ki], zero);
    }
  }

  for (int r = 1; r < n; ++r) {
    const size_t ri = static_cast<size_t>(r);
    double* ar = A[ri];
    uint8_t* mr = maskA[ri];
    if (rowFree[ri] || mr[r]) continue;
    for (int j = 1; j < n; ++j) {
      const size_t ji = static_cast<size_t>(j);
      if (!rowFree[ji] || ar[j] == 0.0) continue;
      const double f = ar[j];
      int count = Collect(maskA[ji], n, -1, colsOfA);
      SubtractOver(ar, mr, A[ji], colsOfA, count, f, zero);
      if (maskB[ji][0]) RowSubtract(B, maskB, j, r, f);
      ar[j] = 0.0;
      mr[j] = 0;
    }
    for (int j = 1; j < r; ++j) {
      const size_t ji = static_cast<size_t>(j);
      if (rowFree[ji] || !mr[j]) continue;
      const double f = ar[j];
      const int count = Collect(maskA[ji], n, -1, colsOfA);
      const int* above = std::upper_bound(colsOfA, colsOfA + count, j);
      SubtractOver(ar, mr, A[ji], above, static_cast<int>(colsOfA + count - above), f, zero);
      if (maskB[ji][0]) RowSubtract(B, maskB, j, r, f);
      ar[j] = 0.0;
      mr[j] = 0;
      c[ri] = Cancel(c[ri], f * c[ji], zero);
    }
    const double d = ar[r];
    if (d == 0.0) {
      std::fill(ar, ar + n, 0.0);
      std::fill(mr, mr + n, uint8_t{0});
      ar[r] = 1.0;
      mr[0] = 1;
    } else if (d != 1.0) {
      const double inv = 1.0 / d;
      for (int j = r + 1; j < n; ++j)
        if (mr[j]) ar[j] *= inv;
      if (maskB[ri][0])
        for (int j = 1; j < n; ++j)
          if (maskB[ri][j]) B[ri][j] *= inv;
      c[ri] *= inv;
      ar[r] = 1.0;
    }
  }

  // Back pass: carry B and c up, so that each row holds its unknown's share
  // of the inverse.
  int result = 1;
  for (int i = n - 1; i >= 1; --i) {
    const size_t ii = static_cast<size_t>(i);
    if (rowFree[ii]) continue;
    if (A[ii][i] == 0.0) {
      result = 0;
      continue;
    }
    const bool withB = maskB[ii][0] != 0;
    const int countB = withB ? Collect(maskB[ii], n, -1, colsOfB) : 0;
    for (int r = i - 1; r >= 1; --r) {
      const size_t ri = static_cast<size_t>(r);
      if (rowFree[ri] || !maskA[ri][i]) continue;
      const double f = A[ri][i];
      if (f == 0.0) {
        maskA[ri][i] = 0;
        continue;
      }
      if (withB) {
        SubtractOver(B[ri], maskB[ri], B[ii], colsOfB, countB, f, zero);
        maskB[ri][0] = 1;
      }
      c[ri] = Cancel(c[ri], f * c[ii], zero);
    }
  }
  FindStepColumns();
  return result;
}

}  // namespace tz4
