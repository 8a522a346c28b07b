// The global list of component types, in the fixed order of the type tags.
#include <cstring>

#include "components/cmp.h"
#include "components/elem_type.h"
#include "devices/device_types.h"

namespace tz4 {

namespace {

// Every type tag the collection can create, in list order. Labels and
// variables are not among them: the collection creates those by the words
// "label" and "var".
constexpr const char* kTypeOrder[] = {
    "R_R",      "R_Pot",   "R_VCR",  "R_CCR",      "C_C",    "C_VCC",    "C_CCC",  "L_L",
    "L_VCL",    "L_CCL",   "L_CL",   "L_CUSTOM",   "D_D",    "D_Z",      "D_ZS",   "D_BR",
    "D_LCT",    "D_VCT",   "D_CCT",  "V_V",        "V_VCVS", "V_CCVS",   "V_VM",   "I_I",
    "I_VCCS",   "I_CCCS",  "S_S",    "S_LCS",      "S_VCS",  "S_CCS",    "S_S3",   "S_LCS3",
    "S_VCS3",   "S_CCS3",  "A_A",    "O_O",        "O_OD",   "O_OS",     "O_VCG",  "O_CCG",
    "T_TNPN",   "T_TPNP",  "T_NFET", "T_PFET",     "X_Delay", "F_1",     "F_2",    "F_CUSTOM",
    "W_W",      "W_T2",    "W_T3",   "W_CUSTOM",   "W_WM",   "Y_1",      "Y_2",    "Y_3",
    "Y_CUSTOM", "Y_FUNCTION", "Y_BUS", "Y_FF",     "Y_RS",   "Y_JK",     "Y_ST",   "Y_LG",
    "X_Line",   "X_SH",    "X_DC",   "X_B2",       "X_B3",   "X_B4",     "X_B6",   "X_B8",
    "X_CUSTOM", "X_TZ4",   "X_C",    "X_DLL",
};
static_assert(sizeof kTypeOrder / sizeof kTypeOrder[0] == 76);

}  // namespace

CElemSet::CElemSet() {
  std::vector<const ElemType*> provided = DeviceTypesA();
  for (auto* group : {DeviceTypesB, DeviceTypesC}) {
    std::vector<const ElemType*> more = group();
    provided.insert(provided.end(), more.begin(), more.end());
  }
  // Types that are not provided are absent; of two records with one tag the
  // first counts; records outside the list are not creatable by tag.
  for (const char* tag : kTypeOrder) {
    for (const ElemType* type : provided) {
      if (type != nullptr && type->tag != nullptr && std::strcmp(type->tag, tag) == 0) {
        types_.push_back(type);
        break;
      }
    }
  }
}

const CElemSet& CElemSet::Instance() {
  static const CElemSet instance;
  return instance;
}

const ElemType* CElemSet::Find(const std::string& tag) const {
  for (const ElemType* type : types_)
    if (tag == type->tag) return type;
  return nullptr;
}

std::unique_ptr<CCmp> CElemSet::Create(const std::string& tag) const {
  const ElemType* type = Find(tag);
  if (type == nullptr || type->factory == nullptr) return nullptr;
  return type->factory(*type);
}

}  // namespace tz4
