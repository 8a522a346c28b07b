// The set of every component type the library knows, in its fixed order.
#pragma once
#include "components/elem_type.h"

namespace tz4 {

const CElemSet& ComponentTypes();

}  // namespace tz4
