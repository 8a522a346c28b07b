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

TEST(Functions, Trigonometry) {
  EXPECT_EQ(D("sin(180)"), 0.0);
  EXPECT_EQ(D("sin(-360)"), 0.0);
  EXPECT_EQ(D("cos(90)"), 0.0);
  EXPECT_EQ(D("cos(270)"), 0.0);
  EXPECT_EQ(D("tan(180)"), 0.0);
  EXPECT_NEAR(D("sin(30)"), 0.5, 1e-11);
  EXPECT_NEAR(D("cos(60)"), 0.5, 1e-11);
  EXPECT_NEAR(D("tg(45)"), 1.0, 1e-11);
  EXPECT_NEAR(D("asin(1)"), 90, 1e-9);
  EXPECT_NEAR(D("acos(0)"), 90, 1e-9);
  EXPECT_NEAR(D("atan(1)"), 45, 1e-9);
  EXPECT_NEAR(D("atan2(1)"), 45, 1e-9);
  EXPECT_NEAR(D("atan2(1,-1)"), 135, 1e-9);
  EXPECT_EQ(D("atan2(0,0)"), 0.0);
  EXPECT_NEAR(D("phase(1j)"), 90, 1e-9);
  EXPECT_EQ(D("phase(0)"), 0.0);
  EXPECT_NEAR(D("phase(-1)"), 180, 1e-9);
  EXPECT_EQ(EvalError("sin(1j)"), "Function 'sin' : complex argument not allowed");
  EXPECT_EQ(EvalError("sin(1,2)"), "Function 'sin' : wrong number of parameters");
  EXPECT_EQ(EvalError("atan2(1j,1)"), "Function 'atan2' : complex arguments not allowed");
  EXPECT_EQ(EvalError("tg(1,1)"), "Function 'tan' : wrong number of parameters");
}

TEST(Functions, RootsPowersLogs) {
  EXPECT_EQ(D("sqr(-4)"), -2);
  EXPECT_EQ(D("sqr(9)"), 3);
  EXPECT_EQ(EvalError("sqr(1j)"), "Function 'sqr' : complex argument not allowed");
  EXPECT_EQ(D("sq(3)"), 9);
  EXPECT_EQ(D("pwr(-2,3)"), -8);
  EXPECT_EQ(D("pwr(4,0.5)"), 2);
  EXPECT_EQ(D("pow(-2,3)"), -8);
  EXPECT_EQ(D("pow(0,0)"), 0);
  EXPECT_EQ(D("pow(2,10)"), 1024);
  EXPECT_EQ(EvalError("pow(2,1j)"), "Function 'pow' : complex power not allowed");
  EXPECT_EQ(EvalError("pow(2)"), "Function 'pow' : wrong number of parameters");
  EXPECT_EQ(D("sqrt(16)"), 4);
  EXPECT_TRUE(std::isnan(D("sqrt(-4)")));
  TValue v = Eval("sqrt(-4+0j)");
  EXPECT_EQ(v.Type, VT_COMPLEX);
  EXPECT_EQ(v.Dbl, 0);
  EXPECT_EQ(v.Im, 2);
  v = Eval("sqrt(2j)");  // 1+1j
  EXPECT_NEAR(v.Dbl, 1, 1e-11);
  EXPECT_NEAR(v.Im, 1, 1e-11);
  v = Eval("sq(1+2j)");
  EXPECT_EQ(v.Dbl, -3);
  EXPECT_EQ(v.Im, 4);
  v = Eval("pow(1j,2)");
  EXPECT_NEAR(v.Dbl, -1, 1e-11);
  EXPECT_NEAR(v.Im, 0.0, 1e-15);
  v = Eval("pow(-1+0j,0.5)");
  EXPECT_NEAR(v.Dbl, 0.0, 1e-15);
  EXPECT_NEAR(v.Im, 1, 1e-15);
  v = Eval("pow(0j,2)");
  EXPECT_EQ(v.Type, VT_COMPLEX);
  EXPECT_EQ(v.Dbl, 0);
  EXPECT_NEAR(D("exp(1)"), std::exp(1.0), 1e-15);
  v = Eval("exp(0j)");
  EXPECT_EQ(v.Type, VT_COMPLEX);
  EXPECT_EQ(v.Dbl, 1);
  EXPECT_EQ(v.Im, 0);
  v = Eval("exp(1j*pi/2)");  // the real part snaps to 0 only within 1e-15 of the 12-digit pi
  EXPECT_NEAR(v.Im, 1, 1e-11);
  EXPECT_NEAR(D("ln(exp(2))"), 2, 1e-15);
  EXPECT_NEAR(D("log(8,2)"), 3, 1e-15);
  EXPECT_EQ(D("log10(1000)"), 3);
  EXPECT_EQ(D("lg(0.01)"), -2);
  EXPECT_EQ(D("log2(8)"), 3);
  EXPECT_EQ(D("lb(0.5)"), -1);
  v = Eval("ln(-1+0j)");
  EXPECT_NEAR(v.Im, 3.141592653589793, 1e-15);
  v = Eval("log10(-100+0j)");
  EXPECT_NEAR(v.Dbl, 2, 1e-15);
  EXPECT_EQ(EvalError("log(2,1j)"), "Function 'log' : complex base not allowed");
  EXPECT_EQ(EvalError("log10(1,2)"), "Function 'log10' : wrong number of parameters");
  EXPECT_NEAR(D("db(10)"), 20, 1e-12);
  EXPECT_NEAR(D("dB(-1,10)"), -20, 1e-12);
}

TEST(Functions, Rounding) {
  EXPECT_EQ(D("round(2.5)"), 3);
  EXPECT_EQ(D("round(-2.5)"), -2);
  EXPECT_EQ(D("round(7.3, 0.5)"), 7.5);
  EXPECT_EQ(D("round(7.3, 0)"), 7.3);
  EXPECT_EQ(D("floor(-1.5)"), -2);
  EXPECT_EQ(D("ceil(1.2)"), 2);
  EXPECT_EQ(Eval("sign(-3)").Type, VT_INT);
  EXPECT_EQ(Eval("sign(-3)").I32, -1);
  EXPECT_EQ(Eval("sign(0)").I32, 0);
  EXPECT_EQ(D("limit(5,0,3)"), 3);
  EXPECT_EQ(D("lim(-5,0,3)"), 0);
  EXPECT_EQ(D("limit(2,0,3)"), 2);
  EXPECT_EQ(EvalError("limit(1,2)"), "Function 'limit' : wrong number of parameters");
}

TEST(Functions, MagnitudesAndAggregates) {
  EXPECT_EQ(D("abs(3,4)"), 7);
  EXPECT_EQ(D("mag(3+4j)"), 5);
  EXPECT_EQ(Eval("mag(3+4j)").Type, VT_DOUBLE);
  EXPECT_EQ(Eval("abs(-3)").Type, VT_INT);
  EXPECT_EQ(Eval("abs(-3)").I32, 3);
  EXPECT_EQ(Eval("abs(-3i64)").Type, VT_INT64);
  EXPECT_EQ(Eval("abs(true)").Type, VT_INT);
  EXPECT_EQ(D("abs(3+4j, -1)"), 6);

  TValue v = Eval("min(2, 3.5)");
  EXPECT_EQ(v.Type, VT_DOUBLE);
  EXPECT_EQ(v.Dbl, 2);
  v = Eval("max(1, true)");
  EXPECT_EQ(v.Type, VT_INT);
  EXPECT_EQ(v.I32, 1);
  EXPECT_EQ(Eval("max(3, 9i64, 4)").I64, 9);
  EXPECT_EQ(D("min(5,-1,3)"), -1);
  EXPECT_EQ(EvalError("min(1j, 2)"), "Functions 'min' and 'max' : complex arguments not allowed");
  EXPECT_EQ(Eval("max()").I32, 0);  // empty parentheses: one argument 0

  v = Eval("sum(1, 2, 3)");
  EXPECT_EQ(v.Type, VT_DOUBLE);
  EXPECT_EQ(v.Dbl, 6);
  EXPECT_EQ(D("mean(1, 2, 3, 4)"), 2.5);
  EXPECT_EQ(D("average(2, 4)"), 3);
  v = Eval("sum(1, 2j)");
  EXPECT_EQ(v.Type, VT_COMPLEX);
  EXPECT_EQ(v.Im, 2);

  EXPECT_EQ(D("par(2, 2)"), 1);
  EXPECT_NEAR(D("par(3, 6, 2)"), 1, 1e-15);
  EXPECT_EQ(D("par(5)"), 5);
  v = Eval("par(1j, 1j)");
  EXPECT_NEAR(v.Dbl, 0, 1e-15);
  EXPECT_NEAR(v.Im, 0.5, 1e-15);

  EXPECT_EQ(D("re(3+4j)"), 3);
  EXPECT_EQ(D("im(3+4j)"), 4);
  EXPECT_EQ(D("im(3)"), 0);

  CVarList vars;
  TVariable* bits = vars.Add("f", VT_BOOL, 3);
  bits->Values[1] = TValue::MakeBool(true);
  EXPECT_FALSE(Eval("min(f)", nullptr, &vars).B);
  EXPECT_TRUE(Eval("max(f)", nullptr, &vars).B);
  TVariable* c = vars.Add("c", VT_COMPLEX, 2);
  c->Values[0] = TValue::MakeComplex(1, 2);
  c->Values[1] = TValue::MakeComplex(3, 4);
  v = Eval("mean(c)", nullptr, &vars);
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
  EXPECT_EQ(EvalError("gauss(1)"), "Function 'gauss' : wrong number of parameters");

  testing_expr::FakeContext ctx;
  ctx.threshold = 1.0;
  EXPECT_TRUE(Eval("islow(0.5)", &ctx).B);
  EXPECT_FALSE(Eval("ishigh(0.5)", &ctx).B);
  EXPECT_TRUE(Eval("ishigh(1)", &ctx).B);
  EXPECT_TRUE(Eval("islow(2)").B);  // document default threshold 2.5
}

TEST(Functions, NamesIgnoreCase) {
  EXPECT_EQ(D("SQRT(4)+Max(1,2)"), 4);
  EXPECT_EQ(D("sqrt (4)"), 2);
}

}  // namespace
}  // namespace tz4
