// The switch, transistor, amplifier, controlled-source and logic types as the
// global type list sees them.
#include <gtest/gtest.h>

#include <string>

#include "api/last_error.h"
#include "components/cmp.h"
#include "components/elem_type.h"
#include "devices/device_types.h"

namespace tz4 {
namespace {

const char* const kGroupBTags[] = {
    "S_S",  "S_LCS", "S_VCS", "S_CCS",    "S_S3", "S_LCS3", "S_VCS3", "S_CCS3", "O_O",    "O_OD",
    "O_OS", "O_VCG", "O_CCG", "T_TNPN",   "T_TPNP", "T_NFET", "T_PFET", "V_VCVS", "V_CCVS", "I_VCCS",
    "I_CCCS", "Y_1", "Y_2",   "Y_3",      "Y_CUSTOM", "Y_FF", "Y_RS",  "Y_JK",   "Y_ST",   "Y_LG",
};

TEST(DeviceTypesB, EveryTypeIsCreatedByItsTag) {
  EXPECT_EQ(DeviceTypesB().size(), std::size(kGroupBTags));
  for (const char* tag : kGroupBTags) {
    std::unique_ptr<CCmp> cmp = CElemSet::Instance().Create(tag);
    ASSERT_NE(cmp, nullptr) << tag;
    EXPECT_STREQ(cmp->type->tag, tag);
    EXPECT_EQ(cmp->pinCount, cmp->type->pinCount) << tag;
  }
  EXPECT_EQ(CElemSet::Instance().Create("s_vcs"), nullptr);  // tags compare exactly
}

// No run may silently ignore a device whose behaviour is not there yet.
TEST(DeviceTypesB, RunsAreRefusedUntilSimulated) {
  for (const char* tag : kGroupBTags) {
    std::unique_ptr<CCmp> cmp = CElemSet::Instance().Create(tag);
    ASSERT_NE(cmp, nullptr) << tag;
    cmp->name = "U1";
    SetLastError("");
    EXPECT_FALSE(cmp->CheckParams()) << tag;
    EXPECT_EQ(LastError(), std::string("U1 : type ") + tag + " cannot be simulated yet; ");
  }
}

}  // namespace
}  // namespace tz4
