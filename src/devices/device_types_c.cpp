#include "devices/device_types.h"

namespace tz4 {

std::vector<const ElemType*> DeviceTypesC() { return {}; }

}  // namespace tz4
