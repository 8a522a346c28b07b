#include "tools/library_doc.h"

#include <vector>

#include "api/documents.h"
#include "tools/cli_errors.h"
#include "tz4.h"

namespace tz4::cli {

std::string LastLibraryError() {
  const char* text = TZ4_GetError();
  return text != nullptr ? text : "";
}

int Check(int result, int exitCode) {
  if (result < 0) throw CliError(exitCode, LastLibraryError());
  return result;
}

OpenCircuit::OpenCircuit(const std::string& path) : path_(path) {
  handle_ = TZ4_Open(path.c_str());
  if (handle_ < 0) throw FileError(LastLibraryError());
}

OpenCircuit::~OpenCircuit() {
  if (handle_ >= 0) TZ4_Close(handle_);
}

CDoc& OpenCircuit::Document() const {
  CDoc* doc = FindDocument(handle_);
  if (doc == nullptr) throw LibraryError("the open circuit has gone: " + LastLibraryError());
  return *doc;
}

std::string OpenCircuit::SetParameter(const std::string& path, const std::string& value) {
  Check(TZ4_SetText(handle_, path.c_str(), value.c_str()), kExitLibrary);
  return GetParameterText(path);
}

std::string OpenCircuit::GetParameterText(const std::string& path) {
  std::vector<char> buffer(256);
  for (;;) {
    const int needed = Check(TZ4_GetText(handle_, path.c_str(), buffer.data(), static_cast<int>(buffer.size())),
                             kExitLibrary);
    if (needed <= static_cast<int>(buffer.size())) return buffer.data();
    buffer.resize(static_cast<size_t>(needed));
  }
}

}  // namespace tz4::cli
