// Inductors: the per-instance table of custom winding sets and the IC text
// of each shape.
#include <gtest/gtest.h>

#include "devices/registry.h"
#include "device_b_support.h"
#include "devices/inductor.h"

namespace tz4 {
namespace {

using devtest::ExpectParams;

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
