// The value exports: reading and changing component parameters by dotted
// name or by a number obtained once, and the host's inputs and outputs.
//
// Each export overwrites the last-error text with its name and ": " on
// entry; failures append their words behind it; success replaces it with
// "OK". Argument checks run before the document is looked up, so that a null
// pointer is reported before a bad handle. No exception leaves an export.
#include <string>

#include "api/documents.h"
#include "base/last_error.h"
#include "components/cmp.h"
#include "components/param_ops.h"
#include "doc/doc.h"
#include "solver/calc.h"
#include "tz4.h"

using namespace tz4;

namespace {

// The result of a strict parameter operation: a negative one is handed on
// with the message that the operation appended; otherwise "OK".
int Finish(int result) {
  if (result < 0) return result;
  SetLastError("OK");
  return result;
}

// TZ4_GetInput and TZ4_GetOutput: the name is checked before the document
// is looked up, then the document hands out the next number.
int AddByName(const char* prefix, int ncir, const char* name, const char* emptyMessage,
              int (CDoc::*add)(const char*)) {
  try {
    SetLastError(prefix);
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
    SetLastError("OK");
    return number;
  } catch (...) {
    return ReportCurrentException();
  }
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
  return Finish(op(*doc, param));
}

template <class Op>
int OnNumberedParam(int ncir, int npar, Op&& op) {
  CDoc* doc = FindDocument(ncir);
  if (!doc) return -1;
  const CParam* param = doc->FindParamByNumber(npar);
  if (!param) return -1;
  return Finish(op(*doc, *param));
}

}  // namespace

extern "C" {

int TZ4_GetValue(int ncir, const char* name, double* v) {
  try {
    SetLastError("TZ4_GetValue: ");
    if (!v) {
      AppendError("NULL pointer");
      return -1;
    }
    *v = 0.0;
    return OnNamedParam(ncir, name, [&](CDoc&, const CParam& param) {
      return GetValue(param, v);
    });
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_SetValue(int ncir, const char* name, double v) {
  try {
    SetLastError("TZ4_SetValue: ");
    return OnNamedParam(ncir, name, [&](CDoc& doc, const CParam& param) {
      return SetValue(param, v, &doc.changeFlags);
    });
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_GetText(int ncir, const char* name, char* text, int length) {
  try {
    SetLastError("TZ4_GetText: ");
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
    return OnNamedParam(ncir, name, [&](CDoc&, const CParam& param) {
      return GetText(param, text, length);
    });
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_SetText(int ncir, const char* name, const char* text) {
  try {
    SetLastError("TZ4_SetText: ");
    if (!text) {
      AppendError("NULL pointer");
      return -1;
    }
    return OnNamedParam(ncir, name, [&](CDoc& doc, const CParam& param) {
      return SetText(param, text, &doc.cmps, &doc.changeFlags);
    });
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_GetParam(int ncir, const char* name) {
  try {
    SetLastError("TZ4_GetParam: ");
    CDoc* doc = FindDocument(ncir);
    if (!doc) return -1;
    CParam param;
    if (!doc->FindParam(name, param)) return -1;
    const int number = doc->GetParamNumber(param);
    SetLastError("OK");
    return number;
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_GetParamValue(int ncir, int npar, double* v) {
  try {
    SetLastError("TZ4_GetParamValue: ");
    if (!v) {
      AppendError("NULL pointer");
      return -1;
    }
    return OnNumberedParam(ncir, npar, [&](CDoc&, const CParam& param) {
      return GetValue(param, v);
    });
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_SetParamValue(int ncir, int npar, double v) {
  try {
    SetLastError("TZ4_SetParamValue: ");
    return OnNumberedParam(ncir, npar, [&](CDoc& doc, const CParam& param) {
      return SetValue(param, v, &doc.changeFlags);
    });
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_GetParamText(int ncir, int npar, char* text, int length) {
  try {
    SetLastError("TZ4_GetParamText: ");
    if (!text) {
      AppendError("NULL pointer");
      return -1;
    }
    if (length == 0) {
      AppendError("length = 0");
      return -1;
    }
    return OnNumberedParam(ncir, npar, [&](CDoc&, const CParam& param) {
      return GetText(param, text, length);
    });
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_SetParamText(int ncir, int npar, const char* text) {
  try {
    SetLastError("TZ4_SetParamText: ");
    if (!text) {
      AppendError("no text");
      return -1;
    }
    return OnNumberedParam(ncir, npar, [&](CDoc& doc, const CParam& param) {
      return SetText(param, text, &doc.cmps, &doc.changeFlags);
    });
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_GetInput(int ncir, const char* name) {
  return AddByName("TZ4_GetInput: ", ncir, name, "no input name", &CDoc::AddInput);
}

int TZ4_SetInputValue(int ncir, int nin, double v) {
  try {
    SetLastError("TZ4_SetInputValue: ");
    CDoc* doc = FindDocument(ncir);
    if (!doc) return -1;
    if (nin < 0 || static_cast<size_t>(nin) >= doc->inputs.size()) {
      AppendError("wrong input number");
      return -1;
    }
    // Taken up at the next evaluation of a run; no flag, no check.
    *doc->inputs[static_cast<size_t>(nin)] = v;
    SetLastError("OK");
    return 0;
  } catch (...) {
    return ReportCurrentException();
  }
}

int TZ4_GetOutput(int ncir, const char* name) {
  return AddByName("TZ4_GetOutput: ", ncir, name, "no label name", &CDoc::AddOutput);
}

int TZ4_GetOutputValue(int ncir, int nout, double* v) {
  try {
    SetLastError("TZ4_GetOutputValue: ");
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
    SetLastError("OK");
    return 0;
  } catch (...) {
    return ReportCurrentException();
  }
}

}  // extern "C"
