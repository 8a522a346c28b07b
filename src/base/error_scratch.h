// The one shared text in which messages with a name or a character in them
// are built before they are raised. Process-wide and unguarded, like the
// rest of the library's state: one thread at a time.
#pragma once
#include <string>

namespace tz4 {

std::string& ErrorScratch();

}  // namespace tz4
