// The run-control exports: starting and advancing the transient, the time
// asked for, keeping the initial conditions, and bounding the stored data.
//
// Each export overwrites the last-error text with its name and ": " on
// entry; failures append their words behind it; success replaces it with
// "OK". Argument checks run before the document is looked up. No exception
// leaves an export.
#include "api/documents.h"
#include "base/last_error.h"
#include "doc/doc.h"
#include "solver/calc.h"
#include "run/driver.h"
#include "tz4.h"

using namespace tz4;

namespace {

// The simulate family: starts the run when the document is idle, then
// advances it by `interval` in `mode`.
int Simulate(const char* prefix, int ncir, double interval, int mode) {
  SetLastError(prefix);
  // Written so that a NaN interval is refused as well.
  if (!(interval >= 0.0)) {
    AppendError("interval < 0");
    return -1;
  }
  CDoc* doc = FindDocument(ncir);
  if (!doc) return -1;
  if (!doc->running && !StartRun(*doc)) return -1;
  if (!RunDocument(*doc, interval, mode)) return -1;
  SetLastError("OK");
  return 0;
}

}  // namespace

extern "C" {

int TZ4_GetSimulationTime(int ncir, double* t) {
  try {
    SetLastError("TZ4_GetSimulationTime: ");
    if (!t) {
      AppendError("t = NULL");
      return -1;
    }
    CDoc* doc = FindDocument(ncir);
    if (!doc) return -1;
    // The time asked for, not the time the driver reached.
    *t = doc->targetTime;
    SetLastError("OK");
    return 0;
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_Start(int ncir) {
  try {
    SetLastError("TZ4_Start: ");
    CDoc* doc = FindDocument(ncir);
    if (!doc) return -1;
    if (!StartRun(*doc)) return -1;
    SetLastError("OK");
    return 0;
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_Simulate(int ncir, double interval) {
  try {
    return Simulate("TZ4_Simulate: ", ncir, interval, RUN_INTERVAL);
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_SimulateInterval(int ncir, double interval) {
  try {
    return Simulate("TZ4_SimulateInterval: ", ncir, interval, RUN_EXACT);
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_SimulateStep(int ncir) {
  try {
    return Simulate("TZ4_SimulateStep: ", ncir, 0.0, RUN_ONE_STEP);
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_SaveIC(int ncir) {
  try {
    SetLastError("TZ4_SaveIC: ");
    CDoc* doc = FindDocument(ncir);
    if (!doc) return -1;
    if (!doc->running) {
      AppendError("simulation not running");
      return -1;
    }
    doc->calc->SaveIC();
    SetLastError("OK");
    return 0;
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_DeleteOldData(int ncir) {
  try {
    SetLastError("TZ4_DeleteOldData: ");
    CDoc* doc = FindDocument(ncir);
    if (!doc) return -1;
    doc->DeleteOldData();
    SetLastError("OK");
    return 0;
  } catch (...) {
    return ReportCurrentException();
  }
}

}  // extern "C"
