// The trace exports: naming what a run records, the run settings, and
// reading the recorded samples.
//
// Each export overwrites the last-error text with its name and ": " on
// entry; failures append their words behind it; success replaces it with
// "OK". Argument checks run before the document is looked up. No exception
// leaves an export.
#include <string>

#include "api/documents.h"
#include "base/handles.h"
#include "base/last_error.h"
#include "doc/doc.h"
#include "results/trace.h"
#include "tz4.h"

using namespace tz4;

namespace {

// The add family: checks the text, creates the trace and gives it a handle.
int AddTraceOfType(const char* prefix, int ncir, const char* text, int type) {
  SetLastError(prefix);
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
  SetLastError("OK");
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
  try {
    SetLastError("TZ4_GetTrace: ");
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
    SetLastError("OK");
    return handle;
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_AddVTrace(int ncir, const char* name) {
  try {
    return AddTraceOfType("TZ4_AddVTrace: ", ncir, name, TRACE_TYPE_VOLTAGE);
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_AddITrace(int ncir, const char* name) {
  try {
    return AddTraceOfType("TZ4_AddITrace: ", ncir, name, TRACE_TYPE_CURRENT);
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_AddPTrace(int ncir, const char* name) {
  try {
    return AddTraceOfType("TZ4_AddPTrace: ", ncir, name, TRACE_TYPE_POWER);
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_AddVarTrace(int ncir, const char* name) {
  try {
    return AddTraceOfType("TZ4_AddVarTrace: ", ncir, name, TRACE_TYPE_VARIABLE);
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_AddFuncTrace(int ncir, const char* text) {
  try {
    return AddTraceOfType("TZ4_AddFuncTrace: ", ncir, text, TRACE_TYPE_FUNCTION);
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_DeleteTrace(int ncir, int ntrace) {
  try {
    SetLastError("TZ4_DeleteTrace: ");
    CDoc* doc = FindDocument(ncir);
    if (!doc) return -1;
    CTrace* trace = doc->FindTraceByHandle(ntrace);
    if (!trace) return -1;
    doc->DeleteTrace(trace);
    SetLastError("OK");
    return 0;
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_SetTimeout(int ncir, int t) {
  try {
    SetLastError("TZ4_SetTimeout: ");
    CDoc* doc = FindDocument(ncir);
    if (!doc) return -1;
    doc->settings.timeout = t;
    SetLastError("OK");
    return 0;
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_SetStep(int ncir, double step) {
  try {
    SetLastError("TZ4_SetStep: ");
    // Written so that a NaN step is refused as well.
    if (!(step > 0.0)) {
      AppendError("step <= 0");
      return -1;
    }
    CDoc* doc = FindDocument(ncir);
    if (!doc) return -1;
    // The driver compares it with the solver's step at its next entry.
    doc->settings.step = step;
    SetLastError("OK");
    return 0;
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_GetDataSize(int ncir, int ntrace) {
  try {
    SetLastError("TZ4_GetDataSize: ");
    CTrace* trace = FindDocumentTrace(ncir, ntrace);
    if (!trace) return -1;
    const int count = trace->data.Count();
    SetLastError("OK");
    return count;
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_GetDataAt(int ncir, int ntrace, int index, double* t, double* v) {
  try {
    SetLastError("TZ4_GetDataAt: ");
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
    SetLastError("OK");
    return 0;
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_GetLastData(int ncir, int ntrace, double* t, double* v) {
  try {
    SetLastError("TZ4_GetLastData: ");
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
    SetLastError("OK");
    return 0;
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_GetData(int ncir, int ntrace, double t, double* v) {
  try {
    SetLastError("TZ4_GetData: ");
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
    SetLastError("OK");
    return 0;
  } catch (...) {
    return ReportCurrentException();
  }
}

}  // extern "C"
