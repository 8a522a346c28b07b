// The evaluator's functions: exact zeros of the trigonometry, roots, powers
// and logarithms with their snapped complex results, rounding, aggregates,
// result types, random values and logic levels.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

#include "eval_helpers.h"

namespace tz4 {
namespace {

using testing_expr::D;
using testing_expr::Eval;
using testing_expr::EvalError;
using testing_expr::ExpectErrors;
using testing_expr::ExpectTyped;
using testing_expr::ExpectValues;

const double kDeg = 180 / 3.14159265358;  // pi has 12 digits

TEST(Functions, RealResults) {
  ExpectValues({
      // Trigonometry in degrees, exactly zero at the multiples.
      {"sin(180)", 0}, {"sin(-360)", 0}, {"sin(-540)", 0}, {"sin(0)", 0}, {"sin(1e-16)", 0},
      {"cos(90)", 0}, {"cos(-90)", 0}, {"cos(270)", 0}, {"tan(180)", 0}, {"tg(360)", 0},
      {"sin(30)", 0.5, 1e-11}, {"cos(60)", 0.5, 1e-11}, {"tg(45)", 1, 1e-11},
      {"asin(1)", std::asin(1.0) * kDeg}, {"acos(0)", std::acos(0.0) * kDeg},
      {"atan(1)", std::atan(1.0) * kDeg}, {"atan2(1)", std::atan2(1.0, 1.0) * kDeg},
      {"atan2(1,-1)", std::atan2(1.0, -1.0) * kDeg}, {"atan2(0,0)", 0},
      {"phase(1j)", std::atan2(1.0, 0.0) * kDeg}, {"phase(0)", 0}, {"phase(-1)", 180, 1e-9},
      // Roots, powers, logarithms.
      {"sqr(-4)", -2}, {"sqr(9)", 3}, {"sq(3)", 9}, {"pwr(-2,3)", -8}, {"pwr(2,3)", 8},
      {"pwr(4,0.5)", 2}, {"pow(-2,3)", -8}, {"pow(0,0)", 0}, {"pow(0,-1)", 0}, {"pow(2,10)", 1024},
      {"sqrt(16)", 4}, {"exp(1)", std::exp(1.0), 1e-15}, {"ln(exp(2))", 2, 1e-15}, {"log(8,2)", 3},
      {"log10(1000)", 3}, {"lg(0.01)", -2}, {"log2(8)", 3}, {"lb(8)", 3}, {"lb(0.5)", -1},
      {"db(10)", 20, 1e-12}, {"dB(-1,10)", -20, 1e-12}, {"db(1,-10)", -20, 1e-12},
      // Rounding and limits; the low bound is tested first.
      {"round(2.5)", 3}, {"round(-2.5)", -2}, {"round(7.3, 0.5)", 7.5}, {"round(7.3, 0)", 7.3},
      {"round(7.3, -1)", 7.3}, {"floor(-1.5)", -2}, {"ceil(1.2)", 2}, {"limit(5,0,3)", 3},
      {"lim(-5,0,3)", 0}, {"limit(2,0,3)", 2}, {"limit(2,3,0)", 3}, {"gauss(4, 0)", 4},
      // Magnitudes and aggregates.
      {"abs(3,4)", 7}, {"abs(3,-4j)", 7}, {"abs(3+4j, -1)", 6}, {"mag(3+4j)", 5},
      {"min(5,-1,3)", -1}, {"mean(1, 2, 3, 4)", 2.5}, {"average(2, 4)", 3}, {"par(2, 2)", 1},
      {"par(6, 3, 2)", 1}, {"par(5)", 5}, {"re(3+4j)", 3}, {"im(3+4j)", 4}, {"im(3-4j)", -4},
      {"im(3)", 0},
      // Names ignore case and may stand apart from their parentheses.
      {"SQRT(4)+Max(1,2)", 4}, {"sqrt (4)", 2},
  });
  EXPECT_TRUE(std::isnan(D("sqrt(-4)")));
}

TEST(Functions, ComplexResultsAreSnapped) {
  struct Case {
    const char* text;
    double re, im;
    double tolerance;  // 0: exact parts
  };
  const double nan = std::nan("");  // part not checked
  const Case cases[] = {
      {"sqrt(-4+0j)", 0, 2, 0}, {"sqrt(4+0j)", 2, 0, 0}, {"sqrt(2j)", 1, 1, 1e-11},
      {"exp(0j)", 1, 0, 0},
      {"exp(2+0j)", std::exp(2.0), 0, 0},  // angle 0: the sine is not taken
      {"exp(1j*pi/2)", nan, 1, 1e-11}, {"pow(0j, 3)", 0, 0, 0}, {"pow(2+0j, 2)", 4, 0, 0},
      {"pow(1j,2)", -1, 0, 1e-11}, {"pow(-1+0j,0.5)", 0, 1, 1e-15}, {"sq(1+2j)", -3, 4, 0},
      {"log(-1+0j)", 0, std::atan2(0.0, -1.0), 0}, {"ln(-1+0j)", nan, 3.141592653589793, 1e-15},
      {"lg(100j)", 2, nan, 0}, {"log10(-100+0j)", 2, nan, 1e-15}, {"sum(1, 2j)", 1, 2, 0},
      {"average(1j, 3)", 1.5, 0.5, 0}, {"par(1j, 1j)", 0, 0.5, 1e-15},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    TValue v = Eval(c.text);
    ASSERT_EQ(v.Type, VT_COMPLEX);
    if (c.tolerance > 0) {
      if (!std::isnan(c.re)) {
        EXPECT_NEAR(v.Dbl, c.re, c.tolerance);
      }
      if (!std::isnan(c.im)) {
        EXPECT_NEAR(v.Im, c.im, c.tolerance);
      }
    } else {
      if (!std::isnan(c.re)) {
        EXPECT_DOUBLE_EQ(v.Dbl, c.re);
      }
      if (!std::isnan(c.im)) {
        EXPECT_DOUBLE_EQ(v.Im, c.im);
      }
    }
  }
}

TEST(Functions, ResultTypes) {
  ExpectTyped({
      {"sign(-3)", VT_INT, -1}, {"sign(0)", VT_INT, 0}, {"sign(-0.5)", VT_INT, -1},
      {"mag(3+4j)", VT_DOUBLE, 5}, {"abs(-3)", VT_INT, 3}, {"abs(-3i64)", VT_INT64, 3},
      {"abs(true)", VT_INT, 1}, {"min(2, 3.5)", VT_DOUBLE, 2}, {"max(1, true)", VT_INT, 1},
      {"max(true, false)", VT_BOOL, 1}, {"min(5i64, 7)", VT_INT64, 5},
      {"max(3, 9i64, 4)", VT_INT64, 9},
      {"max()", VT_INT, 0},  // empty parentheses: one argument 0
      {"sum(1, 2, 3)", VT_DOUBLE, 6}, {"mean(1, 2)", VT_DOUBLE, 1.5}, {"re(3)", VT_DOUBLE, 3},
  });
}

TEST(Functions, Messages) {
  ExpectErrors({
      {"sin(1j)", "Function 'sin' : complex argument not allowed"},
      {"tg(1j)", "Function 'tan' : complex argument not allowed"},
      {"sin(1,2)", "Function 'sin' : wrong number of parameters"},
      {"cos(1,2)", "Function 'cos' : wrong number of parameters"},
      {"tg(1,1)", "Function 'tan' : wrong number of parameters"},
      {"atan2(1j,1)", "Function 'atan2' : complex arguments not allowed"},
      {"sqr(1j)", "Function 'sqr' : complex argument not allowed"},
      {"pwr(1j,2)", "Function 'pwr' : complex arguments not allowed"},
      {"pow(2, 1j)", "Function 'pow' : complex power not allowed"},
      {"pow(2)", "Function 'pow' : wrong number of parameters"},
      {"pow()", "Function 'pow' : wrong number of parameters"},
      {"log(2, 1j)", "Function 'log' : complex base not allowed"},
      {"log10(1,2)", "Function 'log10' : wrong number of parameters"},
      {"round(1,2,3)", "Function 'round' : wrong number of parameters"},
      {"limit(1, 2)", "Function 'limit' : wrong number of parameters"},
      {"lim(1j, 2, 3)", "Function 'limit' : complex arguments not allowed"},
      {"min(1j, 2)", "Functions 'min' and 'max' : complex arguments not allowed"},
      {"max(1j)", "Functions 'min' and 'max' : complex arguments not allowed"},
      {"gauss(1)", "Function 'gauss' : wrong number of parameters"},
      {"rand(1, 2)", "Function 'random' : wrong number of parameters"},
  });
}

TEST(Functions, AggregatesOverArrays) {
  CVarList vars;
  TVariable* bits = vars.Add("f", VT_BOOL, 3);
  bits->Values[1] = TValue::MakeBool(true);
  EXPECT_FALSE(Eval("min(f)", nullptr, &vars).B);
  EXPECT_TRUE(Eval("max(f)", nullptr, &vars).B);
  TVariable* c = vars.Add("c", VT_COMPLEX, 2);
  c->Values[0] = TValue::MakeComplex(1, 2);
  c->Values[1] = TValue::MakeComplex(3, 4);
  TValue v = Eval("mean(c)", nullptr, &vars);
  EXPECT_EQ(v.Dbl, 2);
  EXPECT_EQ(v.Im, 3);
  EXPECT_EQ(EvalError("max(c)", nullptr, &vars),
            "Functions 'min' and 'max' : complex arguments not allowed");
  EXPECT_EQ(EvalError("sum(c, 1)", nullptr, &vars),
            "Functions 'mean' and 'sum' : wrong number of parameters");
}

TEST(Functions, RandomAndLogicLevels) {
  std::srand(7);
  for (int i = 0; i < 200; i++) {
    double r = D("random(10)");
    EXPECT_GE(r, 0);
    EXPECT_LE(r, 10);
  }
  std::srand(7);
  double a = D("rand(1)");
  std::srand(7);
  EXPECT_EQ(D("rand(1)"), a);  // seeded by srand
  double sum = 0;
  for (int i = 0; i < 2000; i++) sum += D("gauss(5, 0.1)");
  EXPECT_NEAR(sum / 2000, 5, 0.02);

  testing_expr::FakeContext ctx;
  ctx.threshold = 1.0;
  EXPECT_TRUE(Eval("islow(0.5)", &ctx).B);
  EXPECT_FALSE(Eval("ishigh(0.5)", &ctx).B);
  EXPECT_TRUE(Eval("ishigh(1)", &ctx).B);
  EXPECT_TRUE(Eval("islow(2)").B);  // document default threshold 2.5
}

}  // namespace
}  // namespace tz4
