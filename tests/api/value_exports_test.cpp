// The value exports through the C interface, on a real circuit file:
// parameters by name and by number, and the host's inputs and outputs.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "api/documents.h"
#include "circuit_run.h"
#include "doc/doc.h"
#include "solver/calc.h"

namespace {

using namespace tz4_test;

class ValueExports : public ValuesCircuit {
 protected:
  double Value(const char* name) {
    double v = -99.0;
    EXPECT_EQ(TZ4_GetValue(h, name, &v), 0) << name << ": " << Error();
    return v;
  }
  std::string Text(const char* name) {
    char buffer[64];
    EXPECT_GT(TZ4_GetText(h, name, buffer, sizeof buffer), 0) << name << ": " << Error();
    return buffer;
  }
};

TEST_F(ValueExports, ValuesByName) {
  EXPECT_EQ(Value("R1.R"), 1000.0);
  EXPECT_EQ(Error(), "OK");
  EXPECT_EQ(Value("r1.r"), 1000.0);  // names ignore case
  EXPECT_EQ(Value("R1"), 1000.0);    // a bare name is the first parameter
  EXPECT_EQ(Value("R2.R"), 2000.0);  // formulas are up to date after the open
  EXPECT_EQ(Value("RH.R"), 3300.0);  // and see the file's logic levels

  ASSERT_EQ(TZ4_SetValue(h, "R1.R", 1500.0), 0) << Error();
  EXPECT_EQ(Error(), "OK");
  EXPECT_EQ(Value("R1.R"), 1500.0);
  EXPECT_TRUE(tz4::FindDocument(h)->changeFlags & tz4::CHANGE_PARAMS);

  double v = 7.0;
  EXPECT_EQ(TZ4_GetValue(h, "R9.R", &v), -1);
  EXPECT_EQ(Error(), "TZ4_GetValue: parameter R9.R not found");
  EXPECT_EQ(v, 0.0);  // cleared before the lookup
  EXPECT_EQ(TZ4_GetValue(h + 1000, "R1.R", nullptr), -1);  // null before the handle
  EXPECT_EQ(Error(), "TZ4_GetValue: NULL pointer");
  EXPECT_EQ(TZ4_GetValue(h, "", &v), -1);
  EXPECT_EQ(Error(), "TZ4_GetValue: no parameter name");
  EXPECT_EQ(TZ4_GetValue(h, "R1.nonsense", &v), -1);
  EXPECT_EQ(Error(), "TZ4_GetValue: parameter R1.nonsense not found");
  // The operation's own message: an empty initial condition has no number.
  EXPECT_EQ(TZ4_GetValue(h, "IN.VIC", &v), -1);
  EXPECT_EQ(Error(), "TZ4_GetValue: no IC");

  EXPECT_EQ(TZ4_SetValue(h, nullptr, 1.0), -1);
  EXPECT_EQ(Error(), "TZ4_SetValue: NULL pointer");
  EXPECT_EQ(TZ4_SetValue(h, "R1.", 2.0), 0);  // "R1." is the first parameter too
  EXPECT_EQ(Value("R1.R"), 2.0);
}

TEST_F(ValueExports, TextsByName) {
  char buffer[16];
  EXPECT_EQ(TZ4_GetText(h, "R2.R", buffer, sizeof buffer), 8);
  EXPECT_STREQ(buffer, "=R1.R*2");
  EXPECT_EQ(Error(), "OK");
  // Cut to the buffer, but the result still tells the full length + 1.
  EXPECT_EQ(TZ4_GetText(h, "R2.R", buffer, 3), 8);
  EXPECT_STREQ(buffer, "=R");
  EXPECT_EQ(TZ4_GetText(h, "R2.R", buffer, 7), 8);
  EXPECT_STREQ(buffer, "=R1.R*");
  EXPECT_EQ(TZ4_GetText(h, "D1.IC", buffer, sizeof buffer), 4);
  EXPECT_STREQ(buffer, "Off");

  std::strcpy(buffer, "xyz");
  EXPECT_EQ(TZ4_GetText(h, "R1.R", buffer, 0), -1);
  EXPECT_EQ(Error(), "TZ4_GetText: length = 0");
  EXPECT_STREQ(buffer, "xyz");
  EXPECT_EQ(TZ4_GetText(h, "Q7", buffer, sizeof buffer), -1);
  EXPECT_EQ(Error(), "TZ4_GetText: parameter Q7 not found");
  EXPECT_STREQ(buffer, "");  // cleared before the lookup
  EXPECT_EQ(TZ4_GetText(h + 1000, "R1.R", nullptr, 5), -1);
  EXPECT_EQ(Error(), "TZ4_GetText: NULL pointer");

  ASSERT_EQ(TZ4_SetText(h, "C1.C", "=R1.R*1e-9"), 0) << Error();
  EXPECT_EQ(Error(), "OK");
  EXPECT_DOUBLE_EQ(Value("C1.C"), 1e-6);
  EXPECT_EQ(Text("C1.C"), "=R1.R*1e-9");
  ASSERT_EQ(TZ4_SetText(h, "D1.IC", "On"), 0) << Error();
  EXPECT_EQ(Value("D1.IC"), 1.0);
  EXPECT_EQ(TZ4_SetText(h, "D1.IC", "Maybe"), -1);
  EXPECT_EQ(Error(), "TZ4_SetText: text Maybe is not On/Off");
  EXPECT_EQ(TZ4_SetText(h, "R1.R", nullptr), -1);
  EXPECT_EQ(Error(), "TZ4_SetText: NULL pointer");
  EXPECT_EQ(TZ4_SetText(h, "R1.R", ""), -1);
  EXPECT_EQ(Error(), "TZ4_SetText: no text");
}

TEST_F(ValueExports, ParameterNumbers) {
  const int r1 = TZ4_GetParam(h, "R1.R");
  ASSERT_GE(r1, 0) << Error();
  EXPECT_EQ(Error(), "OK");
  tz4::CDoc* doc = tz4::FindDocument(h);
  const size_t refs = doc->paramRefs.size();
  EXPECT_EQ(TZ4_GetParam(h, "R1.R"), r1);  // the same parameter, the same number
  EXPECT_EQ(TZ4_GetParam(h, "r1"), r1);
  EXPECT_EQ(doc->paramRefs.size(), refs);  // and nothing added
  const int r2 = TZ4_GetParam(h, "R2.R");
  const int ic = TZ4_GetParam(h, "D1.IC");
  EXPECT_EQ(r2, r1 + 1);
  EXPECT_EQ(ic, r1 + 2);

  // Each number keeps naming its own component, whatever was bound since.
  double v = 0.0;
  ASSERT_EQ(TZ4_GetParamValue(h, r1, &v), 0) << Error();
  EXPECT_EQ(v, 1000.0);
  ASSERT_EQ(TZ4_SetParamValue(h, r2, 42.0), 0) << Error();
  EXPECT_EQ(Error(), "OK");
  ASSERT_EQ(TZ4_GetParamValue(h, r1, &v), 0);
  EXPECT_EQ(v, 1000.0);
  EXPECT_EQ(Value("R2.R"), 42.0);
  ASSERT_EQ(TZ4_SetParamText(h, ic, "On"), 0) << Error();
  char buffer[8] = "";
  EXPECT_EQ(TZ4_GetParamText(h, ic, buffer, sizeof buffer), 3);
  EXPECT_STREQ(buffer, "On");
  EXPECT_EQ(TZ4_GetParamText(h, r2, buffer, 2), 3);  // "42" cut to one character
  EXPECT_STREQ(buffer, "4");

  EXPECT_EQ(TZ4_GetParamValue(h, ic + 1, &v), -1);
  EXPECT_EQ(Error(), "TZ4_GetParamValue: wrong param number");
  EXPECT_EQ(TZ4_GetParamValue(h, r1, nullptr), -1);
  EXPECT_EQ(Error(), "TZ4_GetParamValue: NULL pointer");
  EXPECT_EQ(TZ4_GetParamText(h, r1, buffer, 0), -1);
  EXPECT_EQ(Error(), "TZ4_GetParamText: length = 0");
  EXPECT_EQ(TZ4_SetParamText(h, r1, nullptr), -1);
  EXPECT_EQ(Error(), "TZ4_SetParamText: no text");
  EXPECT_EQ(TZ4_SetParamText(h, ic, "Maybe"), -1);
  EXPECT_EQ(Error(), "TZ4_SetParamText: text Maybe is not On/Off");
  EXPECT_EQ(TZ4_GetParam(h, "R1.nonsense"), -1);
  EXPECT_EQ(Error(), "TZ4_GetParam: parameter R1.nonsense not found");

  // Numbers count from 0 in each document.
  const int other = TZ4_Open(kCircuit.c_str());
  ASSERT_GE(other, 0);
  EXPECT_EQ(TZ4_GetParam(other, "C1.C"), 0);
  EXPECT_EQ(TZ4_GetParamValue(other, r1 + 1, &v), -1);
  EXPECT_EQ(Error(), "TZ4_GetParamValue: wrong param number");
  TZ4_Close(other);
}

TEST_F(ValueExports, Inputs) {
  EXPECT_EQ(TZ4_GetInput(h + 1000, nullptr), -1);  // the name before the handle
  EXPECT_EQ(Error(), "TZ4_GetInput: NULL pointer");
  EXPECT_EQ(TZ4_GetInput(h + 1000, ""), -1);
  EXPECT_EQ(Error(), "TZ4_GetInput: no input name");
  EXPECT_EQ(TZ4_GetInput(h, "R1"), -1);
  EXPECT_EQ(Error(), "TZ4_GetInput: component R1 cannot be an input");
  EXPECT_EQ(TZ4_GetInput(h, "nope"), -1);
  EXPECT_EQ(Error(), "TZ4_GetInput: component nope not found");
  EXPECT_EQ(TZ4_GetInput(h, "R1.R"), -1);  // component names only
  EXPECT_EQ(Error(), "TZ4_GetInput: component R1.R not found");

  // A plain label is switched to its "V" model and starts from 0.
  EXPECT_EQ(TZ4_GetParam(h, "IN.V"), -1);
  const int in = TZ4_GetInput(h, "in");
  ASSERT_EQ(in, 0) << Error();
  EXPECT_EQ(Error(), "OK");
  EXPECT_EQ(Value("IN.V"), 0.0);
  ASSERT_EQ(TZ4_SetInputValue(h, in, 2.5), 0) << Error();
  EXPECT_EQ(Error(), "OK");
  EXPECT_EQ(Value("IN.V"), 2.5);
  // Already in that model: the present value stays; a second number for it.
  const int again = TZ4_GetInput(h, "IN");
  EXPECT_EQ(again, 1);
  EXPECT_EQ(Value("IN.V"), 2.5);
  ASSERT_EQ(TZ4_SetInputValue(h, again, -1.0), 0);
  EXPECT_EQ(Value("IN.V"), -1.0);

  // A constant source keeps its value; a timed one is switched and zeroed.
  const int v1 = TZ4_GetInput(h, "V1");
  EXPECT_EQ(v1, 2);
  EXPECT_EQ(Value("V1.V"), 5.0);
  double unused = 0.0;
  EXPECT_EQ(TZ4_GetValue(h, "I1.I", &unused), -1);  // "Pulse" has no "I"
  const int i1 = TZ4_GetInput(h, "I1");
  EXPECT_EQ(i1, 3);
  EXPECT_EQ(Value("I1.I"), 0.0);
  ASSERT_EQ(TZ4_SetInputValue(h, i1, 0.25), 0);
  EXPECT_EQ(Value("I1.I"), 0.25);

  EXPECT_EQ(TZ4_SetInputValue(h, 4, 1.0), -1);
  EXPECT_EQ(Error(), "TZ4_SetInputValue: wrong input number");
}

TEST_F(ValueExports, Outputs) {
  EXPECT_EQ(TZ4_GetOutput(h + 1000, nullptr), -1);
  EXPECT_EQ(Error(), "TZ4_GetOutput: NULL pointer");
  EXPECT_EQ(TZ4_GetOutput(h + 1000, ""), -1);
  EXPECT_EQ(Error(), "TZ4_GetOutput: no label name");
  EXPECT_EQ(TZ4_GetOutput(h, "R1"), -1);
  EXPECT_EQ(Error(), "TZ4_GetOutput: component R1 is not a label");
  EXPECT_EQ(TZ4_GetOutput(h, "X1.OUT"), -1);  // only the top collection
  EXPECT_EQ(Error(), "TZ4_GetOutput: label X1.OUT not found");

  const int out = TZ4_GetOutput(h, "OUT");
  ASSERT_EQ(out, 0) << Error();
  EXPECT_EQ(TZ4_GetOutput(h, "Out"), 1);
  double v = 7.0;
  ASSERT_EQ(TZ4_GetOutputValue(h, out, &v), 0) << Error();
  EXPECT_EQ(Error(), "OK");
  EXPECT_EQ(v, 0.0);  // nothing is running

  // While a run stands, the label's pin holds its index in the solution.
  tz4::CDoc* doc = tz4::FindDocument(h);
  doc->calc->x = {0.0, 1.5, 3.25};
  doc->running = true;
  ASSERT_EQ(TZ4_GetOutputValue(h, out, &v), 0) << Error();
  EXPECT_EQ(v, 3.25);
  doc->running = false;
  ASSERT_EQ(TZ4_GetOutputValue(h, out, &v), 0);
  EXPECT_EQ(v, 0.0);

  EXPECT_EQ(TZ4_GetOutputValue(h, 2, &v), -1);
  EXPECT_EQ(Error(), "TZ4_GetOutputValue: wrong output number");
  EXPECT_EQ(TZ4_GetOutputValue(h + 1000, out, nullptr), -1);
  EXPECT_EQ(Error(), "TZ4_GetOutputValue: NULL pointer");
}

}  // namespace
