// The run-control exports: starting and advancing the transient, the time
// asked for, keeping the initial conditions, and bounding the stored data.
//
// Each export overwrites the last-error text with its name and ": " on
// entry; failures append their words behind it; success replaces it with
// "OK". Argument checks run before the document is looked up. No exception
// leaves an export.
#include "api/documents.h"
#include "api/frame.h"
#include "base/last_error.h"
#include "doc/doc.h"
#include "run/driver.h"
#include "solver/calc.h"
#include "tz4.h"

using namespace tz4;

namespace {

// The simulate family: starts the run when the document is idle, then
// advances it by `interval` in `mode`.
int Simulate(int ncir, double interval, int mode) {
  // Written so that a NaN interval is refused as well.
  if (!(interval >= 0.0)) {
    AppendError("interval < 0");
    return -1;
  }
  CDoc* doc = FindDocument(ncir);
  if (!doc) return -1;
  if (!doc->running && !StartRun(*doc)) return -1;
  if (!RunDocument(*doc, interval, mode)) return -1;
  return 0;
}

}  // namespace

extern "C" {

int TZ4_GetSimulationTime(int ncir, double* t) {
  return Export("TZ4_GetSimulationTime: ", [&]() -> int {
    if (!t) {
      AppendError("t = NULL");
      return -1;
    }
    CDoc* doc = FindDocument(ncir);
    if (!doc) return -1;
    // The time asked for, not the time the driver reached.
    *t = doc->targetTime;
    return 0;
  });
}

int TZ4_Start(int ncir) {
  return ExportOnDocument("TZ4_Start: ", ncir, [&](CDoc& doc) -> int {
    if (!StartRun(doc)) return -1;
    return 0;
  });
}

int TZ4_Simulate(int ncir, double interval) {
  return Export("TZ4_Simulate: ", [&] { return Simulate(ncir, interval, RUN_INTERVAL); });
}

int TZ4_SimulateInterval(int ncir, double interval) {
  return Export("TZ4_SimulateInterval: ", [&] { return Simulate(ncir, interval, RUN_EXACT); });
}

int TZ4_SimulateStep(int ncir) {
  return Export("TZ4_SimulateStep: ", [&] { return Simulate(ncir, 0.0, RUN_ONE_STEP); });
}

int TZ4_SaveIC(int ncir) {
  return ExportOnDocument("TZ4_SaveIC: ", ncir, [&](CDoc& doc) -> int {
    if (!doc.running) {
      AppendError("simulation not running");
      return -1;
    }
    doc.calc->SaveIC();
    return 0;
  });
}

int TZ4_DeleteOldData(int ncir) {
  return ExportOnDocument("TZ4_DeleteOldData: ", ncir, [&](CDoc& doc) -> int {
    doc.DeleteOldData();
    return 0;
  });
}

}  // extern "C"
