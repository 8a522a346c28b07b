#include "devices/capacitor.h"
#include "devices/device_types.h"
#include "devices/diode.h"
#include "devices/inductor.h"
#include "devices/resistor.h"
#include "devices/source.h"

namespace tz4 {

std::vector<const ElemType*> DeviceTypesA() {
  return {
      &kTypeR_R,   &kTypeR_Pot, &kTypeR_VCR, &kTypeR_CCR,  &kTypeC_C,      &kTypeC_VCC,
      &kTypeC_CCC, &kTypeL_L,   &kTypeL_VCL, &kTypeL_CCL,  &kTypeL_CL,     &kTypeL_CUSTOM,
      &kTypeD_D,   &kTypeD_Z,   &kTypeD_ZS,  &kTypeD_BR,   &kTypeD_LCT,    &kTypeD_VCT,
      &kTypeD_CCT, &kTypeV_V,   &kTypeI_I,
  };
}

}  // namespace tz4
