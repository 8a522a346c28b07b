// Capacitors: type and model tables, parameters, the file element, the IC
// text.
#include <gtest/gtest.h>

#include "device_b_support.h"
#include "devices/capacitor.h"

namespace tz4 {
namespace {

using devtest::ExpectParams;
using devtest::ExpectRoundTrip;
using devtest::ExpectType;
using devtest::Load;

TEST(CapacitorTypes, TablesAsTheFileAndHostSeeThem) {
  ExpectType("C_C", 2, "Capacitor",
             {{"C", 10, 1, 7}, {"PWL", 8, 1, 7}, {"Function", 5, 1, 7}, {"SubCir", 7, 0, 5}});
  ExpectType("C_VCC", 4, "Voltage controlled\ncapacitor", {{"PWL", 8, 1, 7}});
  ExpectType("C_CCC", 4, "Current controlled\ncapacitor", {{"PWL", 8, 2, 7}});
}

TEST(CapacitorParams, EveryModelBindsItsOwnMembers) {
  auto c = devtest::CreateAs<CElemC>("C_C");
  ExpectParams(*c, "C", {{"C", PK_VALUE}, {"IC", PK_IC}});
  ExpectParams(*c, "PWL", {{"pwl", PK_PWL}, {"IC", PK_IC}});
  ExpectParams(*c, "Function", {{"Z(s)", PK_FORMULA_TEXT}});
  for (const char* tag : {"C_VCC", "C_CCC"}) {
    auto controlled = devtest::CreateAs<CElemC>(tag);
    ExpectParams(*controlled, "PWL", {{"pwl", PK_PWL}, {"IC", PK_IC}});
    EXPECT_EQ(controlled->pwl.Curve, "");
  }
  EXPECT_EQ(c->C.Value, 1.0);
  EXPECT_EQ(c->Zs, "1/s");
  EXPECT_EQ(c->ICText, "");
  EXPECT_EQ(c->pwl.Curve, "Q(V)");
  EXPECT_FALSE(c->pwl.Reciprocal);
}

TEST(CapacitorArchive, ElementsStoreBackUnchanged) {
  ExpectRoundTrip<CElemC>("C_C",
                          "<Cmp type=\"C_C\" id=\"1\" name=\"C1\" file_name=\"\" view=\"0\" node0=\"1\" "
                          "node1=\"0\" model=\"C\" c=\"100e-9\" ic=\"2.5\" fs=\"1%2fs\" />");
  ExpectRoundTrip<CElemC>("C_C",
                          "<Cmp type=\"C_C\" id=\"2\" name=\"C2\" file_name=\"\" view=\"0\" node0=\"1\" "
                          "node1=\"2\" model=\"PWL\" pwl=\"1m,1,2m\" pwlf=\"\" pwlm=\"0\" c=\"1\" ic=\"\" "
                          "fs=\"1%2fs\" />");
  ExpectRoundTrip<CElemC>("C_VCC",
                          "<Cmp type=\"C_VCC\" id=\"3\" name=\"CV\" file_name=\"\" view=\"0\" node0=\"1\" "
                          "node1=\"2\" node2=\"3\" node3=\"0\" model=\"PWL\" pwl=\"1u\" pwlf=\"\" "
                          "pwlm=\"0\" ic=\"-1\" />");
}

TEST(CapacitorArchive, MissingAttributesKeepDefaults) {
  auto c = Load<CElemC>("C_C", "<Cmp type=\"C_C\" id=\"1\" name=\"C1\" node0=\"1\" node1=\"0\" model=\"C\" />");
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(c->C.Value, 1.0);
  EXPECT_EQ(c->ICText, "");
  EXPECT_EQ(c->Zs, "1/s");
}

TEST(CapacitorIC, TextNamesTheComponentAndShowsAnEmptyIC) {
  auto c = devtest::CreateAs<CElemC>("C_C");
  c->name = "C7";
  devtest::SelectModel(*c, "C");
  std::string text;
  EXPECT_EQ(c->GetICText(text), "C7.IC=\"\"");
  c->ICText = "1.5";
  c->path = "X1";
  EXPECT_EQ(c->GetICText(text), "X1.C7.IC=1.5");
  devtest::SelectModel(*c, "PWL");
  EXPECT_EQ(c->GetICText(text), "X1.C7.IC=1.5");
  devtest::SelectModel(*c, "Function");
  EXPECT_EQ(c->GetICText(text), "");
}

}  // namespace
}  // namespace tz4
