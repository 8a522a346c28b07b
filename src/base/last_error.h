// The process-wide last-error text through which every export reports.
// An export resets it to its own prefix on entry, lower layers append their
// words with no separator, and success overwrites it with "OK".
#pragma once
#include <string>

namespace tz4 {

const char* LastErrorCStr();
void SetLastError(const std::string& text);   // replace the whole text
void AppendError(const std::string& text);    // append with no separator
const std::string& LastError();

}  // namespace tz4
