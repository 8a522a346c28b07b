#include "base/handles.h"

#include <limits>
#include <stdexcept>

namespace tz4 {

namespace {
int32_t NextHandle = 0;
}  // namespace

int32_t TakeNextHandle() {
  if (NextHandle == std::numeric_limits<int32_t>::max()) throw std::overflow_error("no handle left");
  return NextHandle++;
}

int32_t PeekNextHandle() { return NextHandle; }

}  // namespace tz4
