// The one ordered registry of component types. A family defines its type
// records in its own files; this list names each record once, in the order
// in which the collection knows the types. Labels and variables are made by
// their words "label" and "var" and stand in a list of their own.
#include "devices/registry.h"

#include "devices/amplifier.h"
#include "devices/capacitor.h"
#include "devices/code_block.h"
#include "devices/controlled_source.h"
#include "devices/delay_line.h"
#include "devices/diode.h"
#include "devices/dll_block.h"
#include "devices/function_block.h"
#include "devices/inductor.h"
#include "devices/label.h"
#include "devices/logic.h"
#include "devices/logic_generator.h"
#include "devices/meter_blocks.h"
#include "devices/resistor.h"
#include "devices/source.h"
#include "devices/switch.h"
#include "devices/transformer.h"
#include "devices/transistor.h"

namespace tz4 {

const CElemSet& ComponentTypes() {
  static const CElemSet set(
      {
          &kTypeR_R,    &kTypeR_Pot,    &kTypeR_VCR,      &kTypeR_CCR,  &kTypeC_C,
          &kTypeC_VCC,  &kTypeC_CCC,    &kTypeL_L,        &kTypeL_VCL,  &kTypeL_CCL,
          &kTypeL_CL,   &kTypeL_CUSTOM, &kTypeD_D,        &kTypeD_Z,    &kTypeD_ZS,
          &kTypeD_BR,   &kTypeD_LCT,    &kTypeD_VCT,      &kTypeD_CCT,  &kTypeV_V,
          &kTypeV_VCVS, &kTypeV_CCVS,   &kTypeV_VM,       &kTypeI_I,    &kTypeI_VCCS,
          &kTypeI_CCCS, &kTypeS_S,      &kTypeS_LCS,      &kTypeS_VCS,  &kTypeS_CCS,
          &kTypeS_S3,   &kTypeS_LCS3,   &kTypeS_VCS3,     &kTypeS_CCS3, &kTypeA_A,
          &kTypeO_O,    &kTypeO_OD,     &kTypeO_OS,       &kTypeO_VCG,  &kTypeO_CCG,
          &kTypeT_TNPN, &kTypeT_TPNP,   &kTypeT_NFET,     &kTypeT_PFET, &kTypeX_Delay,
          &kTypeF_1,    &kTypeF_2,      &kTypeF_CUSTOM,   &kTypeW_W,    &kTypeW_T2,
          &kTypeW_T3,   &kTypeW_CUSTOM, &kTypeW_WM,       &kTypeY_1,    &kTypeY_2,
          &kTypeY_3,    &kTypeY_CUSTOM, &kTypeY_FUNCTION, &kTypeY_BUS,  &kTypeY_FF,
          &kTypeY_RS,   &kTypeY_JK,     &kTypeY_ST,       &kTypeY_LG,   &kTypeX_Line,
          &kTypeX_SH,   &kTypeX_DC,     &kTypeX_B2,       &kTypeX_B3,   &kTypeX_B4,
          &kTypeX_B6,   &kTypeX_B8,     &kTypeX_CUSTOM,   &kTypeX_TZ4,  &kTypeX_C,
          &kTypeX_DLL,
      },
      {&kTypeLabel, &kTypeVariable});
  return set;
}

}  // namespace tz4
