#include "code/code_block.h"
#include "code/dll_block.h"
#include "devices/delay_line.h"
#include "devices/device_types.h"
#include "devices/function_block.h"
#include "devices/meter_blocks.h"
#include "devices/transformer.h"

namespace tz4 {

std::vector<const ElemType*> DeviceTypesC() {
  return {
      &kTypeX_Delay, &kTypeF_1,  &kTypeF_2,  &kTypeF_CUSTOM, &kTypeW_W,      &kTypeW_T2,
      &kTypeW_T3,    &kTypeW_CUSTOM, &kTypeW_WM, &kTypeA_A,   &kTypeV_VM,     &kTypeY_FUNCTION,
      &kTypeY_BUS,   &kTypeX_Line, &kTypeX_SH, &kTypeX_DC,   &kTypeX_B2,     &kTypeX_B3,
      &kTypeX_B4,    &kTypeX_B6, &kTypeX_B8,  &kTypeX_CUSTOM, &kTypeX_TZ4,   &kTypeX_C,
      &kTypeX_DLL,
  };
}

}  // namespace tz4
