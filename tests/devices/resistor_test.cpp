// Resistors: the type and model tables, parameters by name, and the file
// element in both directions.
#include <gtest/gtest.h>

#include "components/param_ops.h"
#include "device_b_support.h"
#include "devices/resistor.h"

namespace tz4 {
namespace {

using devtest::ExpectParams;
using devtest::ExpectRoundTrip;
using devtest::ExpectType;
using devtest::Load;
using devtest::Store;

TEST(ResistorTypes, TablesAsTheFileAndHostSeeThem) {
  ExpectType("R_R", 2, "Resistor",
             {{"R", 9, 1, 7}, {"PWL", 8, 1, 7}, {"PWL-I", 51, 1, 7}, {"Function", 5, 1, 7},
              {"SubCir", 7, 0, 5}});
  ExpectType("R_Pot", 3, "Potentiometer", {{"Potentiometer", 45, 0, 1}});
  ExpectType("R_VCR", 4, "Voltage controlled\nresistor", {{"PWL", 8, 1, 7}});
  ExpectType("R_CCR", 4, "Current controlled\nresistor", {{"PWL", 8, 2, 7}});
}

TEST(ResistorParams, EveryModelBindsItsOwnMembers) {
  auto r = devtest::CreateAs<CElemR>("R_R");
  ExpectParams(*r, "R", {{"R", PK_VALUE}});
  ExpectParams(*r, "PWL", {{"pwl", PK_PWL}});
  ExpectParams(*r, "PWL-I", {{"pwl", PK_PWL}});
  ExpectParams(*r, "Function", {{"Z(s)", PK_FORMULA_TEXT}});

  // "pwl" reaches the second table in "PWL-I" and the first otherwise.
  CParam param;
  devtest::SelectModel(*r, "PWL-I");
  ASSERT_TRUE(r->FindParam("pwl", param));
  EXPECT_EQ(std::get<CPWL*>(param.Value), &r->pwlI);
  devtest::SelectModel(*r, "PWL");
  ASSERT_TRUE(r->FindParam("PWL", param));
  EXPECT_EQ(std::get<CPWL*>(param.Value), &r->pwl);

  auto pot = devtest::CreateAs<CElemR>("R_Pot");
  ExpectParams(*pot, "Potentiometer", {{"R", PK_VALUE}, {"Position", PK_VALUE}});
  ASSERT_TRUE(pot->FindParam("position", param));
  EXPECT_EQ(SetText(param, "0.25", nullptr, nullptr), 0);
  EXPECT_DOUBLE_EQ(pot->Position.Value, 0.25);

  for (const char* tag : {"R_VCR", "R_CCR"}) {
    auto controlled = devtest::CreateAs<CElemR>(tag);
    ExpectParams(*controlled, "PWL", {{"pwl", PK_PWL}});
  }
}

TEST(ResistorParams, DefaultsAndCurves) {
  auto r = devtest::CreateAs<CElemR>("R_R");
  EXPECT_EQ(r->R.Value, 1.0);
  EXPECT_EQ(r->Zs, "1");
  EXPECT_EQ(r->pwl.Text, "1.0");
  EXPECT_EQ(r->pwl.Curve, "I(V)");
  EXPECT_TRUE(r->pwl.Reciprocal);
  EXPECT_EQ(r->pwlI.Curve, "V(I)");
  EXPECT_FALSE(r->pwlI.Reciprocal);

  // The controlled types list resistances as they stand.
  auto vcr = devtest::CreateAs<CElemR>("R_VCR");
  EXPECT_EQ(vcr->pwl.Curve, "");
  EXPECT_FALSE(vcr->pwl.Reciprocal);

  auto pot = devtest::CreateAs<CElemR>("R_Pot");
  EXPECT_EQ(pot->R.Value, 1.0);
  EXPECT_EQ(pot->Position.Value, 0.0);
}

TEST(ResistorArchive, ElementsStoreBackUnchanged) {
  ExpectRoundTrip<CElemR>("R_R",
                          "<Cmp type=\"R_R\" id=\"3\" name=\"R1\" file_name=\"\" view=\"0\" node0=\"1\" "
                          "node1=\"0\" model=\"R\" r_str=\"%3dRbase*2\" r=\"4.7e+3\" fs=\"1%2bs\" />");
  // A table model writes its table; "PWL-I" writes the second one too.
  ExpectRoundTrip<CElemR>("R_R",
                          "<Cmp type=\"R_R\" id=\"4\" name=\"R2\" file_name=\"\" view=\"0\" node0=\"2\" "
                          "node1=\"3\" model=\"PWL\" pwl=\"10,1,100\" pwlf=\"\" pwlm=\"0\" r=\"1\" fs=\"1\" />");
  ExpectRoundTrip<CElemR>("R_R",
                          "<Cmp type=\"R_R\" id=\"5\" name=\"R3\" file_name=\"\" view=\"0\" node0=\"2\" "
                          "node1=\"3\" model=\"PWL-I\" r=\"1\" fs=\"1\" pwli=\"2,500e-3,4\" pwlif=\"a+b\" "
                          "pwlim=\"1\" />");
  ExpectRoundTrip<CElemR>("R_Pot",
                          "<Cmp type=\"R_Pot\" id=\"6\" name=\"P1\" file_name=\"\" view=\"0\" node0=\"1\" "
                          "node1=\"2\" node2=\"3\" model=\"Potentiometer\" r=\"10e+3\" p=\"250e-3\" />");
  ExpectRoundTrip<CElemR>("R_CCR",
                          "<Cmp type=\"R_CCR\" id=\"7\" name=\"RC\" file_name=\"\" view=\"0\" node0=\"1\" "
                          "node1=\"2\" node2=\"3\" node3=\"4\" model=\"PWL\" pwl=\"1,1,2\" pwlf=\"\" "
                          "pwlm=\"0\" />");
}

TEST(ResistorArchive, MissingAttributesKeepDefaultsAndTheSecondTableIsReadAlways) {
  auto r = Load<CElemR>("R_R",
                        "<Cmp type=\"R_R\" id=\"1\" name=\"R1\" node0=\"1\" node1=\"0\" model=\"R\" "
                        "pwli=\"3\" />");
  ASSERT_NE(r, nullptr);
  EXPECT_EQ(r->R.Value, 1.0);
  EXPECT_EQ(r->R.Text, "");
  EXPECT_EQ(r->Zs, "1");
  EXPECT_EQ(r->pwlI.Text, "3");
  // Model "R" does not write an unchanged second table back.
  EXPECT_EQ(Store(*r).find("pwli"), std::string::npos);

  auto pot = Load<CElemR>("R_Pot",
                          "<Cmp type=\"R_Pot\" id=\"2\" name=\"P\" node0=\"1\" node1=\"2\" node2=\"3\" "
                          "model=\"Potentiometer\" />");
  ASSERT_NE(pot, nullptr);
  EXPECT_EQ(pot->R.Value, 1.0);
  EXPECT_EQ(pot->Position.Value, 0.0);
}

TEST(ResistorRows, ExtraRowsFollowTheValues) {
  auto r = devtest::CreateAs<CElemR>("R_R");
  devtest::SelectModel(*r, "R");
  EXPECT_EQ(r->GetExtraRows(), 0);
  r->R.Value = 0;  // a short carries its current in a row
  EXPECT_EQ(r->GetExtraRows(), 1);
  devtest::SelectModel(*r, "PWL");
  EXPECT_EQ(r->GetExtraRows(), 1);
  devtest::SelectModel(*r, "SubCir");
  EXPECT_EQ(r->GetExtraRows(), 0);

  auto pot = devtest::CreateAs<CElemR>("R_Pot");
  devtest::SelectModel(*pot, "Potentiometer");
  pot->Position.Value = 0.5;
  EXPECT_EQ(pot->GetExtraRows(), 0);
  pot->Position.Value = 0;
  EXPECT_EQ(pot->GetExtraRows(), 1);
  pot->Position.Value = 1;
  EXPECT_EQ(pot->GetExtraRows(), 1);
  pot->R.Value = 0;
  EXPECT_EQ(pot->GetExtraRows(), 2);
}

TEST(ResistorTrace, ResistanceGivesTheCurrentAndSubcircuitsOnlyVoltages) {
  auto r = devtest::CreateAs<CElemR>("R_R");
  devtest::SelectModel(*r, "R");
  r->R.Value = 220;
  r->pins = {4, 5};
  int a = 0, b = 0, row = -1;
  double value = 0;
  EXPECT_TRUE(r->GetTraceInfo(1, a, b, row, value));
  EXPECT_EQ(a, 4);
  EXPECT_EQ(b, 5);
  EXPECT_EQ(value, 220);
  devtest::SelectModel(*r, "SubCir");
  EXPECT_TRUE(r->GetTraceInfo(0, a, b, row, value));
  EXPECT_FALSE(r->GetTraceInfo(1, a, b, row, value));
  EXPECT_TRUE(r->GetTraceInfo(6, a, b, row, value));
}

}  // namespace
}  // namespace tz4
