// CCalc: construction, the storage of the system, and the loops that send
// one phase to every component of the run list.
#include "solver/calc.h"

#include <algorithm>
#include <ctime>
#include <new>

#include "components/cmp.h"

namespace tz4 {

namespace {

// A system whose A alone needs this many bytes is refused.
constexpr double kTooBigBytes = 1e9;

bool IsSubcircuit(const CCmp* component) { return component->ModelId() == MODEL_SUBCIR; }

}  // namespace

CCalc::CCalc() = default;

CCalc::~CCalc() = default;

// The clock is kept in 32 bits; the difference is taken modulo 2^32, so that
// it stays right when the clock has outgrown that width.
double CCalc::ElapsedClock() const {
  return static_cast<double>(static_cast<int32_t>(ProcessMillis() - runClock));
}

// ---- storage ----

bool CCalc::AllocateSystem() {
  // No licence gate is applied to the size of a system.
  const size_t n = dim > 0 ? static_cast<size_t>(dim) : 0;
  const size_t all = total > dim ? static_cast<size_t>(total) : n;
  try {
    // Left uninitialised until the size test has passed: a refused system
    // must not touch its pages.
    storage.reset(new double[2 * n * n]);
    A.assign(n, nullptr);
    B.assign(n, nullptr);
    for (size_t i = 0; i < n; ++i) {
      A[i] = storage.get() + i * n;
      B[i] = storage.get() + n * n + i * n;
    }
    x.assign(all, 0.0);
    xPrev.assign(all, 0.0);
    sB.assign(n, 0.0);
    c.assign(n, 0.0);
    s.assign(n, 0.0);
    sPrev.assign(n, 0.0);
    maskStorage.reset(new uint8_t[2 * n * n]);
    maskA.assign(n, nullptr);
    maskB.assign(n, nullptr);
    for (size_t i = 0; i < n; ++i) {
      maskA[i] = maskStorage.get() + i * n;
      maskB[i] = maskStorage.get() + n * n + i * n;
    }
    rowMark.assign(n, 0);
    rowFree.assign(n, 0);
    colsA.assign(n + 1, 0);
    colsB.assign(n + 1, 0);
    work.assign(n + 1, 0.0);
    stepColumns.clear();
    stepColumns.reserve(n);
    stepColumnsValid = false;
  } catch (const std::exception&) {
    FreeSystem();
    error = "no enough memory";
    return false;
  }
  if (static_cast<double>(n) * static_cast<double>(n) * 8.0 >= kTooBigBytes) {
    FreeSystem();
    error = "schematic too big";
    return false;
  }
  std::fill(storage.get(), storage.get() + 2 * n * n, 0.0);
  std::fill(maskStorage.get(), maskStorage.get() + 2 * n * n, uint8_t{0});
  return true;
}

void CCalc::FreeSystem() {
  storage.reset();
  maskStorage.reset();
  std::vector<double*>().swap(A);
  std::vector<double*>().swap(B);
  std::vector<uint8_t*>().swap(maskA);
  std::vector<uint8_t*>().swap(maskB);
  for (auto* v : {&x, &xPrev, &s, &sB, &sPrev, &c, &work}) std::vector<double>().swap(*v);
  std::vector<uint8_t>().swap(rowMark);
  std::vector<uint8_t>().swap(rowFree);
  std::vector<int>().swap(colsA);
  std::vector<int>().swap(colsB);
  std::vector<int>().swap(stepColumns);
  stepColumnsValid = false;
  // Nothing may index the freed arrays until the next numbering.
  dim = 0;
  total = 0;
}

void CCalc::ClearSystem() {
  stepColumnsValid = false;
  if (!storage) return;
  const size_t n = static_cast<size_t>(dim);
  std::fill(storage.get(), storage.get() + 2 * n * n, 0.0);
  std::fill(maskStorage.get(), maskStorage.get() + 2 * n * n, uint8_t{0});
  std::fill(c.begin(), c.end(), 0.0);
  std::fill(s.begin(), s.end(), 0.0);
  std::fill(sB.begin(), sB.end(), 0.0);
  std::fill(rowMark.begin(), rowMark.end(), uint8_t{0});
  std::fill(rowFree.begin(), rowFree.end(), uint8_t{0});
}

// ---- component loops ----

bool CCalc::StampMatrices(double t) {
  ClearSystem();
  for (pass = 0; pass < 2; ++pass)
    for (CCmp* component : cmps)
      if (!IsSubcircuit(component) && component->Stamp(*this, STAMP_MATRIX, t) != 0) return false;
  pass = 1;
  // The masks: which coefficients may be non-zero.
  for (int i = 1; i < dim; ++i) {
    const size_t ii = static_cast<size_t>(i);
    if (rowFree[ii]) continue;
    const double* ai = A[ii];
    const double* bi = B[ii];
    uint8_t* mai = maskA[ii];
    uint8_t* mbi = maskB[ii];
    uint8_t anyA = 0, anyB = 0;
    for (int j = 1; j < dim; ++j) {
      mai[j] = ai[j] != 0.0;
      mbi[j] = bi[j] != 0.0;
      anyA |= mai[j];
      anyB |= mbi[j];
    }
    mai[0] = anyA;
    mbi[0] = anyB;
  }
  return true;
}

bool CCalc::StampSources(double t) {
  for (CCmp* component : cmps)
    if (!IsSubcircuit(component) && component->Stamp(*this, STAMP_SOURCE, t) != 0) return false;
  return true;
}

void CCalc::AcceptAll() {
  for (CCmp* component : cmps)
    if (!IsSubcircuit(component)) component->Stamp(*this, STAMP_ACCEPT, 0.0);
}

int CCalc::AdjustIC() {
  int result = 0;
  for (CCmp* component : cmps)
    if (!IsSubcircuit(component) && component->Stamp(*this, STAMP_IC_ADJUST, 0.0) != 0) result = 1;
  return result;
}

bool CCalc::SampleAll(double t) {
  for (CCmp* component : cmps)
    if (!IsSubcircuit(component) && component->Stamp(*this, STAMP_SAMPLE, t) < 0) return false;
  return true;
}

void CCalc::NextEvent(double t, double& nextTime, double& maxStep) {
  nextTime = 1e99;
  maxStep = step;
  for (CCmp* component : cmps) {
    if (IsSubcircuit(component)) continue;
    double a = nextTime, b = maxStep;
    component->NextEvent(*this, t, a, b);
    if (a < nextTime) nextTime = a;
    if (b < maxStep && b > 0.0) maxStep = b;
  }
}

}  // namespace tz4
