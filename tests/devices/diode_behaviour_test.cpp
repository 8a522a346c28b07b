// Diodes and thyristors in the solver: the ideal clamp and its switching,
// zeners on both sides, the thyristors' gate, latch and holding current,
// the bridge's sixteen states, the charge row of "Storage", the recovery
// phases of "Soft", tables, the saved initial conditions and the checks.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "base/last_error.h"
#include "../solver/calc_internals.h"
#include "devices/diode.h"
#include "solver_bench.h"

namespace tz4 {
namespace {

using solvertest::FakeCmp;

struct Bench : devtest::SolverBench {
  CElemD& D(const std::string& name) { return Get<CElemD>(name); }

  // The device between ground and node 2, fed from V1 (node 1, *v) through
  // 1 kOhm.
  bool Series(const std::string& elements, const double* v) {
    Load(elements);
    Source("V1", 0, 1, v);
    Resistor("R1", 1, 2, 1000.0);
    return Build();
  }
};

std::string Diode(const std::string& tag, const std::string& name, const std::string& model, int a, int b,
                  const std::string& attributes) {
  return "<Cmp type=\"" + tag + "\" id=\"1\" name=\"" + name + "\" node0=\"" + std::to_string(a) +
         "\" node1=\"" + std::to_string(b) + "\" model=\"" + model + "\" " + attributes + " />";
}

// ---------------------------------------------------------------- the clamp

// Each device solved at a series of supply voltages: the state it takes,
// the voltage it holds and the current through it (1 kOhm from the supply).
TEST(DiodeClamp, EachKneeClampsAndBetweenThemItIsOff) {
  struct Point {
    double v, node2;
    int state;
  };
  const struct {
    std::string element;
    int startState, low, high;
    std::vector<Point> points;
  } kCases[] = {
      {Diode("D_D", "D1", "Diode", 0, 2, "vd=\"0.7\""), 0, 0, 1,
       {{5.0, 0.7, 1}, {-5.0, -5.0, 0}, {0.5, 0.5, 0}}},
      // An infinite drop refuses even to start on.
      {Diode("D_D", "D1", "Diode", 0, 2, "vd=\"inf\" ic=\"1\""), 0, 0, 1, {{100.0, 100.0, 0}}},
      {Diode("D_Z", "D1", "Zener", 0, 2, "v=\"5.1\" vd=\"0.6\""), 0, -1, 1,
       {{10.0, 0.6, 1}, {-10.0, -5.1, -1}, {-3.0, -3.0, 0}}},
      {Diode("D_ZS", "D1", "Zener", 0, 2, "v=\"3.3\""), 0, -1, 1,
       {{10.0, 3.3, 1}, {-10.0, -3.3, -1}, {2.0, 2.0, 0}}},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.element);
    Bench bench;
    double v = 0.0;
    ASSERT_TRUE(bench.Series(c.element, &v));
    CElemD& d = bench.D("D1");
    EXPECT_EQ(d.state, c.startState);
    for (const Point& p : c.points) {
      SCOPED_TRACE(p.v);
      v = p.v;
      ASSERT_EQ(bench.Solve(), 0) << bench.calc.error;
      EXPECT_EQ(d.state, p.state);
      EXPECT_NEAR(bench.X(2), p.node2, 1e-12);
      EXPECT_NEAR(bench.I(d), p.state == 0 ? 0.0 : (p.v - p.node2) / 1000.0, 1e-15);
    }
    int low = 5, high = -5;
    EXPECT_TRUE(d.GetStateRange(low, high));
    EXPECT_EQ(low, c.low);
    EXPECT_EQ(high, c.high);
  }
}

TEST(DiodeClamp, SwitchingNamesItsCauseAndAnOnStartNeedsNone) {
  for (const bool on : {false, true}) {
    Bench bench;
    double v = 5.0;
    ASSERT_TRUE(bench.Series(Diode("D_D", "D1", "Diode", 0, 2, on ? "vd=\"0.7\" ic=\"1\"" : "vd=\"0.7\""), &v));
    CElemD& d = bench.D("D1");
    EXPECT_EQ(d.state, on ? 1 : 0);
    ASSERT_EQ(bench.Solve(), 0);
    EXPECT_EQ(d.switched, !on);
    if (!on) {
      EXPECT_EQ(bench.calc.cause, " switching triggered by D1");
    }
    EXPECT_NEAR(bench.I(d), 4.3e-3, 1e-15);
  }
}

TEST(DiodeZener, StartStatesFromTheEnumeratedCondition) {
  Bench bench;
  bench.Load(Diode("D_Z", "ZA", "Zener", 0, 1, "v=\"5\" vd=\"0.6\" ic=\"0\"") +
             Diode("D_Z", "ZB", "Zener", 0, 1, "v=\"5\" vd=\"0.6\" ic=\"2\"") +
             Diode("D_Z", "ZC", "Zener", 0, 1, "v=\"inf\" vd=\"0.6\" ic=\"0\"") +
             Diode("D_Z", "ZD", "Zener", 0, 1, "v=\"5\" vd=\"inf\" ic=\"2\"") +
             Diode("D_ZS", "ZE", "Zener", 0, 1, "v=\"5\" ic=\"0\"") +
             Diode("D_ZS", "ZF", "Zener", 0, 1, "v=\"inf\" ic=\"2\""));
  bench.Resistor("R1", 1, 0, 1.0);
  ASSERT_TRUE(bench.Build());
  EXPECT_EQ(bench.D("ZA").state, -1);
  EXPECT_EQ(bench.D("ZB").state, 1);
  EXPECT_EQ(bench.D("ZC").state, 0);  // no reverse knee
  EXPECT_EQ(bench.D("ZD").state, 0);  // no forward knee
  EXPECT_EQ(bench.D("ZE").state, -1);
  EXPECT_EQ(bench.D("ZF").state, 0);
  // The saved condition is the state again, and the text shows it.
  bench.D("ZA").state = 1;
  bench.calc.SaveIC();
  std::string text;
  EXPECT_EQ(bench.D("ZA").ICz.Index, 2);
  EXPECT_EQ(bench.D("ZA").GetICText(text), "ZA.IC=plus");
  EXPECT_EQ(bench.D("ZC").GetICText(text), "ZC.IC=off");
  EXPECT_EQ(bench.D("ZE").GetICText(text), "ZE.IC=minus");
}

// --------------------------------------------------------------- thyristors

struct ThyristorBench {
  explicit ThyristorBench(const std::string& tag) {
    // Anode supply through 1k; cathode at ground; the gate drive.
    if (tag == "D_VCT") {
      bench.Load(
          "<Cmp type=\"D_VCT\" id=\"1\" name=\"T1\" node0=\"0\" node1=\"2\" node2=\"0\" node3=\"3\" "
          "model=\"Thyristor\" vd=\"1\" thr=\"2\" hold=\"1e-3\" />");
      bench.Source("VG", 0, 3, &gate);
    } else if (tag == "D_CCT") {
      // 1 mA of gate current per volt of drive, from pins[3] through the
      // sense to pins[2].
      bench.Load(
          "<Cmp type=\"D_CCT\" id=\"1\" name=\"T1\" node0=\"0\" node1=\"2\" node2=\"0\" node3=\"3\" "
          "model=\"Thyristor\" vd=\"1\" thr=\"2e-3\" hold=\"1e-3\" />");
      bench.Source("VG", 0, 4, &gate);
      bench.Resistor("RG", 4, 3, 1000.0);
    } else {
      bench.Load(
          "<Cmp type=\"D_LCT\" id=\"1\" name=\"T1\" node0=\"0\" node1=\"2\" node2=\"3\" "
          "model=\"Thyristor\" vd=\"1\" hold=\"1e-3\" />");
      bench.Source("VG", 0, 3, &gate);
    }
    bench.Source("VA", 0, 1, &supply);
    bench.Resistor("RA", 1, 2, 1000.0);
    EXPECT_TRUE(bench.Build());
  }
  CElemD& T() { return bench.D("T1"); }

  double gate = 0.0;
  double supply = 10.0;
  Bench bench;
};

void ExpectLatchCycle(const std::string& tag, double gateOn) {
  SCOPED_TRACE(tag);
  ThyristorBench tb(tag);
  Bench& bench = tb.bench;
  CElemD& th = tb.T();
  EXPECT_EQ(th.phase, 0);
  // Blocked: forward voltage alone does not turn it on.
  ASSERT_EQ(bench.Solve(), 0);
  EXPECT_EQ(th.state, 0);
  EXPECT_NEAR(bench.X(2), 10.0, 1e-12);
  EXPECT_FALSE(bench.Post());
  int low = 0, high = 0;
  EXPECT_FALSE(th.GetStateRange(low, high));

  // The gate: a test reports the change without making it.
  tb.gate = gateOn;
  ASSERT_EQ(bench.Solve(), 0);
  bool changed = false;
  ASSERT_TRUE(th.PostStep(bench.calc, false, 0.0, changed));
  EXPECT_TRUE(changed);
  EXPECT_EQ(th.phase, 0);
  EXPECT_TRUE(bench.Post());
  EXPECT_EQ(th.phase, 1);
  EXPECT_TRUE(th.GetStateRange(low, high));
  EXPECT_EQ(high, 1);
  ASSERT_EQ(bench.Solve(), 0);
  EXPECT_EQ(th.state, 1);
  EXPECT_NEAR(bench.X(2), 1.0, 1e-12);
  EXPECT_NEAR(bench.I(th), 9e-3, 1e-15);

  // The gate goes away with 9 mA flowing, above the holding current: latched.
  tb.gate = 0.0;
  ASSERT_EQ(bench.Solve(), 0);
  EXPECT_TRUE(bench.Post());
  EXPECT_EQ(th.phase, 2);
  ASSERT_EQ(bench.Solve(), 0);
  EXPECT_EQ(th.state, 1);
  EXPECT_NEAR(bench.I(th), 9e-3, 1e-15);
  EXPECT_FALSE(bench.Post());

  // The supply falls to 1.5 V: 0.5 mA, below the holding current. The latch
  // lets go and the thyristor is off, which the first resolution finds.
  tb.supply = 1.5;
  ASSERT_EQ(bench.Solve(), 0) << bench.calc.error;
  EXPECT_EQ(th.phase, 0);
  EXPECT_EQ(th.state, 0);
  EXPECT_TRUE(th.switched);
  EXPECT_NEAR(bench.X(2), 1.5, 1e-12);
  EXPECT_EQ(bench.I(th), 0.0);
  EXPECT_FALSE(th.GetStateRange(low, high));  // blocked: nothing to try
  // A released latch starts off next time.
  bench.calc.SaveIC();
  EXPECT_EQ(th.IC, 0);
  std::string text;
  EXPECT_EQ(th.GetICText(text), "T1.IC=off");
}

TEST(DiodeThyristor, VoltageGateLatchesAndHoldingCurrentReleases) { ExpectLatchCycle("D_VCT", 5.0); }
TEST(DiodeThyristor, CurrentGateLatchesAndHoldingCurrentReleases) { ExpectLatchCycle("D_CCT", 5.0); }
TEST(DiodeThyristor, LogicGateComparesWithTheLogicThreshold) {
  ExpectLatchCycle("D_LCT", 3.0);
  ThyristorBench tb("D_LCT");
  tb.gate = 2.4;  // below the default threshold 2.5
  ASSERT_EQ(tb.bench.Solve(), 0);
  EXPECT_FALSE(tb.bench.Post());
  tb.bench.calc.thr = 2.0;
  EXPECT_TRUE(tb.bench.Post());
  EXPECT_EQ(tb.T().phase, 1);
}

TEST(DiodeThyristor, GateDroppedWithTooLittleCurrentBlocksAgain) {
  ThyristorBench tb("D_VCT");
  tb.supply = 1.5;  // 0.5 mA when on
  tb.gate = 5.0;
  ASSERT_EQ(tb.bench.Solve(), 0);
  EXPECT_TRUE(tb.bench.Post());
  ASSERT_EQ(tb.bench.Solve(), 0);
  EXPECT_EQ(tb.T().state, 1);
  tb.gate = 0.0;
  ASSERT_EQ(tb.bench.Solve(), 0);
  EXPECT_TRUE(tb.bench.Post());
  EXPECT_EQ(tb.T().phase, 0);
  EXPECT_EQ(tb.T().state, 0);  // blocked is off
  ASSERT_EQ(tb.bench.Solve(), 0);
  EXPECT_NEAR(tb.bench.X(2), 1.5, 1e-12);
}

TEST(DiodeThyristor, ReleaseAtTheStartKeepsTheNeighboursInitialConditions) {
  // Latched by its initial condition with 0.5 mA, below the holding current:
  // the initial-condition search releases it in its first resolution, so
  // that nothing around it is told to forget its value.
  double supply = 1.5;
  Bench bench;
  bench.Load(
      "<Cmp type=\"D_VCT\" id=\"1\" name=\"T1\" node0=\"0\" node1=\"2\" node2=\"0\" node3=\"0\" "
      "model=\"Thyristor\" vd=\"1\" hold=\"1e-3\" ic=\"1\" />");
  bench.Source("VA", 0, 1, &supply);
  FakeCmp& ra = bench.Resistor("RA", 1, 2, 1000.0);
  ASSERT_TRUE(bench.Build());
  CElemD& th = bench.D("T1");
  ASSERT_EQ(th.phase, 2);
  EXPECT_EQ(bench.calc.CalcIC(0.0, 1e-6), 0) << bench.calc.error;
  EXPECT_EQ(th.state, 0);
  EXPECT_EQ(th.phase, 0);
  EXPECT_FALSE(ra.ignoreIC);
  EXPECT_NEAR(bench.X(2), 1.5, 1e-12);
}

TEST(DiodeThyristor, ReleasesAtTheHoldingCurrentExactly) {
  // 1 V over 1 ohm past a 1 V drop: exactly 1 A, the default holding
  // current, which releases; 1.5 A does not.
  for (double supply : {2.0, 2.5}) {
    Bench bench;
    bench.Load(
        "<Cmp type=\"D_VCT\" id=\"1\" name=\"T1\" node0=\"0\" node1=\"2\" node2=\"0\" node3=\"0\" "
        "model=\"Thyristor\" vd=\"1\" ic=\"1\" />");
    bench.Source("VA", 0, 1, &supply);
    bench.Resistor("RA", 1, 2, 1.0);
    ASSERT_TRUE(bench.Build());
    CElemD& th = bench.D("T1");
    EXPECT_EQ(th.state, 1);  // on at the start is latched
    EXPECT_EQ(th.phase, 2);
    bench.calc.stampMode = 0;
    ASSERT_TRUE(bench.calc.StepAlgebraic(0.0, 1e-6));
    ASSERT_EQ(bench.I(th), supply - 2.0 + 1.0);
    EXPECT_EQ(th.CheckSwitching(bench.calc, false), supply == 2.0) << supply;
    EXPECT_EQ(th.phase, 2);  // a test changes nothing
  }
}

TEST(DiodeThyristor, ReverseVoltageReleasesTheLatch) {
  ThyristorBench tb("D_VCT");
  tb.gate = 5.0;
  ASSERT_EQ(tb.bench.Solve(), 0);
  tb.bench.Post();
  ASSERT_EQ(tb.bench.Solve(), 0);
  tb.gate = 0.0;
  ASSERT_EQ(tb.bench.Solve(), 0);
  tb.bench.Post();
  ASSERT_EQ(tb.T().phase, 2);
  tb.supply = -10.0;
  ASSERT_EQ(tb.bench.Solve(), 0) << tb.bench.calc.error;
  EXPECT_EQ(tb.T().state, 0);
  EXPECT_EQ(tb.T().phase, 0);
  EXPECT_NEAR(tb.bench.X(2), -10.0, 1e-12);
}

// ------------------------------------------------------------------ bridge

TEST(DiodeBridge, TwoArmsConductOnEachHalfWave) {
  // AC between node 1 and ground; the load between the plus end (node 2)
  // and the minus end (node 3); a weak leak keeps node 3 defined.
  Bench bench;
  double v = 10.0;
  bench.Load(
      "<Cmp type=\"D_BR\" id=\"1\" name=\"B1\" node0=\"3\" node1=\"2\" node2=\"1\" node3=\"0\" "
      "model=\"Diode\" vd=\"0.7\" />");
  bench.Source("V1", 0, 1, &v);
  bench.Resistor("RL", 2, 3, 100.0);
  bench.Resistor("RX", 3, 0, 1e9);
  ASSERT_TRUE(bench.Build());
  CElemD& br = bench.D("B1");
  int low = 1, high = 0;
  EXPECT_TRUE(br.GetStateRange(low, high));
  EXPECT_EQ(low, 0);
  EXPECT_EQ(high, 15);
  int a = 0, b = 0, row = 0;
  double value = 0;
  EXPECT_FALSE(br.GetTraceInfo(0, a, b, row, value));

  ASSERT_EQ(bench.Solve(), 0) << bench.calc.error;
  EXPECT_EQ(br.state, 6);  // node 1 to plus, minus to ground
  EXPECT_NEAR(bench.X(2) - bench.X(3), 8.6, 1e-12);
  const double i = 8.6 / 100.0;
  // The leak takes nanoamperes from one arm.
  EXPECT_NEAR(br.GetTraceValue(bench.calc, 2), 2 * 0.7 * i, 1e-8);
  EXPECT_EQ(br.GetTraceValue(bench.calc, 0), 0.0);

  v = -10.0;
  ASSERT_EQ(bench.Solve(), 0) << bench.calc.error;
  EXPECT_EQ(br.state, 9);  // minus to node 1, ground to plus
  EXPECT_NEAR(bench.X(2) - bench.X(3), 8.6, 1e-12);
  EXPECT_NEAR(br.GetTraceValue(bench.calc, 2), 2 * 0.7 * i, 1e-8);

  // Below two drops only the leak's nanoamperes flow, through the arm from
  // node 1 to the plus end.
  v = 1.0;
  ASSERT_EQ(bench.Solve(), 0) << bench.calc.error;
  EXPECT_EQ(br.state, 4);
  EXPECT_NEAR(bench.X(2) - bench.X(3), 0.0, 1e-6);
  bench.calc.SaveIC();
  EXPECT_EQ(br.IC, 4);
  std::string text;
  EXPECT_EQ(br.GetICText(text), "B1.IC=on");
  // Reversed, the leak returns from the minus end to node 1.
  v = -1.0;
  ASSERT_EQ(bench.Solve(), 0) << bench.calc.error;
  EXPECT_EQ(br.state, 1);
  bench.calc.SaveIC();
  EXPECT_EQ(br.IC, 1);
}

// ------------------------------------------------------ charge-storing forms

TEST(DiodeStorage, ChargeFollowsTheCurrentAndLetsTheDiodeConductBackwards) {
  // 10 mA forward through a 1 us storage time: the charge settles at 10 nC
  // by dq/dt = i - q/t. Reversed, the diode holds 0 V and conducts
  // backwards until the charge is gone, then blocks.
  Bench bench;
  double v = 10.7;
  ASSERT_TRUE(bench.Series(Diode("D_D", "D1", "Storage", 0, 2, "vd=\"0.7\" t=\"1e-6\""), &v));
  CElemD& d = bench.D("D1");
  ASSERT_EQ(d.GetExtraRows(), 2);
  ASSERT_EQ(bench.Solve(), 0);  // the state form: the charge is held
  EXPECT_EQ(d.state, 1);
  EXPECT_EQ(bench.I(d, 1), 0.0);
  bench.calc.AcceptAll();
  double t = 0.0, q = 0.0;
  const double h = 1e-7, tau = 1e-6, i = 10e-3;
  for (int n = 0; n < 100; n++) {
    bench.Step(t, h);
    q = (q + h * i) / (1.0 + h / tau);
    ASSERT_NEAR(bench.I(d, 1), q, 1e-18) << n;
  }
  EXPECT_NEAR(q, 1e-8, 1e-12);
  EXPECT_EQ(d.phase, 1);  // charged
  EXPECT_DOUBLE_EQ(d.charge, bench.I(d, 1));
  int low = 0, high = 0;
  EXPECT_TRUE(d.GetStateRange(low, high));
  EXPECT_EQ(low, -1);

  v = -10.0;
  bench.Step(t, h);
  EXPECT_EQ(d.state, -1);
  EXPECT_NEAR(bench.X(2), 0.0, 1e-12);
  EXPECT_NEAR(bench.I(d), -10e-3, 1e-15);
  int steps = 0;
  while (d.state == -1 && steps++ < 100) bench.Step(t, h);
  ASSERT_EQ(d.state, 0);
  EXPECT_EQ(d.phase, 0);
  // The reverse current of 10 mA and the decay take 10 nC away within
  // about 0.7 t.
  EXPECT_LT(steps, 10);
  bench.Step(t, h);
  EXPECT_NEAR(bench.X(2), -10.0, 1e-12);
  EXPECT_EQ(bench.I(d), 0.0);
}

TEST(DiodeStorage, InitialChargeAndItsSavedText) {
  Bench bench;
  double v = 0.0;
  ASSERT_TRUE(bench.Series(Diode("D_D", "D1", "Storage", 0, 2, "vd=\"0.7\" t=\"1e-6\" ic=\"1\" icq=\"5e-9\"") +
             Diode("D_D", "D2", "Storage", 0, 2, "vd=\"0.7\" t=\"0\" ic=\"1\" icq=\"5e-9\""), &v));
  CElemD& d = bench.D("D1");
  EXPECT_EQ(d.state, 1);
  EXPECT_DOUBLE_EQ(d.charge, 5e-9);
  EXPECT_EQ(bench.D("D2").charge, 0.0);  // no storage time, no charge
  int low = 0, high = 0;
  EXPECT_TRUE(bench.D("D2").GetStateRange(low, high));
  EXPECT_EQ(low, 0);
  // The state form holds the charge on its row.
  ASSERT_EQ(bench.calc.SolveInitial(0.0, false, true), 0);
  EXPECT_DOUBLE_EQ(bench.I(d, 1), 5e-9);
  bench.calc.AcceptAll();
  d.charge = 2.5e-9;
  bench.calc.SaveIC();
  std::string text;
  EXPECT_EQ(d.GetICText(text), "D1.IC=on;D1.ICQ=2.5e-9");
  d.charge = -1.0;
  d.state = 0;
  bench.calc.SaveIC();
  EXPECT_EQ(d.GetICText(text), "D1.IC=off;D1.ICQ=0");
}

TEST(DiodeSoft, ReverseRecoveryRunsThroughBothPhases) {
  // Charged by 10 mA through t = 1 us, then reversed: first the drop holds
  // with the current reversed, then, once |i| ts reaches the charge, the
  // current follows -q/ts down until the charge is gone.
  Bench bench;
  double v = 10.7;
  ASSERT_TRUE(bench.Series(Diode("D_D", "D1", "Soft", 0, 2, "vd=\"0.7\" t=\"1e-6\" ts=\"1e-7\""), &v));
  CElemD& d = bench.D("D1");
  ASSERT_EQ(bench.Solve(), 0);
  ASSERT_EQ(d.state, 1);
  bench.calc.AcceptAll();
  double t = 0.0;
  const double h = 1e-8;
  for (int n = 0; n < 1000; n++) bench.Step(t, h);
  EXPECT_NEAR(bench.I(d, 1), 1e-8, 1e-11);
  EXPECT_EQ(d.phase, 0);
  int low = 0, high = 0;
  EXPECT_FALSE(d.GetStateRange(low, high));  // conducting with a charge
  // A conducting soft diode does not leave its state through the clamp.
  EXPECT_FALSE(d.CheckSwitching(bench.calc, false));

  v = -9.3;
  bench.Step(t, h);
  EXPECT_EQ(d.state, 1);
  EXPECT_NEAR(bench.X(2), 0.7, 1e-12);  // the drop holds in reverse
  EXPECT_NEAR(bench.I(d), -10e-3, 1e-15);
  int steps = 0;
  while (d.phase == 0 && steps++ < 1000) bench.Step(t, h);
  ASSERT_EQ(d.phase, 1);
  EXPECT_NEAR(d.recovery, -10e-3 * 0.01, 1e-15);
  // In recovery the current is -q/ts.
  bench.Step(t, h);
  EXPECT_NEAR(bench.I(d), -bench.I(d, 1) / 1e-7, 1e-12);
  EXPECT_LT(bench.I(d), 0.0);
  EXPECT_GT(bench.I(d), -10e-3);
  steps = 0;
  while (d.state != 0 && steps++ < 10000) bench.Step(t, h);
  ASSERT_EQ(d.state, 0);
  bench.Step(t, h);
  EXPECT_EQ(bench.I(d), 0.0);
  EXPECT_NEAR(bench.X(2), -9.3, 1e-12);
  // Off again, it may be tried both ways.
  EXPECT_TRUE(d.GetStateRange(low, high));
}

// ------------------------------------------------------------------- tables

TEST(DiodeTable, SegmentFollowsTheVoltage) {
  // 1 Mohm below 0 V, 1 ohm above.
  Bench bench;
  double v = 10.0;
  bench.Load(Diode("D_D", "D1", "PWL", 0, 2, "pwl=\"1e6,0,1\""));
  bench.Source("V1", 0, 1, &v);
  bench.Resistor("R1", 1, 2, 9.0);
  ASSERT_TRUE(bench.Build());
  CElemD& d = bench.D("D1");
  int low = 5, high = -5;
  EXPECT_TRUE(d.GetStateRange(low, high));
  EXPECT_EQ(low, d.pwl.FirstSegment);
  EXPECT_EQ(high, d.pwl.LastSegment);
  ASSERT_EQ(bench.Solve(), 0) << bench.calc.error;
  EXPECT_NEAR(bench.I(d), 1.0, 1e-12);
  EXPECT_NEAR(bench.X(2), 1.0, 1e-12);
  const int forward = d.state;
  v = -10.0;
  ASSERT_EQ(bench.Solve(), 0) << bench.calc.error;
  EXPECT_NE(d.state, forward);
  EXPECT_NEAR(bench.I(d), -10.0 / (1e6 + 9.0), 1e-15);
  // A table has no start condition of its own to save.
  const int32_t before = d.IC;
  bench.calc.SaveIC();
  EXPECT_EQ(d.IC, before);
}

// ------------------------------------------------------------------ checks

std::string Check(CCmp& cmp) {
  SetLastError("");
  cmp.CheckParams();
  return LastError();
}

TEST(DiodeCheck, EveryMessageAndAllFaultsOfAComponent) {
  Bench bench;
  bench.Load(
      Diode("D_D", "D1", "Diode", 0, 1, "vd=\"-1\"") +
      Diode("D_D", "D2", "Diode", 0, 1, "vd_str=\"=nowhere\"") +
      Diode("D_D", "D3", "Storage", 0, 1, "vd=\"-1\" t=\"-1\"") +
      Diode("D_D", "D4", "Storage", 0, 1, "t=\"inf\" icq=\"inf\"") +
      Diode("D_D", "D5", "Soft", 0, 1, "vd=\"-1\" t_str=\"=nowhere\" ts=\"-1\" icq_str=\"=nowhere\"") +
      Diode("D_D", "D6", "Soft", 0, 1, "ts=\"inf\"") +
      Diode("D_D", "D7", "Soft", 0, 1, "ts_str=\"=nowhere\"") +
      Diode("D_Z", "Z1", "Zener", 0, 1, "v=\"-1\" vd=\"-1\"") +
      Diode("D_ZS", "Z2", "Zener", 0, 1, "v_str=\"=nowhere\"") +
      Diode("D_ZS", "Z3", "PWL", 0, 1, "v=\"-1\"") +
      "<Cmp type=\"D_VCT\" id=\"1\" name=\"T1\" node0=\"0\" node1=\"1\" node2=\"0\" node3=\"0\" "
      "model=\"Thyristor\" hold=\"-1\" thr=\"inf\" />"
      "<Cmp type=\"D_CCT\" id=\"1\" name=\"T2\" node0=\"0\" node1=\"1\" node2=\"0\" node3=\"0\" "
      "model=\"Thyristor\" hold_str=\"=nowhere\" thr_str=\"=nowhere\" />"
      "<Cmp type=\"D_LCT\" id=\"1\" name=\"T3\" node0=\"0\" node1=\"1\" node2=\"0\" "
      "model=\"Thyristor\" vd=\"-2\" thr=\"inf\" />"
      "<Cmp type=\"D_BR\" id=\"1\" name=\"B1\" node0=\"0\" node1=\"1\" node2=\"0\" node3=\"0\" "
      "model=\"Diode\" vd=\"-1\" />");
  EXPECT_EQ(Check(bench.D("D1")), "D1 : Vd < 0; ");
  EXPECT_EQ(Check(bench.D("D2")), "D2 : Vd : formula error; ");
  EXPECT_EQ(Check(bench.D("D3")), "D3 : Vd < 0; D3 : t < 0; ");
  EXPECT_EQ(Check(bench.D("D4")), "D4 : t = infinite; D4 : ICQ = infinite; ");
  // "Soft" leaves its drop unchecked and names its recovery time "tsr".
  EXPECT_EQ(Check(bench.D("D5")), "D5 : t : formula error; D5 : ICQ : formula error; D5 : tsr < 0; ");
  EXPECT_EQ(Check(bench.D("D6")), "D6 : tsr = infinite; ");
  EXPECT_EQ(Check(bench.D("D7")), "D7 : tsr : formula error; ");
  EXPECT_EQ(Check(bench.D("Z1")), "Z1 : Vd < 0; Z1 : V < 0; ");
  EXPECT_EQ(Check(bench.D("Z2")), "Z2 : V : formula error; ");
  EXPECT_EQ(Check(bench.D("Z3")), "");  // a table checks nothing here
  EXPECT_EQ(Check(bench.D("T1")), "T1 : Ihold < 0; T1 : Threshold = infinite; ");
  EXPECT_EQ(Check(bench.D("T2")), "T2 : Ihold : formula error; T2 : Threshold : formula error; ");
  EXPECT_EQ(Check(bench.D("T3")), "T3 : Vd < 0; ");  // no threshold of its own
  EXPECT_EQ(Check(bench.D("B1")), "B1 : Vd < 0; ");
  EXPECT_FALSE(bench.D("D1").CheckParams());
  SetLastError("");
  EXPECT_TRUE(bench.D("Z3").CheckParams());
}

TEST(DiodeCheck, ChargeBelowZeroFromAFileIsRaisedBeforeTheCheck) {
  Bench bench;
  bench.Load(Diode("D_D", "D1", "Storage", 0, 1, "icq=\"-1\""));
  EXPECT_EQ(Check(bench.D("D1")), "");
  bench.D("D1").ICQ.Value = -1.0;
  EXPECT_EQ(Check(bench.D("D1")), "D1 : ICQ < 0; ");
}

}  // namespace
}  // namespace tz4
