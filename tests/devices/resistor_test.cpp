// Resistors: extra rows and the trace of each shape.
#include <gtest/gtest.h>

#include "components/param_ops.h"
#include "device_b_support.h"
#include "devices/resistor.h"

namespace tz4 {
namespace {

using devtest::Load;
using devtest::Store;

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
