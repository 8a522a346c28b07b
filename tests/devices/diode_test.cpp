// Diodes and thyristors: type and model tables, parameters, the file
// element with its charge clean-up, the IC texts.
#include <gtest/gtest.h>

#include "components/param_ops.h"
#include "device_b_support.h"
#include "devices/diode.h"

namespace tz4 {
namespace {

using devtest::ExpectParams;
using devtest::ExpectRoundTrip;
using devtest::ExpectType;
using devtest::Load;
using devtest::Store;

TEST(DiodeTypes, TablesAsTheFileAndHostSeeThem) {
  ExpectType("D_D", 2, "Diode",
             {{"Diode", 12, 1, 7}, {"Storage", 39, 2, 7}, {"Soft", 50, 2, 7}, {"PWL", 8, 1, 7},
              {"SubCir", 7, 0, 5}});
  ExpectType("D_Z", 2, "Zener", {{"Zener", 12, 1, 7}, {"PWL", 8, 1, 7}, {"SubCir", 7, 0, 5}});
  ExpectType("D_ZS", 2, "Bidirectional\nzener",
             {{"Zener", 12, 1, 7}, {"PWL", 8, 1, 7}, {"SubCir", 7, 0, 5}});
  ExpectType("D_VCT", 4, "Voltage controlled\nthyristor", {{"Thyristor", 12, 1, 7}, {"SubCir", 7, 0, 5}});
  ExpectType("D_CCT", 4, "Current controlled\nthyristor", {{"Thyristor", 12, 2, 7}, {"SubCir", 7, 0, 5}});
  ExpectType("D_LCT", 3, "Logic controlled\nthyristor", {{"Thyristor", 12, 1, 7}, {"SubCir", 7, 0, 5}});
  ExpectType("D_BR", 4, "Bridge\nrectifier", {{"Diode", 12, 4, 4}});
}

TEST(DiodeParams, EveryModelBindsItsOwnMembers) {
  auto d = devtest::CreateAs<CElemD>("D_D");
  ExpectParams(*d, "Diode", {{"Vd", PK_VALUE}, {"IC", PK_ON_OFF}});
  ExpectParams(*d, "Storage", {{"Vd", PK_VALUE}, {"t", PK_VALUE}, {"IC", PK_ON_OFF}, {"ICQ", PK_VALUE}});
  ExpectParams(*d, "Soft",
               {{"Vd", PK_VALUE}, {"t", PK_VALUE}, {"ts", PK_VALUE}, {"IC", PK_ON_OFF}, {"ICQ", PK_VALUE}});
  ExpectParams(*d, "PWL", {{"pwl", PK_PWL}});

  auto z = devtest::CreateAs<CElemD>("D_Z");
  ExpectParams(*z, "Zener", {{"V", PK_VALUE}, {"Vd", PK_VALUE}, {"IC", PK_ENUM}});
  auto zs = devtest::CreateAs<CElemD>("D_ZS");
  ExpectParams(*zs, "Zener", {{"V", PK_VALUE}, {"IC", PK_ENUM}});
  for (const char* tag : {"D_VCT", "D_CCT"}) {
    auto th = devtest::CreateAs<CElemD>(tag);
    ExpectParams(*th, "Thyristor",
                 {{"Vd", PK_VALUE}, {"Ihold", PK_VALUE}, {"Threshold", PK_VALUE}, {"IC", PK_ON_OFF}});
  }
  auto lct = devtest::CreateAs<CElemD>("D_LCT");
  ExpectParams(*lct, "Thyristor", {{"Vd", PK_VALUE}, {"Ihold", PK_VALUE}, {"IC", PK_ON_OFF}});
  auto br = devtest::CreateAs<CElemD>("D_BR");
  ExpectParams(*br, "Diode", {{"Vd", PK_VALUE}});

  // The zener's start state goes by its three names.
  CParam param;
  devtest::SelectModel(*z, "Zener");
  ASSERT_TRUE(z->FindParam("ic", param));
  EXPECT_EQ(GetDisplayText(param), "Off");
  EXPECT_EQ(SetText(param, "Plus", nullptr, nullptr), 0);
  EXPECT_EQ(z->ICz.Index, 2);
}

TEST(DiodeParams, Defaults) {
  auto d = devtest::CreateAs<CElemD>("D_D");
  EXPECT_EQ(d->Vd.Value, 0.0);
  EXPECT_EQ(d->V.Value, 8.0);
  EXPECT_EQ(d->t.Value, 0.0);
  EXPECT_EQ(d->ts.Value, 0.0);
  EXPECT_EQ(d->IC, 0);
  EXPECT_EQ(d->ICz.Index, 1);
  EXPECT_EQ(d->ICQ.Value, 0.0);
  EXPECT_EQ(d->Threshold.Value, 5.0);
  EXPECT_EQ(d->Ihold.Value, 1.0);
  EXPECT_EQ(d->pwl.Curve, "I(V)");
  EXPECT_TRUE(d->pwl.Reciprocal);
}

TEST(DiodeArchive, ElementsStoreBackUnchanged) {
  ExpectRoundTrip<CElemD>("D_D",
                          "<Cmp type=\"D_D\" id=\"1\" name=\"D1\" file_name=\"\" view=\"0\" node0=\"1\" "
                          "node1=\"2\" model=\"Soft\" vd=\"700e-3\" t=\"1e-6\" ts=\"100e-9\" ic=\"1\" "
                          "icq=\"1e-9\" />");
  ExpectRoundTrip<CElemD>("D_VCT",
                          "<Cmp type=\"D_VCT\" id=\"2\" name=\"TH\" file_name=\"\" view=\"0\" node0=\"1\" "
                          "node1=\"2\" node2=\"3\" node3=\"0\" model=\"Thyristor\" vd=\"1\" thr=\"2\" "
                          "hold=\"10e-3\" ic=\"0\" />");
  ExpectRoundTrip<CElemD>("D_Z",
                          "<Cmp type=\"D_Z\" id=\"3\" name=\"Z1\" file_name=\"\" view=\"0\" node0=\"1\" "
                          "node1=\"0\" model=\"Zener\" v=\"5.1\" vd=\"600e-3\" ic=\"2\" />");
  ExpectRoundTrip<CElemD>("D_ZS",
                          "<Cmp type=\"D_ZS\" id=\"4\" name=\"Z2\" file_name=\"\" view=\"0\" node0=\"1\" "
                          "node1=\"0\" model=\"PWL\" pwl=\"1,1,1e+3\" pwlf=\"\" pwlm=\"0\" v=\"8\" ic=\"0\" />");
  ExpectRoundTrip<CElemD>("D_BR",
                          "<Cmp type=\"D_BR\" id=\"5\" name=\"B1\" file_name=\"\" view=\"0\" node0=\"1\" "
                          "node1=\"2\" node2=\"3\" node3=\"4\" model=\"Diode\" vd=\"700e-3\" />");
}

TEST(DiodeArchive, NegativeChargeFromAFileIsRaisedToZero) {
  auto d = Load<CElemD>("D_D",
                        "<Cmp type=\"D_D\" id=\"1\" name=\"D1\" node0=\"1\" node1=\"2\" model=\"Storage\" "
                        "icq=\"-2\" />");
  ASSERT_NE(d, nullptr);
  EXPECT_EQ(d->ICQ.Value, 0.0);
  EXPECT_EQ(d->Vd.Value, 0.0);
  EXPECT_EQ(d->IC, 0);
  EXPECT_NE(Store(*d).find("icq=\"0\""), std::string::npos);
}

TEST(DiodeIC, TextsByModelAndTag) {
  std::string text;
  auto d = devtest::CreateAs<CElemD>("D_D");
  d->name = "D1";
  devtest::SelectModel(*d, "Diode");
  EXPECT_EQ(d->GetICText(text), "D1.IC=off");
  d->IC = 1;
  EXPECT_EQ(d->GetICText(text), "D1.IC=on");
  devtest::SelectModel(*d, "Storage");
  d->ICQ.Value = 2e-9;
  EXPECT_EQ(d->GetICText(text), "D1.IC=on;D1.ICQ=2e-9");

  auto z = devtest::CreateAs<CElemD>("D_ZS");
  z->name = "Z";
  devtest::SelectModel(*z, "Zener");
  EXPECT_EQ(z->GetICText(text), "Z.IC=off");
  z->ICz.Index = 0;
  EXPECT_EQ(z->GetICText(text), "Z.IC=minus");
  z->ICz.Index = 2;
  EXPECT_EQ(z->GetICText(text), "Z.IC=plus");

  auto th = devtest::CreateAs<CElemD>("D_LCT");
  th->name = "T";
  devtest::SelectModel(*th, "Thyristor");
  EXPECT_EQ(th->GetICText(text), "T.IC=off");
}

TEST(DiodeTrace, BridgeHasNoVoltageOrCurrentTrace) {
  int a = 0, b = 0, row = 0;
  double value = 1;
  auto br = devtest::CreateAs<CElemD>("D_BR");
  devtest::SelectModel(*br, "Diode");
  EXPECT_FALSE(br->GetTraceInfo(0, a, b, row, value));
  auto d = devtest::CreateAs<CElemD>("D_D");
  devtest::SelectModel(*d, "Diode");
  d->pins = {3, 4};
  d->firstRow = 9;
  EXPECT_TRUE(d->GetTraceInfo(1, a, b, row, value));
  EXPECT_EQ(a, 3);
  EXPECT_EQ(b, 4);
  EXPECT_EQ(row, 9);
  EXPECT_EQ(value, 0.0);
  devtest::SelectModel(*d, "SubCir");
  EXPECT_FALSE(d->GetTraceInfo(2, a, b, row, value));
}

}  // namespace
}  // namespace tz4
