#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "expr/numtext.h"
#include "expr/raise.h"
#include "expr/value.h"

namespace tz4 {
namespace {

TValue Parse(const std::string& text, bool allowPrefix = false) {
  TValue v;
  ParseNumber(text, v, allowPrefix);
  return v;
}

std::string ParseError(const std::string& text, bool allowPrefix = false) {
  try {
    Parse(text, allowPrefix);
  } catch (const RaisedError& e) {
    return e.Text();
  }
  return "<no error>";
}

TEST(FormatNumber, EngineeringExponents) {
  EXPECT_EQ(FormatNumber(0.001), "1e-3");
  EXPECT_EQ(FormatNumber(999.9999999999999), "1e+3");
  EXPECT_EQ(FormatNumber(-999.9999999999999), "-1e+3");
  EXPECT_EQ(FormatNumber(1234.5), "1.2345e+3");
  EXPECT_EQ(FormatNumber(0), "0");
  EXPECT_EQ(FormatNumber(100), "100");
  EXPECT_EQ(FormatNumber(1000), "1e+3");
  EXPECT_EQ(FormatNumber(2.2e6), "2.2e+6");
  EXPECT_EQ(FormatNumber(0.0015), "1.5e-3");
  EXPECT_EQ(FormatNumber(-47e-12), "-47e-12");
  EXPECT_EQ(FormatNumber(1.0 / 3.0), "333.333333333e-3");
  EXPECT_EQ(FormatNumber(1.0 / 3.0, 3), "333e-3");
  EXPECT_EQ(FormatNumber(0.5), "500e-3");
}

TEST(FormatNumber, SpecialValues) {
  EXPECT_EQ(FormatNumber(std::nan("")), "");
  EXPECT_EQ(FormatNumber(std::numeric_limits<double>::infinity()), "inf");
  EXPECT_EQ(FormatNumber(-std::numeric_limits<double>::infinity()), "-inf");
  // Extremes terminate and read back.
  EXPECT_EQ(CompareDouble(PlainTextToDouble(FormatNumber(1e308)), 1e308), 0);
  EXPECT_FALSE(FormatNumber(std::numeric_limits<double>::denorm_min()).empty());
  EXPECT_FALSE(FormatNumber(std::numeric_limits<double>::max()).empty());
}

TEST(FormatNumber, RoundTripThroughTextToDouble) {
  for (double x : {1.0, -2.5, 3.3e-9, 4.7e12, 123456789012.0, 1e-99})
    EXPECT_EQ(CompareDouble(TextToDouble(FormatNumber(x)), x), 0) << x;
}

TEST(PlainTextToDouble, Reads) {
  EXPECT_DOUBLE_EQ(PlainTextToDouble("  12.5 "), 12.5);
  EXPECT_DOUBLE_EQ(PlainTextToDouble("-1.5e-3"), -1.5e-3);
  EXPECT_DOUBLE_EQ(PlainTextToDouble("+2E+2"), 200);
  EXPECT_DOUBLE_EQ(PlainTextToDouble("3k"), 3);  // no suffixes
  EXPECT_DOUBLE_EQ(PlainTextToDouble("1.2.3"), 1.2);
  EXPECT_DOUBLE_EQ(PlainTextToDouble(""), 0);
  EXPECT_DOUBLE_EQ(PlainTextToDouble("abc"), 0);
  EXPECT_TRUE(std::isinf(PlainTextToDouble("inf")));
  EXPECT_EQ(PlainTextToDouble("-ixyz"), -std::numeric_limits<double>::infinity());
  EXPECT_EQ(PlainTextToDouble("1e999999999"), std::numeric_limits<double>::infinity());
  EXPECT_EQ(PlainTextToDouble("1e-999999999"), 0.0);
}

TEST(ParseNumber, Suffixes) {
  EXPECT_DOUBLE_EQ(TextToDouble("1k5"), 1500);
  EXPECT_DOUBLE_EQ(TextToDouble("1.5k"), 1500);
  EXPECT_DOUBLE_EQ(TextToDouble("2.2u"), 2.2e-6);
  EXPECT_NEAR(TextToDouble("10dB"), 3.16227766, 1e-8);
  EXPECT_DOUBLE_EQ(TextToDouble("1MEG"), 1e6);
  EXPECT_DOUBLE_EQ(TextToDouble("1mg"), 1e6);
  EXPECT_DOUBLE_EQ(TextToDouble("1mk"), 1e-6);
  EXPECT_DOUBLE_EQ(TextToDouble("1m"), 1e-3);
  EXPECT_DOUBLE_EQ(TextToDouble("1G"), 1e9);
  EXPECT_DOUBLE_EQ(TextToDouble("1g"), 1);
  EXPECT_DOUBLE_EQ(TextToDouble("4R7"), 4.7);
  EXPECT_DOUBLE_EQ(TextToDouble("10uF"), 10e-6);
  EXPECT_DOUBLE_EQ(TextToDouble("1T"), 1e12);
  EXPECT_DOUBLE_EQ(TextToDouble("3n"), 3e-9);
  EXPECT_DOUBLE_EQ(TextToDouble("3p"), 3e-12);
  EXPECT_DOUBLE_EQ(TextToDouble("3f"), 3e-15);
  EXPECT_DOUBLE_EQ(TextToDouble("-2K"), -2000);
  EXPECT_DOUBLE_EQ(TextToDouble("5Ohm"), 5);
  EXPECT_DOUBLE_EQ(TextToDouble("1e3k"), 1000);  // the exponent ends the number
  EXPECT_DOUBLE_EQ(TextToDouble("1k5e2"), 150);  // and replaces a suffix
  EXPECT_DOUBLE_EQ(TextToDouble("1.5kx7"), 1500);  // rest ignored after the fraction
  EXPECT_EQ(TextToDouble("1e-100"), 0.0);
  EXPECT_DOUBLE_EQ(TextToDouble("1e-99"), 1e-99);
  EXPECT_EQ(TextToDouble("1e400"), std::numeric_limits<double>::infinity());
  EXPECT_EQ(TextToDouble("1e99999999999"), std::numeric_limits<double>::infinity());
}

TEST(ParseNumber, Types) {
  EXPECT_EQ(Parse("5i64").Type, VT_INT64);
  EXPECT_EQ(Parse("5i64").I64, 5);
  EXPECT_EQ(Parse("123").Type, VT_INT);
  EXPECT_EQ(Parse("123").I32, 123);
  EXPECT_EQ(Parse("123.0").Type, VT_DOUBLE);
  EXPECT_EQ(Parse("1e3").Type, VT_DOUBLE);
  EXPECT_EQ(Parse("1e3").Dbl, 1000.0);
  TValue j = Parse("3j");
  EXPECT_EQ(j.Type, VT_COMPLEX);
  EXPECT_EQ(j.Dbl, 0.0);
  EXPECT_EQ(j.Im, 3.0);
  EXPECT_EQ(Parse("-2.5kj").Im, -2500.0);
  EXPECT_EQ(Parse("inf").Dbl, std::numeric_limits<double>::infinity());
  EXPECT_EQ(Parse("-iNF").Dbl, -std::numeric_limits<double>::infinity());
  EXPECT_EQ(Parse("0").Type, VT_INT);
  EXPECT_EQ(Parse("0i64").Type, VT_INT64);
}

TEST(ParseNumber, IntegerWidths) {
  TValue v = Parse("4294967295");
  EXPECT_EQ(v.Type, VT_INT);
  EXPECT_EQ(v.I32, -1);
  v = Parse("4294967296");
  EXPECT_EQ(v.Type, VT_INT64);
  EXPECT_EQ(v.I64, 4294967296LL);
  v = Parse("-5");
  EXPECT_EQ(v.Type, VT_INT);
  EXPECT_EQ(v.I32, -5);
  v = Parse("-4294967296");
  EXPECT_EQ(v.Type, VT_INT64);
  EXPECT_EQ(v.I64, -4294967296LL);
  v = Parse("-4294967297");  // low 32 bits of the negated value
  EXPECT_EQ(v.Type, VT_INT);
  EXPECT_EQ(v.I32, -1);
  v = Parse("-7i64");
  EXPECT_EQ(v.Type, VT_INT64);
  EXPECT_EQ(v.I64, -7);
}

TEST(ParseNumber, Prefixes) {
  EXPECT_EQ(Parse("0x10", true).I32, 16);
  EXPECT_EQ(Parse("0x10", true).Type, VT_INT);
  EXPECT_DOUBLE_EQ(TextToDouble("0x10"), 0.1);  // "x" is a unit letter there
  EXPECT_EQ(Parse("017", true).I32, 15);
  EXPECT_EQ(Parse("017", false).I32, 17);
  EXPECT_EQ(Parse("0b101", true).I32, 5);
  EXPECT_EQ(Parse("0b", true).I32, 0);
  EXPECT_EQ(Parse("0x", true).I32, 0);
  EXPECT_EQ(Parse("-0x10", true).I32, -16);
  EXPECT_EQ(Parse("0xFFFFFFFFFF", true).Type, VT_INT64);
  EXPECT_EQ(Parse("0xFFFFFFFF", true).I32, -1);
  EXPECT_EQ(Parse("0x1_0", true).I32, 16);  // other characters are skipped
  EXPECT_EQ(ParseHexText("0xff"), 255u);
  EXPECT_EQ(ParseHexText("0x"), 0u);
  EXPECT_EQ(Parse("0.5", true).Dbl, 0.5);
  EXPECT_EQ(ParseError("09", true), "Syntax error: '09' is not a valid octal value");
  EXPECT_EQ(ParseError("0b102", true), "Syntax error: '0b102' is not a valid binary value");
}

TEST(ParseNumber, Errors) {
  EXPECT_EQ(ParseError(std::string(128, '1')), "Syntax error: number string is too long");
  EXPECT_EQ(Parse(std::string(127, '1')).Type, VT_INT64);
  EXPECT_EQ(ParseError("abc"), "Syntax error: abc");
  EXPECT_EQ(ParseError(""), "Syntax error: ");
  EXPECT_EQ(ParseError("1.2.3"), "Syntax error: 1.2.3");
  EXPECT_EQ(ParseError("1+2"), "Syntax error: 1+2");
  EXPECT_EQ(ParseError("-"), "Syntax error: -");
  EXPECT_EQ(ParseError("."), "Syntax error: .");
  EXPECT_EQ(ParseError("j"), "Syntax error: j");
}

TEST(ParseNumber, ArbitraryBytesNeverCrash) {
  std::string text;
  for (int i = 0; i < 2000; i++) {
    text.clear();
    unsigned seed = static_cast<unsigned>(i) * 2654435761u;
    int length = static_cast<int>(seed % 20);
    for (int k = 0; k < length; k++) {
      seed = seed * 1103515245u + 12345u;
      text += static_cast<char>((seed >> 16) & 0xFF);
    }
    TValue v;
    try {
      ParseNumber(text, v, (i & 1) != 0);
    } catch (const RaisedError&) {
    }
  }
}

TEST(CompareDouble, Tolerance) {
  EXPECT_EQ(CompareDouble(1, 1 + 1e-13), 0);
  EXPECT_EQ(CompareDouble(0, 1e-300), -1);
  EXPECT_EQ(CompareDouble(1e-300, 0), 1);
  EXPECT_EQ(CompareDouble(0, 0), 0);
  EXPECT_EQ(CompareDouble(1, 1 + 1e-11), -1);
  EXPECT_EQ(CompareDouble(2, 1), 1);
  EXPECT_EQ(CompareDouble(std::nan(""), 1), 1);
  EXPECT_EQ(CompareDouble(1, std::nan("")), 1);
}

TEST(DoubleBits, SignAndInfinity) {
  const double inf = std::numeric_limits<double>::infinity();
  EXPECT_TRUE(IsInfinite(inf));
  EXPECT_TRUE(IsInfinite(-inf));
  EXPECT_FALSE(IsInfinite(std::nan("")));
  EXPECT_FALSE(IsInfinite(1e308));
  EXPECT_EQ(SignOfDouble(0.0), 0);
  EXPECT_EQ(SignOfDouble(-0.0), 0);
  EXPECT_EQ(SignOfDouble(3), 1);
  EXPECT_EQ(SignOfDouble(-3), -1);
  EXPECT_EQ(SignOfDouble(-std::nan("")), -1);
}

}  // namespace
}  // namespace tz4
