// Number text: suffixes and exponents, prefixes and integer widths, the
// length limit, formatting with its carries, and the double helpers.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "eval_helpers.h"
#include "expr/numtext.h"
#include "base/raise.h"
#include "expr/value.h"

namespace tz4 {
namespace {

using testing_expr::Parse;
using testing_expr::ParseError;

const double kInf = std::numeric_limits<double>::infinity();

TEST(ParseNumber, SuffixesExponentsAndUnitLetters) {
  struct Case {
    const char* text;
    double value;
  };
  const std::vector<Case> cases = {
      {"1k5", 1500},      {"1.5k", 1500},   {"2.2u", 2.2e-6},  {"1MEG", 1e6},     {"1mg", 1e6},
      {"1mk", 1e-6},      {"1mG", 1e-3},    {"1m", 1e-3},      {"1G", 1e9},       {"1g", 1},
      {"1t", 1},          {"1T", 1e12},     {"3n", 3e-9},      {"3p", 3e-12},     {"3f", 3e-15},
      {"4R7", 4.7},       {"4R7Ohm", 4.7},  {"10uF", 10e-6},   {"-2K", -2000},    {"5Ohm", 5},
      {"1e3k", 1000},     {"1k5e2", 150},   {"1.5kx7", 1500},  {"1k5e", 1500},    {"2.5ke", 2500},
      {"1k5e-3", 1.5e-3}, {"1.5e", 1.5},    {"1e 3", 1000},    {"1Ve3", 1.3},     {"k5", 500},
      {"0x10", 0.1},      {"1e-100", 0.0},  {"1e-99", 1e-99},  {"1e400", kInf},   {"1e99999999999", kInf},
      {"inf", kInf},      {"iNF", kInf},    {"-inf", -kInf},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_DOUBLE_EQ(TextToDouble(c.text), c.value);
  }
  EXPECT_EQ(Parse("1.5e").Type, VT_DOUBLE);
  EXPECT_NEAR(TextToDouble("10dB"), 3.16227766016838, 1e-12);
  EXPECT_NEAR(TextToDouble("-20dB"), 0.1, 1e-15);
}

TEST(ParseNumber, TypesPrefixesAndIntegerWidths) {
  struct Case {
    const char* text;
    bool prefix;
    int type;
    int64_t value;
  };
  const std::vector<Case> cases = {
      {"123", false, VT_INT, 123}, {"0", false, VT_INT, 0}, {"5i64", false, VT_INT64, 5},
      {"0i64", false, VT_INT64, 0}, {"-5i64", false, VT_INT64, -5},
      {"4294967295", false, VT_INT, -1}, {"4294967296", false, VT_INT64, 4294967296LL},
      {"-5", false, VT_INT, -5},
      {"-4294967296", false, VT_INT64, -4294967296LL},  // low 32 bits of the negated value are zero
      {"-4294967297", false, VT_INT, -1},               // otherwise only the low 32 bits remain
      {"-2147483648", false, VT_INT, std::numeric_limits<int32_t>::min()},
      {"0x10", true, VT_INT, 16}, {"-0x10", true, VT_INT, -16}, {"0x", true, VT_INT, 0},
      {"0xg1", true, VT_INT, 1},  // other characters are skipped
      {"0x1_0", true, VT_INT, 16}, {"0xFFFFFFFF", true, VT_INT, -1},
      {"0xFFFFFFFFFF", true, VT_INT64, 0xFFFFFFFFFFLL}, {"0b101", true, VT_INT, 5},
      {"-0b101", true, VT_INT, -5}, {"0b", true, VT_INT, 0}, {"017", true, VT_INT, 15},
      {"017", false, VT_INT, 17},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.text) + (c.prefix ? " (prefix)" : ""));
    TValue v = Parse(c.text, c.prefix);
    ASSERT_EQ(v.Type, c.type);
    EXPECT_EQ(c.type == VT_INT ? v.I32 : v.I64, c.value);
  }
  EXPECT_EQ(Parse("123.0").Type, VT_DOUBLE);
  EXPECT_EQ(Parse("1e3").Type, VT_DOUBLE);
  EXPECT_EQ(Parse("0.5", true).Dbl, 0.5);
  TValue j = Parse("-2.5kj");
  EXPECT_EQ(j.Type, VT_COMPLEX);
  EXPECT_EQ(j.Dbl, 0.0);
  EXPECT_EQ(j.Im, -2500.0);
  EXPECT_DOUBLE_EQ(Parse("2.2uj").Im, 2.2e-6);
  EXPECT_EQ(ParseHexText("0xff"), 255u);
  EXPECT_EQ(ParseHexText("0x"), 0u);
}

TEST(ParseNumber, Errors) {
  struct Case {
    std::string text;
    bool prefix;
    const char* error;
  };
  const std::vector<Case> cases = {
      {"abc", false, "Syntax error: abc"}, {"", false, "Syntax error: "},
      {"1.2.3", false, "Syntax error: 1.2.3"}, {"1+2", false, "Syntax error: 1+2"},
      {"-", false, "Syntax error: -"}, {".", false, "Syntax error: ."},
      {"j", false, "Syntax error: j"}, {"V5", false, "Syntax error: V5"},
      {"m", false, "Syntax error: m"}, {"1k.5", false, "Syntax error: 1k.5"},
      {"1 k", false, "Syntax error: 1 k"}, {"Inf", false, "Syntax error: Inf"},
      {"i64", false, "Syntax error: i64"},  // too short for the suffix
      {"09", true, "Syntax error: '09' is not a valid octal value"},
      {"00.5", true, "Syntax error: '00.5' is not a valid octal value"},
      {"0b102", true, "Syntax error: '0b102' is not a valid binary value"},
      // The length limit counts the untrimmed text.
      {std::string(127, '1'), false, "<no error>"},
      {std::string(128, '1'), false, "Syntax error: number string is too long"},
      {" " + std::string(127, '1'), false, "Syntax error: number string is too long"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(ParseError(c.text, c.prefix), c.error);
  }
  EXPECT_EQ(Parse(std::string(127, '1')).Type, VT_INT64);
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

TEST(FormatNumber, EngineeringTextCarriesAndSpecialValues) {
  struct Case {
    double value;
    int digits;
    const char* text;
  };
  const std::vector<Case> cases = {
      {0.001, 12, "1e-3"}, {999.9999999999999, 12, "1e+3"}, {-999.9999999999999, 12, "-1e+3"},
      {0.00099999999999999999, 12, "1e-3"}, {1234.5, 12, "1.2345e+3"}, {0, 12, "0"},
      {100, 12, "100"}, {1000, 12, "1e+3"}, {2.2e6, 12, "2.2e+6"}, {0.5, 12, "500e-3"},
      {-47e-12, 12, "-47e-12"}, {-2.2e-6, 12, "-2.2e-6"}, {1.0 / 3.0, 12, "333.333333333e-3"},
      {1.0 / 3.0, 3, "333e-3"}, {123456, 3, "123e+3"}, {std::nan(""), 12, ""}, {kInf, 12, "inf"},
      {-kInf, 12, "-inf"}, {1.7976931348623157e308, 12, "179.769313486e+306"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(FormatNumber(c.value, c.digits), c.text);
  }
  EXPECT_EQ(FormatNumber(0.0015), "1.5e-3");  // twelve digits by default
  EXPECT_EQ(FormatNumber(5e-324, 12).substr(0, 4), "4.94");
  for (double x : {1.0, -2.5, 3.3e-9, 4.7e12, 123456789012.0, 1e-99, 1e308})
    EXPECT_EQ(CompareDouble(TextToDouble(FormatNumber(x)), x), 0) << x;
}

TEST(DoubleHelpers, CompareSignAndInfinity) {
  EXPECT_EQ(CompareDouble(1, 1 + 1e-13), 0);
  EXPECT_EQ(CompareDouble(0, 1e-300), -1);
  EXPECT_EQ(CompareDouble(0, -1e-300), 1);
  EXPECT_EQ(CompareDouble(1e-300, 0), 1);
  EXPECT_EQ(CompareDouble(0, 0), 0);
  EXPECT_EQ(CompareDouble(1, 1 + 1e-11), -1);
  EXPECT_EQ(CompareDouble(std::nan(""), 1), 1);
  EXPECT_EQ(CompareDouble(1, std::nan("")), 1);
  EXPECT_TRUE(IsInfinite(kInf));
  EXPECT_TRUE(IsInfinite(-kInf));
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
