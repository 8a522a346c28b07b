#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "devices/registry.h"
#include "base/last_error.h"
#include "components/cmp.h"
#include "components/cmps.h"
#include "xml/xml_node.h"
#include "expr/formula.h"
#include "results/trace.h"
#include "results/traces.h"
#include "solver/calc.h"

namespace tz4 {
namespace {

// A circuit as a host writes it: two traces of R1 and a function trace in
// the file, a resistor with a row of its own (R2 = 0), a bridge whose model
// allows only power traces, a variable, and a component whose model is not
// in its table.
const char* const kCircuit = R"xml(<?xml version="1.0"?>
<TZ4>
  <Version ver="2" />
  <Doc>
    <Tran>
      <Settings step="1e-3" />
      <Traces>
        <Trace type="0" id="1" tracename="V(R1)" expr="V(R1)" />
        <Trace type="1" id="1" tracename="I(R1)" expr="I(R1)" />
        <Trace type="4" id="0" tracename="" expr="t%2a2" />
      </Traces>
    </Tran>
    <Cmps>
      <Cmp type="R_R" id="1" name="R1" node0="1" node1="2" model="R" r="1000" />
      <Cmp type="R_R" id="4" name="R2" node0="2" node1="0" model="R" r="0" />
      <Cmp type="R_R" id="5" name="R3" node0="2" node1="0" model="Nope" r="1" />
      <Cmp type="D_BR" id="2" name="B1" node0="1" node1="2" node2="3" node3="4" model="Diode" />
      <Cmp type="var" id="3" name="K" val="2.5" />
    </Cmps>
  </Doc>
</TZ4>
)xml";

// A component that computes its traces itself for kind 2 (GetTraceInfo
// false) and answers like a two-pin device otherwise.
class CProbe : public CCmp {
 public:
  using CCmp::CCmp;
  bool GetTraceInfo(int kind, int& a, int& b, int& r, double& value) override {
    if (kind == 2) return false;
    return CCmp::GetTraceInfo(kind, a, b, r, value);
  }
  double GetTraceValue(CCalc& calc, int kind) override { return 100.0 * kind + calc.V(1); }
};

const ModelInfo kProbeModels[] = {{"Probe", 99, nullptr, 0, 0, TRACE_V | TRACE_I | TRACE_P}, {}};
const ElemType kProbeType{"Z_PROBE", 2, &MakeCmp<CProbe>, kProbeModels, 0, "Probe"};

class TraceTest : public ::testing::Test {
 protected:
  void SetUp() override {
    root = std::make_unique<CXmlNode>("TZ4");
    ASSERT_EQ(root->LoadFromText(kCircuit), 0);
    root->storing = false;
    CXmlNode* doc = root->FindChild("Doc");
    ASSERT_NE(doc, nullptr);
    ASSERT_TRUE(cmps.Serialize(doc->FindChild("Cmps"), ComponentTypes()));
    ASSERT_EQ(cmps.Count(), 5);
    SetLastError("");
    // Node numbers as the file gives them; x[i] = 10 * i, ground 0.
    calc.x = {0.0, 10.0, 20.0, 30.0, 40.0, 50.0};
  }

  CXmlNode* TracesElement() {
    CXmlNode* doc = root->GetChild(1);
    CXmlNode* tran = doc->GetChild(0);
    return tran->GetChild(1);
  }

  // Loads the three traces of the file.
  void LoadTraces() { ASSERT_TRUE(traces.Serialize(TracesElement())); }

  // Adds a trace, expecting success.
  CTrace* Add(int type, const char* name) {
    CTrace* trace = traces.Add(type, name, cmps, root.get());
    EXPECT_NE(trace, nullptr) << LastError();
    return trace;
  }

  // Binds and takes one sample at t; the recorded value.
  double SampleOnce(CTrace* trace, double t = 0.5) {
    EXPECT_TRUE(traces.Bind(calc, cmps)) << calc.error;
    EXPECT_TRUE(traces.Sample(calc, cmps, t)) << calc.error;
    double time = -1, value = -1;
    EXPECT_TRUE(trace->data.GetAt(trace->data.Count() - 1, &time, &value));
    EXPECT_EQ(time, t);
    return value;
  }

  // The "tracename" of each child of the file's "Traces" element.
  std::vector<std::string> ElementNames() {
    std::vector<std::string> names;
    CXmlNode* element = TracesElement();
    for (int i = 0; i < element->GetChildCount(); ++i)
      names.push_back(element->GetChild(i)->GetEncodedAttribute("tracename", "?"));
    return names;
  }
  std::vector<std::string> ListNames() {
    std::vector<std::string> names;
    for (int i = 0; i < traces.Count(); ++i) names.push_back(traces[i]->name);
    return names;
  }

  std::unique_ptr<CXmlNode> root;
  CCmps cmps;
  CCalc calc;
  CTraces traces;
};

// ---- names and the file ----

TEST_F(TraceTest, NamesAreBuiltFromTheGivenTextAndFoundIgnoringCase) {
  CTrace* v = Add(0, "R1");
  CTrace* i = Add(1, "r1");
  CTrace* p = Add(2, "B1");
  CTrace* var = Add(3, "K");
  CTrace* f = Add(4, "t * 2");
  EXPECT_EQ(v->name, "V(R1)");
  EXPECT_EQ(v->expr, "V(R1)");
  EXPECT_EQ(i->name, "I(r1)");
  EXPECT_EQ(p->name, "P(B1)");
  EXPECT_EQ(var->name, "K");
  EXPECT_EQ(f->name, "t * 2");
  EXPECT_EQ(v->id, 1);
  EXPECT_EQ(var->id, 3);
  EXPECT_EQ(f->id, 0);
  EXPECT_EQ(f->cmp, nullptr);
  EXPECT_EQ(v->type, 0);
  EXPECT_EQ(p->type, 2);

  EXPECT_EQ(traces.Find("v(r1)"), 0);
  EXPECT_EQ(traces.Find("I(R1)"), 1);
  EXPECT_EQ(traces.Find("T * 2"), 4);
  EXPECT_EQ(LastError(), "");

  EXPECT_EQ(traces.Find("V(R9)"), -1);
  EXPECT_EQ(LastError(), "trace V(R9) not found");
  SetLastError("");
  EXPECT_EQ(traces.Find(""), -1);
  EXPECT_EQ(LastError(), "no trace name");
  SetLastError("");
  EXPECT_EQ(traces.Find(nullptr), -1);
  EXPECT_EQ(LastError(), "NULL pointer");

  // A like trace may be added again; the first one is found.
  Add(0, "R1");
  EXPECT_EQ(traces.Count(), 6);
  EXPECT_EQ(traces.Find("V(R1)"), 0);
}

TEST_F(TraceTest, AddRefusesWithTheReason) {
  struct Case {
    int type;
    const char* name;
    const char* message;
  };
  const Case cases[] = {
      {0, "B1", "V trace not allowed for component B1"},
      {1, "B1", "I trace not allowed for component B1"},
      {0, "R9", "component R9 not found"},
      {2, "R3", "component model not found"},
      {3, "Q", "variable Q not found"},
      {5, "R1", "wrong trace type"},
      {-1, "R1", "wrong trace type"},
      {0, nullptr, "NULL pointer"},
  };
  for (const Case& c : cases) {
    SetLastError("");
    EXPECT_EQ(traces.Add(c.type, c.name, cmps, root.get()), nullptr) << c.message;
    EXPECT_EQ(LastError(), c.message);
  }
  // Dotted names are not looked up: the search is of the top collection.
  SetLastError("");
  EXPECT_EQ(traces.Add(0, "X1.R1", cmps, root.get()), nullptr);
  EXPECT_EQ(LastError(), "component X1.R1 not found");
  EXPECT_EQ(traces.Count(), 0);
  EXPECT_EQ(TracesElement()->GetChildCount(), 3);
}

TEST_F(TraceTest, AddToAFileWithoutTracesCreatesTheElements) {
  CXmlNode bare("TZ4");
  ASSERT_EQ(bare.LoadFromText("<TZ4>\n  <Doc>\n    <Cmps />\n  </Doc>\n</TZ4>\n"), 0);
  bare.storing = false;
  ASSERT_NE(traces.Add(0, "R1", cmps, &bare), nullptr);
  CXmlNode* doc = bare.FindChild("Doc");
  ASSERT_NE(doc, nullptr);
  ASSERT_NE(doc->FindChild("Tran"), nullptr);
  CXmlNode* list = doc->FindChild("Tran")->FindChild("Traces");
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->GetChildCount(), 1);
  traces.Delete(traces[0], &bare);
  EXPECT_EQ(list->GetChildCount(), 0);
  EXPECT_EQ(traces.Count(), 0);

  // Without a tree the list alone changes.
  ASSERT_NE(traces.Add(4, "t", cmps, nullptr), nullptr);
  traces.Delete(traces[0], nullptr);
  EXPECT_EQ(traces.Count(), 0);
}

// ---- binding and sampling ----

TEST_F(TraceTest, VoltageCurrentAndPowerFromTheSolution) {
  CTrace* v = Add(0, "R1");
  CTrace* i = Add(1, "R1");
  CTrace* p = Add(2, "R1");
  ASSERT_TRUE(traces.Bind(calc, cmps));
  EXPECT_EQ(v->cmp, nullptr);
  EXPECT_EQ(v->nodeA, 1);
  EXPECT_EQ(v->nodeB, 2);
  EXPECT_EQ(i->factor, 1000.0);
  ASSERT_TRUE(traces.Sample(calc, cmps, 0.25));
  double t = 0, value = 0;
  ASSERT_TRUE(v->data.GetAt(0, &t, &value));
  EXPECT_EQ(t, 0.25);
  EXPECT_DOUBLE_EQ(value, 10.0);  // x[2] - x[1]
  ASSERT_TRUE(i->data.GetAt(0, &t, &value));
  EXPECT_DOUBLE_EQ(value, 10.0 / 1000.0);
  ASSERT_TRUE(p->data.GetAt(0, &t, &value));
  EXPECT_DOUBLE_EQ(value, 10.0 * 10.0 / 1000.0);

  // With a row of its own the current is read from it.
  cmps.Find("R1")->firstRow = 5;
  EXPECT_DOUBLE_EQ(SampleOnce(i, 1.0), 50.0);
  EXPECT_DOUBLE_EQ(SampleOnce(p, 2.0), 10.0 * 50.0);
}

TEST_F(TraceTest, FileTracesBindByIdAndUnboundOnesRecordZero) {
  LoadTraces();
  CTraces extra;
  CXmlNode list("Traces");
  list.storing = false;
  CXmlNode* byIdZero = list.AddChild("Trace");
  byIdZero->AddAttribute("type", "0");
  byIdZero->AddAttribute("id", "0");
  byIdZero->AddAttribute("tracename", "V(R1)");
  CXmlNode* unknownId = list.AddChild("Trace");
  unknownId->AddAttribute("type", "0");
  unknownId->AddAttribute("id", "77");
  ASSERT_TRUE(extra.Serialize(&list));

  ASSERT_TRUE(extra.Bind(calc, cmps));
  EXPECT_DOUBLE_EQ(SampleOnce(traces[0]), 10.0);
  EXPECT_DOUBLE_EQ(SampleOnce(traces[1]), 0.01);
  ASSERT_TRUE(extra.Sample(calc, cmps, 1.0));
  for (int k = 0; k < 2; ++k) {
    double t = 0, value = -1;
    ASSERT_TRUE(extra[k]->data.GetAt(0, &t, &value));
    EXPECT_EQ(value, 0.0) << k;
  }
}

TEST_F(TraceTest, FailuresOfFunctionTracesReachTheSolverError) {
  Add(4, "nosuchname*2");
  ASSERT_TRUE(traces.Bind(calc, cmps));
  EXPECT_FALSE(traces.Sample(calc, cmps, 0.0));
  EXPECT_FALSE(calc.error.empty());

  // V() of a component whose model forbids it.
  CTraces other;
  calc.error.clear();
  ASSERT_NE(other.Add(4, "V(B1)", cmps, nullptr), nullptr);
  ASSERT_TRUE(other.Bind(calc, cmps));
  EXPECT_FALSE(other.Sample(calc, cmps, 0.0));
  EXPECT_EQ(calc.error, "'V' trace not supported by B1");
}

TEST_F(TraceTest, APathToAnInvalidFormulaFailsTheBinding) {
  CCmp* r1 = cmps.Find("R1");
  CParam param;
  ASSERT_TRUE(r1->FindParam("R", param));
  std::get<CFormula*>(param.Value)->Invalid = true;
  Add(4, "R1.R");
  CTrace* fine = Add(0, "R1");
  EXPECT_FALSE(traces.Bind(calc, cmps));
  EXPECT_EQ(calc.error, "Invalid value");
  EXPECT_EQ(fine->nodeB, 2);  // the others are still bound
}

// ---- the binary tail ----

}  // namespace
}  // namespace tz4
