#include "devices/amplifier.h"
#include "devices/controlled_source.h"
#include "devices/device_types.h"
#include "devices/logic.h"
#include "devices/logic_generator.h"
#include "devices/switch.h"
#include "devices/transistor.h"

namespace tz4 {

std::vector<const ElemType*> DeviceTypesB() {
  return {
      // switches
      &kTypeS_S, &kTypeS_S3, &kTypeS_LCS, &kTypeS_VCS, &kTypeS_CCS, &kTypeS_LCS3, &kTypeS_VCS3,
      &kTypeS_CCS3,
      // transistors
      &kTypeT_TNPN, &kTypeT_TPNP, &kTypeT_NFET, &kTypeT_PFET,
      // amplifiers and comparators
      &kTypeO_O, &kTypeO_OD, &kTypeO_OS, &kTypeO_VCG, &kTypeO_CCG,
      // controlled sources
      &kTypeV_VCVS, &kTypeV_CCVS, &kTypeI_VCCS, &kTypeI_CCCS,
      // logic elements and the logic generator
      &kTypeY_1, &kTypeY_2, &kTypeY_3, &kTypeY_CUSTOM, &kTypeY_FF, &kTypeY_RS, &kTypeY_JK,
      &kTypeY_ST, &kTypeY_LG,
  };
}

}  // namespace tz4
