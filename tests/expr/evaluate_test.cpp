#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "eval_helpers.h"
#include "expr/numtext.h"

namespace tz4 {
namespace {

using testing_expr::D;
using testing_expr::Eval;
using testing_expr::EvalError;
using testing_expr::ExpectErrors;
using testing_expr::ExpectTyped;
using testing_expr::ExpectValues;

const double kInf = std::numeric_limits<double>::infinity();

TEST(Evaluate, OperatorsAndGrouping) {
  ExpectValues({
      {"", 0}, {"2+3*4", 14}, {"(2+3)*4", 20}, {"2*(-3)", -6}, {"8-3-2", 3}, {"64/4/2", 8},
      {"=1+2", 3}, {"  = 1 + 2 ;", 3}, {"(1", 1}, {"((2+3)*(4-1", 15}, {"1|2^3&1", 3},
      {"2^3", 1},  // exclusive or, not power
      {"-2*3", -6}, {"+3", 3}, {"(+3)", 3},
      {"!0+1", 2},  // unary binds tighter than "+"
      {"2*3%4", 2}, {"1==1&&2>1", 1}, {"1+2==3", 1},
      {"1<2==1", 1},  // (1<2)==1
      {"1|0&&0", 0},  // "|" binds tighter than "&&"
      {"2==-2", 0}, {"2>-3", 1}, {"max(-1,-2)", -1}, {"1e3+1k", 2000},
      {"0x10+0b11+017", 16 + 3 + 15}, {"2.5e-1*4", 1}, {"7/2", 3.5},
      {"1+1e-13-1", 0},  // cancellation snaps to zero
      {"1-1", 0},
      // Infinities and divisions by zero in formulas.
      {"inf", kInf}, {"INF", kInf}, {"-inf", -kInf}, {"-inf*2", -kInf}, {"1/0", kInf},
      {"-1/0", kInf}, {"0/0", kInf}, {"5/inf", 0}, {"1e999999", kInf}, {"1e308*10", kInf},
      // The conditional: left-associative, a missing colon repeats the top.
      {"1?2:3", 2}, {"0?2:3", 3}, {"0?1/0:3", 3}, {"1?(0?2:3):4", 3}, {"0?(1?2:3):4", 4},
      {"0?1:(1?2:3)", 2}, {"1?2:(0?3:4)", 2}, {"1 ? 5+1 : 7*2", 6}, {"0 ? 5+1 : 7*2", 14},
      {"1?0:5?7:8", 8},  // (1?0:5)?7:8
      {"1?2:0?3:4", 3}, {"0?2:0?3:4", 4}, {"1?2", 2}, {"0?2", 2},
      {"1?2:3:4", 2},  // both colons wait for the "?" entry
      {"1?-1:-2", -1}, {"2>1 ? 10 : 20", 10}, {"max(1?4:5, 0?6:7)", 7},
      {"max(1:2)", 2},  // a colon with no "?" below passes as a separator
      {"max(1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25)", 25},
      {"min(max(1,2),max(3,4),5)", 2},
      {"sin()", 0},  // empty parentheses are one argument 0
  });
  EXPECT_EQ(Eval("").Type, VT_DOUBLE);
  EXPECT_TRUE(std::isnan(D("sqrt(-1)")));
  EXPECT_TRUE(std::isnan(D("inf-inf")));
}

TEST(Evaluate, SyntaxMessages) {
  CVarList vars;
  vars.Add("a", VT_DOUBLE);
  vars.Add("b", VT_DOUBLE)->Values[0] = TValue::MakeDouble(2);
  ExpectErrors({
      {"2*-3", "Syntax error"}, {"2+-3", "Syntax error"}, {"2/+3", "Syntax error"},
      {"a+-b", "Syntax error"}, {"- -1", "Syntax error"}, {"!!1", "Syntax error"},
      {"-!1", "Syntax error"}, {"a=1", "Operator '=' not allowed"}, {"1 2", "Unknown operator '2'"},
      {"2(3)", "Unknown operator '('"}, {"1!2", "Unknown operator '!'"},
      {"1$", "Unknown operator '$'"}, {"1,2", "Syntax error"}, {"1:2", "Expression error in '1:2'"},
      {"2:3", "Expression error in '2:3'"}, {":", "Syntax error"},
      {"foo(1)", "Unknown function 'foo'"}, {"toolongname(1)", "Unknown function 'toolongname'"},
      {"x", "Syntax error: x"}, {"R1.R", "Syntax error: R1.R"}, {"q[1]", "Unknown array 'q'"},
      {"*", "Syntax error"}, {"1)", "Syntax error"}, {"\x01", "Syntax error"},
      {"3..4", "Syntax error: 3..4"},
      {"1?2:nosuch", "Syntax error: nosuch"},  // the untaken branch is scanned too
      {"1+2<<1", "Operator '<<' : floating point arguments not allowed"},  // ints add as doubles
      {"1.5|1", "Operator '|' : floating point arguments not allowed"},
      {"1&1.0", "Operator '&' : floating point arguments not allowed"},
      {"1.0>>1", "Operator '>>' : floating point arguments not allowed"},
      {"1^2j", "Operator '^' : complex arguments not allowed"},
      {"1<<1j", "Operator '<<' : complex arguments not allowed"},
      {"~1.5", "Operator '~' : floating point argument not allowed"},
      {"~1j", "Operator '~' : complex argument not allowed"},
      {"1j%2", "Function 'fmod' : complex arguments not allowed"},
      {"1j < 2", "Operator '<': complex arguments not allowed"},
      {"1j <= 2", "Operator '<=': complex arguments not allowed"},
      {"1j >= 2", "Operator '>=': complex arguments not allowed"},
      {"1j > 2", "Operator '>': complex arguments not allowed"},
      {"int(1,2)", "Function 'int' : wrong number of parameters"},
      {"float(1,2)", "Function 'double' : wrong number of parameters"},
      {"bool(1,2)", "Function 'bool' : wrong number of parameters"},
  },
               nullptr, &vars);
  EXPECT_TRUE(Eval("a==-b", nullptr, &vars).Type == VT_BOOL);
}

TEST(Evaluate, ResultTypesOfOperatorsAndCasts) {
  ExpectTyped({
      {"7%2", VT_DOUBLE, 1}, {"true+1", VT_INT, 2}, {"-true", VT_INT, -1}, {"5i64*3", VT_INT64, 15},
      {"6&3", VT_INT, 2}, {"6|3", VT_INT, 7}, {"6^3", VT_INT, 5}, {"1<<33", VT_INT, 2},
      {"1i64<<33", VT_INT64, static_cast<double>(1LL << 33)}, {"-8>>1", VT_INT, -4},
      {"~5", VT_INT, -6}, {"~5i64", VT_INT64, -6}, {"10^400", VT_INT, 410},
      {"1+1e-13 == 1", VT_BOOL, 1}, {"1 == 1.0", VT_BOOL, 1}, {"2 != 3", VT_BOOL, 1},
      {"2 <= 2", VT_BOOL, 1}, {"2 < 2", VT_BOOL, 0}, {"3 >= 2.5", VT_BOOL, 1},
      {"3 > 2", VT_BOOL, 1}, {"1+2j == 1+2j", VT_BOOL, 1}, {"1+2j != 1", VT_BOOL, 1},
      {"1 && 2", VT_BOOL, 1}, {"0 || 0.0", VT_BOOL, 0}, {"!0", VT_BOOL, 1},
      {"2==-(-2)", VT_BOOL, 1}, {"(int)3.7", VT_INT, 3}, {"(int64)2", VT_INT64, 2},
      {"(double)2", VT_DOUBLE, 2}, {"(float)2", VT_DOUBLE, 2}, {"(complex)2", VT_COMPLEX, 2},
      {"(bool)2", VT_BOOL, 1}, {"int(2.9)", VT_INT, 2}, {"float(2)", VT_DOUBLE, 2},
      {"2*(int)1.5", VT_DOUBLE, 2}, {"true", VT_BOOL, 1}, {"False", VT_BOOL, 0},
  });
  // Integer mode: C division, wrap-around, and its own failures.
  ExpectTyped({{"7/2", VT_INT, 3},
               {"7%2", VT_DOUBLE, 1}, {"1+2<<1", VT_INT, 6},
               {"2147483647+1", VT_INT, std::numeric_limits<int32_t>::min()}},
              nullptr, true);
  ExpectErrors({{"1/0", "Division by zero"},
                {"-2147483648/-1", "Syntax error"},
                {"(-2147483648)/(-1)", "Division by zero"}},
               nullptr, nullptr, nullptr, true);
  TValue v = Eval("-(0j+2j)");
  EXPECT_EQ(v.Type, VT_COMPLEX);
  EXPECT_FALSE(std::signbit(v.Dbl));  // a real part of 0 stays +0
  EXPECT_EQ(v.Im, -2);
}

TEST(Evaluate, Constants) {
  testing_expr::FakeContext ctx;
  ctx.high = 3.3;
  ctx.low = 0.2;
  EXPECT_EQ(D("pi"), 3.14159265358);
  EXPECT_EQ(D("PI"), 3.14159265358);
  EXPECT_EQ(D("rad"), 57.295779513260925);
  EXPECT_EQ(Eval("high", &ctx).Dbl, 3.3);
  EXPECT_EQ(Eval("low", &ctx).Dbl, 0.2);
  EXPECT_EQ(Eval("high").Dbl, 5.0);
  // Constants come before variables.
  CVarList vars;
  vars.Add("pi", VT_DOUBLE)->Values[0] = TValue::MakeDouble(3);
  EXPECT_EQ(Eval("pi", nullptr, &vars).Dbl, 3.14159265358);
}

TEST(Evaluate, NamesThroughContext) {
  testing_expr::FakeContext ctx;
  ctx.values["R1.R"] = 100;
  ctx.values["\"A.B\".C"] = 7;
  EXPECT_EQ(Eval("R1.R*2", &ctx).Dbl, 200);
  EXPECT_EQ(Eval("r1.r", &ctx).Dbl, 100);
  EXPECT_EQ(Eval("\"A.B\".C+1", &ctx).Dbl, 8);
  EXPECT_EQ(EvalError("R2.R", &ctx), "Syntax error: R2.R");
  EXPECT_EQ(EvalError("R1", &ctx), "Syntax error: R1");
  EXPECT_EQ(EvalError("R1.R++", &ctx), "Operator '++' not allowed for component parameter");
  EXPECT_EQ(EvalError("--R1.R", &ctx), "Operator '--' not allowed for component parameter");
  // A number-looking name is a number; a dotted name is no constant.
  EXPECT_EQ(Eval("2k2", &ctx).Dbl, 2200);
  ctx.values["pi.x"] = 7;
  EXPECT_EQ(Eval("pi.x", &ctx).Dbl, 7);
  EXPECT_EQ(EvalError("R1.Q", &ctx), "Syntax error: R1.Q");
  // Variables come before components.
  CVarList vars;
  vars.Add("R1.R", VT_INT)->Values[0] = TValue::MakeInt(5);
  EXPECT_EQ(Eval("R1.R", &ctx, &vars).I32, 5);
  vars.Add("x", VT_INT)->Values[0] = TValue::MakeInt(5);
  EXPECT_EQ(Eval("x++ + x", &ctx, &vars, nullptr, true).I32, 11);
}

TEST(Evaluate, Variables) {
  CVarList vars;
  vars.Add("x", VT_INT)->Values[0] = TValue::MakeInt(5);
  TVariable* a = vars.Add("a", VT_DOUBLE, 3);
  a->Values[0] = TValue::MakeDouble(1.5);
  a->Values[1] = TValue::MakeDouble(2.5);
  a->Values[2] = TValue::MakeDouble(-1);
  TVariable* b = vars.Add("b", VT_INT, 10);
  b->Values[1] = TValue::MakeInt(2);
  b->Values[2] = TValue::MakeInt(5);

  EXPECT_EQ(Eval("x*2", nullptr, &vars, nullptr, true).I32, 10);
  EXPECT_EQ(Eval("x++", nullptr, &vars).I32, 5);
  EXPECT_EQ(vars.Find("x")->Values[0].I32, 6);
  EXPECT_EQ(Eval("++x", nullptr, &vars).I32, 7);
  EXPECT_EQ(Eval("--x", nullptr, &vars).I32, 6);
  EXPECT_EQ(Eval("x--", nullptr, &vars).I32, 6);
  EXPECT_EQ(vars.Find("x")->Values[0].I32, 5);

  EXPECT_EQ(Eval("a[1]", nullptr, &vars).Dbl, 2.5);
  EXPECT_EQ(Eval("a[0]+a[2]*2", nullptr, &vars).Dbl, -0.5);
  EXPECT_EQ(Eval("a[1]++", nullptr, &vars).Dbl, 2.5);
  EXPECT_EQ(a->Values[1].Dbl, 3.5);
  EXPECT_EQ(Eval("a[b[1]]", nullptr, &vars).Dbl, -1);
  EXPECT_EQ(EvalError("a[3]", nullptr, &vars), "Array index too high");
  EXPECT_EQ(EvalError("a[-1]", nullptr, &vars), "Negative array index");
  EXPECT_EQ(EvalError("a[1j]", nullptr, &vars), "Complex array index not allowed");
  // The bound is that of the array named last; the element must exist too.
  EXPECT_EQ(EvalError("a[b[2]]", nullptr, &vars), "Array index too high");
  EXPECT_EQ(EvalError("x[0]", nullptr, &vars), "Unknown array 'x'");

  EXPECT_EQ(Eval("max(a)", nullptr, &vars).Dbl, 3.5);
  EXPECT_EQ(Eval("min(a)", nullptr, &vars).Dbl, -1);
  EXPECT_EQ(Eval("sum(a)", nullptr, &vars).Dbl, 4);
  EXPECT_NEAR(Eval("mean(a)", nullptr, &vars).Dbl, 4.0 / 3, 1e-15);
  EXPECT_EQ(Eval("max(b)", nullptr, &vars).Type, VT_INT);
  EXPECT_EQ(Eval("max(b)", nullptr, &vars).I32, 5);
  EXPECT_EQ(EvalError("max(a, 1)", nullptr, &vars),
            "Functions 'min' and 'max' : wrong number of parameters");

  testing_expr::FakeContext ctx;
  ctx.arrays["C1.buf"] = b;
  EXPECT_EQ(Eval("C1.buf[2]", &ctx).I32, 5);
}

TEST(Evaluate, TraceFunctions) {
  testing_expr::FakeContext ctx;
  testing_expr::FakeSimulation sim;
  testing_expr::FakeComponent r1{"R1", 7, true, 1, 2, 0, 2.0, 0};
  testing_expr::FakeComponent v1{"V1", 7, true, 1, 2, 3, 0, 0};
  testing_expr::FakeComponent d1{"D1", 1, false, 1, 2, 0, 0, 0.25};
  testing_expr::FakeComponent x1{"X1", 6, false, -1, -1, 0, 0, 0.25};
  testing_expr::FakeComponent g1{"G1", 7, true, -1, 2, 0, 1, 0};
  ctx.components["R1"] = &r1;
  ctx.components["V1"] = &v1;
  ctx.components["D1"] = &d1;
  ctx.components["X1"] = &x1;
  ctx.components["G1"] = &g1;

  EXPECT_EQ(EvalError("V(R1)", &ctx), "Function 'V' not allowed");
  EXPECT_EQ(EvalError("I(R1)"), "Function 'I' not allowed");
  EXPECT_EQ(EvalError("p(R1)", &ctx), "Function 'P' not allowed");

  EXPECT_EQ(Eval("V(R1)", &ctx, nullptr, &sim).Dbl, 3.0);  // x[2] - x[1]
  EXPECT_EQ(Eval("I(R1)", &ctx, nullptr, &sim).Dbl, 1.5);  // 3 / 2
  EXPECT_EQ(Eval("P(R1)", &ctx, nullptr, &sim).Dbl, 4.5);  // 3 * 3 / 2
  EXPECT_EQ(Eval("I(V1)", &ctx, nullptr, &sim).Dbl, 0.5);  // row current
  EXPECT_EQ(Eval("P(V1)", &ctx, nullptr, &sim).Dbl, 1.5);
  EXPECT_EQ(Eval("V(G1)", &ctx, nullptr, &sim).Dbl, 0.0);
  EXPECT_EQ(Eval("I(G1)", &ctx, nullptr, &sim).Dbl, 0.0);
  EXPECT_EQ(Eval("I(X1)", &ctx, nullptr, &sim).Dbl, 0.5);  // the component's own value
  EXPECT_EQ(Eval("P(X1)", &ctx, nullptr, &sim).Dbl, 0.75);
  EXPECT_EQ(Eval("2*V(R1)+1", &ctx, nullptr, &sim).Dbl, 7.0);
  EXPECT_EQ(EvalError("I(D1)", &ctx, nullptr, &sim), "'I' trace not supported by D1");
  EXPECT_EQ(EvalError("P(D1)", &ctx, nullptr, &sim), "'P' trace not supported by D1");
  EXPECT_EQ(EvalError("V(X1)", &ctx, nullptr, &sim), "'V' trace not supported by X1");
  EXPECT_EQ(EvalError("V(R9)", &ctx, nullptr, &sim), "Unknown name 'R9'");
  EXPECT_EQ(EvalError("V(1)", &ctx, nullptr, &sim), "Unknown name '1'");
}

TEST(Evaluate, ResultTypeAndUntouchedOnFailure) {
  TValue v = TValue::MakeInt(42);
  EXPECT_THROW(EvaluateExpression("2*x", nullptr, nullptr, nullptr, &v, false), RaisedError);
  EXPECT_EQ(v.Type, VT_INT);
  EXPECT_EQ(v.I32, 42);
  EXPECT_EQ(Eval("3+4j").Type, VT_COMPLEX);
  EXPECT_EQ(EvaluateExpression("3+4j", nullptr, nullptr, nullptr, nullptr, false), 3.0);
  EXPECT_EQ(EvaluateInteger("7/2", nullptr, nullptr, nullptr, nullptr), 3.0);
}

TEST(Evaluate, HostileInputNeverCrashesOrHangs) {
  // Deep nesting.
  std::string deep = std::string(1000, '(') + "1" + std::string(1000, ')');
  EXPECT_EQ(D(deep), 1);
  EXPECT_EQ(D(std::string(1000, '(') + "2"), 2);
  std::string nested;
  for (int i = 0; i < 1000; i++) nested += "1+(";
  nested += "1";
  nested += std::string(1000, ')');
  EXPECT_EQ(D(nested), 1001);
  // Very long formulas.
  std::string sum = "0";
  for (int i = 0; i < 100000; i++) sum += "+1";
  EXPECT_EQ(D(sum), 100000);
  std::string args = "sum(1";
  for (int i = 0; i < 100000; i++) args += ",1";
  args += ")";
  EXPECT_EQ(D(args), 100001);
  std::string commas = "max(";
  for (int i = 0; i < 50000; i++) commas += "(1,";
  commas += "1";
  EXPECT_NO_THROW(D(commas));
  EXPECT_EQ(EvalError(std::string(200, 'a')), "Syntax error: number string is too long");
  EXPECT_EQ(EvalError(std::string(1000, ')')), "Syntax error");
  EXPECT_EQ(EvalError(std::string(1000, '[')), "<no error>");
  EXPECT_EQ(EvalError("1]]"), "Syntax error");
  EXPECT_EQ(EvalError("sin("), "<no error>");
  EXPECT_EQ(EvalError("a["), "Unknown array 'a'");
  EXPECT_EQ(EvalError("\"unclosed"), "Syntax error: \"unclosed");
  EXPECT_EQ(EvalError(std::string("1+\0", 3)), "Syntax error");
  EXPECT_EQ(EvalError("\xff"), "Syntax error");
  EXPECT_EQ(EvalError("1\xfe"), "Unknown operator '\xfe'");
  std::string cond;
  for (int i = 0; i < 2000; i++) cond += "1?";
  EXPECT_EQ(D(cond + "1"), 1);
  EXPECT_EQ(D("1e99999999999999999999"), kInf);
  EXPECT_EQ(D("1e-99999999999999999999"), 0.0);
  EXPECT_EQ(D("1e+2147483648"), kInf);
  // Arbitrary bytes.
  unsigned seed = 12345;
  for (int i = 0; i < 5000; i++) {
    std::string text;
    int length = static_cast<int>(seed % 40);
    for (int k = 0; k < length; k++) {
      seed = seed * 1103515245u + 12345u;
      const char alphabet[] = "0123456789+-*/%()[]?:,.!~<>=&|^\"abcxyzeEjk _\t;";
      text += (seed >> 24) % 3 == 0 ? static_cast<char>(seed >> 16)
                                    : alphabet[(seed >> 16) % (sizeof alphabet - 1)];
    }
    seed = seed * 1103515245u + 12345u;
    try {
      TValue v;
      EvaluateExpression(text, nullptr, nullptr, nullptr, &v, (i & 1) != 0);
    } catch (const RaisedError&) {
    }
  }
}

}  // namespace
}  // namespace tz4
