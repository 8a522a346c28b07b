// The resistor, capacitor, inductor, source and diode types as a group: each
// is created by its tag as its family's class, and none lets a run pass
// silently while its behaviour is missing.
#include <gtest/gtest.h>

#include "api/last_error.h"
#include "device_b_support.h"
#include "devices/capacitor.h"
#include "devices/device_types.h"
#include "devices/diode.h"
#include "devices/inductor.h"
#include "devices/resistor.h"
#include "devices/source.h"

namespace tz4 {
namespace {

template <class T>
bool IsA(CCmp* cmp) {
  return dynamic_cast<T*>(cmp) != nullptr;
}

TEST(FamilyATypes, EveryTagCreatesItsClass) {
  const struct {
    const char* tag;
    bool (*check)(CCmp*);
  } kTypes[] = {
      {"R_R", &IsA<CElemR>},   {"R_Pot", &IsA<CElemR>}, {"R_VCR", &IsA<CElemR>}, {"R_CCR", &IsA<CElemR>},
      {"C_C", &IsA<CElemC>},   {"C_VCC", &IsA<CElemC>}, {"C_CCC", &IsA<CElemC>}, {"L_L", &IsA<CElemL>},
      {"L_VCL", &IsA<CElemL>}, {"L_CCL", &IsA<CElemL>}, {"L_CL", &IsA<CElemL>},  {"L_CUSTOM", &IsA<CElemL>},
      {"D_D", &IsA<CElemD>},   {"D_Z", &IsA<CElemD>},   {"D_ZS", &IsA<CElemD>},  {"D_BR", &IsA<CElemD>},
      {"D_LCT", &IsA<CElemD>}, {"D_VCT", &IsA<CElemD>}, {"D_CCT", &IsA<CElemD>}, {"V_V", &IsA<CElemV>},
      {"I_I", &IsA<CElemV>},
  };
  EXPECT_EQ(DeviceTypesA().size(), std::size(kTypes));
  for (const auto& entry : kTypes) {
    std::unique_ptr<CCmp> cmp = CElemSet::Instance().Create(entry.tag);
    ASSERT_NE(cmp, nullptr) << entry.tag;
    EXPECT_TRUE(entry.check(cmp.get())) << entry.tag;
    EXPECT_STREQ(cmp->type->tag, entry.tag);
    EXPECT_EQ(cmp->pinCount, cmp->type->pinCount);
  }
}

TEST(FamilyATypes, OnlyInductorsStillRefuseARun) {
  // Resistors, capacitors, sources and diodes run; inductors have no
  // behaviour yet and must say so rather than be ignored by a run.
  for (const ElemType* type : DeviceTypesA()) {
    std::unique_ptr<CCmp> cmp = CElemSet::Instance().Create(type->tag);
    ASSERT_NE(cmp, nullptr);
    cmp->name = "X1";
    cmp->modelIndex = 0;
    SetLastError("");
    const bool ok = cmp->CheckParams();
    const std::string refusal = std::string("X1 : type ") + type->tag + " cannot be simulated yet; ";
    if (std::string(type->tag).rfind("L_", 0) == 0) {
      EXPECT_FALSE(ok) << type->tag;
      EXPECT_EQ(LastError(), refusal);
    } else {
      EXPECT_EQ(LastError().find("cannot be simulated yet"), std::string::npos) << type->tag << ": " << LastError();
    }
  }
}

}  // namespace
}  // namespace tz4
