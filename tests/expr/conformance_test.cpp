// Number text, the evaluator and its functions at their corners: suffix and
// exponent interplay, integer widths, rounding carries in number text, the
// conditional's skipping, exact zeros of the trigonometry, snapped complex
// results, aggregate functions and hostile input.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "eval_helpers.h"
#include "expr/numtext.h"
#include "expr/value.h"

namespace tz4 {
namespace {

using testing_expr::D;
using testing_expr::Eval;
using testing_expr::EvalError;
using testing_expr::FakeComponent;
using testing_expr::FakeContext;
using testing_expr::FakeSimulation;

const double kInf = std::numeric_limits<double>::infinity();

TValue Parse(const std::string& text, bool allowPrefix) {
  TValue v;
  ParseNumber(text, v, allowPrefix);
  return v;
}

std::string ParseError(const std::string& text, bool allowPrefix) {
  try {
    Parse(text, allowPrefix);
  } catch (const RaisedError& e) {
    return e.Text();
  }
  return "<no error>";
}

TEST(NumberTextConformance, ExponentAfterSuffixKeepsSuffixWhenNoDigitsFollow) {
  // An "e" whose exponent cannot be read leaves the suffix's exponent.
  EXPECT_DOUBLE_EQ(Parse("1k5e", false).Dbl, 1500.0);
  EXPECT_DOUBLE_EQ(Parse("2.5ke", false).Dbl, 2500.0);  // "e" skipped as a letter behind k
  EXPECT_DOUBLE_EQ(Parse("1k5e-3", false).Dbl, 1.5e-3);  // a read exponent replaces it
  EXPECT_DOUBLE_EQ(Parse("1.5e", false).Dbl, 1.5);
  EXPECT_EQ(Parse("1.5e", false).Type, VT_DOUBLE);
  EXPECT_DOUBLE_EQ(Parse("1e 3", false).Dbl, 1000.0);  // "%d" skips blanks
}

TEST(NumberTextConformance, SuffixesAndUnitLetters) {
  EXPECT_DOUBLE_EQ(Parse("1MEG", false).Dbl, 1e6);
  EXPECT_DOUBLE_EQ(Parse("1mg", false).Dbl, 1e6);
  EXPECT_DOUBLE_EQ(Parse("1mk", false).Dbl, 1e-6);
  EXPECT_DOUBLE_EQ(Parse("1mG", false).Dbl, 1e-3);  // "mg" is case-sensitive
  EXPECT_DOUBLE_EQ(Parse("1g", false).Dbl, 1.0);
  EXPECT_DOUBLE_EQ(Parse("1t", false).Dbl, 1.0);
  EXPECT_DOUBLE_EQ(Parse("1T", false).Dbl, 1e12);
  EXPECT_DOUBLE_EQ(Parse("3f", false).Dbl, 3e-15);
  EXPECT_DOUBLE_EQ(Parse("4R7", false).Dbl, 4.7);
  EXPECT_DOUBLE_EQ(Parse("4R7Ohm", false).Dbl, 4.7);  // rest ignored in the fraction pass
  EXPECT_DOUBLE_EQ(Parse("1Ve3", false).Dbl, 1.3);    // "e" behind a unit letter is skipped
  EXPECT_DOUBLE_EQ(Parse("k5", false).Dbl, 500.0);    // a suffix may stand before any digit
  EXPECT_EQ(ParseError("V5", false), "Syntax error: V5");
  EXPECT_EQ(ParseError("m", false), "Syntax error: m");
  EXPECT_EQ(ParseError("1k.5", false), "Syntax error: 1k.5");
  EXPECT_EQ(ParseError("1 k", false), "Syntax error: 1 k");
  EXPECT_EQ(ParseError("", false), "Syntax error: ");
  EXPECT_EQ(ParseError("-", false), "Syntax error: -");
  EXPECT_NEAR(Parse("-20dB", false).Dbl, 0.1, 1e-15);
  EXPECT_NEAR(Parse("10db", false).Dbl, 3.16227766016838, 1e-12);
  TValue j = Parse("2.2uj", false);
  EXPECT_EQ(j.Type, VT_COMPLEX);
  EXPECT_DOUBLE_EQ(j.Im, 2.2e-6);
  EXPECT_EQ(j.Dbl, 0.0);
  EXPECT_EQ(Parse("1e-100", false).Dbl, 0.0);
  EXPECT_DOUBLE_EQ(Parse("1e-99", false).Dbl, 1e-99);
  EXPECT_EQ(Parse("1e400", false).Dbl, kInf);
  EXPECT_EQ(Parse("-inf", false).Dbl, -kInf);
  EXPECT_EQ(Parse("iNF", false).Dbl, kInf);
  EXPECT_EQ(ParseError("Inf", false), "Syntax error: Inf");
}

TEST(NumberTextConformance, PrefixesAndIntegerWidths) {
  EXPECT_DOUBLE_EQ(TextToDouble("0x10"), 0.1);  // "x" is a unit letter without prefixes
  TValue hex = Parse("0x10", true);
  EXPECT_EQ(hex.Type, VT_INT);
  EXPECT_EQ(hex.I32, 16);
  EXPECT_EQ(Parse("0x", true).I32, 0);
  EXPECT_EQ(Parse("0xg1", true).I32, 1);  // other characters are skipped
  EXPECT_EQ(Parse("0b", true).I32, 0);
  EXPECT_EQ(Parse("-0b101", true).I32, -5);
  EXPECT_EQ(Parse("017", true).I32, 15);
  EXPECT_EQ(Parse("017", false).I32, 17);
  EXPECT_EQ(ParseError("09", true), "Syntax error: '09' is not a valid octal value");
  EXPECT_EQ(ParseError("00.5", true), "Syntax error: '00.5' is not a valid octal value");
  EXPECT_EQ(ParseError("0b12", true), "Syntax error: '0b12' is not a valid binary value");
  EXPECT_DOUBLE_EQ(Parse("0.5", true).Dbl, 0.5);

  TValue v = Parse("4294967295", false);
  EXPECT_EQ(v.Type, VT_INT);
  EXPECT_EQ(v.I32, -1);
  v = Parse("4294967296", false);
  EXPECT_EQ(v.Type, VT_INT64);
  EXPECT_EQ(v.I64, 4294967296LL);
  v = Parse("-4294967296", false);  // low 32 bits of the negated value are zero
  EXPECT_EQ(v.Type, VT_INT64);
  EXPECT_EQ(v.I64, -4294967296LL);
  v = Parse("-4294967297", false);  // otherwise only the low 32 bits remain
  EXPECT_EQ(v.Type, VT_INT);
  EXPECT_EQ(v.I32, -1);
  v = Parse("-2147483648", false);
  EXPECT_EQ(v.Type, VT_INT);
  EXPECT_EQ(v.I32, std::numeric_limits<int32_t>::min());
  v = Parse("0i64", false);
  EXPECT_EQ(v.Type, VT_INT64);
  v = Parse("-5i64", false);
  EXPECT_EQ(v.Type, VT_INT64);
  EXPECT_EQ(v.I64, -5);
  // Fewer than 4 characters: no suffix, and "i" is then a letter before any digit.
  EXPECT_EQ(ParseError("i64", false), "Syntax error: i64");
}

TEST(NumberTextConformance, LengthLimitCountsTheUntrimmedText) {
  EXPECT_EQ(ParseError(std::string(127, '1'), false), "<no error>");
  EXPECT_EQ(ParseError(std::string(128, '1'), false), "Syntax error: number string is too long");
  EXPECT_EQ(ParseError(" " + std::string(127, '1'), false),
            "Syntax error: number string is too long");
}

TEST(NumberTextConformance, FormatCarriesAndSigns) {
  EXPECT_EQ(FormatNumber(0.001, 12), "1e-3");
  EXPECT_EQ(FormatNumber(999.9999999999999, 12), "1e+3");
  EXPECT_EQ(FormatNumber(-999.9999999999999, 12), "-1e+3");
  EXPECT_EQ(FormatNumber(0.00099999999999999999, 12), "1e-3");
  EXPECT_EQ(FormatNumber(1234.5, 12), "1.2345e+3");
  EXPECT_EQ(FormatNumber(100, 12), "100");
  EXPECT_EQ(FormatNumber(1000, 12), "1e+3");
  EXPECT_EQ(FormatNumber(0, 12), "0");
  EXPECT_EQ(FormatNumber(123456, 3), "123e+3");
  EXPECT_EQ(FormatNumber(-2.2e-6, 12), "-2.2e-6");
  EXPECT_EQ(FormatNumber(std::nan(""), 12), "");
  EXPECT_EQ(FormatNumber(kInf, 12), "inf");
  EXPECT_EQ(FormatNumber(-kInf, 12), "-inf");
  EXPECT_EQ(FormatNumber(5e-324, 12).substr(0, 4), "4.94");
  EXPECT_EQ(FormatNumber(1.7976931348623157e308, 12), "179.769313486e+306");
}

TEST(NumberTextConformance, CompareAndValueText) {
  EXPECT_EQ(CompareDouble(1, 1 + 1e-13), 0);
  EXPECT_EQ(CompareDouble(0, 1e-300), -1);
  EXPECT_EQ(CompareDouble(0, -1e-300), 1);
  EXPECT_EQ(CompareDouble(std::nan(""), 1), 1);
  EXPECT_EQ(CompareDouble(1, std::nan("")), 1);
  EXPECT_EQ(ValueToText(TValue::MakeComplex(1, -2)), "1-2j");
  EXPECT_EQ(ValueToText(TValue::MakeComplex(0, 0)), "0");
  EXPECT_EQ(ValueToText(TValue::MakeComplex(1, std::nan(""))), "1");
  EXPECT_EQ(ValueToText(TValue::MakeInt64(-5)), "-5");
  EXPECT_EQ(PlainTextToDouble(" -ixyz"), -kInf);
  EXPECT_DOUBLE_EQ(PlainTextToDouble("1.5e3kOhm"), 1500.0);
  EXPECT_DOUBLE_EQ(PlainTextToDouble("2.5x"), 2.5);
  // A mantissa beyond the double range stays infinite under any exponent.
  EXPECT_EQ(PlainTextToDouble(std::string(400, '9') + "e-2000000000"), kInf);
  EXPECT_EQ(PlainTextToDouble("1e-2000000000"), 0.0);
  EXPECT_DOUBLE_EQ(PlainTextToDouble("25e-1"), 2.5);
}

TEST(EvaluatorConformance, ConditionalAndReduction) {
  EXPECT_EQ(D("1?2:0?3:4"), 3);   // (1?2:0)?3:4
  EXPECT_EQ(D("0?2:0?3:4"), 4);
  EXPECT_EQ(D("1?2"), 2);         // no colon: the top is the second branch too
  EXPECT_EQ(D("0?2"), 2);
  EXPECT_EQ(D("1?2:3:4"), 2);     // both colons wait for the "?" entry
  EXPECT_EQ(EvalError(":"), "Syntax error");
  EXPECT_EQ(EvalError("2:3"), "Expression error in '2:3'");
  EXPECT_EQ(D("max(1:2)"), 2);    // a colon with no "?" below passes as a separator
  EXPECT_EQ(D("max(1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25)"), 25);
  EXPECT_EQ(D("min(max(1,2),max(3,4),5)"), 2);
  EXPECT_EQ(D("sin()"), 0);  // empty parentheses are one argument 0
  EXPECT_EQ(EvalError("pow()"), "Function 'pow' : wrong number of parameters");
  EXPECT_EQ(D("2^3"), 1);          // xor, not power
  EXPECT_EQ(D("1+2==3"), 1);
  EXPECT_EQ(D("1<2==1"), 1);       // (1<2)==1
  EXPECT_EQ(D("1|0&&0"), 0);       // "|" binds tighter than "&&"
}

TEST(EvaluatorConformance, UnaryRules) {
  EXPECT_EQ(EvalError("2*-3"), "Syntax error");
  EXPECT_EQ(EvalError("2+-3"), "Syntax error");
  EXPECT_EQ(EvalError("2/+3"), "Syntax error");
  EXPECT_EQ(D("2==-2"), 0);
  EXPECT_EQ(D("2>-3"), 1);
  EXPECT_EQ(D("1?-1:-2"), -1);
  EXPECT_EQ(D("max(-1,-2)"), -1);
  EXPECT_EQ(D("+3"), 3);
  EXPECT_EQ(D("(+3)"), 3);
  EXPECT_EQ(EvalError("-!1"), "Syntax error");
  TValue v = Eval("-true");
  EXPECT_EQ(v.Type, VT_INT);
  EXPECT_EQ(v.I32, -1);
  v = Eval("-(0j+2j)");
  EXPECT_EQ(v.Type, VT_COMPLEX);
  EXPECT_FALSE(std::signbit(v.Dbl));  // a real part of 0 stays +0
  EXPECT_EQ(v.Im, -2);
}

TEST(EvaluatorConformance, Trigonometry) {
  EXPECT_EQ(D("sin(180)"), 0.0);
  EXPECT_EQ(D("sin(-540)"), 0.0);
  EXPECT_EQ(D("sin(0)"), 0.0);
  EXPECT_EQ(D("cos(90)"), 0.0);
  EXPECT_EQ(D("cos(-90)"), 0.0);
  EXPECT_EQ(D("cos(270)"), 0.0);
  EXPECT_EQ(D("tan(180)"), 0.0);
  EXPECT_EQ(D("tg(360)"), 0.0);
  EXPECT_NEAR(D("sin(30)"), 0.5, 1e-11);  // pi has 12 digits
  EXPECT_NEAR(D("cos(60)"), 0.5, 1e-11);
  EXPECT_NEAR(D("tan(45)"), 1.0, 1e-11);
  EXPECT_EQ(D("sin(1e-16)"), 0.0);
  const double rad = 180 / 3.14159265358;
  EXPECT_DOUBLE_EQ(D("asin(1)"), std::asin(1.0) * 180 / 3.14159265358);
  EXPECT_DOUBLE_EQ(D("acos(0)"), std::acos(0.0) * 180 / 3.14159265358);
  EXPECT_DOUBLE_EQ(D("atan(1)"), std::atan(1.0) * rad);
  EXPECT_DOUBLE_EQ(D("atan2(1)"), std::atan2(1.0, 1.0) * 180 / 3.14159265358);
  EXPECT_DOUBLE_EQ(D("atan2(1,-1)"), std::atan2(1.0, -1.0) * 180 / 3.14159265358);
  EXPECT_EQ(D("atan2(0,0)"), 0.0);
  EXPECT_DOUBLE_EQ(D("phase(1j)"), std::atan2(1.0, 0.0) * 180 / 3.14159265358);
  EXPECT_EQ(D("phase(0)"), 0.0);
  EXPECT_EQ(EvalError("sin(1j)"), "Function 'sin' : complex argument not allowed");
  EXPECT_EQ(EvalError("tg(1j)"), "Function 'tan' : complex argument not allowed");
  EXPECT_EQ(EvalError("atan2(1j,1)"), "Function 'atan2' : complex arguments not allowed");
  EXPECT_EQ(EvalError("cos(1,2)"), "Function 'cos' : wrong number of parameters");
}

TEST(EvaluatorConformance, SnappedComplexResults) {
  TValue v = Eval("sqrt(-4+0j)");
  EXPECT_EQ(v.Type, VT_COMPLEX);
  EXPECT_EQ(v.Dbl, 0.0);
  EXPECT_EQ(v.Im, 2.0);
  v = Eval("sqrt(4+0j)");
  EXPECT_EQ(v.Dbl, 2.0);
  EXPECT_EQ(v.Im, 0.0);
  v = Eval("exp(0j)");
  EXPECT_EQ(v.Type, VT_COMPLEX);
  EXPECT_EQ(v.Dbl, 1.0);
  EXPECT_EQ(v.Im, 0.0);
  v = Eval("exp(2+0j)");
  EXPECT_DOUBLE_EQ(v.Dbl, std::exp(2.0));
  EXPECT_EQ(v.Im, 0.0);  // angle 0: the sine is not taken
  v = Eval("pow(0j, 3)");
  EXPECT_EQ(v.Type, VT_COMPLEX);
  EXPECT_EQ(v.Dbl, 0.0);
  v = Eval("pow(2+0j, 2)");
  EXPECT_DOUBLE_EQ(v.Dbl, 4.0);
  EXPECT_EQ(v.Im, 0.0);
  v = Eval("sq(1+2j)");
  EXPECT_EQ(v.Dbl, -3.0);
  EXPECT_EQ(v.Im, 4.0);
  v = Eval("log(-1+0j)");
  EXPECT_EQ(v.Dbl, 0.0);
  EXPECT_DOUBLE_EQ(v.Im, std::atan2(0.0, -1.0));
  v = Eval("lg(100j)");
  EXPECT_DOUBLE_EQ(v.Dbl, 2.0);
  EXPECT_EQ(EvalError("pow(2, 1j)"), "Function 'pow' : complex power not allowed");
  EXPECT_EQ(EvalError("log(2, 1j)"), "Function 'log' : complex base not allowed");
  EXPECT_EQ(EvalError("sqr(1j)"), "Function 'sqr' : complex argument not allowed");
  EXPECT_EQ(EvalError("pwr(1j,2)"), "Function 'pwr' : complex arguments not allowed");
  EXPECT_EQ(D("pow(0,-1)"), 0.0);
  EXPECT_EQ(D("pow(0,0)"), 0.0);
  EXPECT_EQ(D("pow(-2,3)"), -8.0);
  EXPECT_EQ(D("pwr(-2,3)"), -8.0);
  EXPECT_EQ(D("pwr(2,3)"), 8.0);
  EXPECT_EQ(D("sqr(-4)"), -2.0);
  EXPECT_DOUBLE_EQ(D("log(8,2)"), 3.0);
  EXPECT_DOUBLE_EQ(D("lb(8)"), 3.0);
  EXPECT_DOUBLE_EQ(D("db(10)"), 20.0);
  EXPECT_DOUBLE_EQ(D("db(1,-10)"), -20.0);
}

TEST(EvaluatorConformance, AggregatesRoundingAndLimits) {
  EXPECT_EQ(D("round(2.5)"), 3);
  EXPECT_EQ(D("round(-2.5)"), -2);
  EXPECT_EQ(D("round(7.3, 0.5)"), 7.5);
  EXPECT_EQ(D("round(7.3, 0)"), 7.3);
  EXPECT_EQ(D("round(7.3, -1)"), 7.3);
  EXPECT_EQ(EvalError("round(1,2,3)"), "Function 'round' : wrong number of parameters");
  TValue v = Eval("min(2, 3.5)");
  EXPECT_EQ(v.Type, VT_DOUBLE);
  EXPECT_EQ(v.Dbl, 2.0);
  v = Eval("max(1, true)");
  EXPECT_EQ(v.Type, VT_INT);
  EXPECT_EQ(v.I32, 1);
  v = Eval("max(true, false)");
  EXPECT_EQ(v.Type, VT_BOOL);
  EXPECT_TRUE(v.B);
  v = Eval("min(5i64, 7)");
  EXPECT_EQ(v.Type, VT_INT64);
  EXPECT_EQ(v.I64, 5);
  EXPECT_EQ(EvalError("min(1j, 2)"), "Functions 'min' and 'max' : complex arguments not allowed");
  EXPECT_EQ(EvalError("max(1j)"), "Functions 'min' and 'max' : complex arguments not allowed");
  v = Eval("mean(1, 2)");
  EXPECT_EQ(v.Type, VT_DOUBLE);
  EXPECT_EQ(v.Dbl, 1.5);
  v = Eval("sum(1, 2)");
  EXPECT_EQ(v.Type, VT_DOUBLE);
  EXPECT_EQ(v.Dbl, 3.0);
  v = Eval("average(1j, 3)");
  EXPECT_EQ(v.Type, VT_COMPLEX);
  EXPECT_EQ(v.Dbl, 1.5);
  EXPECT_EQ(v.Im, 0.5);
  EXPECT_EQ(D("par(2, 2)"), 1.0);
  EXPECT_EQ(D("par(6, 3, 2)"), 1.0);
  EXPECT_EQ(D("par(5)"), 5.0);
  v = Eval("par(1j, 1j)");
  EXPECT_EQ(v.Type, VT_COMPLEX);
  EXPECT_DOUBLE_EQ(v.Im, 0.5);
  EXPECT_EQ(v.Dbl, 0.0);
  EXPECT_EQ(D("limit(5, 0, 3)"), 3);
  EXPECT_EQ(D("lim(-1, 0, 3)"), 0);
  EXPECT_EQ(D("limit(2, 0, 3)"), 2);
  EXPECT_EQ(D("limit(2, 3, 0)"), 3);  // lo is tested first
  EXPECT_EQ(EvalError("limit(1, 2)"), "Function 'limit' : wrong number of parameters");
  EXPECT_EQ(EvalError("lim(1j, 2, 3)"), "Function 'limit' : complex arguments not allowed");
  EXPECT_EQ(EvalError("gauss(1)"), "Function 'gauss' : wrong number of parameters");
  EXPECT_EQ(D("gauss(4, 0)"), 4.0);
  EXPECT_EQ(EvalError("rand(1, 2)"), "Function 'random' : wrong number of parameters");
  v = Eval("abs(-3)");
  EXPECT_EQ(v.Type, VT_INT);
  EXPECT_EQ(v.I32, 3);
  v = Eval("abs(true)");
  EXPECT_EQ(v.Type, VT_INT);
  v = Eval("abs(-3i64)");
  EXPECT_EQ(v.Type, VT_INT64);
  EXPECT_EQ(D("abs(3,4)"), 7);
  EXPECT_EQ(D("abs(3,-4j)"), 7);
  EXPECT_EQ(D("mag(3+4j)"), 5);
  v = Eval("sign(-0.5)");
  EXPECT_EQ(v.Type, VT_INT);
  EXPECT_EQ(v.I32, -1);
  EXPECT_EQ(Eval("re(3)").Type, VT_DOUBLE);
  EXPECT_EQ(D("im(3-4j)"), -4);
}

TEST(EvaluatorConformance, TraceFunctions) {
  FakeContext ctx;
  FakeComponent r1{"R1"};
  r1.resistance = 2;
  ctx.components["R1"] = &r1;
  EXPECT_EQ(EvalError("V(R1)", &ctx), "Function 'V' not allowed");
  EXPECT_EQ(EvalError("1+I(R1)", &ctx), "Function 'I' not allowed");
  EXPECT_EQ(EvalError("p(R1)", &ctx), "Function 'P' not allowed");
  FakeSimulation sim;
  EXPECT_EQ(EvalError("V(R9)", &ctx, nullptr, &sim), "Unknown name 'R9'");
  EXPECT_EQ(Eval("V(R1)", &ctx, nullptr, &sim).Dbl, 3.0);
  EXPECT_EQ(Eval("I(R1)", &ctx, nullptr, &sim).Dbl, 1.5);
  EXPECT_EQ(Eval("P(R1)", &ctx, nullptr, &sim).Dbl, 4.5);
  r1.mask = 1;
  EXPECT_EQ(EvalError("I(R1)", &ctx, nullptr, &sim), "'I' trace not supported by R1");
  EXPECT_EQ(EvalError("P(R1)", &ctx, nullptr, &sim), "'P' trace not supported by R1");
}

TEST(EvaluatorConformance, NameResolution) {
  FakeContext ctx;
  ctx.values["R1.R"] = 100;
  ctx.values["pi.x"] = 7;
  EXPECT_EQ(Eval("pi.x", &ctx).Dbl, 7);  // a dotted name is no constant
  EXPECT_EQ(EvalError("++R1.R", &ctx), "Operator '++' not allowed for component parameter");
  EXPECT_EQ(EvalError("R1.R--", &ctx), "Operator '--' not allowed for component parameter");
  EXPECT_EQ(EvalError("R1.Q", &ctx), "Syntax error: R1.Q");
  EXPECT_EQ(EvalError("R1", &ctx), "Syntax error: R1");
  CVarList vars;
  vars.Add("R1.R", VT_INT)->Values[0] = TValue::MakeInt(5);
  EXPECT_EQ(Eval("R1.R", &ctx, &vars).I32, 5);  // variables come before components
  vars.Add("x", VT_INT)->Values[0] = TValue::MakeInt(5);
  TValue v = Eval("x++ + x", &ctx, &vars, nullptr, true);
  EXPECT_EQ(v.I32, 11);
  v = Eval("--x", &ctx, &vars, nullptr, true);
  EXPECT_EQ(v.I32, 5);
}

TEST(EvaluatorConformance, HostileInputGivesAMessageOrAValue) {
  std::string deep = std::string(1000, '(') + "1" + std::string(1000, ')');
  EXPECT_EQ(D(deep), 1.0);
  EXPECT_EQ(D(std::string(1000, '(') + "2"), 2.0);
  EXPECT_EQ(EvalError(std::string(1000, ')')), "Syntax error");
  EXPECT_EQ(EvalError("[[[[["), "<no error>");
  EXPECT_EQ(EvalError("1]]"), "Syntax error");
  std::string sum = "1";
  for (int i = 0; i < 20000; i++) sum += "+1";
  EXPECT_EQ(D(sum), 20001.0);
  std::string args = "max(0";
  for (int i = 1; i < 20000; i++) args += "," + std::to_string(i);
  args += ")";
  EXPECT_EQ(D(args), 19999.0);
  std::string cond;
  for (int i = 0; i < 2000; i++) cond += "1?";
  cond += "1";
  EXPECT_EQ(D(cond), 1.0);
  EXPECT_EQ(D("1e99999999999999999999"), kInf);
  EXPECT_EQ(D("1e-99999999999999999999"), 0.0);
  EXPECT_EQ(D("1e+2147483648"), kInf);
  EXPECT_TRUE(std::isnan(D("0*inf")) || D("0*inf") == 0);
  EXPECT_EQ(EvalError(std::string("1+\0", 3)), "Syntax error");
  EXPECT_EQ(EvalError("\xff"), "Syntax error");
  EXPECT_EQ(EvalError("1\xfe"), "Unknown operator '\xfe'");
  EXPECT_EQ(EvalError(std::string(200, '9')), "Syntax error: number string is too long");
  EXPECT_EQ(EvalError("\"unclosed"), "Syntax error: \"unclosed");
  EXPECT_EQ(EvalError("a["), "Unknown array 'a'");
  EXPECT_EQ(EvalError("sin("), "<no error>");
}

}  // namespace
}  // namespace tz4
