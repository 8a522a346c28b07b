// Capacitors in the solver: the state form of the initial-condition search
// with its marks, the dynamic form against the closed form of backward
// Euler, the table types that keep their charge, the initial-condition
// text, and the parameter check. Whole runs are in the rectifier run tests.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <string>

#include "../solver/fake_cmp.h"
#include "api/last_error.h"
#include "devices/capacitor.h"
#include "doc/cmps.h"
#include "doc/xml_node.h"
#include "solver/calc.h"

namespace tz4 {
namespace {

using solvertest::FakeCmp;

// Capacitors from circuit text through the component collection, with
// test resistors and sources around them, in one run list. Nodes are
// numbered 1, 2, ... without gaps, so that they keep their numbers.
class Bench {
 public:
  void Load(const std::string& elements) {
    CXmlNode root("Cmps");
    ASSERT_EQ(root.LoadFromText("<Cmps>" + elements + "</Cmps>"), 0);
    ASSERT_TRUE(cmps.Serialize(&root));
    cmps.UpdateFormulas();
  }

  FakeCmp& Add(const std::string& name, std::vector<int32_t> nodes, int32_t rows) {
    auto part = std::make_unique<FakeCmp>(name, std::move(nodes), rows);
    FakeCmp& ref = *part;
    cmps.Add(std::move(part));
    return ref;
  }

  FakeCmp& Resistor(const std::string& name, int32_t a, int32_t b, double R) {
    FakeCmp& r = Add(name, {a, b}, 0);
    r.onStamp = [&r, R](CCalc& calc, int phase, double) {
      if (phase == STAMP_MATRIX && calc.pass == 0) calc.StampConductance(r.pins[0], r.pins[1], R);
      return 0;
    };
    return r;
  }

  // V(b) - V(a) = v(t), through the varying term.
  FakeCmp& Source(const std::string& name, int32_t a, int32_t b, std::function<double(double)> v) {
    FakeCmp& src = Add(name, {a, b}, 1);
    src.onStamp = [&src, v](CCalc& calc, int phase, double t) {
      const int r = src.firstRow;
      if (phase == STAMP_MATRIX && calc.pass == 0) {
        calc.StampVSource(src.pins[0], src.pins[1], r, 0.0);
        calc.rowMark[static_cast<size_t>(r)] = 1;
      }
      if (phase == STAMP_SOURCE) calc.s[static_cast<size_t>(r)] = -v(t);
      return 0;
    };
    return src;
  }
  FakeCmp& Source(const std::string& name, int32_t a, int32_t b, double v) {
    return Source(name, a, b, [v](double) { return v; });
  }

  bool Build() {
    if (calc.AddComponents(cmps) != 0) return false;
    calc.MergeNodes();
    calc.NumberNodes();
    return calc.AllocateSystem();
  }

  CElemC& C(const std::string& name) {
    auto* c = dynamic_cast<CElemC*>(cmps.Find(name));
    EXPECT_NE(c, nullptr) << name;
    return *c;
  }
  double X(int i) const { return calc.x[static_cast<size_t>(i)]; }
  double Current(const CCmp& cmp, int extra = 0) const { return X(cmp.firstRow + extra); }

  // One solve of the state form, as the run's start makes it.
  int Initial(double t = 0.0) { return calc.SolveInitial(t, false, true); }

  // n steps of backward Euler through the switching loop, accepting each.
  void EulerSteps(double& t, double h, int n) {
    for (int k = 0; k < n; k++) {
      ASSERT_EQ(calc.Calculate(t, h, true, false), 0) << calc.error;
      t += h;
      calc.AcceptAll();
    }
  }

  CCmps cmps;
  CCalc calc;
};

const char* const kRC =
    "<Cmp type=\"C_C\" id=\"1\" name=\"C1\" node0=\"0\" node1=\"2\" model=\"C\" c=\"1e-6\" ic=\"%IC%\" />";

std::string WithIC(const std::string& text, const std::string& ic) {
  std::string out = text;
  out.replace(out.find("%IC%"), 4, ic);
  return out;
}

// ---------------------------------------------------------------- state form

TEST(CapacitorStateForm, WithoutAValueItIsOpenAndTheDividerHolds) {
  Bench bench;
  bench.Load(WithIC(kRC, ""));
  bench.Source("V1", 0, 1, 10.0);
  bench.Resistor("R1", 1, 2, 1000.0);
  bench.Resistor("R2", 2, 0, 1000.0);
  ASSERT_TRUE(bench.Build());
  EXPECT_FALSE(bench.C("C1").HasValue);
  EXPECT_EQ(bench.Initial(), 0);
  EXPECT_NEAR(bench.X(2), 5.0, 1e-12);
  EXPECT_EQ(bench.Current(bench.C("C1")), 0.0);
}

TEST(CapacitorStateForm, AKnownVoltageIsASourceAndItsCurrentIsTheRow) {
  Bench bench;
  bench.Load(WithIC(kRC, "3"));
  bench.Source("V1", 0, 1, 10.0);
  bench.Resistor("R1", 1, 2, 1000.0);
  bench.Resistor("R2", 2, 0, 1000.0);
  ASSERT_TRUE(bench.Build());
  CElemC& c = bench.C("C1");
  EXPECT_TRUE(c.HasValue);
  EXPECT_EQ(c.Voltage, 3.0);
  // The next order is the current over C.
  bench.calc.stampMode = 0;
  ASSERT_TRUE(bench.calc.StampMatrices(0.0));
  EXPECT_DOUBLE_EQ(bench.calc.B[static_cast<size_t>(c.firstRow)][c.firstRow], -1e6);
  EXPECT_EQ(bench.Initial(), 0);
  EXPECT_NEAR(bench.X(2), 3.0, 1e-12);
  // (10 - 3) / 1k in, 3 / 1k out through R2: 4 mA from node 2 into C1.
  EXPECT_NEAR(bench.Current(c), 4e-3, 1e-15);
}

TEST(CapacitorStateForm, IgnoredValueIsOpenAndForcedEmptyValueIsZero) {
  {
    Bench bench;
    bench.Load(WithIC(kRC, "3"));
    bench.Source("V1", 0, 1, 10.0);
    bench.Resistor("R1", 1, 2, 1000.0);
    bench.Resistor("R2", 2, 0, 1000.0);
    ASSERT_TRUE(bench.Build());
    bench.C("C1").ignoreIC = true;
    EXPECT_EQ(bench.Initial(), 0);
    EXPECT_NEAR(bench.X(2), 5.0, 1e-12);
    // Forced wins over ignored.
    bench.C("C1").forceIC = true;
    EXPECT_EQ(bench.Initial(), 0);
    EXPECT_NEAR(bench.X(2), 3.0, 1e-12);
  }
  {
    Bench bench;
    bench.Load(WithIC(kRC, ""));
    bench.Source("V1", 0, 1, 10.0);
    bench.Resistor("R1", 1, 2, 1000.0);
    ASSERT_TRUE(bench.Build());
    bench.C("C1").forceIC = true;
    EXPECT_EQ(bench.Initial(), 0);
    EXPECT_EQ(bench.X(2), 0.0);
    EXPECT_NEAR(bench.Current(bench.C("C1")), 10e-3, 1e-15);
  }
}

TEST(CapacitorStateForm, MarkedRowTakesItsVoltageFromTheSolution) {
  // A capacitor with 3 V across a 10 V source: its current would be
  // infinite. The pair solve marks its row, and the adjustment takes the
  // source's voltage as the capacitor's, after which the search settles;
  // with the source's row before the capacitor's ("A1") or after it ("V1").
  for (const std::string source : {"A1", "V1"}) {
    SCOPED_TRACE(source);
    Bench bench;
    bench.Load(
        "<Cmp type=\"C_C\" id=\"1\" name=\"C1\" node0=\"0\" node1=\"1\" model=\"C\" c=\"1e-6\" "
        "ic=\"3\" />");
    bench.Source(source, 0, 1, 10.0);
    bench.cmps.Sort();
    ASSERT_TRUE(bench.Build());
    CElemC& c = bench.C("C1");
    EXPECT_EQ(bench.cmps.Find(source)->firstRow < c.firstRow, source == "A1");
    EXPECT_EQ(bench.calc.SolveInitial(0.0, true, false), 99);
    EXPECT_EQ(bench.calc.error, std::string("Infinity at node 3 : ") + (source == "A1" ? "C1" : source));
    EXPECT_NE(bench.calc.rowMark[static_cast<size_t>(c.firstRow)], 0);
    EXPECT_TRUE(c.forceIC);  // a neighbour of the source, and known already
    EXPECT_EQ(bench.calc.AdjustIC(), 1);
    EXPECT_TRUE(c.HasValue);
    EXPECT_NEAR(c.Voltage, 10.0, 1e-12);
    bench.calc.error.clear();
    EXPECT_EQ(bench.calc.SolveInitial(0.0, true, false), 0) << bench.calc.error;
    EXPECT_NEAR(bench.X(1), 10.0, 1e-12);
    EXPECT_EQ(bench.Current(c), 0.0);
    // Nothing is marked any more, so nothing changes.
    EXPECT_EQ(bench.calc.AdjustIC(), 0);
  }
}

TEST(CapacitorStateForm, UnreadableInitialConditionStopsTheBuild) {
  Bench bench;
  bench.Load(WithIC(kRC, "three"));
  bench.Resistor("R1", 2, 0, 1000.0);
  EXPECT_EQ(bench.calc.AddComponents(bench.cmps), -1);
  EXPECT_EQ(bench.calc.error, "C1 : IC : formula error");
}

TEST(CapacitorStateForm, ARebuildKeepsTheVoltageReached) {
  Bench bench;
  bench.Load(WithIC(kRC, "3"));
  bench.Resistor("R1", 2, 0, 1000.0);
  ASSERT_TRUE(bench.Build());
  CElemC& c = bench.C("C1");
  c.Voltage = 1.25;
  // The same model enters the list again: the initial text is not read.
  bench.calc.ClearRunList();
  EXPECT_EQ(bench.calc.AddComponents(bench.cmps), 0);
  EXPECT_EQ(c.Voltage, 1.25);
  // A fresh start reads it.
  c.prevModelId = 0;
  bench.calc.ClearRunList();
  EXPECT_EQ(bench.calc.AddComponents(bench.cmps), 0);
  EXPECT_EQ(c.Voltage, 3.0);
}

// -------------------------------------------------------------- dynamic form

TEST(CapacitorDynamic, ChargeFollowsTheBackwardEulerRecurrence) {
  Bench bench;
  bench.Load(WithIC(kRC, "0"));
  bench.Source("V1", 0, 1, 10.0);
  bench.Resistor("R1", 1, 2, 1000.0);
  ASSERT_TRUE(bench.Build());
  ASSERT_EQ(bench.Initial(), 0);
  bench.calc.AcceptAll();
  EXPECT_EQ(bench.X(2), 0.0);
  const double tau = 1e-3, h = 1e-4;
  double t = 0.0;
  for (int n = 1; n <= 20; n++) {
    bench.EulerSteps(t, h, 1);
    const double expected = 10.0 * (1.0 - std::pow(1.0 / (1.0 + h / tau), n));
    ASSERT_NEAR(bench.X(2), expected, 1e-9) << n;
    // The row is the current C dV/dt, equal to the resistor's.
    ASSERT_NEAR(bench.Current(bench.C("C1")), (10.0 - bench.X(2)) / 1000.0, 1e-12);
  }
}

TEST(CapacitorDynamic, InfiniteCapacitanceHoldsItsVoltage) {
  Bench bench;
  bench.Load(
      "<Cmp type=\"C_C\" id=\"1\" name=\"C1\" node0=\"0\" node1=\"2\" model=\"C\" c=\"inf\" "
      "ic=\"2\" />");
  bench.Source("V1", 0, 1, 10.0);
  bench.Resistor("R1", 1, 2, 1000.0);
  ASSERT_TRUE(bench.Build());
  CElemC& c = bench.C("C1");
  ASSERT_TRUE(std::isinf(c.Capacitance())) << c.C.Value;
  ASSERT_EQ(bench.Initial(), 0);
  bench.calc.AcceptAll();
  double t = 0.0;
  bench.EulerSteps(t, 1e-3, 3);
  EXPECT_NEAR(bench.X(2), 2.0, 1e-12);
  EXPECT_NEAR(bench.Current(c), 8e-3, 1e-15);
}

TEST(CapacitorDynamic, FunctionModelIsAResistanceOfOne) {
  Bench bench;
  bench.Load("<Cmp type=\"C_C\" id=\"1\" name=\"F1\" node0=\"0\" node1=\"2\" model=\"Function\" />");
  bench.Source("V1", 0, 1, 10.0);
  bench.Resistor("R1", 1, 2, 1.0);
  ASSERT_TRUE(bench.Build());
  CElemC& f = bench.C("F1");
  for (int mode = 0; mode < 2; mode++) {
    if (mode == 0)
      ASSERT_EQ(bench.Initial(), 0);
    else
      ASSERT_EQ(bench.calc.Calculate(0.0, 1e-3, true, false), 0);
    EXPECT_NEAR(bench.X(2), 5.0, 1e-12) << mode;
    EXPECT_NEAR(bench.Current(f), 5.0, 1e-12) << mode;
    EXPECT_EQ(bench.calc.B[static_cast<size_t>(f.firstRow)][f.firstRow], 0.0);
  }
}

// ------------------------------------------------------------------ tables

TEST(CapacitorTable, PlainTableStepsThroughItsChargeCurve) {
  // Q(V) with 1 uF up to 1 V and 3 uF beyond, mirrored below 0.
  Bench bench;
  bench.Load(
      "<Cmp type=\"C_C\" id=\"1\" name=\"C1\" node0=\"0\" node1=\"2\" model=\"PWL\" "
      "pwl=\"1e-6,1,3e-6\" ic=\"0\" />");
  bench.Source("V1", 0, 1, 10.0);
  bench.Resistor("R1", 1, 2, 1000.0);
  ASSERT_TRUE(bench.Build());
  CElemC& c = bench.C("C1");
  EXPECT_DOUBLE_EQ(c.Capacitance(), 1e-6);
  ASSERT_EQ(bench.Initial(), 0);
  bench.calc.AcceptAll();
  double t = 0.0;
  const double h = 1e-5;
  bool crossed = false;
  for (int n = 0; n < 200 && !crossed; n++) {
    bench.EulerSteps(t, h, 1);
    bool changed = false;
    ASSERT_TRUE(c.PostStep(bench.calc, false, t, changed));
    const bool above = bench.X(2) >= 1.0;
    EXPECT_EQ(changed, above) << bench.X(2);
    if (changed) {
      ASSERT_TRUE(c.PostStep(bench.calc, true, t, changed));
      EXPECT_TRUE(changed);
      crossed = true;
    }
  }
  ASSERT_TRUE(crossed);
  EXPECT_DOUBLE_EQ(c.Capacitance(), 3e-6);
  // The plain table keeps its voltage: no rebuild.
  EXPECT_FALSE(bench.calc.rebuild);
  // Three times the capacitance, a third of the slope.
  const double v0 = bench.X(2);
  bench.EulerSteps(t, h, 1);
  const double slope = (bench.X(2) - v0) / h;
  EXPECT_NEAR(slope, (10.0 - bench.X(2)) / 1000.0 / 3e-6, 1e-6 * slope);
}

TEST(CapacitorTable, VoltageControlledKeepsItsChargeAcrossAChange) {
  Bench bench;
  bench.Load(
      "<Cmp type=\"C_VCC\" id=\"1\" name=\"CV\" node0=\"0\" node1=\"1\" node2=\"0\" node3=\"2\" "
      "model=\"PWL\" pwl=\"1e-6,1,4e-6\" ic=\"8\" />");
  double control = 0.0;
  bench.Source("V1", 0, 2, [&control](double) { return control; });
  bench.Resistor("R1", 1, 0, 1e6);
  ASSERT_TRUE(bench.Build());
  CElemC& c = bench.C("CV");
  ASSERT_EQ(bench.Initial(), 0);
  bench.calc.AcceptAll();
  bool changed = true;
  ASSERT_TRUE(c.PostStep(bench.calc, true, 0.0, changed));
  EXPECT_FALSE(changed);
  EXPECT_DOUBLE_EQ(c.Capacitance(), 1e-6);

  control = 2.0;
  ASSERT_EQ(bench.Initial(), 0);
  ASSERT_NEAR(bench.X(1), 8.0, 1e-12);
  ASSERT_TRUE(c.PostStep(bench.calc, false, 0.0, changed));
  EXPECT_TRUE(changed);
  EXPECT_DOUBLE_EQ(c.Capacitance(), 1e-6);  // a test changes nothing
  EXPECT_FALSE(bench.calc.rebuild);
  ASSERT_TRUE(c.PostStep(bench.calc, true, 0.0, changed));
  EXPECT_TRUE(changed);
  EXPECT_DOUBLE_EQ(c.Capacitance(), 4e-6);
  EXPECT_TRUE(bench.calc.rebuild);
  // Q = 1 uF * 8 V = 4 uF * 2 V.
  EXPECT_NEAR(c.Voltage, 2.0, 1e-12);
  ASSERT_EQ(bench.Initial(), 0);
  EXPECT_NEAR(bench.X(1), 2.0, 1e-12);
  // Back below the breakpoint the charge comes back to 8 V.
  control = -0.5;
  bench.calc.rebuild = false;
  ASSERT_EQ(bench.Initial(), 0);
  ASSERT_TRUE(c.PostStep(bench.calc, true, 0.0, changed));
  EXPECT_TRUE(changed);
  EXPECT_NEAR(c.Voltage, 8.0, 1e-12);
  EXPECT_TRUE(bench.calc.rebuild);
}

TEST(CapacitorTable, CurrentControlledSensesThroughItsSecondRow) {
  Bench bench;
  bench.Load(
      "<Cmp type=\"C_CCC\" id=\"1\" name=\"CI\" node0=\"0\" node1=\"1\" node2=\"2\" node3=\"0\" "
      "model=\"PWL\" pwl=\"1e-6,1,4e-6\" ic=\"8\" />");
  double drive = 0.5;
  // The control current runs from node 3 through R2 into the sense at
  // node 2 and on to ground: 1 mA per volt of the source.
  bench.Source("V2", 0, 3, [&drive](double) { return drive; });
  bench.Resistor("R2", 3, 2, 1000.0);
  bench.Resistor("R1", 1, 0, 1e6);
  ASSERT_TRUE(bench.Build());
  CElemC& c = bench.C("CI");
  ASSERT_EQ(c.GetExtraRows(), 2);
  ASSERT_EQ(bench.Initial(), 0);
  EXPECT_NEAR(bench.X(2), 0.0, 1e-15);  // the sense is a 0 V source
  // Current from pins[3] to pins[2] counts positive: this one is negative.
  EXPECT_NEAR(bench.Current(c, 1), -0.5e-3, 1e-15);
  bool changed = true;
  ASSERT_TRUE(c.PostStep(bench.calc, false, 0.0, changed));
  EXPECT_FALSE(changed);
  // 2 A of control current lies beyond the breakpoint.
  drive = 2000.0;
  ASSERT_EQ(bench.Initial(), 0);
  ASSERT_TRUE(c.PostStep(bench.calc, true, 0.0, changed));
  EXPECT_TRUE(changed);
  EXPECT_DOUBLE_EQ(c.Capacitance(), 4e-6);
  EXPECT_NEAR(c.Voltage, 2.0, 1e-12);
}

// ------------------------------------------------------- initial conditions

TEST(CapacitorSaveIC, WritesTheVoltageReachedOrNothing) {
  Bench bench;
  bench.Load(
      "<Cmp type=\"C_C\" id=\"1\" name=\"C1\" node0=\"0\" node1=\"1\" model=\"C\" c=\"1e-6\" />");
  bench.Source("V1", 0, 2, 2.5);
  bench.Resistor("R1", 2, 1, 1000.0);
  ASSERT_TRUE(bench.Build());
  CElemC& c = bench.C("C1");
  std::string text;
  bench.calc.SaveIC();
  EXPECT_EQ(c.ICText, "");
  EXPECT_EQ(c.GetICText(text), "C1.IC=\"\"");
  ASSERT_EQ(bench.Initial(), 0);
  bench.calc.AcceptAll();
  bench.calc.SaveIC();
  EXPECT_EQ(c.ICText, "2.5");
  EXPECT_EQ(c.GetICText(text), "C1.IC=2.5");
  // The saved text is what the next fresh start reads.
  c.prevModelId = 0;
  bench.calc.ClearRunList();
  EXPECT_EQ(bench.calc.AddComponents(bench.cmps), 0);
  EXPECT_TRUE(c.HasValue);
  EXPECT_EQ(c.Voltage, 2.5);
}

// ------------------------------------------------------------------ checks

TEST(CapacitorCheck, FormulaErrorIsReportedByName) {
  Bench bench;
  bench.Load(
      "<Cmp type=\"C_C\" id=\"1\" name=\"C1\" node0=\"0\" node1=\"2\" model=\"C\" c_str=\"=nowhere+1\" c=\"1\" />"
      "<Cmp type=\"C_C\" id=\"2\" name=\"C2\" node0=\"0\" node1=\"2\" model=\"C\" c=\"2\" />");
  SetLastError("");
  EXPECT_FALSE(bench.C("C1").CheckParams());
  EXPECT_EQ(LastError(), "C1 : C : formula error; ");
  SetLastError("");
  EXPECT_TRUE(bench.C("C2").CheckParams());
  EXPECT_EQ(LastError(), "");
}

}  // namespace
}  // namespace tz4
