// The dense kernels of the solver on full systems of growing size: a full
// solve, a factorisation, and the steady step that reuses it, next to a plain
// matrix-vector product of the same size. The steady step should cost about
// one such product.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

#include "solver/calc.h"
#include "../tests/solver/calc_internals.h"

namespace {

using tz4::CCalc;

// A dense, well-conditioned system: every entry of A and B set and masked.
class DenseSystem {
 public:
  explicit DenseSystem(int n) {
    calc.dim = n;
    calc.total = n;
    if (!calc.AllocateSystem()) return;
    std::mt19937_64 random(12345);
    std::uniform_real_distribution<double> value(-1.0, 1.0);
    for (int i = 1; i < n; ++i) {
      const size_t ii = static_cast<size_t>(i);
      for (int j = 1; j < n; ++j) {
        Raw(calc).A[ii][j] = value(random) + (i == j ? n : 0.0);
        Raw(calc).B[ii][j] = 1e-6 * value(random);
        Raw(calc).maskA[ii][j] = Raw(calc).maskB[ii][j] = 1;
      }
      Raw(calc).maskA[ii][0] = Raw(calc).maskB[ii][0] = 1;
      Raw(calc).c[ii] = value(random);
      calc.x[ii] = calc.xPrev[ii] = value(random);
    }
    ok = true;
    Save();
  }

  // Solve and Factor work in place; the system is put back before each run
  // by copying its one storage block, its masks and its row pointers.
  void Save() {
    const size_t n = static_cast<size_t>(calc.dim);
    storage.assign(Raw(calc).storage.get(), Raw(calc).storage.get() + 2 * n * n);
    masksA.resize(n * n);
    masksB.resize(n * n);
    for (size_t i = 0; i < n; ++i) {
      std::memcpy(masksA.data() + i * n, Raw(calc).maskA[i], n);
      std::memcpy(masksB.data() + i * n, Raw(calc).maskB[i], n);
    }
    rowsA = Raw(calc).A;
    rowsB = Raw(calc).B;
    maskRowsA = Raw(calc).maskA;
    maskRowsB = Raw(calc).maskB;
    c = Raw(calc).c;
    x = calc.x;
  }

  void Restore() {
    const size_t n = static_cast<size_t>(calc.dim);
    std::memcpy(Raw(calc).storage.get(), storage.data(), storage.size() * sizeof(double));
    Raw(calc).A = rowsA;
    Raw(calc).B = rowsB;
    Raw(calc).maskA = maskRowsA;
    Raw(calc).maskB = maskRowsB;
    for (size_t i = 0; i < n; ++i) {
      std::memcpy(Raw(calc).maskA[i], masksA.data() + i * n, n);
      std::memcpy(Raw(calc).maskB[i], masksB.data() + i * n, n);
    }
    Raw(calc).c = c;
    calc.x = x;
  }

  CCalc calc;
  bool ok = false;

 private:
  std::vector<double> storage, c, x;
  std::vector<uint8_t> masksA, masksB;
  std::vector<double*> rowsA, rowsB;
  std::vector<uint8_t*> maskRowsA, maskRowsB;
};

void BM_Solve(benchmark::State& state) {
  DenseSystem system(static_cast<int>(state.range(0)));
  if (!system.ok) {
    state.SkipWithError("allocation failed");
    return;
  }
  for (auto _ : state) {
    system.Restore();
    benchmark::DoNotOptimize(system.calc.Solve());
  }
}

void BM_Factor(benchmark::State& state) {
  DenseSystem system(static_cast<int>(state.range(0)));
  if (!system.ok) {
    state.SkipWithError("allocation failed");
    return;
  }
  for (auto _ : state) {
    system.Restore();
    benchmark::DoNotOptimize(system.calc.Factor());
  }
}

void BM_StepFactored(benchmark::State& state) {
  DenseSystem system(static_cast<int>(state.range(0)));
  if (!system.ok) {
    state.SkipWithError("allocation failed");
    return;
  }
  system.calc.Factor();
  double t = 0.0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(system.calc.StepFactored(t));
    benchmark::DoNotOptimize(system.calc.x.data());
    t += 1e-6;
  }
}

// The reference: y = M v with one accumulator, over a contiguous matrix.
void BM_PlainProduct(benchmark::State& state) {
  const size_t n = static_cast<size_t>(state.range(0));
  std::mt19937_64 random(12345);
  std::uniform_real_distribution<double> value(-1.0, 1.0);
  std::vector<double> m(n * n), v(n), y(n);
  for (double& e : m) e = value(random);
  for (double& e : v) e = value(random);
  for (auto _ : state) {
    for (size_t i = 0; i < n; ++i) {
      const double* row = m.data() + i * n;
      double sum = 0.0;
      for (size_t j = 0; j < n; ++j) sum += row[j] * v[j];
      y[i] = sum;
    }
    benchmark::DoNotOptimize(y.data());
    benchmark::ClobberMemory();
  }
}

void Sizes(benchmark::internal::Benchmark* bench) {
  for (int n : {10, 25, 50, 100, 200, 400}) bench->Arg(n);
}

BENCHMARK(BM_Solve)->Apply(Sizes);
BENCHMARK(BM_Factor)->Apply(Sizes);
BENCHMARK(BM_StepFactored)->Apply(Sizes);
BENCHMARK(BM_PlainProduct)->Apply(Sizes);

}  // namespace
