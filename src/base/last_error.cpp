#include "base/last_error.h"

namespace tz4 {
namespace {
std::string& Buffer() {
  static std::string text;
  return text;
}
}  // namespace

const char* LastErrorCStr() { return Buffer().c_str(); }
void SetLastError(const std::string& text) { Buffer() = text; }
void AppendError(const std::string& text) { Buffer() += text; }
const std::string& LastError() { return Buffer(); }

}  // namespace tz4
