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

const double kInf = std::numeric_limits<double>::infinity();

TEST(Evaluate, PrecedenceAndGrouping) {
  EXPECT_EQ(D(""), 0.0);
  EXPECT_EQ(Eval("").Type, VT_DOUBLE);
  EXPECT_EQ(D("2+3*4"), 14);
  EXPECT_EQ(D("(2+3)*4"), 20);
  EXPECT_EQ(D("2*(-3)"), -6);
  EXPECT_EQ(D("8-3-2"), 3);
  EXPECT_EQ(D("64/4/2"), 8);
  EXPECT_EQ(D("=1+2"), 3);
  EXPECT_EQ(D("  = 1 + 2 ;"), 3);
  EXPECT_EQ(D("(1"), 1);
  EXPECT_EQ(D("((2+3)*(4-1"), 15);
  EXPECT_EQ(Eval("1+2<<1", nullptr, nullptr, nullptr, true).I32, 6);
  // In a formula two ints add as doubles, which cannot be shifted.
  EXPECT_EQ(EvalError("1+2<<1"), "Operator '<<' : floating point arguments not allowed");
  EXPECT_EQ(D("1|2^3&1"), 3);
  EXPECT_EQ(D("-2*3"), -6);
  EXPECT_EQ(D("!0+1"), 2);  // unary binds tighter than "+"
  EXPECT_EQ(D("2*3%4"), 2);
  EXPECT_EQ(D("1==1&&2>1"), 1);
  EXPECT_EQ(D("1e3+1k"), 2000);
  EXPECT_EQ(D("0x10+0b11+017"), 16 + 3 + 15);
  EXPECT_EQ(D("2.5e-1*4"), 1);
}

TEST(Evaluate, SyntaxMessages) {
  CVarList vars;
  vars.Add("a", VT_DOUBLE);
  vars.Add("b", VT_DOUBLE)->Values[0] = TValue::MakeDouble(2);
  EXPECT_EQ(EvalError("2*-3"), "Syntax error");
  EXPECT_EQ(EvalError("a+-b", nullptr, &vars), "Syntax error");
  EXPECT_EQ(EvalError("- -1"), "Syntax error");
  EXPECT_EQ(EvalError("!!1"), "Syntax error");
  EXPECT_EQ(EvalError("a=1", nullptr, &vars), "Operator '=' not allowed");
  EXPECT_TRUE(Eval("a==-b", nullptr, &vars).Type == VT_BOOL);
  EXPECT_EQ(EvalError("1 2"), "Unknown operator '2'");
  EXPECT_EQ(EvalError("2(3)"), "Unknown operator '('");
  EXPECT_EQ(EvalError("1!2"), "Unknown operator '!'");
  EXPECT_EQ(EvalError("1$"), "Unknown operator '$'");
  EXPECT_EQ(EvalError("1,2"), "Syntax error");
  EXPECT_EQ(EvalError("1:2"), "Expression error in '1:2'");
  EXPECT_EQ(EvalError("foo(1)"), "Unknown function 'foo'");
  EXPECT_EQ(EvalError("toolongname(1)"), "Unknown function 'toolongname'");
  EXPECT_EQ(EvalError("x"), "Syntax error: x");
  EXPECT_EQ(EvalError("R1.R"), "Syntax error: R1.R");
  EXPECT_EQ(EvalError("q[1]"), "Unknown array 'q'");
  EXPECT_EQ(EvalError("*"), "Syntax error");
  EXPECT_EQ(EvalError("1)"), "Syntax error");
  EXPECT_EQ(EvalError("\x01"), "Syntax error");
  EXPECT_EQ(EvalError("3..4"), "Syntax error: 3..4");
}

TEST(Evaluate, SpecialTexts) {
  EXPECT_EQ(D("inf"), kInf);
  EXPECT_EQ(D("INF"), kInf);
  EXPECT_EQ(D("-inf"), -kInf);
  EXPECT_EQ(D("-inf*2"), -kInf);
  EXPECT_EQ(D("1/0"), kInf);
  EXPECT_EQ(D("-1/0"), kInf);
  EXPECT_EQ(D("0/0"), kInf);
  EXPECT_EQ(D("5/inf"), 0.0);
  EXPECT_TRUE(std::isnan(D("sqrt(-1)")));
  EXPECT_EQ(D("1e999999"), kInf);
}

TEST(Evaluate, IntegerAndFormulaArithmetic) {
  EXPECT_EQ(D("7/2"), 3.5);
  TValue v = Eval("7/2", nullptr, nullptr, nullptr, true);
  EXPECT_EQ(v.Type, VT_INT);
  EXPECT_EQ(v.I32, 3);
  v = Eval("7%2");
  EXPECT_EQ(v.Type, VT_DOUBLE);
  EXPECT_EQ(v.Dbl, 1.0);
  v = Eval("7%2", nullptr, nullptr, nullptr, true);
  EXPECT_EQ(v.Type, VT_DOUBLE);
  v = Eval("true+1");
  EXPECT_EQ(v.Type, VT_INT);
  EXPECT_EQ(v.I32, 2);
  v = Eval("2147483647+1", nullptr, nullptr, nullptr, true);
  EXPECT_EQ(v.I32, std::numeric_limits<int32_t>::min());
  v = Eval("5i64*3");
  EXPECT_EQ(v.Type, VT_INT64);
  EXPECT_EQ(v.I64, 15);
  EXPECT_EQ(EvalError("1/0", nullptr, nullptr, nullptr, true), "Division by zero");
  EXPECT_EQ(EvalError("-2147483648/-1", nullptr, nullptr, nullptr, true), "Syntax error");
  EXPECT_EQ(EvalError("(-2147483648)/(-1)", nullptr, nullptr, nullptr, true), "Division by zero");
  EXPECT_EQ(D("1+1e-13-1"), 0.0);  // cancellation snaps to zero
  EXPECT_EQ(D("1-1"), 0.0);
}

TEST(Evaluate, BitsAndShifts) {
  EXPECT_EQ(Eval("6&3").I32, 2);
  EXPECT_EQ(Eval("6|3").I32, 7);
  EXPECT_EQ(Eval("6^3").I32, 5);
  EXPECT_EQ(Eval("1<<33").I32, 2);
  EXPECT_EQ(Eval("1i64<<33").I64, 1LL << 33);
  EXPECT_EQ(Eval("-8>>1").I32, -4);
  EXPECT_EQ(Eval("~5").I32, -6);
  EXPECT_EQ(Eval("~5i64").Type, VT_INT64);
  EXPECT_EQ(EvalError("1.5|1"), "Operator '|' : floating point arguments not allowed");
  EXPECT_EQ(EvalError("1^2j"), "Operator '^' : complex arguments not allowed");
  EXPECT_EQ(EvalError("1&1.0"), "Operator '&' : floating point arguments not allowed");
  EXPECT_EQ(EvalError("1.0>>1"), "Operator '>>' : floating point arguments not allowed");
  EXPECT_EQ(EvalError("1<<1j"), "Operator '<<' : complex arguments not allowed");
  EXPECT_EQ(EvalError("~1.5"), "Operator '~' : floating point argument not allowed");
  EXPECT_EQ(EvalError("~1j"), "Operator '~' : complex argument not allowed");
  EXPECT_EQ(EvalError("1j%2"), "Function 'fmod' : complex arguments not allowed");
}

TEST(Evaluate, Comparisons) {
  TValue v = Eval("1+1e-13 == 1");
  EXPECT_EQ(v.Type, VT_BOOL);
  EXPECT_TRUE(v.B);
  EXPECT_TRUE(Eval("1 == 1.0").B);
  EXPECT_TRUE(Eval("2 != 3").B);
  EXPECT_TRUE(Eval("2 <= 2").B);
  EXPECT_FALSE(Eval("2 < 2").B);
  EXPECT_TRUE(Eval("3 >= 2.5").B);
  EXPECT_TRUE(Eval("3 > 2").B);
  EXPECT_TRUE(Eval("1+2j == 1+2j").B);
  EXPECT_TRUE(Eval("1+2j != 1").B);
  EXPECT_EQ(EvalError("1j < 2"), "Operator '<': complex arguments not allowed");
  EXPECT_EQ(EvalError("1j <= 2"), "Operator '<=': complex arguments not allowed");
  EXPECT_EQ(EvalError("1j >= 2"), "Operator '>=': complex arguments not allowed");
  EXPECT_EQ(EvalError("1j > 2"), "Operator '>': complex arguments not allowed");
  EXPECT_TRUE(Eval("1 && 2").B);
  EXPECT_FALSE(Eval("0 || 0.0").B);
  EXPECT_TRUE(Eval("!0").B);
  EXPECT_TRUE(Eval("2==-(-2)").B);
}

TEST(Evaluate, Conditional) {
  EXPECT_EQ(D("1?2:3"), 2);
  EXPECT_EQ(D("0?2:3"), 3);
  EXPECT_EQ(D("0?1/0:3"), 3);
  EXPECT_EQ(D("1?(0?2:3):4"), 3);
  EXPECT_EQ(D("0?(1?2:3):4"), 4);
  EXPECT_EQ(D("0?1:(1?2:3)"), 2);
  EXPECT_EQ(D("1?2:(0?3:4)"), 2);
  EXPECT_EQ(D("1 ? 5+1 : 7*2"), 6);
  EXPECT_EQ(D("0 ? 5+1 : 7*2"), 14);
  // Left-associative: (1?0:5)?7:8
  EXPECT_EQ(D("1?0:5?7:8"), 8);
  // The untaken branch is still scanned: unknown names fail there too.
  EXPECT_EQ(EvalError("1?2:nosuch"), "Syntax error: nosuch");
  EXPECT_EQ(D("2>1 ? 10 : 20"), 10);
  EXPECT_EQ(D("max(1?4:5, 0?6:7)"), 7);
}

TEST(Evaluate, Casts) {
  TValue v = Eval("(int)3.7");
  EXPECT_EQ(v.Type, VT_INT);
  EXPECT_EQ(v.I32, 3);
  EXPECT_EQ(Eval("(int64)2").Type, VT_INT64);
  EXPECT_EQ(Eval("(double)2").Type, VT_DOUBLE);
  EXPECT_EQ(Eval("(float)2").Type, VT_DOUBLE);
  EXPECT_EQ(Eval("(complex)2").Type, VT_COMPLEX);
  EXPECT_EQ(Eval("(bool)2").Type, VT_BOOL);
  EXPECT_EQ(Eval("int(2.9)").I32, 2);
  EXPECT_EQ(Eval("float(2)").Type, VT_DOUBLE);
  EXPECT_EQ(Eval("2*(int)1.5").Dbl, 2.0);
  EXPECT_EQ(EvalError("int(1,2)"), "Function 'int' : wrong number of parameters");
  EXPECT_EQ(EvalError("float(1,2)"), "Function 'double' : wrong number of parameters");
  EXPECT_EQ(EvalError("bool(1,2)"), "Function 'bool' : wrong number of parameters");
}

TEST(Evaluate, Constants) {
  testing_expr::FakeContext ctx;
  ctx.high = 3.3;
  ctx.low = 0.2;
  EXPECT_EQ(D("pi"), 3.14159265358);
  EXPECT_EQ(D("PI"), 3.14159265358);
  EXPECT_EQ(D("rad"), 57.295779513260925);
  EXPECT_EQ(Eval("true").Type, VT_BOOL);
  EXPECT_FALSE(Eval("False").B);
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
  // A number-looking name is a number.
  EXPECT_EQ(Eval("2k2", &ctx).Dbl, 2200);
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
  // Huge numbers and odd values.
  EXPECT_EQ(D("1e308*10"), kInf);
  EXPECT_EQ(Eval("10^400").I32, 410);  // "^" is the exclusive or
  EXPECT_TRUE(std::isnan(D("inf-inf")));
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
