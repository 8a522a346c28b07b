// Parameter values and texts by kind: the forgiving entry, the strict entries
// with their messages, display texts and the change flag.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>

#include "base/last_error.h"
#include "components/param_ops.h"
#include "base/raise.h"
#include "expr/numtext.h"
#include "../expr/eval_helpers.h"
#include "test_cmp.h"

namespace tz4 {
namespace {

using testing::CTestCmp;
using testing::MakeTestCmp;
using testing_expr::FakeContext;

class ParamTest : public ::testing::Test {
 protected:
  void SetUp() override { SetLastError(""); }

  CParam Param(const std::string& name) {
    CParam p;
    EXPECT_TRUE(cmp->FindParam(name, p)) << name;
    return p;
  }
  // SetFromExpression; returns the error text ("" on success).
  std::string Try(const std::string& name, const std::string& text, CEvalContext* context = nullptr) {
    std::string error = "stale";
    bool ok = false;
    SetFromExpression(Param(name), error, text, context, nullptr, ok);
    EXPECT_EQ(ok, error.empty()) << error;
    return error;
  }
  void Apply(const std::string& name, const std::string& text) { EXPECT_EQ(Try(name, text), ""); }
  std::string Text(const std::string& name) {
    std::string text;
    EXPECT_TRUE(GetFullText(Param(name), text));
    return text;
  }

  std::unique_ptr<CTestCmp> cmp = MakeTestCmp("P1");
  uint32_t flags = 0;
};

TEST_F(ParamTest, GetTextCutsToTheBuffer) {
  cmp->File = "abcde";
  char buffer[8];
  std::memset(buffer, 'x', sizeof buffer);
  EXPECT_EQ(GetText(Param("File"), buffer, 5), 6);
  EXPECT_STREQ(buffer, "abcd");
  EXPECT_EQ(GetText(Param("File"), buffer, 3), 6);
  EXPECT_STREQ(buffer, "ab");
  EXPECT_EQ(GetText(Param("File"), buffer, 6), 6);
  EXPECT_STREQ(buffer, "abcde");
  EXPECT_EQ(GetText(Param("File"), nullptr, 0), 6);
}

TEST_F(ParamTest, SetValueOnSwitchesTruncatesWithoutRangeCheck) {
  EXPECT_EQ(SetValue(Param("Active"), 1.95, &flags), 0);
  EXPECT_EQ(cmp->Active, 2);
  EXPECT_EQ(flags, kParamsChangedFlag);
  double v = -1;
  EXPECT_EQ(GetValue(Param("Active"), &v), 0);
  EXPECT_EQ(v, 1.0);
  EXPECT_EQ(GetDisplayText(Param("Active")), "On");
  flags = 0;
  EXPECT_EQ(SetValue(Param("Active"), 2.0, &flags), 0);  // same integer: no change
  EXPECT_EQ(flags, 0u);
  EXPECT_EQ(SetValue(Param("Mode"), 6.95, &flags), 0);
  EXPECT_EQ(cmp->Mode.Index, 7);
  EXPECT_EQ(GetDisplayText(Param("Mode")), "");  // past the names, shown empty
  EXPECT_EQ(SetValue(Param("Active"), 0.0, nullptr), 0);  // no flags word
}

TEST_F(ParamTest, FormulaTextStaysAFormula) {
  Apply("R", "=2*3");
  EXPECT_EQ(cmp->R.Text, "=2*3");
  EXPECT_EQ(cmp->R.Value, 6.0);
  EXPECT_FALSE(cmp->R.Invalid);
  EXPECT_EQ(Text("R"), "=2*3");
  EXPECT_EQ(GetDisplayText(Param("R")), "6");
}

TEST_F(ParamTest, EmptyInitialCondition) {
  double v = 5;
  EXPECT_EQ(GetValue(Param("IC"), &v), -1);
  EXPECT_EQ(LastError(), "no IC");
  EXPECT_EQ(GetNumber(Param("IC")), 0.0);
  Apply("IC", "2*1.5");
  EXPECT_EQ(cmp->Ic, "3");
  EXPECT_EQ(SetValue(Param("IC"), 0.25, &flags), 0);
  EXPECT_EQ(cmp->Ic, "250e-3");
  EXPECT_EQ(flags, 0u);  // initial conditions do not mark a change
  EXPECT_EQ(GetValue(Param("IC"), &v), 0);
  EXPECT_EQ(v, 0.25);
  EXPECT_EQ(SetText(Param("IC"), "junk", nullptr, &flags), 0);  // stored unchecked
  EXPECT_EQ(flags, 0u);
  EXPECT_EQ(GetValue(Param("IC"), &v), -1);
  EXPECT_THROW(GetNumber(Param("IC")), RaisedError);
  Apply("IC", "");
  EXPECT_EQ(cmp->Ic, "");
}

TEST_F(ParamTest, FailedFormulaShowsItsTextAndMarksInvalid) {
  std::string error;
  bool ok = true;
  SetFromExpression(Param("R"), error, "=1+nothing", nullptr, nullptr, ok);
  EXPECT_FALSE(ok);
  EXPECT_EQ(error.rfind("Error : ", 0), 0u) << error;
  EXPECT_GT(error.size(), 8u);
  EXPECT_TRUE(cmp->R.Invalid);
  EXPECT_EQ(GetDisplayText(Param("R")), "#VAL");
  EXPECT_EQ(Text("R"), "=1+nothing");
  double v = 0;
  EXPECT_EQ(GetValue(Param("R"), &v), -1);
  EXPECT_EQ(LastError(), "formula error");
  try {
    GetNumber(Param("R"));
    ADD_FAILURE() << "no failure raised";
  } catch (const RaisedError& e) {
    EXPECT_EQ(e.Text(), "Invalid value");
  }
  // A failing plain expression keeps its text as well.
  SetFromExpression(Param("K"), error, "2*nothing", nullptr, nullptr, ok);
  EXPECT_FALSE(ok);
  EXPECT_EQ(cmp->K.Text, "2*nothing");
  EXPECT_EQ(cmp->K.Value, 2.0);
  EXPECT_TRUE(cmp->K.Invalid);
}

TEST_F(ParamTest, StrictTextOfValues) {
  EXPECT_EQ(SetText(Param("R"), "", nullptr, &flags), -1);
  EXPECT_EQ(LastError(), "no text");
  EXPECT_EQ(flags, 0u);
  SetLastError("");
  EXPECT_EQ(SetText(Param("R"), "1k", nullptr, &flags), 0);
  EXPECT_EQ(cmp->R.Value, 1000.0);
  EXPECT_EQ(flags, kParamsChangedFlag);
  flags = 0;
  EXPECT_EQ(SetText(Param("R"), "1000", nullptr, &flags), 0);  // same value
  EXPECT_EQ(flags, 0u);
  EXPECT_EQ(SetText(Param("R"), "2*3", nullptr, &flags), -1);  // no expressions here
  EXPECT_EQ(LastError().rfind("Syntax error: ", 0), 0u) << LastError();
  EXPECT_EQ(cmp->R.Value, 1000.0);
  SetLastError("");
  EXPECT_EQ(SetText(Param("R"), "=4/2", nullptr, &flags), 0);
  EXPECT_EQ(cmp->R.Value, 2.0);
  EXPECT_EQ(cmp->R.Text, "=4/2");
  EXPECT_EQ(flags, kParamsChangedFlag);
  flags = 0;
  EXPECT_EQ(SetText(Param("R"), "=4/nothing", nullptr, &flags), -1);
  EXPECT_EQ(cmp->R.Text, "=4/nothing");
  EXPECT_TRUE(cmp->R.Invalid);
  EXPECT_EQ(cmp->R.Value, 2.0);
  EXPECT_FALSE(LastError().empty());
  EXPECT_EQ(flags, 0u);
  char buffer[16];
  EXPECT_EQ(GetText(Param("R"), buffer, sizeof buffer), 11);
  EXPECT_STREQ(buffer, "=4/nothing");
  EXPECT_EQ(SetValue(Param("R"), 2.0, &flags), 0);  // a value replaces the formula
  EXPECT_EQ(cmp->R.Text, "");
  EXPECT_FALSE(cmp->R.Invalid);
  EXPECT_EQ(flags, 0u);
}

TEST_F(ParamTest, StrictSwitchWordsAreExact) {
  EXPECT_EQ(SetText(Param("Active"), "on", nullptr, &flags), -1);
  EXPECT_EQ(LastError(), "text on is not On/Off");
  SetLastError("");
  EXPECT_EQ(SetText(Param("Cycle"), "1", nullptr, &flags), -1);
  EXPECT_EQ(LastError(), "text 1 is not Yes/No");
  SetLastError("");
  EXPECT_EQ(SetText(Param("Out"), "HIGH", nullptr, &flags), -1);
  EXPECT_EQ(LastError(), "text HIGH is not High/Low");
  EXPECT_EQ(flags, 0u);
  EXPECT_EQ(SetText(Param("Cycle"), "Yes", nullptr, &flags), 0);
  EXPECT_EQ(cmp->Cycle, 1);
  EXPECT_EQ(Text("Cycle"), "Yes");
  EXPECT_EQ(flags, kParamsChangedFlag);
}

TEST_F(ParamTest, TextKindsAndTables) {
  Apply("File", "  data.txt ");
  EXPECT_EQ(cmp->File, "data.txt");
  EXPECT_EQ(SetText(Param("File"), " raw ", nullptr, &flags), 0);
  EXPECT_EQ(cmp->File, " raw ");
  EXPECT_EQ(flags, kParamsChangedFlag);
  Apply("pwl", "1,1,2");
  EXPECT_EQ(cmp->pwl.Text, "1,1,2");
  EXPECT_EQ(Text("pwl"), "1,1,2");
  EXPECT_EQ(SetText(Param("pwl"), "2", nullptr, &flags), 0);
  EXPECT_EQ(cmp->pwl.Text, "2");
  EXPECT_EQ(GetDisplayText(Param("File")), " raw ");
}

TEST_F(ParamTest, KindsWithoutNumberOrText) {
  double v = 0;
  EXPECT_EQ(GetValue(Param("File"), &v), -1);
  EXPECT_EQ(LastError(), "parameter type not supported");
  SetLastError("");
  EXPECT_EQ(GetValue(Param("R"), nullptr), -1);
  EXPECT_EQ(LastError(), "null pointer to value");
  SetLastError("");
  EXPECT_EQ(SetValue(Param("pwl"), 1.0, &flags), -1);
  EXPECT_EQ(LastError(), "parameter type not supported");
  SetLastError("");
  char buffer[8];
  EXPECT_EQ(GetText(Param("Code"), buffer, sizeof buffer), -1);
  EXPECT_EQ(LastError(), "parameter type not supported");
  SetLastError("");
  EXPECT_EQ(SetText(Param("Code"), "x", nullptr, &flags), -1);
  EXPECT_EQ(LastError(), "parameter type not supported");
  try {
    GetNumber(Param("File"));
    ADD_FAILURE() << "no failure raised";
  } catch (const RaisedError& e) {
    EXPECT_EQ(e.Text(), "Invalid type");
  }
  Apply("Code", "int x;");  // dropped without an error
  EXPECT_EQ(cmp->Code, "");
}

TEST_F(ParamTest, CodeDisplayIsOneShortLine) {
  EXPECT_EQ(GetDisplayText(Param("Code")), "<no code>");
  cmp->Code = "\n";
  EXPECT_EQ(GetDisplayText(Param("Code")), "\n");
  cmp->Code = "a\tb\nc\n";
  EXPECT_EQ(GetDisplayText(Param("Code")), "a b c\n");
  cmp->Code = std::string(33, 'x');
  EXPECT_EQ(GetDisplayText(Param("Code")), std::string(33, 'x'));
  cmp->Code = std::string(34, 'y');
  EXPECT_EQ(GetDisplayText(Param("Code")), std::string(30, 'y') + "...");
}

TEST_F(ParamTest, ForgivingEntryReportsTheEvaluatorsMessage) {
  EXPECT_EQ(Try("R", "=1+nothing"), "Error : Syntax error: nothing");
  EXPECT_EQ(Try("K", " 2*nothing "), "Error : Syntax error: nothing");
  EXPECT_EQ(cmp->K.Text, "2*nothing");  // trimmed, and kept to be mended
  EXPECT_EQ(Try("Mode", "Medium"), "Error : Syntax error: Medium");
  EXPECT_EQ(cmp->Mode.Index, 0);
  EXPECT_EQ(Try("Active", "sin(1,2)"), "Error : Function 'sin' : wrong number of parameters");
  EXPECT_EQ(Try("IC", "1+"), "");  // an operator with nothing behind it is no failure
  EXPECT_EQ(cmp->Ic, "1");
  EXPECT_EQ(Try("IC", "V(P1)"), "Error : Function 'V' not allowed");
  EXPECT_EQ(cmp->Ic, "V(P1)");
  EXPECT_EQ(Try("Code", "int x; x = 1;"), "");
}

TEST_F(ParamTest, StrictEntriesAppendTheirMessages) {
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

TEST_F(ParamTest, StrictNumberTextTakesSuffixesButNoPrefixes) {
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

TEST_F(ParamTest, EnumeratedAndSwitchForms) {
  EXPECT_EQ(Try("Mode", "SLOW"), "");
  EXPECT_EQ(cmp->Mode.Index, 1);
  EXPECT_EQ(Try("Mode", "2.9"), "");
  EXPECT_EQ(cmp->Mode.Index, 2);
  EXPECT_EQ(Try("Mode", "3"), "");  // three names: index 3 does not exist
  EXPECT_EQ(cmp->Mode.Index, 0);
  EXPECT_EQ(Try("Mode", "2"), "");
  EXPECT_EQ(Try("Mode", "-1"), "");
  EXPECT_EQ(cmp->Mode.Index, 0);
  EXPECT_EQ(Try("Out", "high"), "");
  EXPECT_EQ(cmp->Level, 0);
  EXPECT_EQ(Try("Out", "LOW"), "");
  EXPECT_EQ(cmp->Level, 1);
  EXPECT_EQ(Try("Out", "0.99"), "");
  EXPECT_EQ(cmp->Level, 0);
  EXPECT_EQ(Try("Cycle", "On"), "");  // all four words serve both kinds
  EXPECT_EQ(cmp->Cycle, 1);
  EXPECT_EQ(Try("Active", "no"), "");
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
  EXPECT_EQ(SetText(Param("Out"), "High", nullptr, &flags), 0);  // strict: not reversed
  EXPECT_EQ(cmp->Level, 1);
  EXPECT_EQ(Text("Out"), "High");
  EXPECT_EQ(Try("Active", "5"), "");  // switches clamp
  EXPECT_EQ(cmp->Active, 1);
  EXPECT_EQ(Try("Active", "-3"), "");
  EXPECT_EQ(cmp->Active, 0);
  EXPECT_EQ(Try("Active", "maybe").rfind("Error : ", 0), 0u);
  EXPECT_EQ(Text("Mode"), "Fast");
  EXPECT_EQ(SetText(Param("Mode"), "Off", nullptr, &flags), 0);
  double v = 0;
  EXPECT_EQ(GetValue(Param("Mode"), &v), 0);
  EXPECT_EQ(v, 2.0);
}

}  // namespace
}  // namespace tz4
