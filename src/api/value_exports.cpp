// The value exports: reading and changing component parameters by dotted
// name or by a number obtained once, and the host's inputs and outputs.
//
// Each export overwrites the last-error text with its name and ": " on
// entry; failures append their words behind it; success replaces it with
// "OK". Argument checks run before the document is looked up, so that a null
// pointer is reported before a bad handle. No exception leaves an export.
#include <string>

#include "api/documents.h"
#include "api/frame.h"
#include "base/last_error.h"
#include "components/cmp.h"
#include "components/param_ops.h"
#include "doc/doc.h"
#include "solver/calc.h"
#include "tz4.h"

using namespace tz4;

namespace {

// TZ4_GetInput and TZ4_GetOutput: the name is checked before the document
// is looked up, then the document hands out the next number.
int AddByName(int ncir, const char* name, const char* emptyMessage, int (CDoc::*add)(const char*)) {
  if (!name) {
    AppendError("NULL pointer");
    return -1;
  }
  if (!*name) {
    AppendError(emptyMessage);
    return -1;
  }
  CDoc* doc = FindDocument(ncir);
  if (!doc) return -1;
  const int number = (doc->*add)(name);
  if (number < 0) return -1;
  return number;
}

// The strict operations run on a parameter found by its path or by its
// number; both lookups append their own messages. `op` gets the document and
// the parameter and returns the operation's result.
template <class Op>
int OnNamedParam(int ncir, const char* name, Op&& op) {
  CDoc* doc = FindDocument(ncir);
  if (!doc) return -1;
  CParam param;
  if (!doc->FindParam(name, param)) return -1;
  return (op(*doc, param));
}

template <class Op>
int OnNumberedParam(int ncir, int npar, Op&& op) {
  CDoc* doc = FindDocument(ncir);
  if (!doc) return -1;
  const CParam* param = doc->FindParamByNumber(npar);
  if (!param) return -1;
  return (op(*doc, *param));
}

}  // namespace

extern "C" {

int TZ4_GetValue(int ncir, const char* name, double* v) {
  return Export("TZ4_GetValue: ", [&]() -> int {
    if (!v) {
      AppendError("NULL pointer");
      return -1;
    }
    *v = 0.0;
    return OnNamedParam(ncir, name, [&](CDoc&, const CParam& param) { return GetValue(param, v); });
  });
}

int TZ4_SetValue(int ncir, const char* name, double v) {
  return Export("TZ4_SetValue: ", [&]() -> int {
    return OnNamedParam(ncir, name, [&](CDoc& doc, const CParam& param) {
      return SetValue(param, v, &doc.changeFlags);
    });
  });
}

int TZ4_GetText(int ncir, const char* name, char* text, int length) {
  return Export("TZ4_GetText: ", [&]() -> int {
    if (!text) {
      AppendError("NULL pointer");
      return -1;
    }
    if (length == 0) {
      AppendError("length = 0");
      return -1;
    }
    // A negative length declares a buffer without room: nothing is written.
    if (length > 0) text[0] = '\0';
    return OnNamedParam(ncir, name,
                        [&](CDoc&, const CParam& param) { return GetText(param, text, length); });
  });
}

int TZ4_SetText(int ncir, const char* name, const char* text) {
  return Export("TZ4_SetText: ", [&]() -> int {
    if (!text) {
      AppendError("NULL pointer");
      return -1;
    }
    return OnNamedParam(ncir, name, [&](CDoc& doc, const CParam& param) {
      return SetText(param, text, &doc.cmps, &doc.changeFlags);
    });
  });
}

int TZ4_GetParam(int ncir, const char* name) {
  return ExportOnDocument("TZ4_GetParam: ", ncir, [&](CDoc& doc) -> int {
    CParam param;
    if (!doc.FindParam(name, param)) return -1;
    const int number = doc.GetParamNumber(param);
    return number;
  });
}

int TZ4_GetParamValue(int ncir, int npar, double* v) {
  return Export("TZ4_GetParamValue: ", [&]() -> int {
    if (!v) {
      AppendError("NULL pointer");
      return -1;
    }
    return OnNumberedParam(ncir, npar,
                           [&](CDoc&, const CParam& param) { return GetValue(param, v); });
  });
}

int TZ4_SetParamValue(int ncir, int npar, double v) {
  return Export("TZ4_SetParamValue: ", [&]() -> int {
    return OnNumberedParam(ncir, npar, [&](CDoc& doc, const CParam& param) {
      return SetValue(param, v, &doc.changeFlags);
    });
  });
}

int TZ4_GetParamText(int ncir, int npar, char* text, int length) {
  return Export("TZ4_GetParamText: ", [&]() -> int {
    if (!text) {
      AppendError("NULL pointer");
      return -1;
    }
    if (length == 0) {
      AppendError("length = 0");
      return -1;
    }
    return OnNumberedParam(
        ncir, npar, [&](CDoc&, const CParam& param) { return GetText(param, text, length); });
  });
}

int TZ4_SetParamText(int ncir, int npar, const char* text) {
  return Export("TZ4_SetParamText: ", [&]() -> int {
    if (!text) {
      AppendError("no text");
      return -1;
    }
    return OnNumberedParam(ncir, npar, [&](CDoc& doc, const CParam& param) {
      return SetText(param, text, &doc.cmps, &doc.changeFlags);
    });
  });
}

int TZ4_GetInput(int ncir, const char* name) {
  return Export("TZ4_GetInput: ",
                [&] { return AddByName(ncir, name, "no input name", &CDoc::AddInput); });
}

int TZ4_SetInputValue(int ncir, int nin, double v) {
  return ExportOnDocument("TZ4_SetInputValue: ", ncir, [&](CDoc& doc) -> int {
    if (nin < 0 || static_cast<size_t>(nin) >= doc.inputs.size()) {
      AppendError("wrong input number");
      return -1;
    }
    // Taken up at the next evaluation of a run; no flag, no check.
    *doc.inputs[static_cast<size_t>(nin)] = v;
    return 0;
  });
}

int TZ4_GetOutput(int ncir, const char* name) {
  return Export("TZ4_GetOutput: ",
                [&] { return AddByName(ncir, name, "no label name", &CDoc::AddOutput); });
}

int TZ4_GetOutputValue(int ncir, int nout, double* v) {
  return Export("TZ4_GetOutputValue: ", [&]() -> int {
    if (!v) {
      AppendError("NULL pointer");
      return -1;
    }
    CDoc* doc = FindDocument(ncir);
    if (!doc) return -1;
    if (nout < 0 || static_cast<size_t>(nout) >= doc->outputs.size()) {
      AppendError("wrong output number");
      return -1;
    }
    // During a run the label's pin holds its index in the solution vector.
    const CCmp* label = doc->outputs[static_cast<size_t>(nout)];
    *v = doc->running && !label->pins.empty() ? doc->calc->V(label->pins[0]) : 0.0;
    return 0;
  });
}

}  // extern "C"
