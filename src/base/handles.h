// The one process-wide counter behind the handles of documents and traces.
// Handles are unique across both kinds and never reused.
#pragma once
#include <cstdint>

namespace tz4 {

// Hands out the next handle and advances the counter. Take it only at the
// moment the object is entered for good: a failed operation must not use up
// a number. Throws std::overflow_error when the counter is exhausted.
int32_t TakeNextHandle();

// The handle that TakeNextHandle would give now.
int32_t PeekNextHandle();

}  // namespace tz4
