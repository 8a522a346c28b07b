// The trace exports: naming what a run records, the run settings, and
// reading the recorded samples.
//
// Each export overwrites the last-error text with its name and ": " on
// entry; failures append their words behind it; success replaces it with
// "OK". Argument checks run before the document is looked up. No exception
// leaves an export.
#include <string>

#include "api/documents.h"
#include "api/frame.h"
#include "base/handles.h"
#include "base/last_error.h"
#include "doc/doc.h"
#include "results/trace.h"
#include "tz4.h"

using namespace tz4;

namespace {

// The add family: checks the text, creates the trace and gives it a handle.
int AddTraceOfType(int ncir, const char* text, int type) {
  if (!text) {
    AppendError("NULL pointer");
    return -1;
  }
  if (!*text) {
    AppendError(type == TRACE_TYPE_FUNCTION ? "no function" : "no name");
    return -1;
  }
  CDoc* doc = FindDocument(ncir);
  if (!doc) return -1;
  CTrace* trace = doc->AddTrace(type, text);
  if (!trace) return -1;
  // Every added trace is a new one with a handle and data of its own. A
  // trace that cannot have a handle is not kept.
  int handle = -1;
  try {
    handle = TakeNextHandle();
  } catch (...) {
    doc->DeleteTrace(trace);
    throw;
  }
  trace->handle = handle;
  doc->changeFlags |= CHANGE_TRACES;
  return handle;
}

// The document and the trace of a data export; null after reporting (a
// negative handle adds no words).
CTrace* FindDocumentTrace(int ncir, int ntrace) {
  CDoc* doc = FindDocument(ncir);
  if (!doc) return nullptr;
  return doc->FindTraceByHandle(ntrace);
}

}  // namespace

extern "C" {

int TZ4_GetTrace(int ncir, const char* name) {
  return Export("TZ4_GetTrace: ", [&]() -> int {
    if (!name) {
      AppendError("NULL pointer");
      return -1;
    }
    if (!*name) {
      AppendError("no trace name");
      return -1;
    }
    CDoc* doc = FindDocument(ncir);
    if (!doc) return -1;
    const int index = doc->FindTrace(name);
    if (index < 0) return -1;
    // A trace read from the file gets its handle when first asked for.
    const int handle = doc->traces.AssignHandle(*doc->traces[index]);
    return handle;
  });
}

int TZ4_AddVTrace(int ncir, const char* name) {
  return Export("TZ4_AddVTrace: ", [&] { return AddTraceOfType(ncir, name, TRACE_TYPE_VOLTAGE); });
}

int TZ4_AddITrace(int ncir, const char* name) {
  return Export("TZ4_AddITrace: ", [&] { return AddTraceOfType(ncir, name, TRACE_TYPE_CURRENT); });
}

int TZ4_AddPTrace(int ncir, const char* name) {
  return Export("TZ4_AddPTrace: ", [&] { return AddTraceOfType(ncir, name, TRACE_TYPE_POWER); });
}

int TZ4_AddVarTrace(int ncir, const char* name) {
  return Export("TZ4_AddVarTrace: ",
                [&] { return AddTraceOfType(ncir, name, TRACE_TYPE_VARIABLE); });
}

int TZ4_AddFuncTrace(int ncir, const char* text) {
  return Export("TZ4_AddFuncTrace: ",
                [&] { return AddTraceOfType(ncir, text, TRACE_TYPE_FUNCTION); });
}

int TZ4_DeleteTrace(int ncir, int ntrace) {
  return ExportOnDocument("TZ4_DeleteTrace: ", ncir, [&](CDoc& doc) -> int {
    CTrace* trace = doc.FindTraceByHandle(ntrace);
    if (!trace) return -1;
    doc.DeleteTrace(trace);
    return 0;
  });
}

int TZ4_SetTimeout(int ncir, int t) {
  return ExportOnDocument("TZ4_SetTimeout: ", ncir, [&](CDoc& doc) -> int {
    doc.settings.timeout = t;
    return 0;
  });
}

int TZ4_SetStep(int ncir, double step) {
  return Export("TZ4_SetStep: ", [&]() -> int {
    // Written so that a NaN step is refused as well.
    if (!(step > 0.0)) {
      AppendError("step <= 0");
      return -1;
    }
    CDoc* doc = FindDocument(ncir);
    if (!doc) return -1;
    // The driver compares it with the solver's step at its next entry.
    doc->settings.step = step;
    return 0;
  });
}

int TZ4_GetDataSize(int ncir, int ntrace) {
  return Export("TZ4_GetDataSize: ", [&]() -> int {
    CTrace* trace = FindDocumentTrace(ncir, ntrace);
    if (!trace) return -1;
    const int count = trace->data.Count();
    return count;
  });
}

int TZ4_GetDataAt(int ncir, int ntrace, int index, double* t, double* v) {
  return Export("TZ4_GetDataAt: ", [&]() -> int {
    if (!t || !v) {
      AppendError("NULL pointer");
      return -1;
    }
    CTrace* trace = FindDocumentTrace(ncir, ntrace);
    if (!trace) return -1;
    if (!trace->data.GetAt(index, t, v)) {  // sets both to 0 out of range
      AppendError("no data at requested index");
      return -1;
    }
    return 0;
  });
}

int TZ4_GetLastData(int ncir, int ntrace, double* t, double* v) {
  return Export("TZ4_GetLastData: ", [&]() -> int {
    if (!t || !v) {
      AppendError("NULL pointer");
      return -1;
    }
    CTrace* trace = FindDocumentTrace(ncir, ntrace);
    if (!trace) return -1;
    const int count = trace->data.Count();
    if (count <= 0) {
      *t = 0.0;
      *v = 0.0;
      AppendError("no data");
      return -1;
    }
    trace->data.GetAt(count - 1, t, v);
    return 0;
  });
}

int TZ4_GetData(int ncir, int ntrace, double t, double* v) {
  return Export("TZ4_GetData: ", [&]() -> int {
    if (!v) {
      AppendError("NULL pointer");
      return -1;
    }
    CTrace* trace = FindDocumentTrace(ncir, ntrace);
    if (!trace) return -1;
    *v = 0.0;
    if (!trace->data.Get(t, v)) {
      AppendError("no data at requested t");
      return -1;
    }
    return 0;
  });
}

}  // extern "C"
