// Cost of storing and reading trace samples.
#include <benchmark/benchmark.h>

#include <cmath>

#include "results/data.h"

namespace {

using tz4::CData;

// A moving value: every call stores a sample (and each 65536th allocates).
void BM_DataAddMoving(benchmark::State& state) {
  CData d;
  double t = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(d.Add(t, t));
    t += 1e-6;
    if (d.Count() >= (1 << 22)) {
      state.PauseTiming();
      d.Clear();
      state.ResumeTiming();
    }
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DataAddMoving);

// A constant value: every call only moves the time of the last sample.
void BM_DataAddFlat(benchmark::State& state) {
  CData d;
  double t = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(d.Add(t, 1.5));
    t += 1e-6;
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DataAddFlat);

// Interpolated reads over a store of n samples.
void BM_DataGet(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  CData d;
  for (int i = 0; i < n; ++i) d.Add(i * 1e-6, std::sin(i * 1e-3));
  const double span = (n - 1) * 1e-6;
  double t = 0;
  const double stride = span * 0.6180339887;
  for (auto _ : state) {
    double v;
    benchmark::DoNotOptimize(d.Get(t, &v));
    benchmark::DoNotOptimize(v);
    t += stride;
    if (t > span) t -= span;
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DataGet)->Arg(1 << 10)->Arg(1 << 16)->Arg(1 << 22);

}  // namespace
