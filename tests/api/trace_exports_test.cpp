// The trace exports through the C interface, on a real circuit file: trace
// handles, the traces of the file, run settings and reading samples.
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "api/documents.h"
#include "base/handles.h"
#include "circuit_run.h"
#include "doc/doc.h"
#include "results/trace.h"

namespace {

using namespace tz4_test;

class TraceExports : public ValuesCircuit {
 protected:
  tz4::CDoc& Doc() { return *tz4::FindDocument(h); }
  // The "tracename" attributes of the document's "Trace" elements, in order.
  std::string TraceElements() {
    tz4::CXmlNode* traces = Doc().xml->FindChild("Doc")->FindChild("Tran")->FindChild("Traces");
    std::string names;
    for (int i = 0; i < traces->GetChildCount(); ++i)
      names += traces->GetChild(i)->GetAttribute("tracename") + ";";
    return names;
  }
};

TEST_F(TraceExports, HandlesShareTheDocumentNumbering) {
  const int next = tz4::PeekNextHandle();
  const int doc = TZ4_Open(kCircuit.c_str());
  const int trace = TZ4_AddVTrace(doc, "R1");
  const int doc2 = TZ4_Open(kCircuit.c_str());
  EXPECT_EQ(doc, next);
  EXPECT_EQ(trace, next + 1);
  EXPECT_EQ(doc2, next + 2);
  // A trace handle resolves only in its own document.
  EXPECT_EQ(TZ4_GetDataSize(doc, trace), 0);
  EXPECT_EQ(TZ4_GetDataSize(doc2, trace), -1);
  EXPECT_EQ(Error(), "TZ4_GetDataSize: no trace");
  TZ4_Close(doc);
  TZ4_Close(doc2);
}

TEST_F(TraceExports, TracesOfTheFileByName) {
  EXPECT_EQ(Doc().traces.Count(), 2);
  const int next = tz4::PeekNextHandle();
  const int c1 = TZ4_GetTrace(h, "v(c1)");
  EXPECT_EQ(c1, next);  // handed out when first asked for
  EXPECT_EQ(Error(), "OK");
  EXPECT_EQ(TZ4_GetTrace(h, "V(C1)"), c1);
  EXPECT_EQ(tz4::PeekNextHandle(), next + 1);
  // A trace with an empty "tracename" is named by its expression.
  const int function = TZ4_GetTrace(h, "r1.r*2");
  EXPECT_EQ(function, next + 1);

  EXPECT_EQ(TZ4_GetTrace(h + 1000, nullptr), -1);  // the name before the handle
  EXPECT_EQ(Error(), "TZ4_GetTrace: NULL pointer");
  EXPECT_EQ(TZ4_GetTrace(h + 1000, ""), -1);
  EXPECT_EQ(Error(), "TZ4_GetTrace: no trace name");
  EXPECT_EQ(TZ4_GetTrace(h, "V(R1)"), -1);
  EXPECT_EQ(Error(), "TZ4_GetTrace: trace V(R1) not found");
}

TEST_F(TraceExports, AddFamily) {
  EXPECT_EQ(Doc().changeFlags & tz4::CHANGE_TRACES, 0u);
  const int v = TZ4_AddVTrace(h, "R1");
  ASSERT_GE(v, 0) << Error();
  EXPECT_EQ(Error(), "OK");
  EXPECT_TRUE(Doc().changeFlags & tz4::CHANGE_TRACES);
  EXPECT_EQ(TZ4_GetTrace(h, "v(r1)"), v);
  const int twice = TZ4_AddVTrace(h, "R1");  // no search for a like trace
  EXPECT_EQ(twice, v + 1);
  EXPECT_EQ(TZ4_AddITrace(h, "R1"), v + 2);
  EXPECT_EQ(TZ4_AddPTrace(h, "C1"), v + 3);
  EXPECT_EQ(TZ4_AddVarTrace(h, "A"), v + 4);
  EXPECT_EQ(TZ4_AddFuncTrace(h, "t*2"), v + 5);
  EXPECT_EQ(Error(), "OK");
  EXPECT_EQ(TraceElements(), "V(C1);;V(R1);V(R1);I(R1);P(C1);A;t*2;");
  EXPECT_EQ(Doc().traces[7]->type, tz4::TRACE_TYPE_FUNCTION);

  // Failures take no handle.
  const int next = tz4::PeekNextHandle();
  EXPECT_EQ(TZ4_AddVTrace(h, "A"), -1);  // a variable has no voltage
  EXPECT_EQ(Error(), "TZ4_AddVTrace: V trace not allowed for component A");
  EXPECT_EQ(TZ4_AddITrace(h, "P1"), -1);
  EXPECT_EQ(Error(), "TZ4_AddITrace: I trace not allowed for component P1");
  EXPECT_EQ(TZ4_AddPTrace(h, "OUT"), -1);
  EXPECT_EQ(Error(), "TZ4_AddPTrace: P trace not allowed for component OUT");
  EXPECT_EQ(TZ4_AddVTrace(h, "R9"), -1);
  EXPECT_EQ(Error(), "TZ4_AddVTrace: component R9 not found");
  EXPECT_EQ(TZ4_AddVarTrace(h, "zz"), -1);
  EXPECT_EQ(Error(), "TZ4_AddVarTrace: variable zz not found");
  EXPECT_EQ(TZ4_AddVTrace(h + 1000, nullptr), -1);
  EXPECT_EQ(Error(), "TZ4_AddVTrace: NULL pointer");
  EXPECT_EQ(TZ4_AddITrace(h + 1000, ""), -1);
  EXPECT_EQ(Error(), "TZ4_AddITrace: no name");
  EXPECT_EQ(TZ4_AddFuncTrace(h + 1000, ""), -1);
  EXPECT_EQ(Error(), "TZ4_AddFuncTrace: no function");
  EXPECT_EQ(tz4::PeekNextHandle(), next);
  EXPECT_EQ(Doc().traces.Count(), 8);
}

TEST_F(TraceExports, DeleteKeepsListAndElementsInStep) {
  const int a = TZ4_AddVTrace(h, "R1");
  const int b = TZ4_AddVTrace(h, "R2");
  const int c = TZ4_AddVTrace(h, "C1");
  ASSERT_EQ(TZ4_DeleteTrace(h, TZ4_GetTrace(h, "V(C1)")), 0) << Error();
  EXPECT_EQ(Error(), "OK");
  ASSERT_EQ(TZ4_DeleteTrace(h, a), 0);
  EXPECT_EQ(TraceElements(), ";V(R2);V(C1);");
  EXPECT_EQ(TZ4_GetTrace(h, "V(R2)"), b);
  EXPECT_EQ(TZ4_GetTrace(h, "V(C1)"), c);  // the added one, not the file's
  EXPECT_EQ(TZ4_GetDataSize(h, a), -1);
  EXPECT_EQ(Error(), "TZ4_GetDataSize: no trace");
  EXPECT_EQ(Doc().changeFlags & tz4::CHANGE_TRACES, tz4::CHANGE_TRACES);

  EXPECT_EQ(TZ4_DeleteTrace(h, a), -1);
  EXPECT_EQ(Error(), "TZ4_DeleteTrace: no trace");

  // After a save the tree is in store direction; deleting still finds the
  // element that belongs to the trace.
  TempDir dir("tracedel");
  ASSERT_EQ(TZ4_SaveAs(h, dir.File("saved.tz4").c_str()), 0) << Error();
  ASSERT_EQ(TZ4_DeleteTrace(h, b), 0) << Error();
  EXPECT_EQ(TraceElements(), ";V(C1);");
  const int late = TZ4_AddVTrace(h, "R1");
  ASSERT_GE(late, 0) << Error();
  EXPECT_EQ(TZ4_DeleteTrace(h, late), 0) << Error();
  EXPECT_EQ(Doc().traces.Count(), 2);
}

TEST_F(TraceExports, StepAndTimeoutAreKeptAndSaved) {
  EXPECT_EQ(TZ4_SetStep(h + 1000, 0.0), -1);  // the step before the handle
  EXPECT_EQ(Error(), "TZ4_SetStep: step <= 0");
  for (double step : {-1e-6, std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_EQ(TZ4_SetStep(h, step), -1);
    EXPECT_EQ(Error(), "TZ4_SetStep: step <= 0");
  }
  ASSERT_EQ(TZ4_SetStep(h, 2.5e-5), 0);
  EXPECT_EQ(Error(), "OK");
  ASSERT_EQ(TZ4_SetTimeout(h, 17), 0);
  EXPECT_EQ(Error(), "OK");

  TempDir dir("tracestep");
  const std::string path = dir.File("saved.tz4");
  ASSERT_EQ(TZ4_SaveAs(h, path.c_str()), 0) << Error();
  const int back = TZ4_Open(path.c_str());
  ASSERT_GE(back, 0) << Error();
  EXPECT_DOUBLE_EQ(tz4::FindDocument(back)->settings.step, 2.5e-5);
  EXPECT_EQ(tz4::FindDocument(back)->settings.timeout, 17);
  TZ4_Close(back);
}

TEST_F(TraceExports, ReadingData) {
  const int t = TZ4_AddVTrace(h, "R1");
  double time = 5.0, value = 5.0;
  EXPECT_EQ(TZ4_GetDataSize(h, t), 0);  // never run: no failure
  EXPECT_EQ(Error(), "OK");

  EXPECT_EQ(TZ4_GetLastData(h, t, &time, &value), -1);
  EXPECT_EQ(Error(), "TZ4_GetLastData: no data");
  EXPECT_EQ(time, 0.0);
  EXPECT_EQ(value, 0.0);
  value = 5.0;
  EXPECT_EQ(TZ4_GetData(h, t, 0.0, &value), -1);
  EXPECT_EQ(Error(), "TZ4_GetData: no data at requested t");
  EXPECT_EQ(value, 0.0);
  EXPECT_EQ(TZ4_GetDataAt(h, t, 0, &time, &value), -1);
  EXPECT_EQ(Error(), "TZ4_GetDataAt: no data at requested index");

  // Samples as a run would leave them.
  tz4::CTrace* trace = Doc().FindTraceByHandle(t);
  ASSERT_NE(trace, nullptr);
  trace->data.Add(0.0, 1.0);
  trace->data.Add(1.0, 3.0);
  trace->data.Add(2.0, 2.0);
  EXPECT_EQ(TZ4_GetDataSize(h, t), 3);

  ASSERT_EQ(TZ4_GetDataAt(h, t, 1, &time, &value), 0) << Error();
  EXPECT_EQ(Error(), "OK");
  EXPECT_EQ(time, 1.0);
  EXPECT_EQ(value, 3.0);
  EXPECT_EQ(TZ4_GetDataAt(h + 1000, t, 0, &time, nullptr), -1);
  EXPECT_EQ(Error(), "TZ4_GetDataAt: NULL pointer");
  EXPECT_EQ(TZ4_GetDataAt(h, t, 0, nullptr, &value), -1);
  EXPECT_EQ(Error(), "TZ4_GetDataAt: NULL pointer");

  ASSERT_EQ(TZ4_GetLastData(h, t, &time, &value), 0);
  EXPECT_EQ(time, 2.0);
  EXPECT_EQ(value, 2.0);
  EXPECT_EQ(TZ4_GetLastData(h, t, nullptr, &value), -1);
  EXPECT_EQ(Error(), "TZ4_GetLastData: NULL pointer");

  ASSERT_EQ(TZ4_GetData(h, t, 0.25, &value), 0) << Error();
  EXPECT_EQ(Error(), "OK");
  EXPECT_DOUBLE_EQ(value, 1.5);
  ASSERT_EQ(TZ4_GetData(h, t, 1.5, &value), 0);
  EXPECT_DOUBLE_EQ(value, 2.5);
  ASSERT_EQ(TZ4_GetData(h, t, 2.0, &value), 0);
  EXPECT_EQ(value, 2.0);
  EXPECT_EQ(TZ4_GetData(h, t, 3.0, &value), -1);
  EXPECT_EQ(Error(), "TZ4_GetData: no data at requested t");
  EXPECT_EQ(TZ4_GetData(h, t, 1.0, nullptr), -1);
  EXPECT_EQ(Error(), "TZ4_GetData: NULL pointer");
  value = 5.0;
  EXPECT_EQ(TZ4_GetData(h, -1, 1.0, &value), -1);
  EXPECT_EQ(Error(), "TZ4_GetData: ");
  EXPECT_EQ(value, 5.0);  // the trace is found before the value is touched
}

}  // namespace
