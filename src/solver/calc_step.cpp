// The set-ups of one solve: stamp the system at the step's start, the
// sources at its end, fold the integration rule into A and the constant term
// into x, and hand over to a solver. StepFactored is the steady step: one
// product with the kept factorisation and nothing else.
#include <algorithm>

#include "solver/calc.h"
#include "solver/cancel.h"

namespace tz4 {

namespace {

// Sums into two accumulators by sign, so that large terms of opposite sign
// meet only once, at the end, under the cancellation rule.
struct SignedSum {
  double positive = 0.0;
  double negative = 0.0;
  explicit SignedSum(double start) {
    if (start >= 0.0)
      positive = start;
    else
      negative = start;
  }
  // Branch-free, since the sign of a term is not predictable. A NaN term
  // lands in both and the result, under the rule, is 0 either way.
  void Add(double term) {
    positive += std::max(term, 0.0);
    negative += std::min(term, 0.0);
  }
};

// The masked product of one row of B with v, for rows that may hold stale
// entries outside their mask.
inline void RowProduct(const double* bi, const uint8_t* mi, int dim, const double* v,
                       SignedSum& sum) {
  if (!mi[0]) return;
  for (int j = 1; j < dim; ++j)
    if (mi[j]) sum.Add(bi[j] * v[j]);
}

}  // namespace

// The columns of B that the factorisation left non-zero in any row.
void CCalc::FindStepColumns() {
  stepColumns.clear();
  int* used = colsB.data();  // scratch: one flag per column
  std::fill(colsB.begin(), colsB.end(), 0);
  for (int i = 1; i < dim; ++i) {
    const size_t ii = static_cast<size_t>(i);
    if (rowFree[ii] || !maskB[ii][0]) continue;
    const uint8_t* mi = maskB[ii];
    for (int j = 1; j < dim; ++j) used[j] |= mi[j];
  }
  for (int j = 1; j < dim; ++j)
    if (used[j]) stepColumns.push_back(j);
  stepColumnsValid = true;
}

bool CCalc::StepAlgebraic(double t, double h, bool euler) {
  stampMode = euler ? 1 : 0;
  lineUpdate = euler ? 1 : 0;
  icPass = false;
  if (!StampMatrices(t) || !StampSources(t + h)) return false;
  const double zero = Zero();
  const double invH = 1.0 / h;
  for (int i = 1; i < dim; ++i) {
    const size_t ii = static_cast<size_t>(i);
    if (rowFree[ii]) {
      x[ii] = 0.0;
      continue;
    }
    double v = Cancel(c[ii], -s[ii], zero);
    if (euler && maskB[ii][0]) {
      // (A + B/h) x + s - (B/h) xPrev = 0
      double* ai = A[ii];
      uint8_t* mai = maskA[ii];
      const double* bi = B[ii];
      const uint8_t* mbi = maskB[ii];
      for (int j = 1; j < dim; ++j) {
        const size_t ji = static_cast<size_t>(j);
        if (rowFree[ji] || !mbi[j]) continue;
        const double k = invH * bi[j];
        v = Cancel(v, k * xPrev[ji], zero);
        CancelMasked(ai[j], mai[j], -k, zero);
      }
    }
    x[ii] = v;
  }
  Solve();
  return true;
}

// (A + 2B/h) x + s + sPrev + 2c + (A - 2B/h) xPrev = 0
bool CCalc::StepTrapezoid(double t, double h) {
  stampMode = 1;
  icPass = false;
  if (!StampMatrices(t) || !StampSources(t + h)) return false;
  const double zero = Zero();
  const double twoOverH = 2.0 / h;
  for (int i = 1; i < dim; ++i) {
    const size_t ii = static_cast<size_t>(i);
    if (rowFree[ii]) {
      x[ii] = 0.0;
      continue;
    }
    double* ai = A[ii];
    uint8_t* mai = maskA[ii];
    const double* bi = B[ii];
    const uint8_t* mbi = maskB[ii];
    SignedSum sum(sPrev[ii] + s[ii] + 2.0 * c[ii]);
    for (int j = 1; j < dim; ++j) {
      const size_t ji = static_cast<size_t>(j);
      if (rowFree[ji] || !(mai[j] | mbi[j])) continue;
      if (!mbi[j]) {
        sum.Add(ai[j] * xPrev[ji]);
      } else {
        const double k = twoOverH * bi[j];
        sum.Add((ai[j] - k) * xPrev[ji]);
        CancelMasked(ai[j], mai[j], -k, zero);
      }
    }
    x[ii] = Cancel(sum.positive, -sum.negative, zero);
  }
  Solve();
  return true;
}

// Leaves M = A + 2B/h factorised in A, and -(4/h) B carried through the
// factorisation in B, so that a steady step is x = -(c + xPrev + B v). A row
// marked as a varying source keeps its own column of B for the source term.
bool CCalc::FactorTrapezoid(double t, double h) {
  stampMode = 1;
  icPass = false;
  if (!StampMatrices(t) || !StampSources(t + h)) return false;
  const double zero = Zero();
  const double twoOverH = 2.0 / h;
  for (int i = 1; i < dim; ++i) {
    const size_t ii = static_cast<size_t>(i);
    c[ii] *= 2.0;
    double* ai = A[ii];
    uint8_t* mai = maskA[ii];
    double* bi = B[ii];
    uint8_t* mbi = maskB[ii];
    if (mbi[0]) {
      for (int j = 1; j < dim; ++j) {
        if (rowFree[static_cast<size_t>(j)] || !mbi[j]) continue;
        const double k = twoOverH * bi[j];
        bi[j] = -2.0 * k;
        CancelMasked(ai[j], mai[j], -k, zero);
        mai[j] = 1;
      }
    }
    if (rowMark[ii]) {
      bi[i] = 1.0;
      mbi[i] = 1;
      mbi[0] = 1;
    }
  }
  Factor();
  return true;
}

bool CCalc::StepFactored(double t) {
  stampMode = 1;
  icPass = false;
  if (!StampSources(t)) return false;
  const double zero = Zero();
  const int n = dim;
  double* v = work.data();
  for (int j = 1; j < n; ++j) {
    const size_t ji = static_cast<size_t>(j);
    v[j] = rowMark[ji] ? sPrev[ji] + s[ji] : xPrev[ji];
  }
  if (!stepColumnsValid) FindStepColumns();
  const int* cols = stepColumns.data();
  const int count = static_cast<int>(stepColumns.size());
  const bool allColumns = count == n - 1;

  // Rows of the elimination hold an exact zero wherever their mask is clear,
  // so their product runs over the columns that the factorisation left
  // non-zero, without reading the masks. Four rows go together: each keeps
  // its own order of summation, and the independent accumulators keep the
  // pipeline full.
  auto dense = [this](int row) {
    const size_t r = static_cast<size_t>(row);
    return !rowFree[r] && maskB[r][0];
  };
  int i = 1;
  for (; i + 3 < n; i += 4) {
    const size_t i0 = static_cast<size_t>(i);
    SignedSum s0(c[i0] + xPrev[i0]), s1(c[i0 + 1] + xPrev[i0 + 1]),
        s2(c[i0 + 2] + xPrev[i0 + 2]), s3(c[i0 + 3] + xPrev[i0 + 3]);
    if (dense(i) && dense(i + 1) && dense(i + 2) && dense(i + 3)) {
      const double *b0 = B[i0], *b1 = B[i0 + 1], *b2 = B[i0 + 2], *b3 = B[i0 + 3];
      if (allColumns) {
        for (int j = 1; j < n; ++j) {
          const double vj = v[j];
          s0.Add(b0[j] * vj);
          s1.Add(b1[j] * vj);
          s2.Add(b2[j] * vj);
          s3.Add(b3[j] * vj);
        }
      } else {
        for (int q = 0; q < count; ++q) {
          const int j = cols[q];
          const double vj = v[j];
          s0.Add(b0[j] * vj);
          s1.Add(b1[j] * vj);
          s2.Add(b2[j] * vj);
          s3.Add(b3[j] * vj);
        }
      }
    } else {
      RowProduct(B[static_cast<size_t>(i)], maskB[static_cast<size_t>(i)], dim, v, s0);
      RowProduct(B[static_cast<size_t>(i + 1)], maskB[static_cast<size_t>(i + 1)], dim, v, s1);
      RowProduct(B[static_cast<size_t>(i + 2)], maskB[static_cast<size_t>(i + 2)], dim, v, s2);
      RowProduct(B[static_cast<size_t>(i + 3)], maskB[static_cast<size_t>(i + 3)], dim, v, s3);
    }
    x[i0] = Cancel(-s0.positive, s0.negative, zero);
    x[i0 + 1] = Cancel(-s1.positive, s1.negative, zero);
    x[i0 + 2] = Cancel(-s2.positive, s2.negative, zero);
    x[i0 + 3] = Cancel(-s3.positive, s3.negative, zero);
  }
  for (; i < n; ++i) {
    const size_t ii = static_cast<size_t>(i);
    SignedSum sum(c[ii] + xPrev[ii]);
    RowProduct(B[static_cast<size_t>(i)], maskB[static_cast<size_t>(i)], dim, v, sum);
    x[ii] = Cancel(-sum.positive, sum.negative, zero);
  }
  return true;
}

int CCalc::SolveInitial(double t, bool mark, bool final) {
  stampMode = 0;
  icPass = true;
  lineUpdate = final ? 0 : 1;
  if (!StampMatrices(t) || !StampSources(t)) return -1;
  const double zero = Zero();
  for (int i = 1; i < dim; ++i) {
    const size_t ii = static_cast<size_t>(i);
    x[ii] = rowFree[ii] ? 0.0 : Cancel(c[ii], -s[ii], zero);
  }
  return SolveIC(mark);
}

}  // namespace tz4
