// Amplifiers and comparators: type tables, parameters, the file element and
// the descriptive overrides.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "device_b_support.h"
#include "devices/amplifier.h"

namespace tz4 {
namespace {

using devtest::ExpectParams;
using devtest::ExpectType;
using devtest::Load;
using devtest::SelectModel;
using devtest::Store;

TEST(AmplifierTypes, Tables) {
  const std::vector<devtest::ModelRow> full = {{"Linear", 15, 1, 7},   {"OpAmp", 17, 1, 7},
                                               {"Comparator", 18, 1, 7}, {"Function", 5, 1, 7},
                                               {"PWL", 8, 1, 7},       {"SubCir", 7, 0, 5}};
  ExpectType("O_O", 2, "Amplifier", full);
  ExpectType("O_OD", 3, "Differential\namplifier", full);
  ExpectType("O_OS", 3, "Summing\namplifier",
             {{"Linear", 15, 1, 7}, {"OpAmp", 17, 1, 7}, {"Function", 5, 1, 7}, {"PWL", 8, 1, 7}, {"SubCir", 7, 0, 5}});
  ExpectType("O_VCG", 4, "Voltage controlled\namplifier", {{"PWL", 8, 1, 7}});
  ExpectType("O_CCG", 4, "Current controlled\namplifier", {{"PWL", 8, 2, 7}});
}

TEST(AmplifierParams, EveryModelOfEveryType) {
  for (const char* tag : {"O_O", "O_OD", "O_OS", "O_VCG", "O_CCG"}) {
    auto cmp = devtest::CreateAs<CElemO>(tag);
    ASSERT_NE(cmp, nullptr);
    ExpectParams(*cmp, "PWL", {{"pwl", PK_PWL}});
    if (std::string(tag) == "O_VCG" || std::string(tag) == "O_CCG") continue;
    ExpectParams(*cmp, "Linear", {{"K", PK_VALUE}, {"f1", PK_VALUE}, {"IC", PK_IC}});
    ExpectParams(*cmp, "OpAmp",
                 {{"K", PK_VALUE}, {"f1", PK_VALUE}, {"Vhi", PK_VALUE}, {"Vlo", PK_VALUE}, {"IC", PK_VALUE}});
    ExpectParams(*cmp, "Function", {{"F(x)", PK_FORMULA_TEXT}, {"F(s)", PK_FORMULA_TEXT}, {"IC", PK_VALUE}});
    if (std::string(tag) != "O_OS")
      ExpectParams(*cmp, "Comparator",
                   {{"Hysteresis", PK_VALUE},
                    {"Vhi", PK_VALUE},
                    {"Vlo", PK_VALUE},
                    {"Delay", PK_VALUE},
                    {"IC", PK_HIGH_LOW}});
    ExpectParams(*cmp, "SubCir", {});
  }
}

TEST(AmplifierParams, EachModelHasItsOwnInitialCondition) {
  auto cmp = devtest::CreateAs<CElemO>("O_O");
  CParam p;
  ASSERT_TRUE(SelectModel(*cmp, "Linear"));
  ASSERT_TRUE(cmp->FindParam("ic", p));
  EXPECT_EQ(std::get<std::string*>(p.Value), &cmp->LinearIc);
  ASSERT_TRUE(SelectModel(*cmp, "OpAmp"));
  ASSERT_TRUE(cmp->FindParam("ic", p));
  EXPECT_EQ(std::get<CFormula*>(p.Value), &cmp->OpAmpIc);
  ASSERT_TRUE(SelectModel(*cmp, "Function"));
  ASSERT_TRUE(cmp->FindParam("ic", p));
  EXPECT_EQ(std::get<CFormula*>(p.Value), &cmp->FunctionIc);
  ASSERT_TRUE(cmp->FindParam("f(x)", p));
  EXPECT_EQ(std::get<std::string*>(p.Value), &cmp->Fx);
  ASSERT_TRUE(SelectModel(*cmp, "Comparator"));
  ASSERT_TRUE(cmp->FindParam("ic", p));
  EXPECT_EQ(std::get<int32_t*>(p.Value), &cmp->ComparatorIc);
  ASSERT_TRUE(SelectModel(*cmp, "PWL"));
  ASSERT_TRUE(cmp->FindParam("PWL", p));
  EXPECT_EQ(std::get<CPWL*>(p.Value), &cmp->pwl);
}

TEST(AmplifierFile, Defaults) {
  auto od = Load<CElemO>("O_OD", "<Cmp type=\"O_OD\" name=\"U1\" model=\"Linear\" />");
  ASSERT_NE(od, nullptr);
  EXPECT_TRUE(std::isinf(od->K.Value) && od->K.Value > 0);  // the ideal differential amplifier
  auto o = Load<CElemO>("O_O", "<Cmp type=\"O_O\" name=\"U2\" model=\"OpAmp\" />");
  ASSERT_NE(o, nullptr);
  EXPECT_EQ(o->K.Value, 1.0);
  EXPECT_TRUE(std::isinf(o->F1.Value));
  EXPECT_EQ(o->Vhi.Value, 15.0);
  EXPECT_EQ(o->Vlo.Value, -15.0);
  EXPECT_EQ(o->Hysteresis.Value, 0.1);
  EXPECT_EQ(o->Fx, "x");
  EXPECT_EQ(o->Fs, "1");
  EXPECT_EQ(o->pwl.Curve, "V(V)");
  ASSERT_EQ(o->Variables.Count(), 2);
  EXPECT_EQ(o->Variables[0]->Name, "t");
  EXPECT_EQ(o->Variables[1]->Name, "x");
  EXPECT_EQ(Store(*o),
            "<Cmp type=\"O_O\" id=\"0\" name=\"U2\" file_name=\"\" view=\"0\" node0=\"0\" node1=\"0\" "
            "model=\"OpAmp\" k=\"1\" f1=\"inf\" hi=\"15\" lo=\"-15\" hyst=\"100e-3\" f=\"x\" fs=\"1\" "
            "ic=\"\" comp_ic=\"0\" opamp_ic=\"0\" func_ic=\"0\" delay=\"0\" />");
}

TEST(AmplifierFile, CircuitRoundTrip) {
  // A table model also carries the base's table attributes; the controlled
  // gain types keep nothing else.
  devtest::ExpectCircuitRoundTrip(
      "<Cmps>"
      "<Cmp type=\"O_CCG\" id=\"5\" name=\"G1\" file_name=\"\" view=\"0\" node0=\"1\" node1=\"2\" "
      "node2=\"3\" node3=\"4\" model=\"PWL\" pwl=\"2.0\" pwlf=\"\" pwlm=\"0\" />"
      "<Cmp type=\"O_O\" id=\"1\" name=\"U1\" file_name=\"\" view=\"0\" node0=\"1\" node1=\"2\" "
      "model=\"PWL\" pwl=\"1.0\" pwlf=\"\" pwlm=\"0\" k=\"1\" f1=\"inf\" hi=\"15\" lo=\"-15\" "
      "hyst=\"100e-3\" f=\"x\" fs=\"1\" ic=\"\" comp_ic=\"0\" opamp_ic=\"0\" func_ic=\"0\" delay=\"0\" />"
      "<Cmp type=\"O_OS\" id=\"2\" name=\"U3\" file_name=\"\" view=\"0\" node0=\"1\" node1=\"2\" "
      "node2=\"3\" model=\"Function\" k=\"-10\" f1=\"1e+6\" hi=\"12\" lo=\"0\" hyst=\"0\" "
      "f=\"2*x%2bsin(t)\" fs=\"1%2f(1%2bs)\" ic=\"500e-3\" comp_ic=\"1\" opamp_ic=\"3\" "
      "func_ic_str=\"%3dV0\" func_ic=\"1\" delay=\"1e-6\" />"
      "</Cmps>");
}

TEST(AmplifierFile, ControlledGainTypesKeepOnlyTheirTable) {
  auto cmp = Load<CElemO>("O_VCG", "<Cmp type=\"O_VCG\" name=\"G2\" model=\"PWL\" k=\"5\" />");
  EXPECT_EQ(cmp->K.Value, 1.0);  // not an attribute of this type
  EXPECT_EQ(Store(*cmp).find(" k="), std::string::npos);
}

TEST(AmplifierBehaviour, InitialConditionText) {
  auto cmp = Load<CElemO>("O_O", "<Cmp type=\"O_O\" name=\"U1\" model=\"Linear\" />");
  std::string text;
  EXPECT_EQ(cmp->GetICText(text), "U1.IC=\"\"");
  cmp->LinearIc = "2.5";
  EXPECT_EQ(cmp->GetICText(text), "U1.IC=2.5");
  ASSERT_TRUE(SelectModel(*cmp, "OpAmp"));
  cmp->OpAmpIc.Value = -0.25;
  EXPECT_EQ(cmp->GetICText(text), "U1.IC=-250e-3");
  ASSERT_TRUE(SelectModel(*cmp, "Function"));
  cmp->FunctionIc.Value = 4;
  EXPECT_EQ(cmp->GetICText(text), "U1.IC=4");
  cmp->FunctionIc.Text = "=V0*2";
  EXPECT_EQ(cmp->GetICText(text), "U1.IC==V0*2");
  ASSERT_TRUE(SelectModel(*cmp, "Comparator"));
  EXPECT_EQ(cmp->GetICText(text), "U1.IC=low");
  cmp->ComparatorIc = 1;
  EXPECT_EQ(cmp->GetICText(text), "U1.IC=high");
  ASSERT_TRUE(SelectModel(*cmp, "PWL"));
  EXPECT_EQ(cmp->GetICText(text), "");
}

TEST(AmplifierBehaviour, TracesReadTheOutputAgainstGround) {
  auto cmp = Load<CElemO>(
      "O_OD", "<Cmp type=\"O_OD\" name=\"U1\" node0=\"4\" node1=\"5\" node2=\"6\" model=\"Linear\" />");
  cmp->firstRow = 11;
  int a = -1, b = 0, row = 0;
  double value = 1;
  EXPECT_TRUE(cmp->GetTraceInfo(2, a, b, row, value));
  EXPECT_EQ(a, 0);
  EXPECT_EQ(b, 5);
  EXPECT_EQ(row, 11);
  ASSERT_TRUE(SelectModel(*cmp, "SubCir"));
  EXPECT_TRUE(cmp->GetTraceInfo(0, a, b, row, value));
  EXPECT_FALSE(cmp->GetTraceInfo(1, a, b, row, value));
}

}  // namespace
}  // namespace tz4
