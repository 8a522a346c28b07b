// Controlled sources: type tables, the parameter names that follow the
// output and control kinds, the file element and the descriptive overrides.
#include <gtest/gtest.h>

#include <string>

#include "device_b_support.h"
#include "devices/controlled_source.h"

namespace tz4 {
namespace {

using devtest::ExpectParams;
using devtest::ExpectType;
using devtest::Load;
using devtest::SelectModel;
using devtest::Store;

struct SourceKind {
  const char* tag;
  const char* description;
  int32_t rows;
  const char* oscillator;
  const char* level1;
  const char* level0;
  const char* rate;
  const char* max;
};

const SourceKind kKinds[] = {
    {"V_VCVS", "Voltage controlled\nvoltage source", 1, "VCO", "V1", "V0", "dFdV", "Vmax"},
    {"V_CCVS", "Current controlled\nvoltage source", 2, "CCO", "V1", "V0", "dFdI", "Imax"},
    {"I_VCCS", "Voltage controlled\ncurrent source", 1, "VCO", "I1", "I0", "dFdV", "Vmax"},
    {"I_CCCS", "Current controlled\ncurrent source", 2, "CCO", "I1", "I0", "dFdI", "Imax"},
};

TEST(ControlledSourceTypes, Tables) {
  for (const SourceKind& k : kKinds) {
    ExpectType(k.tag, 4, k.description,
               {{"Linear", 15, k.rows, 7},
                {"Function", 5, k.rows, 7},
                {"PWL", 8, k.rows, 7},
                {k.oscillator, 42, k.rows, 7},
                {"Pulse", 2, k.rows, 7},
                {"PWM", 47, k.rows, 7},
                {"SubCir", 7, 0, 5}});
  }
}

TEST(ControlledSourceParams, NamesFollowOutputAndControl) {
  for (const SourceKind& k : kKinds) {
    auto cmp = devtest::CreateAs<CElemVCVS>(k.tag);
    ASSERT_NE(cmp, nullptr);
    ExpectParams(*cmp, "Linear", {{"K", PK_VALUE}});
    ExpectParams(*cmp, "Function", {{"F(x)", PK_FORMULA_TEXT}, {"F(s)", PK_FORMULA_TEXT}, {"IC", PK_VALUE}});
    ExpectParams(*cmp, "PWL", {{"pwl", PK_PWL}});
    ExpectParams(*cmp, k.oscillator,
                 {{k.level1, PK_VALUE}, {k.level0, PK_VALUE}, {k.rate, PK_VALUE}, {"Phase", PK_VALUE}, {"Type", PK_ENUM}});
    ExpectParams(*cmp, "Pulse",
                 {{"Width", PK_VALUE}, {"Threshold", PK_VALUE}, {k.level1, PK_VALUE}, {k.level0, PK_VALUE}});
    ExpectParams(*cmp, "PWM",
                 {{k.level1, PK_VALUE}, {k.level0, PK_VALUE}, {"F", PK_VALUE}, {"Phase", PK_VALUE}, {k.max, PK_VALUE}});
    ExpectParams(*cmp, "SubCir", {});
  }
}

TEST(ControlledSourceParams, RateAndLevelsShareMembersAcrossModels) {
  auto cmp = devtest::CreateAs<CElemVCVS>("I_CCCS");
  CParam p;
  ASSERT_TRUE(SelectModel(*cmp, "CCO"));
  ASSERT_TRUE(cmp->FindParam("dfdi", p));
  EXPECT_EQ(std::get<CFormula*>(p.Value), &cmp->Rate);
  ASSERT_TRUE(cmp->FindParam("i1", p));
  EXPECT_EQ(std::get<CFormula*>(p.Value), &cmp->V1);
  ASSERT_TRUE(cmp->FindParam("type", p));
  EXPECT_EQ(std::get<CEnumValue*>(p.Value), &cmp->Type);
  EXPECT_STREQ(cmp->Type.Names[3], "Sawtooth");
  ASSERT_TRUE(SelectModel(*cmp, "PWM"));
  ASSERT_TRUE(cmp->FindParam("f", p));
  EXPECT_EQ(std::get<CFormula*>(p.Value), &cmp->Rate);
  ASSERT_TRUE(cmp->FindParam("imax", p));
  EXPECT_EQ(std::get<CFormula*>(p.Value), &cmp->Max);
  EXPECT_FALSE(cmp->FindParam("Vmax", p));
}

TEST(ControlledSourceFile, Defaults) {
  auto cmp = Load<CElemVCVS>("V_VCVS", "<Cmp type=\"V_VCVS\" name=\"E1\" model=\"Linear\" />");
  ASSERT_NE(cmp, nullptr);
  EXPECT_EQ(cmp->K.Value, 1.0);
  EXPECT_EQ(cmp->Fx, "x");
  EXPECT_EQ(cmp->Fs, "1");
  EXPECT_EQ(cmp->V1.Value, 10.0);
  EXPECT_EQ(cmp->Threshold.Value, 5.0);
  EXPECT_EQ(cmp->Width.Value, 0.1);
  EXPECT_EQ(cmp->pwl.Curve, "V(V)");
  ASSERT_EQ(cmp->Variables.Count(), 2);
  EXPECT_NE(cmp->Variables.Find("X"), nullptr);
  EXPECT_EQ(Store(*cmp),
            "<Cmp type=\"V_VCVS\" id=\"0\" name=\"E1\" file_name=\"\" view=\"0\" node0=\"0\" node1=\"0\" "
            "node2=\"0\" node3=\"0\" model=\"Linear\" k=\"1\" f=\"x\" fs=\"1\" ic=\"0\" v0=\"0\" v1=\"10\" "
            "dfdv=\"1\" phase=\"0\" vcotype=\"0\" thr=\"5\" width=\"100e-3\" max=\"1\" />");
}

TEST(ControlledSourceFile, CircuitRoundTrip) {
  devtest::ExpectCircuitRoundTrip(
      "<Cmps>"
      "<Cmp type=\"I_CCCS\" id=\"7\" name=\"F1\" file_name=\"\" view=\"0\" node0=\"1\" node1=\"0\" "
      "node2=\"2\" node3=\"3\" model=\"CCO\" k=\"-2\" f=\"x*x\" fs=\"s\" ic=\"1\" v0=\"-1\" "
      "v1_str=\"%3dAmp\" v1=\"3\" dfdv=\"1e+3\" phase=\"90\" vcotype=\"2\" thr=\"0\" width=\"1e-3\" "
      "max=\"inf\" />"
      "<Cmp type=\"V_CCVS\" id=\"8\" name=\"H1\" file_name=\"\" view=\"0\" node0=\"1\" node1=\"0\" "
      "node2=\"2\" node3=\"3\" model=\"PWL\" pwl=\"1.0\" pwlf=\"\" pwlm=\"0\" k=\"1\" f=\"x\" fs=\"1\" "
      "ic=\"0\" v0=\"0\" v1=\"10\" dfdv=\"1\" phase=\"0\" vcotype=\"0\" thr=\"5\" width=\"100e-3\" "
      "max=\"1\" />"
      "<Cmp type=\"V_VCVS\" id=\"9\" name=\"PWM1\" file_name=\"\" view=\"0\" node0=\"4\" node1=\"0\" "
      "node2=\"0\" node3=\"5\" model=\"PWM\" k=\"1\" f=\"x\" fs=\"1\" ic=\"0\" v0=\"0\" v1=\"5\" "
      "dfdv=\"10e+3\" phase=\"0\" vcotype=\"0\" thr=\"5\" width=\"100e-3\" max=\"10\" />"
      "</Cmps>");
}

TEST(ControlledSourceBehaviour, InitialConditionTextOnlyForFunction) {
  auto cmp = Load<CElemVCVS>("V_VCVS", "<Cmp type=\"V_VCVS\" name=\"E1\" model=\"Function\" ic=\"0.125\" />");
  cmp->path = "X2";
  std::string text;
  EXPECT_EQ(cmp->GetICText(text), "X2.E1.IC=125e-3");
  ASSERT_TRUE(SelectModel(*cmp, "Linear"));
  EXPECT_EQ(cmp->GetICText(text), "");
}

}  // namespace
}  // namespace tz4
