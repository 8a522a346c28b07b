// Parameters and tables as a host sees them: the exact texts of failures and
// how they are appended, rounding through number text, enumerated and switch
// forms, circular formulas, and the reports and shapes of piecewise-linear
// tables.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "../expr/eval_helpers.h"
#include "api/last_error.h"
#include "components/param_ops.h"
#include "components/pwl.h"
#include "expr/numtext.h"
#include "test_cmp.h"

namespace tz4 {
namespace {

using testing::CTestCmp;
using testing::MakeTestCmp;
using testing_expr::FakeContext;

class ParamConformance : public ::testing::Test {
 protected:
  void SetUp() override { SetLastError(""); }

  CParam Param(const std::string& name) {
    CParam p;
    EXPECT_TRUE(cmp->FindParam(name, p)) << name;
    return p;
  }
  // SetFromExpression; returns the error text ("" on success).
  std::string Apply(const std::string& name, const std::string& text, CEvalContext* context = nullptr) {
    std::string error = "stale";
    bool ok = false;
    SetFromExpression(Param(name), error, text, context, nullptr, ok);
    EXPECT_EQ(ok, error.empty()) << error;
    return error;
  }

  std::unique_ptr<CTestCmp> cmp = MakeTestCmp("P1");
  uint32_t flags = 0;
};

TEST_F(ParamConformance, ForgivingEntryReportsTheEvaluatorsMessage) {
  EXPECT_EQ(Apply("R", "=1+nothing"), "Error : Syntax error: nothing");
  EXPECT_EQ(Apply("K", " 2*nothing "), "Error : Syntax error: nothing");
  EXPECT_EQ(cmp->K.Text, "2*nothing");  // trimmed, and kept to be mended
  EXPECT_EQ(Apply("Mode", "Medium"), "Error : Syntax error: Medium");
  EXPECT_EQ(cmp->Mode.Index, 0);
  EXPECT_EQ(Apply("Active", "sin(1,2)"), "Error : Function 'sin' : wrong number of parameters");
  EXPECT_EQ(Apply("IC", "1+"), "");  // an operator with nothing behind it is no failure
  EXPECT_EQ(cmp->Ic, "1");
  EXPECT_EQ(Apply("IC", "V(P1)"), "Error : Function 'V' not allowed");
  EXPECT_EQ(cmp->Ic, "V(P1)");
  EXPECT_EQ(Apply("Code", "int x; x = 1;"), "");
}

TEST_F(ParamConformance, StrictEntriesAppendTheirMessages) {
  SetLastError("TZ4_SetText: ");
  EXPECT_EQ(SetText(Param("R"), "=2*nothing", nullptr, &flags), -1);
  EXPECT_EQ(LastError(), "TZ4_SetText: Syntax error: nothing");
  EXPECT_EQ(cmp->R.Text, "=2*nothing");
  EXPECT_TRUE(cmp->R.Invalid);
  SetLastError("TZ4_SetText: ");
  EXPECT_EQ(SetText(Param("R"), "1+1", nullptr, &flags), -1);
  EXPECT_EQ(LastError(), "TZ4_SetText: Syntax error: 1+1");
  SetLastError("TZ4_GetValue: ");
  double v = -1;
  EXPECT_EQ(GetValue(Param("IC"), &v), -1);
  EXPECT_EQ(LastError(), "TZ4_GetValue: no IC");
  EXPECT_EQ(v, -1);
  SetLastError("TZ4_SetText: ");
  EXPECT_EQ(SetText(Param("Mode"), "fast", nullptr, &flags), -1);
  EXPECT_EQ(LastError(), "TZ4_SetText: text fast not found");
  EXPECT_EQ(flags, 0u);
}

TEST_F(ParamConformance, StrictNumberTextTakesSuffixesButNoPrefixes) {
  EXPECT_EQ(SetText(Param("R"), "2.2u", nullptr, &flags), 0);
  EXPECT_EQ(cmp->R.Value, 2.2e-6);
  EXPECT_EQ(SetText(Param("R"), "0x10", nullptr, &flags), 0);
  EXPECT_EQ(cmp->R.Value, 0.1);
  EXPECT_EQ(SetText(Param("R"), "1MEG", nullptr, &flags), 0);
  EXPECT_EQ(cmp->R.Value, 1e6);
  EXPECT_EQ(SetText(Param("R"), "3.14159265358979", nullptr, &flags), 0);
  EXPECT_EQ(cmp->R.Value, 3.14159265358979);  // strict text keeps every digit
  EXPECT_EQ(SetText(Param("R"), "-inf", nullptr, &flags), 0);
  EXPECT_EQ(cmp->R.Value, -std::numeric_limits<double>::infinity());
  char buffer[8];
  EXPECT_EQ(GetText(Param("R"), buffer, sizeof buffer), 5);
  EXPECT_STREQ(buffer, "-inf");
}

TEST_F(ParamConformance, ValuesPassThroughTwelveDigitText) {
  EXPECT_EQ(Apply("R", "1/3"), "");
  EXPECT_EQ(cmp->R.Value, TextToDouble("333.333333333e-3"));
  EXPECT_EQ(Apply("R", "=2/3"), "");
  EXPECT_EQ(cmp->R.Value, TextToDouble("666.666666667e-3"));
  EXPECT_EQ(Apply("IC", " 1/3 "), "");
  EXPECT_EQ(cmp->Ic, "333.333333333e-3");
  EXPECT_EQ(Apply("IC", "  "), "");
  EXPECT_EQ(cmp->Ic, "");
  EXPECT_EQ(SetValue(Param("R"), 1.0 / 3.0, &flags), 0);
  EXPECT_EQ(cmp->R.Value, 1.0 / 3.0);
  char buffer[32];
  EXPECT_EQ(GetText(Param("R"), buffer, sizeof buffer), 17);
  EXPECT_STREQ(buffer, "333.333333333e-3");
  EXPECT_EQ(GetDisplayText(Param("R")), "333.333333333e-3");
  // Exactly the text's length: the text less its last character.
  EXPECT_EQ(GetText(Param("R"), buffer, 16), 17);
  EXPECT_STREQ(buffer, "333.333333333e-");
  EXPECT_EQ(GetText(Param("R"), buffer, 1), 17);
  EXPECT_STREQ(buffer, "");
}

TEST_F(ParamConformance, EnumeratedAndSwitchForms) {
  EXPECT_EQ(Apply("Mode", "SLOW"), "");
  EXPECT_EQ(cmp->Mode.Index, 1);
  EXPECT_EQ(Apply("Mode", "2.9"), "");
  EXPECT_EQ(cmp->Mode.Index, 2);
  EXPECT_EQ(Apply("Mode", "3"), "");  // three names: index 3 does not exist
  EXPECT_EQ(cmp->Mode.Index, 0);
  EXPECT_EQ(Apply("Mode", "2"), "");
  EXPECT_EQ(Apply("Mode", "-1"), "");
  EXPECT_EQ(cmp->Mode.Index, 0);
  EXPECT_EQ(Apply("Out", "high"), "");
  EXPECT_EQ(cmp->Level, 0);
  EXPECT_EQ(Apply("Out", "LOW"), "");
  EXPECT_EQ(cmp->Level, 1);
  EXPECT_EQ(Apply("Out", "0.99"), "");
  EXPECT_EQ(cmp->Level, 0);
  EXPECT_EQ(Apply("Cycle", "On"), "");  // all four words serve both kinds
  EXPECT_EQ(cmp->Cycle, 1);
  EXPECT_EQ(Apply("Active", "no"), "");
  EXPECT_EQ(cmp->Active, 0);
  EXPECT_EQ(SetValue(Param("Out"), 0.95, &flags), 0);
  EXPECT_EQ(cmp->Level, 1);
  EXPECT_EQ(flags, kParamsChangedFlag);
  EXPECT_EQ(GetDisplayText(Param("Out")), "High");
  flags = 0;
  EXPECT_EQ(SetValue(Param("Mode"), -0.5, &flags), 0);
  EXPECT_EQ(cmp->Mode.Index, 0);
  EXPECT_EQ(flags, 0u);
  EXPECT_EQ(SetText(Param("Out"), "Low", nullptr, &flags), 0);
  EXPECT_EQ(cmp->Level, 0);
  EXPECT_EQ(GetNumber(Param("Out")), 0.0);
}

TEST_F(ParamConformance, FormulasResolveThroughTheContextAndRefuseCycles) {
  FakeContext ctx;
  ctx.values["Q1.R"] = 50;
  EXPECT_EQ(Apply("R", "=Q1.R*2", &ctx), "");
  EXPECT_EQ(cmp->R.Value, 100);
  EXPECT_EQ(cmp->R.Text, "=Q1.R*2");
  EXPECT_EQ(Apply("K", "Q1.R+1", &ctx), "");
  EXPECT_EQ(cmp->K.Value, 51);
  EXPECT_EQ(cmp->K.Text, "");
  ctx.formulas["P1.R"] = &cmp->R;
  ctx.formulas["P1.K"] = &cmp->K;
  cmp->K.Text = "=P1.R+1";
  SetLastError("TZ4_SetText: ");
  EXPECT_EQ(SetText(Param("R"), "=P1.K*2", &ctx, &flags), -1);
  EXPECT_EQ(LastError(), "TZ4_SetText: Circular reference");
  EXPECT_TRUE(cmp->R.Invalid);
  EXPECT_EQ(Apply("R", "=P1.K*2", &ctx), "Error : Circular reference");
  EXPECT_EQ(Apply("R", "=P1.R", &ctx), "Error : Circular reference");
}

// The report of a table fault, as the component collects it.
std::string ParseReport(const std::string& text, bool reciprocal = false, const std::string& curve = "V(V)") {
  auto cmp = MakeTestCmp("D1");
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

double CurveAt(const CPWL& pwl, double x) {
  int i = pwl.Count;
  for (int j = 1; j < pwl.Count; j++)
    if (pwl.X[j] > x) {
      i = j;
      break;
    }
  if (pwl.Count < 2) i = 1;
  return pwl.Slope[i - 1] * x + pwl.Intercept[i - 1];
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
