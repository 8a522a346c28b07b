// Memory of a long run: a resistive divider driven by a triangle-shaped
// pulse (every stored point differs from the last, so nothing is merged),
// stepped for a million points in intervals of one millisecond, with the
// host calling TZ4_DeleteOldData after each interval or not at all.
//
// Peak resident memory is a property of the process, so run each variant in
// a process of its own:
//   tz4_bench --benchmark_filter=BM_LongRun/keep
//   tz4_bench --benchmark_filter=BM_LongRun/delete
// The counters give the peak (ru_maxrss) and the growth of the resident set
// over the run, both in MiB, the stored points, and the samples kept.
#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "api/documents.h"
#include "doc/doc.h"
#include "tz4.h"

namespace {

constexpr double kInterval = 1e-3;
constexpr long kPoints = 1000000;

// Period 1 ms, rising for half of it and falling for the other half.
const char* const kCircuit =
    "<?xml version=\"1.0\"?>\n<TZ4>\n  <Version ver=\"2\" />\n  <Doc>\n"
    "    <Tran>\n      <Settings step=\"1e-6\" />\n      <Traces>\n"
    "        <Trace type=\"0\" id=\"1\" tracename=\"V(V1)\" expr=\"V(V1)\" />\n"
    "        <Trace type=\"0\" id=\"3\" tracename=\"V(R2)\" expr=\"V(R2)\" />\n"
    "      </Traces>\n    </Tran>\n    <Cmps>\n"
    "      <Cmp type=\"V_V\" id=\"1\" name=\"V1\" node0=\"0\" node1=\"1\" model=\"Pulse\" "
    "v=\"10\">\n"
    "        <Signal u0=\"0\" u1=\"10\" p=\"1e-3\" w=\"500e-6\" s=\"0\" r=\"500e-6\" f=\"500e-6\" "
    "d=\"0\" ph=\"0\" />\n      </Cmp>\n"
    "      <Cmp type=\"R_R\" id=\"2\" name=\"R1\" node0=\"1\" node1=\"2\" model=\"R\" r=\"1000\" "
    "/>\n"
    "      <Cmp type=\"R_R\" id=\"3\" name=\"R2\" node0=\"0\" node1=\"2\" model=\"R\" r=\"2000\" "
    "/>\n"
    "    </Cmps>\n  </Doc>\n</TZ4>\n";

double PeakMiB() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024.0;  // kilobytes on Linux
}

double ResidentMiB() {
  long pages = 0, resident = 0;
  std::FILE* f = std::fopen("/proc/self/statm", "r");
  if (f) {
    if (std::fscanf(f, "%ld %ld", &pages, &resident) != 2) resident = 0;
    std::fclose(f);
  }
  return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) /
         (1024.0 * 1024.0);
}

void BM_LongRun(benchmark::State& state, bool deleteOldData) {
  const std::string path = (std::filesystem::temp_directory_path() /
                            ("tz4_memory_flat_" + std::to_string(getpid()) + ".tz4"))
                               .string();
  std::ofstream(path) << kCircuit;
  long points = 0;
  int kept = 0;
  double growth = 0.0;
  for (auto _ : state) {
    const double before = ResidentMiB();
    const int h = TZ4_Open(path.c_str());
    const int trace = TZ4_GetTrace(h, "V(R2)");
    if (h < 0 || trace < 0 || TZ4_Start(h) != 0) {
      state.SkipWithError(TZ4_GetError());
      break;
    }
    tz4::CDoc& doc = *tz4::FindDocument(h);
    points = doc.drive.samples;
    while (points < kPoints) {
      if (TZ4_SimulateInterval(h, kInterval) != 0) {
        state.SkipWithError(TZ4_GetError());
        break;
      }
      points += doc.drive.samples;
      if (deleteOldData) TZ4_DeleteOldData(h);
    }
    kept = TZ4_GetDataSize(h, trace);
    growth = ResidentMiB() - before;
    TZ4_Close(h);
  }
  std::filesystem::remove(path);
  state.counters["points"] = static_cast<double>(points);
  state.counters["samples_kept"] = kept;
  state.counters["rss_growth_MiB"] = growth;
  state.counters["peak_rss_MiB"] = PeakMiB();
  state.counters["ns_per_point"] = benchmark::Counter(
      static_cast<double>(points),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

BENCHMARK_CAPTURE(BM_LongRun, keep, false)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_LongRun, delete, true)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
