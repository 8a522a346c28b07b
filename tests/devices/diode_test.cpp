// Diodes and thyristors: the charge clean-up on load, the IC texts, traces.
#include <gtest/gtest.h>

#include "components/param_ops.h"
#include "device_b_support.h"
#include "devices/diode.h"

namespace tz4 {
namespace {

using devtest::Load;
using devtest::Store;

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
