// Piecewise-linear tables: parsing, intercepts, segment search and reporting.
#include <gtest/gtest.h>

#include <cmath>

#include "base/last_error.h"
#include "components/pwl.h"
#include "test_cmp.h"

namespace tz4 {
namespace {

// The curve value of the table at x, through the segment that holds x
// (found here directly, without the stepwise moves of FindSegment).
double CurveAt(const CPWL& pwl, double x) {
  int i = 1;
  if (pwl.Count >= 2) {
    i = pwl.Count;
    for (int j = 1; j < pwl.Count; j++)
      if (pwl.X[j] > x) {
        i = j;
        break;
      }
  }
  const int index = i - 1;
  return pwl.Slope[index] * x + pwl.Intercept[index];
}

TEST(PwlText, UnmirroredTablesGetAZeroBreakpoint) {
  EXPECT_EQ(RewriteUnmirroredTable("n,2"), "2,0,2");
  EXPECT_EQ(RewriteUnmirroredTable("n,1,1,2"), "1,0,1,1,2");
  EXPECT_EQ(RewriteUnmirroredTable("n,1,-1,2,3,4"), "1,-1,2,0,2,3,4");
  EXPECT_EQ(RewriteUnmirroredTable("n,1,-1,2,0,4"), "1,-1,2,0,4");
  EXPECT_EQ(RewriteUnmirroredTable("n,1,-2,2,-1,3"), "1,-2,2,-1,3,0,3");
  EXPECT_EQ(RewriteUnmirroredTable("1,1,2"), "1,1,2");
  EXPECT_EQ(RewriteUnmirroredTable(""), "");
}

// The report of a table fault, as the component collects it.
std::string ParseReport(const std::string& text, bool reciprocal = false, const std::string& curve = "V(V)") {
  auto cmp = testing::MakeTestCmp("D1");
  cmp->pwl.Text = text;
  cmp->pwl.Curve = curve;
  cmp->pwl.Reciprocal = reciprocal;
  SetLastError("");
  cmp->pwl.Parse(cmp.get());
  std::string first = LastError();
  SetLastError("");
  cmp->pwl.Parse(cmp.get());  // a fault is reported once
  EXPECT_EQ(LastError(), "") << text;
  return first;
}

TEST(PwlConformance, FaultReports) {
  EXPECT_EQ(ParseReport("1,2"), "D1 : Wrong number of PWL parameters; ");
  EXPECT_EQ(ParseReport(""), "D1 : Wrong number of PWL parameters; ");
  EXPECT_EQ(ParseReport("1,x,2"), "D1 : PWL error: Syntax error: x; ");
  EXPECT_EQ(ParseReport("1,1,"), "D1 : PWL error: Syntax error: ; ");
  EXPECT_EQ(ParseReport("1,1,0", true, "I(V)"), "D1 : Zero value not allowed; ");
  EXPECT_EQ(ParseReport("1,1,inf"), "D1 : Infinite value not allowed; ");
  EXPECT_EQ(ParseReport("1,1,inf", false, ""), "");    // plain values may be infinite
  EXPECT_EQ(ParseReport("0", true, ""), "");           // and zero without a label
  EXPECT_EQ(ParseReport("1, 2k ,3"), "");
}

void ExpectContinuousThroughOrigin(const CPWL& pwl) {
  const int k = 1 - pwl.FirstSegment;  // index of the first breakpoint at or above 0, plus one
  EXPECT_EQ(pwl.Intercept[k - 1], 0.0);
  EXPECT_NEAR(CurveAt(pwl, 0.0), 0.0, 1e-12);
  for (int i = 1; i < pwl.Count; i++) {
    const double x = pwl.X[i];
    EXPECT_NEAR(pwl.Slope[i - 1] * x + pwl.Intercept[i - 1], pwl.Slope[i] * x + pwl.Intercept[i], 1e-12)
        << "at breakpoint " << i;
  }
}

TEST(PwlConformance, OddSymmetricTablesAreMirroredAndOdd) {
  CPWL pwl;
  pwl.Text = "1,1,2,3,0.5";
  pwl.Curve = "V(I)";
  ASSERT_TRUE(pwl.Parse(nullptr));
  ASSERT_EQ(pwl.Count, 5);
  EXPECT_EQ(pwl.FirstSegment, -2);
  EXPECT_EQ(pwl.LastSegment, 2);
  const double x[] = {0, -3, -1, 1, 3};
  const double s[] = {0.5, 2, 1, 2, 0.5};
  for (int i = 0; i < 5; i++) {
    if (i > 0) {
      EXPECT_EQ(pwl.X[i], x[i]);
    }
    EXPECT_EQ(pwl.Slope[i], s[i]);
  }
  ExpectContinuousThroughOrigin(pwl);
  for (double v : {0.5, 1.0, 2.0, 3.0, 7.0}) EXPECT_NEAR(CurveAt(pwl, -v), -CurveAt(pwl, v), 1e-12);
  EXPECT_DOUBLE_EQ(CurveAt(pwl, 3.0), 1 + 2 * 2);
  EXPECT_DOUBLE_EQ(CurveAt(pwl, 5.0), 5 + 0.5 * 2);
}

TEST(PwlConformance, FullTablesPassThroughTheOrigin) {
  CPWL pwl;
  pwl.Text = "3,-2,1,0,2,1,4";
  pwl.Curve = "I(V)";
  ASSERT_TRUE(pwl.Parse(nullptr));
  ASSERT_EQ(pwl.Count, 4);
  EXPECT_EQ(pwl.FirstSegment, -1);
  EXPECT_EQ(pwl.LastSegment, 2);
  ExpectContinuousThroughOrigin(pwl);
  EXPECT_DOUBLE_EQ(CurveAt(pwl, -3.0), -2 - 3);
  EXPECT_DOUBLE_EQ(CurveAt(pwl, 2.0), 2 + 4);
  pwl.Text = "1,-1,2,0,3,2,5";
  ASSERT_TRUE(pwl.Parse(nullptr));
  ExpectContinuousThroughOrigin(pwl);
  pwl.Text = "4,-5,2,-1,1,0,3";
  ASSERT_TRUE(pwl.Parse(nullptr));
  EXPECT_EQ(pwl.LastSegment, 1);
  ExpectContinuousThroughOrigin(pwl);
  EXPECT_DOUBLE_EQ(CurveAt(pwl, -1.0), -1.0);
  EXPECT_DOUBLE_EQ(CurveAt(pwl, -5.0), -1.0 - 8.0);
  EXPECT_DOUBLE_EQ(CurveAt(pwl, -6.0), -9.0 - 4.0);
}

TEST(PwlConformance, MovesAcrossTheOriginStopAtSegmentZero) {
  CPWL pwl;
  pwl.Text = "1,1,2,2,3";
  pwl.Curve = "V(V)";
  ASSERT_TRUE(pwl.Parse(nullptr));
  pwl.Segment = 2;
  EXPECT_FALSE(pwl.FindSegment(2.0, true));   // a point on a breakpoint is above it
  EXPECT_TRUE(pwl.FindSegment(-1.5, true));
  EXPECT_EQ(pwl.Segment, 0);
  EXPECT_TRUE(pwl.FindSegment(-1.5, false));
  EXPECT_EQ(pwl.Segment, 0);
  EXPECT_TRUE(pwl.FindSegment(-1.5, true));
  EXPECT_EQ(pwl.Segment, -1);
  EXPECT_TRUE(pwl.FindSegment(-100, true));  // same side: no stop
  EXPECT_EQ(pwl.Segment, -2);
  EXPECT_TRUE(pwl.FindSegment(0.0, true));
  EXPECT_EQ(pwl.Segment, 0);
  EXPECT_TRUE(pwl.FindSegment(std::nan(""), true));  // no breakpoint lies above a NaN
  EXPECT_EQ(pwl.Segment, 2);
}

}  // namespace
}  // namespace tz4
