// The library as the tool uses it: an open circuit that is closed again on
// every path, and failures that carry the library's last-error text.
#pragma once
#include <string>

namespace tz4 {
class CDoc;
}

namespace tz4::cli {

// The library's last-error text (TZ4_GetError).
std::string LastLibraryError();

// A negative result of an export becomes a CliError with `exitCode` and the
// last-error text.
int Check(int result, int exitCode);

class OpenCircuit {
 public:
  // TZ4_Open; a failure is a file error with the library's text.
  explicit OpenCircuit(const std::string& path);
  ~OpenCircuit();
  OpenCircuit(const OpenCircuit&) = delete;
  OpenCircuit& operator=(const OpenCircuit&) = delete;

  int handle() const { return handle_; }
  const std::string& path() const { return path_; }

  // The document object behind the handle, for what the exports do not
  // show (the component list, the stored traces, the solver settings).
  CDoc& Document() const;

  // TZ4_SetText, then the text the parameter holds now (TZ4_GetText).
  // A refusal is a library error naming the path.
  std::string SetParameter(const std::string& path, const std::string& value);
  std::string GetParameterText(const std::string& path);

 private:
  int handle_ = -1;
  std::string path_;
};

}  // namespace tz4::cli
