// Capacitors in the solver: the state form of the initial-condition search
// with its marks, the dynamic form against the closed form of backward
// Euler, the table types that keep their charge, the initial-condition
// text, and the parameter check. Whole runs are in the rectifier run tests.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "base/last_error.h"
#include "../solver/calc_internals.h"
#include "devices/capacitor.h"
#include "solver_bench.h"

namespace tz4 {
namespace {

struct Bench : devtest::SolverBench {
  CElemC& C(const std::string& name) { return Get<CElemC>(name); }
};

const char* const kRC =
    "<Cmp type=\"C_C\" id=\"1\" name=\"C1\" node0=\"0\" node1=\"2\" model=\"C\" c=\"1e-6\" ic=\"%IC%\" />";

std::string WithIC(const std::string& text, const std::string& ic) {
  std::string out = text;
  out.replace(out.find("%IC%"), 4, ic);
  return out;
}

// C1 at node 2 of a divider of two 1 kOhm from 10 V, with the given IC text.
bool Divider(Bench& bench, const std::string& ic) {
  bench.Load(WithIC(kRC, ic));
  bench.Source("V1", 0, 1, 10.0);
  bench.Resistor("R1", 1, 2, 1000.0);
  bench.Resistor("R2", 2, 0, 1000.0);
  return bench.Build();
}

// ---------------------------------------------------------------- state form

// Without a value it is open; a known voltage is a source whose current is
// its row; an ignored value is open unless forced, and a forced empty value
// is zero.
TEST(CapacitorStateForm, ValueIgnoreAndForceDecideWhatTheDividerSees) {
  const struct {
    const char* ic;
    bool ignore, force, hasValue;
    double node2, current;
  } kCases[] = {{"", false, false, false, 5.0, 0.0},
                // (10 - 3) / 1k in, 3 / 1k out through R2: 4 mA into C1.
                {"3", false, false, true, 3.0, 4e-3},
                {"3", true, false, true, 5.0, 0.0},
                {"3", true, true, true, 3.0, 4e-3},
                {"", false, true, false, 0.0, 10e-3}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << '"' << c.ic << "\" ignore " << c.ignore << " force " << c.force);
    Bench bench;
    ASSERT_TRUE(Divider(bench, c.ic));
    CElemC& cap = bench.C("C1");
    EXPECT_EQ(cap.HasValue, c.hasValue);
    cap.ignoreIC = c.ignore;
    cap.forceIC = c.force;
    EXPECT_EQ(bench.Initial(), 0);
    EXPECT_NEAR(bench.X(2), c.node2, 1e-12);
    EXPECT_NEAR(bench.I(cap), c.current, 1e-15);
  }
}

TEST(CapacitorStateForm, UnreadableInitialConditionStopsTheBuild) {
  Bench bench;
  bench.Load(WithIC(kRC, "three"));
  bench.Resistor("R1", 2, 0, 1000.0);
  EXPECT_EQ(bench.calc.AddComponents(bench.cmps), -1);
  EXPECT_EQ(bench.calc.error, "C1 : IC : formula error");
}

// -------------------------------------------------------------- dynamic form

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
  EXPECT_NEAR(bench.I(c), 8e-3, 1e-15);
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
    EXPECT_NEAR(bench.I(f), 5.0, 1e-12) << mode;
    EXPECT_EQ(Raw(bench.calc).B[static_cast<size_t>(f.firstRow)][f.firstRow], 0.0);
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
  EXPECT_NEAR(bench.I(c, 1), -0.5e-3, 1e-15);
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
