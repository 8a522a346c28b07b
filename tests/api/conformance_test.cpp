// The forty exports as a host sees them: real circuit files, only the C
// interface and the error text. Each test pins down behaviour a host relies
// on across several exports: what a save after a run writes, outputs read
// while a run stands, the reporting protocol around failures, and arguments
// that must never crash the host.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <cstdio>
#include <limits>
#include <set>
#include <sstream>
#include <string>

#include "circuit_run.h"

namespace {

using namespace tz4_test;

// 10 V into a divider of 1 k and 3 k on nodes numbered as a drawing program
// numbers them: sparse and not in order. OUT names the middle node, LONE a
// node that nothing else touches.
const std::string kSparseDivider =
    "      <Cmp type=\"V_V\" id=\"1\" name=\"V1\" node0=\"0\" node1=\"40\" model=\"V\" v=\"10\" />\n"
    "      <Cmp type=\"R_R\" id=\"2\" name=\"R1\" node0=\"40\" node1=\"17\" model=\"R\" r=\"1000\" />\n"
    "      <Cmp type=\"R_R\" id=\"3\" name=\"R2\" node0=\"0\" node1=\"17\" model=\"R\" r=\"3000\" />\n"
    "      <Cmp type=\"label\" id=\"4\" name=\"OUT\" node0=\"17\" model=\"Label\" />\n"
    "      <Cmp type=\"label\" id=\"5\" name=\"LONE\" node0=\"99\" model=\"Label\" />\n";

class Conformance : public CircuitRun {
 protected:
  double Output(int number) {
    double v = -99.0;
    EXPECT_EQ(TZ4_GetOutputValue(h, number, &v), 0) << Error();
    return v;
  }
};

TEST_F(Conformance, SaveAfterARunWritesTheNodeNumbersOfTheFile) {
  Open(kSparseDivider);
  const int out = TZ4_GetOutput(h, "OUT");
  const int lone = TZ4_GetOutput(h, "LONE");
  ASSERT_GE(lone, 0) << Error();
  const int trace = TZ4_AddVTrace(h, "R2");
  ASSERT_GE(trace, 0) << Error();
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  EXPECT_NEAR(Output(out), 7.5, 1e-9);
  EXPECT_EQ(Output(lone), 0.0);

  const std::string saved = dir.File("saved.tz4");
  ASSERT_EQ(TZ4_SaveAs(h, saved.c_str()), 0) << Error();
  const std::string text = ReadFile(saved);
  for (const char* node : {"node1=\"40\"", "node0=\"40\" node1=\"17\"", "node0=\"0\" node1=\"17\"",
                           "node0=\"17\"", "node0=\"99\""})
    EXPECT_NE(text.find(node), std::string::npos) << node << " in\n" << text;

  // The run goes on as if nothing had been saved: its numbering is intact.
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  EXPECT_NEAR(Output(out), 7.5, 1e-9);
  double t = 0, v = 0;
  ASSERT_EQ(TZ4_GetLastData(h, trace, &t, &v), 0) << Error();
  EXPECT_NEAR(v, 7.5, 1e-9);

  // A rebuild in the middle of the run and a fresh start number the file's
  // nodes again, and the saved file still holds them.
  ASSERT_EQ(TZ4_SetValue(h, "R2.R", 1000.0), 0) << Error();
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  EXPECT_NEAR(Output(out), 5.0, 1e-9);
  ASSERT_EQ(TZ4_Start(h), 0) << Error();
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  EXPECT_NEAR(Output(out), 5.0, 1e-9);
  ASSERT_EQ(TZ4_Save(h), 0) << Error();
  EXPECT_NE(ReadFile(path).find("node0=\"0\" node1=\"17\""), std::string::npos);

  // The saved file runs like the original.
  const int back = TZ4_Open(saved.c_str());
  ASSERT_GE(back, 0) << Error();
  const int backOut = TZ4_GetOutput(back, "OUT");
  ASSERT_EQ(TZ4_Simulate(back, 1e-3), 0) << Error();
  double vb = 0;
  ASSERT_EQ(TZ4_GetOutputValue(back, backOut, &vb), 0) << Error();
  EXPECT_NEAR(vb, 7.5, 1e-9);
  TZ4_Close(back);
}

TEST_F(Conformance, SaveAfterAFailedRunWritesTheNodeNumbersOfTheFile) {
  Open(kSparseDivider);
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  const int bad = TZ4_AddFuncTrace(h, "nosuchname*2");
  ASSERT_GE(bad, 0) << Error();
  EXPECT_EQ(TZ4_Simulate(h, 1e-3), -1);
  ASSERT_EQ(TZ4_Save(h), 0) << Error();
  EXPECT_NE(ReadFile(path).find("node0=\"40\" node1=\"17\""), std::string::npos) << ReadFile(path);
}

// Every export that takes a document handle answers an unknown one with its
// own name and "no circuit", unless an argument check of its own comes
// first; nothing is written through the pointers it was given.
TEST_F(Conformance, EveryExportReportsAnUnknownDocumentInItsOwnWords) {
  Open(kSparseDivider);
  const int closed = TZ4_Open(path.c_str());
  ASSERT_GE(closed, 0) << Error();
  ASSERT_EQ(TZ4_Close(closed), 0);

  double a = 5.0, b = 6.0;
  char text[8] = "keep";
  struct Call {
    const char* name;
    int (*call)(int ncir, double* a, double* b, char* text);
  };
  const Call calls[] = {
      {"TZ4_Save", [](int n, double*, double*, char*) { return TZ4_Save(n); }},
      {"TZ4_SaveAs", [](int n, double*, double*, char*) { return TZ4_SaveAs(n, "x.tz4"); }},
      {"TZ4_Close", [](int n, double*, double*, char*) { return TZ4_Close(n); }},
      {"TZ4_GetValue", [](int n, double* a, double*, char*) { return TZ4_GetValue(n, "R1.R", a); }},
      {"TZ4_SetValue", [](int n, double*, double*, char*) { return TZ4_SetValue(n, "R1.R", 1.0); }},
      {"TZ4_GetText", [](int n, double*, double*, char* t) { return TZ4_GetText(n, "R1.R", t, 8); }},
      {"TZ4_SetText", [](int n, double*, double*, char*) { return TZ4_SetText(n, "R1.R", "1"); }},
      {"TZ4_GetParam", [](int n, double*, double*, char*) { return TZ4_GetParam(n, "R1.R"); }},
      {"TZ4_GetParamValue", [](int n, double* a, double*, char*) { return TZ4_GetParamValue(n, 0, a); }},
      {"TZ4_SetParamValue", [](int n, double*, double*, char*) { return TZ4_SetParamValue(n, 0, 1.0); }},
      {"TZ4_GetParamText", [](int n, double*, double*, char* t) { return TZ4_GetParamText(n, 0, t, 8); }},
      {"TZ4_SetParamText", [](int n, double*, double*, char*) { return TZ4_SetParamText(n, 0, "1"); }},
      {"TZ4_GetInput", [](int n, double*, double*, char*) { return TZ4_GetInput(n, "V1"); }},
      {"TZ4_SetInputValue", [](int n, double*, double*, char*) { return TZ4_SetInputValue(n, 0, 1.0); }},
      {"TZ4_GetOutput", [](int n, double*, double*, char*) { return TZ4_GetOutput(n, "OUT"); }},
      {"TZ4_GetOutputValue", [](int n, double* a, double*, char*) { return TZ4_GetOutputValue(n, 0, a); }},
      {"TZ4_GetTrace", [](int n, double*, double*, char*) { return TZ4_GetTrace(n, "V(R1)"); }},
      {"TZ4_AddVTrace", [](int n, double*, double*, char*) { return TZ4_AddVTrace(n, "R1"); }},
      {"TZ4_AddITrace", [](int n, double*, double*, char*) { return TZ4_AddITrace(n, "R1"); }},
      {"TZ4_AddPTrace", [](int n, double*, double*, char*) { return TZ4_AddPTrace(n, "R1"); }},
      {"TZ4_AddVarTrace", [](int n, double*, double*, char*) { return TZ4_AddVarTrace(n, "R1"); }},
      {"TZ4_AddFuncTrace", [](int n, double*, double*, char*) { return TZ4_AddFuncTrace(n, "t"); }},
      {"TZ4_DeleteTrace", [](int n, double*, double*, char*) { return TZ4_DeleteTrace(n, 0); }},
      {"TZ4_SetTimeout", [](int n, double*, double*, char*) { return TZ4_SetTimeout(n, 1); }},
      {"TZ4_SetStep", [](int n, double*, double*, char*) { return TZ4_SetStep(n, 1e-6); }},
      {"TZ4_GetSimulationTime", [](int n, double* a, double*, char*) { return TZ4_GetSimulationTime(n, a); }},
      {"TZ4_Start", [](int n, double*, double*, char*) { return TZ4_Start(n); }},
      {"TZ4_Simulate", [](int n, double*, double*, char*) { return TZ4_Simulate(n, 1e-3); }},
      {"TZ4_SimulateInterval", [](int n, double*, double*, char*) { return TZ4_SimulateInterval(n, 1e-3); }},
      {"TZ4_SimulateStep", [](int n, double*, double*, char*) { return TZ4_SimulateStep(n); }},
      {"TZ4_SaveIC", [](int n, double*, double*, char*) { return TZ4_SaveIC(n); }},
      {"TZ4_GetDataSize", [](int n, double*, double*, char*) { return TZ4_GetDataSize(n, 0); }},
      {"TZ4_GetDataAt", [](int n, double* a, double* b, char*) { return TZ4_GetDataAt(n, 0, 0, a, b); }},
      {"TZ4_GetLastData", [](int n, double* a, double* b, char*) { return TZ4_GetLastData(n, 0, a, b); }},
      {"TZ4_GetData", [](int n, double*, double* b, char*) { return TZ4_GetData(n, 0, 0.0, b); }},
      {"TZ4_DeleteOldData", [](int n, double*, double*, char*) { return TZ4_DeleteOldData(n); }},
  };
  for (const Call& call : calls) {
    for (int handle : {closed, -1, INT_MIN, INT_MAX}) {
      a = 5.0;
      b = 6.0;
      std::strcpy(text, "keep");
      EXPECT_EQ(call.call(handle, &a, &b, text), -1) << call.name << " " << handle;
      EXPECT_EQ(Error(), std::string(call.name) + ": no circuit") << handle;
      EXPECT_EQ(b, 6.0) << call.name;
      const std::string name = call.name;
      // Only the two forms by name clear their destination before the lookup.
      if (name == "TZ4_GetValue") {
        EXPECT_EQ(a, 0.0);
      } else {
        EXPECT_EQ(a, 5.0) << call.name;
      }
      EXPECT_STREQ(text, name == "TZ4_GetText" ? "" : "keep") << call.name;
    }
  }
  // The open document was not touched by any of this.
  double v = 0.0;
  ASSERT_EQ(TZ4_GetValue(h, "R1.R", &v), 0) << Error();
  EXPECT_EQ(v, 1000.0);
}

TEST_F(Conformance, NumbersAndIndicesOutOfEveryRangeAreRefused) {
  Open(kSparseDivider);
  const int trace = TZ4_AddVTrace(h, "R2");
  ASSERT_GE(trace, 0) << Error();
  ASSERT_EQ(TZ4_GetParam(h, "R1.R"), 0) << Error();
  ASSERT_EQ(TZ4_GetInput(h, "V1"), 0) << Error();
  ASSERT_EQ(TZ4_GetOutput(h, "OUT"), 0) << Error();
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();

  const int samples = TZ4_GetDataSize(h, trace);
  ASSERT_GT(samples, 0) << Error();
  for (int number : {INT_MIN, -1, 1, INT_MAX}) {
    double v = 5.0, t = 5.0;
    char text[8] = "keep";
    EXPECT_EQ(TZ4_GetParamValue(h, number, &v), -1);
    EXPECT_EQ(Error(), "TZ4_GetParamValue: wrong param number");
    EXPECT_EQ(v, 5.0);
    EXPECT_EQ(TZ4_SetParamValue(h, number, 1.0), -1);
    EXPECT_EQ(Error(), "TZ4_SetParamValue: wrong param number");
    EXPECT_EQ(TZ4_GetParamText(h, number, text, sizeof text), -1);
    EXPECT_EQ(Error(), "TZ4_GetParamText: wrong param number");
    EXPECT_STREQ(text, "keep");
    EXPECT_EQ(TZ4_SetParamText(h, number, "1"), -1);
    EXPECT_EQ(Error(), "TZ4_SetParamText: wrong param number");
    EXPECT_EQ(TZ4_SetInputValue(h, number, 1.0), -1);
    EXPECT_EQ(Error(), "TZ4_SetInputValue: wrong input number");
    EXPECT_EQ(TZ4_GetOutputValue(h, number, &v), -1);
    EXPECT_EQ(Error(), "TZ4_GetOutputValue: wrong output number");
    EXPECT_EQ(TZ4_GetDataAt(h, trace, number == 1 ? samples : number, &t, &v), -1);
    EXPECT_EQ(Error(), "TZ4_GetDataAt: no data at requested index");
    EXPECT_EQ(t, 0.0);
    EXPECT_EQ(v, 0.0);
  }
  // Trace handles: a negative one adds no words, an unknown one "no trace".
  for (int handle : {INT_MIN, -1}) {
    EXPECT_EQ(TZ4_DeleteTrace(h, handle), -1);
    EXPECT_EQ(Error(), "TZ4_DeleteTrace: ");
    EXPECT_EQ(TZ4_GetDataSize(h, handle), -1);
    EXPECT_EQ(Error(), "TZ4_GetDataSize: ");
  }
  EXPECT_EQ(TZ4_DeleteTrace(h, INT_MAX), -1);
  EXPECT_EQ(Error(), "TZ4_DeleteTrace: no trace");
  EXPECT_EQ(TZ4_GetDataSize(h, h), -1);  // a document's handle is no trace
  EXPECT_EQ(Error(), "TZ4_GetDataSize: no trace");

  // A buffer declared without room gets nothing, but learns the length.
  char text[4] = "abc";
  EXPECT_EQ(TZ4_GetText(h, "R1.R", text, -1), 5);  // "1000"
  EXPECT_EQ(Error(), "OK");
  EXPECT_STREQ(text, "abc");
  EXPECT_EQ(TZ4_GetParamText(h, 0, text, INT_MIN), 5);
  EXPECT_STREQ(text, "abc");
  EXPECT_EQ(TZ4_GetText(h, "R1.R", text, 1), 5);
  EXPECT_STREQ(text, "");

  // None of this disturbed the run.
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  EXPECT_NEAR(Output(0), 7.5, 1e-9);
}

// A failure of the driver is told once, behind the prefix, and ends the run;
// the document is then usable as before.
TEST_F(Conformance, RunFailuresAreToldOnceAndTheDocumentRecovers) {
  const std::string pot =
      "      <Cmp type=\"R_Pot\" id=\"6\" name=\"P1\" node0=\"40\" node1=\"0\" node2=\"17\" "
      "model=\"Potentiometer\" r=\"5000\" p=\"0.5\" />\n";
  Open(kSparseDivider + pot);
  const int out = TZ4_GetOutput(h, "OUT");
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();

  // A function that cannot be evaluated fails the first point it is asked for.
  const int bad = TZ4_AddFuncTrace(h, "nosuchname*2");
  ASSERT_GE(bad, 0) << Error();
  EXPECT_EQ(TZ4_Simulate(h, 1e-3), -1);
  std::string failure = Error();
  const std::string head = "TZ4_Simulate: Transient error at t=";
  const std::string reason = " : Syntax error: nosuchname";
  EXPECT_EQ(failure.rfind(head, 0), 0u) << failure;
  EXPECT_EQ(failure.size() - failure.rfind(reason), reason.size()) << failure;
  EXPECT_EQ(failure.find("Transient error"), failure.rfind("Transient error")) << failure;
  EXPECT_EQ(failure.find("nosuchname"), failure.rfind("nosuchname")) << failure;
  double v = -1.0;
  ASSERT_EQ(TZ4_GetOutputValue(h, out, &v), 0) << Error();
  EXPECT_EQ(v, 0.0);  // not running any more
  EXPECT_EQ(TZ4_SaveIC(h), -1);
  EXPECT_EQ(Error(), "TZ4_SaveIC: simulation not running");

  // The next call starts again and fails at the first point.
  EXPECT_EQ(TZ4_SimulateStep(h), -1);
  EXPECT_EQ(Error(), "TZ4_SimulateStep: Transient error at t=0 : Syntax error: nosuchname");
  ASSERT_EQ(TZ4_DeleteTrace(h, bad), 0) << Error();
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  EXPECT_EQ(Error(), "OK");

  // A setting that the checks refuse, found at the rebuild in the middle of
  // a run: the component's words, then the driver's, since no solver text
  // stands behind them.
  ASSERT_EQ(TZ4_SetValue(h, "P1.Position", 2.0), 0) << Error();
  EXPECT_EQ(TZ4_Simulate(h, 1e-3), -1);
  EXPECT_EQ(Error(), "TZ4_Simulate: P1 : Position > 1; unknown transient error");
  // At a start the words of the components stand alone.
  EXPECT_EQ(TZ4_Start(h), -1);
  EXPECT_EQ(Error(), "TZ4_Start: P1 : Position > 1; ");
  double t = -1.0;
  ASSERT_EQ(TZ4_GetSimulationTime(h, &t), 0);
  EXPECT_EQ(t, 0.0);

  ASSERT_EQ(TZ4_SetValue(h, "P1.Position", 0.5), 0) << Error();
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  ASSERT_EQ(TZ4_GetOutputValue(h, out, &v), 0) << Error();
  EXPECT_GT(v, 0.0);
}

// A label that the host turns into an input while a run stands gets a new
// model: the run must take up that model, not go on with the old system as
// if nothing had changed.
TEST_F(Conformance, AnInputTakenDuringARunIsTakenUpByTheRun) {
  Open(kSparseDivider);
  const int trace = TZ4_AddVTrace(h, "R2");
  ASSERT_GE(trace, 0) << Error();
  ASSERT_EQ(TZ4_SimulateInterval(h, 1e-3), 0) << Error();

  const int in = TZ4_GetInput(h, "OUT");
  ASSERT_EQ(in, 0) << Error();
  ASSERT_EQ(TZ4_SetInputValue(h, in, 3.0), 0) << Error();
  const int result = TZ4_SimulateInterval(h, 1e-3);
  const std::string failure = Error();
  double t = 0, v = 0;
  ASSERT_EQ(TZ4_GetLastData(h, trace, &t, &v), 0) << Error();
  if (result == 0) {
    EXPECT_NEAR(v, 3.0, 1e-9);  // the label drives its node
  } else {
    // A model that cannot run is refused in the label's own name.
    EXPECT_EQ(failure.rfind("TZ4_SimulateInterval: OUT : ", 0), 0u) << failure;
  }

  // A source that is switched keeps working in its new model.
  Open(kSparseDivider);
  const int trace2 = TZ4_AddVTrace(h, "R2");
  ASSERT_EQ(TZ4_SimulateInterval(h, 1e-3), 0) << Error();
  const int source = TZ4_GetInput(h, "V1");  // already in its input model: value kept
  ASSERT_EQ(source, 0) << Error();
  ASSERT_EQ(TZ4_SimulateInterval(h, 1e-3), 0) << Error();
  ASSERT_EQ(TZ4_GetLastData(h, trace2, &t, &v), 0) << Error();
  EXPECT_NEAR(v, 7.5, 1e-9);
  ASSERT_EQ(TZ4_SetInputValue(h, source, 4.0), 0) << Error();
  ASSERT_EQ(TZ4_SimulateInterval(h, 1e-3), 0) << Error();
  ASSERT_EQ(TZ4_GetLastData(h, trace2, &t, &v), 0) << Error();
  EXPECT_NEAR(t, 3e-3, 1e-15);
  EXPECT_NEAR(v, 3.0, 1e-9);
}

// With bit 1 of "save", the file carries the samples behind the XML: one
// zero byte, then 16 bytes a sample, as many as the "Data" elements say.
TEST_F(Conformance, SavedSamplesAreTheSamplesTheHostReads) {
  const std::string pulse =
      "      <Cmp type=\"V_V\" id=\"1\" name=\"V1\" node0=\"0\" node1=\"40\" model=\"Pulse\" "
      "v=\"10\">\n"
      "        <Signal u0=\"0\" u1=\"10\" p=\"1e-3\" w=\"500e-6\" s=\"0\" r=\"0\" f=\"0\" d=\"0\" "
      "ph=\"0\" />\n      </Cmp>\n"
      "      <Cmp type=\"R_R\" id=\"2\" name=\"R1\" node0=\"40\" node1=\"17\" model=\"R\" r=\"1000\" />\n"
      "      <Cmp type=\"R_R\" id=\"3\" name=\"R2\" node0=\"0\" node1=\"17\" model=\"R\" r=\"3000\" />\n";
  OpenText(CircuitFile(pulse, 1e-4, "        <Trace type=\"0\" id=\"3\" tracename=\"V(R2)\" expr=\"V(R2)\" />\n",
                   " save=\"2\""));
  const int file = TZ4_GetTrace(h, "V(R2)");
  const int added = TZ4_AddITrace(h, "R1");
  ASSERT_GE(added, 0) << Error();
  ASSERT_EQ(TZ4_SimulateInterval(h, 2.5e-3), 0) << Error();
  const int n1 = TZ4_GetDataSize(h, file), n2 = TZ4_GetDataSize(h, added);
  ASSERT_GT(n1, 4);
  ASSERT_EQ(n1, n2);

  const std::string saved = dir.File("data.tz4");
  ASSERT_EQ(TZ4_SaveAs(h, saved.c_str()), 0) << Error();
  const std::string bytes = ReadFile(saved);
  const size_t end = bytes.find("</TZ4>\n");
  ASSERT_NE(end, std::string::npos);
  const size_t tail = end + 7;
  ASSERT_EQ(bytes.size(), tail + 1 + 16 * static_cast<size_t>(n1 + n2));
  EXPECT_EQ(bytes[tail], '\0');
  const std::string size = "<Data id=\"0\" size=\"" + std::to_string(n1) + "\" type=\"0\" />";
  EXPECT_NE(bytes.find(size), std::string::npos) << bytes.substr(0, tail);
  EXPECT_NE(bytes.find(size, bytes.find(size) + 1), std::string::npos);
  size_t at = tail + 1;
  for (int trace : {file, added}) {
    for (int i = 0; i < n1; ++i, at += 16) {
      double t = 0, v = 0, ft = 0, fv = 0;
      ASSERT_EQ(TZ4_GetDataAt(h, trace, i, &t, &v), 0) << Error();
      std::memcpy(&ft, bytes.data() + at, 8);
      std::memcpy(&fv, bytes.data() + at + 8, 8);
      EXPECT_EQ(ft, t) << i;
      EXPECT_EQ(fv, v) << i;
    }
  }
  // The saved file opens again; its tail is not read.
  const int back = TZ4_Open(saved.c_str());
  ASSERT_GE(back, 0) << Error();
  EXPECT_EQ(TZ4_GetDataSize(back, TZ4_GetTrace(back, "V(R2)")), 0);
  TZ4_Close(back);
}

TEST(ConformanceLibrary, ExportsExactlyTheFortyFunctions) {
  const std::string library = std::string(TZ4_BINARY_DIR) + "/libtz4.so";
  if (!FileExists(library)) GTEST_SKIP() << "no shared library at " << library;
  const std::string command = "nm -D --defined-only '" + library + "' 2>/dev/null";
  FILE* pipe = popen(command.c_str(), "r");
  ASSERT_NE(pipe, nullptr);
  std::set<std::string> names;
  char line[512];
  while (std::fgets(line, sizeof line, pipe)) {
    std::istringstream words(line);
    std::string address, kind, name;
    if (words >> address >> kind >> name) {
      names.insert(name);
    } else if (!address.empty()) {
      names.insert(address);  // an absolute symbol has no address column
    }
  }
  ASSERT_EQ(pclose(pipe), 0) << "nm failed on " << library;
  const std::set<std::string> expected = {
      "TZ4_GetError",        "TZ4_GetInfo",        "TZ4_GetLicense",     "TZ4_Open",
      "TZ4_Save",            "TZ4_SaveAs",         "TZ4_Close",          "TZ4_GetValue",
      "TZ4_SetValue",        "TZ4_GetText",        "TZ4_SetText",        "TZ4_GetParam",
      "TZ4_GetParamValue",   "TZ4_SetParamValue",  "TZ4_GetParamText",   "TZ4_SetParamText",
      "TZ4_GetInput",        "TZ4_SetInputValue",  "TZ4_GetOutput",      "TZ4_GetOutputValue",
      "TZ4_GetTrace",        "TZ4_AddVTrace",      "TZ4_AddITrace",      "TZ4_AddPTrace",
      "TZ4_AddVarTrace",     "TZ4_AddFuncTrace",   "TZ4_DeleteTrace",    "TZ4_SetTimeout",
      "TZ4_SetStep",         "TZ4_GetSimulationTime", "TZ4_Start",       "TZ4_Simulate",
      "TZ4_SimulateInterval", "TZ4_SimulateStep",  "TZ4_SaveIC",         "TZ4_GetDataSize",
      "TZ4_GetDataAt",       "TZ4_GetLastData",    "TZ4_GetData",        "TZ4_DeleteOldData",
  };
  ASSERT_EQ(expected.size(), 40u);
  EXPECT_EQ(names, expected);
}

}  // namespace
