#include "base/error_scratch.h"

namespace tz4 {

std::string& ErrorScratch() {
  static std::string scratch;
  return scratch;
}

}  // namespace tz4
