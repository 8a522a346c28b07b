#include "api/documents.h"

#include <exception>
#include <limits>
#include <new>

#include "base/handles.h"
#include "base/last_error.h"

namespace tz4 {

double PositiveInfinity = std::numeric_limits<double>::infinity();
double NegativeInfinity = -std::numeric_limits<double>::infinity();

std::vector<std::unique_ptr<CDoc>>& DocumentList() {
  static auto* list = new std::vector<std::unique_ptr<CDoc>>();
  return *list;
}

CDoc* FindDocument(int handle) {
  for (const auto& doc : DocumentList()) {
    if (doc->handle == handle) return doc.get();
  }
  AppendError("no circuit");
  return nullptr;
}

int AddDocument(std::unique_ptr<CDoc> doc) {
  auto& list = DocumentList();
  list.reserve(list.size() + 1);  // after this the append cannot fail
  doc->handle = TakeNextHandle();
  list.push_back(std::move(doc));
  return list.back()->handle;
}

bool RemoveDocument(int handle) {
  auto& list = DocumentList();
  for (auto it = list.begin(); it != list.end(); ++it) {
    if ((*it)->handle == handle) {
      std::unique_ptr<CDoc> doomed = std::move(*it);
      list.erase(it);
      return true;  // the document is destroyed on leaving
    }
  }
  return false;
}

namespace {
void AppendQuietly(const char* text) noexcept {
  try {
    AppendError(text);
  } catch (...) {
    // Not even the message fits; the prefix stays as the only report.
  }
}
}  // namespace

int ReportCurrentException() noexcept {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    AppendQuietly("No enough memory");
  } catch (const std::exception& failure) {
    AppendQuietly(failure.what());
  } catch (...) {
    AppendQuietly("unknown failure");
  }
  return -1;
}

}  // namespace tz4
