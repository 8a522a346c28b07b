#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "eval_helpers.h"
#include "expr/formula.h"
#include "expr/numtext.h"

namespace tz4 {
namespace {

TEST(CFormula, PlainNumberIsEvaluatedOnce) {
  CFormula f;
  f.Text = "1k5*2";
  EXPECT_TRUE(f.Update(nullptr));
  EXPECT_EQ(f.Value, 3000);
  EXPECT_EQ(f.Text, "");
  EXPECT_FALSE(f.Invalid);
  EXPECT_FALSE(f.Update(nullptr));  // nothing left to run
}

TEST(CFormula, FormulaTextStaysAndValuesAreRounded) {
  testing_expr::FakeContext ctx;
  ctx.values["R1.R"] = 1.0 / 3.0;
  CFormula f;
  f.Text = "=R1.R";
  EXPECT_TRUE(f.Update(&ctx));
  EXPECT_EQ(f.Text, "=R1.R");
  EXPECT_EQ(f.Value, TextToDouble("333.333333333e-3"));  // through 12-digit text
  EXPECT_NE(f.Value, 1.0 / 3.0);
  EXPECT_FALSE(f.Update(&ctx));        // unchanged
  ctx.values["R1.R"] = 2;
  EXPECT_TRUE(f.Update(&ctx));
  EXPECT_EQ(f.Value, 2);

  CFormula pi;
  pi.Text = "3.14159265358979";
  pi.Update(nullptr);
  EXPECT_EQ(pi.Value, 3.14159265359);

  CFormula inf;
  inf.Text = "=1/0";
  EXPECT_TRUE(inf.Update(nullptr));
  EXPECT_TRUE(std::isinf(inf.Value));
}

TEST(CFormula, FailureKeepsOldState) {
  CFormula f(4.0);
  f.Text = "=nosuch*2";
  try {
    f.Update(nullptr);
    FAIL() << "no failure raised";
  } catch (const RaisedError& e) {
    EXPECT_EQ(e.Text(), "Syntax error: nosuch");
  }
  EXPECT_TRUE(f.Invalid);
  EXPECT_EQ(f.Value, 4.0);
  EXPECT_EQ(f.Text, "=nosuch*2");
}

TEST(ResolveCircularity, FindsCyclesThroughOtherFormulas) {
  testing_expr::FakeContext ctx;
  CFormula a, b, c, d;
  a.Text = "=B1.x*2";
  b.Text = "=C1.x+sin(D1.x)";
  c.Text = "=1";
  d.Text = "=A1.x";
  ctx.formulas["A1.x"] = &a;
  ctx.formulas["B1.x"] = &b;
  ctx.formulas["C1.x"] = &c;
  ctx.formulas["D1.x"] = &d;
  EXPECT_THROW(ResolveCircularity(&a, a.Text, &ctx), RaisedError);
  try {
    ResolveCircularity(&a, "=A1.x", &ctx);
  } catch (const RaisedError& e) {
    EXPECT_EQ(e.Text(), "Circular reference");
  }
  d.Text = "=2";
  EXPECT_NO_THROW(ResolveCircularity(&a, a.Text, &ctx));
  // A cycle that does not pass through the owner ends the walk.
  b.Text = "=C1.x";
  c.Text = "=B1.x";
  EXPECT_NO_THROW(ResolveCircularity(&a, a.Text, &ctx));
  EXPECT_NO_THROW(ResolveCircularity(&a, a.Text, nullptr));
  EXPECT_NO_THROW(ResolveCircularity(&a, "", &ctx));
}

}  // namespace
}  // namespace tz4
