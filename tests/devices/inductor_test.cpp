// Inductors: type and model tables, parameters of the plain, coupled and
// custom shapes, the file element, the IC text.
#include <gtest/gtest.h>

#include "devices/registry.h"
#include "device_b_support.h"
#include "devices/inductor.h"

namespace tz4 {
namespace {

using devtest::ExpectParams;
using devtest::ExpectRoundTrip;
using devtest::ExpectType;
using devtest::Load;
using devtest::Store;

TEST(InductorTypes, TablesAsTheFileAndHostSeeThem) {
  ExpectType("L_L", 2, "Inductor",
             {{"L", 11, 1, 7}, {"PWL", 8, 1, 7}, {"Function", 5, 1, 7}, {"SubCir", 7, 0, 5}});
  ExpectType("L_CL", 4, "Coupled inductors", {{"L", 11, 2, 0}});
  ExpectType("L_VCL", 4, "Voltage controlled\ninductor", {{"PWL", 8, 1, 7}});
  ExpectType("L_CCL", 4, "Current controlled\ninductor", {{"PWL", 8, 2, 7}});
  // The custom set builds its table per instance.
  const ElemType* custom = ComponentTypes().Find("L_CUSTOM");
  ASSERT_NE(custom, nullptr);
  EXPECT_EQ(custom->pinCount, 0);
  EXPECT_STREQ(custom->description, "Custom coupled\ninductors");
  EXPECT_STREQ(custom->models[0].name, "L");
  EXPECT_EQ(custom->models[0].id, 11);
  EXPECT_STREQ(custom->models[1].name, "SubCir");
  EXPECT_EQ(custom->models[2].name, nullptr);
}

TEST(InductorParams, PlainCoupledAndControlledShapes) {
  auto l = devtest::CreateAs<CElemL>("L_L");
  ExpectParams(*l, "L", {{"L", PK_VALUE}, {"IC", PK_IC}});
  ExpectParams(*l, "PWL", {{"pwl", PK_PWL}, {"IC", PK_IC}});
  ExpectParams(*l, "Function", {{"Z(s)", PK_FORMULA_TEXT}});
  EXPECT_EQ(l->L.Value, 1.0);
  EXPECT_EQ(l->Zs, "s");
  EXPECT_EQ(l->pwl.Curve, "H(I)");

  auto pair = devtest::CreateAs<CElemL>("L_CL");
  ExpectParams(*pair, "L",
               {{"L1", PK_VALUE}, {"L2", PK_VALUE}, {"K", PK_VALUE}, {"IC1", PK_IC}, {"IC2", PK_IC}});
  EXPECT_EQ(pair->L2.Value, 1.0);
  EXPECT_EQ(pair->K.Value, 1.0);
  CParam param;
  ASSERT_TRUE(pair->FindParam("l1", param));
  EXPECT_EQ(std::get<CFormula*>(param.Value), &pair->L);

  for (const char* tag : {"L_VCL", "L_CCL"}) {
    auto controlled = devtest::CreateAs<CElemL>(tag);
    ExpectParams(*controlled, "PWL", {{"pwl", PK_PWL}, {"IC", PK_IC}});
    EXPECT_EQ(controlled->L.Value, 0.0);
    EXPECT_EQ(controlled->pwl.Curve, "");
  }
}

TEST(InductorCustom, WindingsBuildTheirOwnTable) {
  auto set = devtest::CreateAs<CElemL>("L_CUSTOM");
  devtest::SelectModel(*set, "L");
  set->SetPinCount(6);
  set->StoreCustom();
  ASSERT_EQ(set->windingCount, 3);
  EXPECT_EQ(set->GetExtraRows(), 3);
  ExpectParams(*set, "L",
               {{"L1", PK_VALUE}, {"L2", PK_VALUE}, {"L3", PK_VALUE}, {"K12", PK_VALUE},
                {"K13", PK_VALUE}, {"K23", PK_VALUE}, {"IC1", PK_IC}, {"IC2", PK_IC}, {"IC3", PK_IC}});
  CParam param;
  ASSERT_TRUE(set->FindParam("l2", param));
  EXPECT_EQ(std::get<CFormula*>(param.Value)->Value, 1.0);
  ASSERT_TRUE(set->FindParam("K23", param));
  std::get<CFormula*>(param.Value)->Value = 0.5;

  // Growing the set keeps what the surviving items hold.
  set->SetPinCount(8);
  set->StoreCustom();
  ASSERT_TRUE(set->FindParam("K23", param));
  EXPECT_EQ(std::get<CFormula*>(param.Value)->Value, 0.5);
  EXPECT_TRUE(set->FindParam("K34", param));
  EXPECT_TRUE(set->FindParam("IC4", param));

  // One winding is a plain inductor with the plain names.
  set->SetPinCount(2);
  set->StoreCustom();
  ExpectParams(*set, "L", {{"L", PK_VALUE}, {"IC", PK_IC}});
  EXPECT_EQ(set->GetExtraRows(), 1);
  devtest::SelectModel(*set, "SubCir");
  EXPECT_EQ(set->GetExtraRows(), 0);
}

TEST(InductorArchive, ElementsStoreBackUnchanged) {
  ExpectRoundTrip<CElemL>("L_L",
                          "<Cmp type=\"L_L\" id=\"1\" name=\"L1\" file_name=\"\" view=\"0\" node0=\"1\" "
                          "node1=\"2\" model=\"L\" l=\"10e-3\" ic=\"100e-3\" fs=\"s\" />");
  ExpectRoundTrip<CElemL>("L_CL",
                          "<Cmp type=\"L_CL\" id=\"2\" name=\"T1\" file_name=\"\" view=\"0\" node0=\"1\" "
                          "node1=\"0\" node2=\"2\" node3=\"0\" model=\"L\" l=\"1\" l2=\"4\" "
                          "k_str=\"%3dkc\" k=\"990e-3\" ic=\"\" ic2=\"1\" />");
  ExpectRoundTrip<CElemL>("L_VCL",
                          "<Cmp type=\"L_VCL\" id=\"3\" name=\"LV\" file_name=\"\" view=\"0\" node0=\"1\" "
                          "node1=\"0\" node2=\"2\" node3=\"0\" model=\"PWL\" pwl=\"1m,1,2m\" pwlf=\"\" "
                          "pwlm=\"0\" ic=\"\" />");
  // A custom set writes its items by name; one winding keeps "l" and "ic".
  ExpectRoundTrip<CElemL>("L_CUSTOM",
                          "<Cmp type=\"L_CUSTOM\" id=\"4\" name=\"LX\" file_name=\"\" view=\"0\" "
                          "node0=\"1\" node1=\"0\" node2=\"2\" node3=\"0\" model=\"L\" L1=\"1e-3\" "
                          "L2=\"2e-3\" K12=\"500e-3\" IC1=\"1\" IC2=\"\" />");
  ExpectRoundTrip<CElemL>("L_CUSTOM",
                          "<Cmp type=\"L_CUSTOM\" id=\"5\" name=\"LY\" file_name=\"\" view=\"0\" "
                          "node0=\"1\" node1=\"0\" model=\"L\" l=\"3\" ic=\"2\" fs=\"s\" />");
}

TEST(InductorArchive, MissingAttributesKeepDefaults) {
  auto pair = Load<CElemL>("L_CL",
                           "<Cmp type=\"L_CL\" id=\"2\" name=\"T1\" node0=\"1\" node1=\"0\" node2=\"2\" "
                           "node3=\"0\" model=\"L\" />");
  ASSERT_NE(pair, nullptr);
  EXPECT_EQ(pair->L.Value, 1.0);
  EXPECT_EQ(pair->L2.Value, 1.0);
  EXPECT_EQ(pair->K.Value, 1.0);
  EXPECT_EQ(pair->ICText, "");

  auto set = Load<CElemL>("L_CUSTOM",
                          "<Cmp type=\"L_CUSTOM\" id=\"4\" name=\"LX\" node0=\"1\" node1=\"0\" node2=\"2\" "
                          "node3=\"0\" model=\"L\" L2=\"5\" />");
  ASSERT_NE(set, nullptr);
  ASSERT_EQ(set->windingCount, 2);
  CParam param;
  ASSERT_TRUE(set->FindParam("L1", param));
  EXPECT_EQ(std::get<CFormula*>(param.Value)->Value, 1.0);
  ASSERT_TRUE(set->FindParam("L2", param));
  EXPECT_EQ(std::get<CFormula*>(param.Value)->Value, 5.0);
  ASSERT_TRUE(set->FindParam("K12", param));
  EXPECT_EQ(std::get<CFormula*>(param.Value)->Value, 0.0);
}

TEST(InductorIC, TextsOfEachShape) {
  std::string text;
  auto l = devtest::CreateAs<CElemL>("L_L");
  l->name = "L1";
  devtest::SelectModel(*l, "L");
  EXPECT_EQ(l->GetICText(text), "L1.IC=\"\"");
  devtest::SelectModel(*l, "Function");
  EXPECT_EQ(l->GetICText(text), "");

  auto pair = devtest::CreateAs<CElemL>("L_CL");
  pair->name = "T";
  devtest::SelectModel(*pair, "L");
  pair->IC2Text = "2";
  EXPECT_EQ(pair->GetICText(text), "T.IC1=\"\";T.IC2=2");

  auto set = devtest::CreateAs<CElemL>("L_CUSTOM");
  set->name = "S";
  devtest::SelectModel(*set, "L");
  set->SetPinCount(4);
  set->StoreCustom();
  set->customIC[1] = "3";
  EXPECT_EQ(set->GetICText(text), "S.IC1=\"\";S.IC2=3");
}

}  // namespace
}  // namespace tz4
