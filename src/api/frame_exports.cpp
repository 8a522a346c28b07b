// The frame exports: error text, information, licence query, and opening,
// saving and closing documents.
//
// Every export but TZ4_GetError, TZ4_GetInfo and TZ4_GetLicense overwrites
// the last-error text with its name, ": " on entry; failures append their
// words behind it; success replaces it with "OK". No exception leaves an
// export.
#include <limits>
#include <memory>
#include <string>

#include "api/documents.h"
#include "api/frame.h"
#include "base/last_error.h"
#include "doc/doc.h"
#include "tz4.h"

using namespace tz4;

extern "C" {

const char* TZ4_GetError(void) { return LastErrorCStr(); }

const char* TZ4_GetInfo(void) {
  try {
    SetLastError("Version 2.72, Date 05/04/2020");
  } catch (...) {
    ReportCurrentException();
  }
  return LastErrorCStr();
}

int TZ4_GetLicense(void) {
  try {
    SetLastError("License is not needed");
  } catch (...) {
    ReportCurrentException();
  }
  return 0;
}

int TZ4_Open(const char* name) {
  return Export("TZ4_Open: ", [&]() -> int {
    PositiveInfinity = std::numeric_limits<double>::infinity();
    NegativeInfinity = -std::numeric_limits<double>::infinity();
    if (!name) {
      AppendError("NULL pointer");
      return -1;
    }
    if (!*name) {
      AppendError("no file name");
      return -1;
    }
    auto doc = std::make_unique<CDoc>();
    if (!doc->Load(name)) {
      doc.reset();
      AppendError(std::string("cannot open file ") + name);
      return -1;
    }
    // The licence gate admits every file.
    const int handle = AddDocument(std::move(doc));
    return handle;
  });
}

int TZ4_Save(int ncir) {
  return ExportOnDocument("TZ4_Save: ", ncir, [&](CDoc& doc) -> int {
    if (!doc.Save(doc.fileName)) {
      AppendError("cannot save file " + doc.fileName);
      return -1;
    }
    return 0;
  });
}

int TZ4_SaveAs(int ncir, const char* name) {
  return ExportOnDocument("TZ4_SaveAs: ", ncir, [&](CDoc& doc) -> int {
    if (!name) {
      AppendError("NULL pointer");
      return -1;
    }
    if (!*name) {
      AppendError("no file name");
      return -1;
    }
    if (!doc.Save(name)) {
      AppendError(std::string("cannot save file ") + name);
      return -1;
    }
    return 0;
  });
}

int TZ4_Close(int ncir) {
  return Export("TZ4_Close: ", [&]() -> int {
    if (!FindDocument(ncir)) return -1;
    RemoveDocument(ncir);
    return 0;
  });
}

}  // extern "C"
