// The one frame of every export that reports through the last-error text:
// the text is set to the export's name and ": " on entry, lower layers append
// their words behind it, a result of 0 or more replaces it with "OK", and no
// exception ever reaches the host.
#pragma once
#include "api/documents.h"
#include "base/last_error.h"

namespace tz4 {

template <class Body>
int Export(const char* prefix, Body&& body) noexcept {
  try {
    SetLastError(prefix);
    const int result = body();
    if (result >= 0) SetLastError("OK");
    return result;
  } catch (...) {
    return ReportCurrentException();
  }
}

// The frame of an export on an open document: "no circuit" when the handle
// names none, else the body with the document.
template <class Body>
int ExportOnDocument(const char* prefix, int ncir, Body&& body) noexcept {
  return Export(prefix, [&]() -> int {
    CDoc* doc = FindDocument(ncir);
    if (doc == nullptr) return -1;
    return body(*doc);
  });
}

}  // namespace tz4
