// The list of open documents and the helpers that every export with a
// document handle shares.
#pragma once
#include <memory>
#include <vector>

#include "doc/doc.h"

namespace tz4 {

// +infinity and -infinity, as read by formula and device code; stored again
// by every TZ4_Open.
extern double PositiveInfinity;
extern double NegativeInfinity;

// Every open document, in the order of opening. The list is created on first
// use and never destroyed, so documents left open at unload are never closed.
std::vector<std::unique_ptr<CDoc>>& DocumentList();

// The first listed document with that handle. Otherwise appends "no circuit"
// to the last-error text and returns null; the caller then returns -1
// without adding anything.
CDoc* FindDocument(int handle);

// Enters a loaded document under the next handle and returns the handle.
// The handle is taken only when the document can be listed.
int AddDocument(std::unique_ptr<CDoc> doc);

// Destroys the document with that handle and closes the gap in the list;
// false when there is none (nothing appended).
bool RemoveDocument(int handle);

// For the catch block of an export: appends "No enough memory" for an
// allocation failure, else the exception's text, and returns -1. Never
// throws, so the host is never reached by an exception.
int ReportCurrentException() noexcept;

}  // namespace tz4
