// Switching resolution: rounds of solve and check, the state history, the
// way out of a cycle, the one-at-a-time setting, the time-out, and what is
// reported when no state fits.
#include <gtest/gtest.h>

#include <ctime>

#include "fake_cmp.h"

namespace tz4 {
namespace {

using solvertest::Circuit;
using solvertest::FakeCmp;

int Rounds(const FakeCmp& part) { return part.Count(STAMP_MATRIX) / 2; }

// A device that always wants the other state of 0 and 1.
FakeCmp& Toggle(Circuit& circuit, const std::string& name) {
  FakeCmp& t = circuit.Add(name, {1});
  t.hasRange = true;
  t.lowState = 0;
  t.highState = 1;
  t.onCheck = [&t](CCalc&, bool apply) {
    if (apply) t.state = 1 - t.state;
    return true;
  };
  return t;
}

// A device whose row carries its own state, and that wants to be on exactly
// when the other one's row reads 0: two of them turn each other off.
FakeCmp& Rival(Circuit& circuit, const std::string& name, const FakeCmp* const* other) {
  FakeCmp& d = circuit.Add(name, {}, 1);
  d.state = 1;
  d.hasRange = true;
  d.lowState = 0;
  d.highState = 1;
  d.onStamp = [&d](CCalc& calc, int phase, double) {
    if (phase == STAMP_MATRIX && calc.pass == 0) calc.StampISource(0, 0, d.firstRow, d.state);
    return 0;
  };
  d.onCheck = [&d, other](CCalc& calc, bool apply) {
    const int wanted = calc.x[static_cast<size_t>((*other)->firstRow)] == 0.0 ? 1 : 0;
    if (wanted == d.state) return false;
    if (apply) d.state = wanted;
    return true;
  };
  return d;
}

TEST(CalcSwitching, CycleIsLeftByChangingOneDevice) {
  Circuit circuit;
  circuit.Resistor("R1", 1, 0, 1.0);
  const FakeCmp* pointP = nullptr;
  const FakeCmp* pointQ = nullptr;
  FakeCmp& p = Rival(circuit, "P", &pointQ);
  FakeCmp& q = Rival(circuit, "Q", &pointP);
  pointP = &p;
  pointQ = &q;
  ASSERT_TRUE(circuit.Build());
  CCalc& calc = circuit.calc;
  // (1,1) -> (0,0) -> (1,1) repeats the first vector; the search tries P
  // first and finds (1,0), which holds.
  EXPECT_EQ(calc.Calculate(0.0, 1e-3, false, false), 0);
  EXPECT_EQ(p.state, 1);
  EXPECT_EQ(q.state, 0);
  EXPECT_EQ(Rounds(p), 3);
  EXPECT_EQ(calc.historyUsed, 0);
}

TEST(CalcSwitching, CycleWithNoWayOutRestoresTheSolution) {
  Circuit circuit;
  circuit.Resistor("R1", 1, 0, 1.0);
  Toggle(circuit, "T1");
  Toggle(circuit, "T2");
  ASSERT_TRUE(circuit.Build());
  CCalc& calc = circuit.calc;
  calc.x[1] = 42.0;
  EXPECT_EQ(calc.Calculate(0.0, 1e-3, false, false), -1);
  EXPECT_EQ(calc.error, "No solution");
  EXPECT_EQ(calc.x[1], 42.0);
  EXPECT_EQ(calc.historyUsed, 0);
}

TEST(CalcSwitching, OneChangePerRoundWithOs) {
  auto rounds = [](bool os) {
    Circuit circuit;
    circuit.Resistor("R1", 1, 0, 1.0);
    std::vector<FakeCmp*> parts;
    for (const char* name : {"A", "B", "C"}) {
      FakeCmp& part = circuit.Add(name, {1});
      part.onCheck = [&part](CCalc&, bool apply) {
        if (part.state != 0) return false;
        if (apply) part.state = 1;
        return true;
      };
      parts.push_back(&part);
    }
    EXPECT_TRUE(circuit.Build());
    circuit.calc.os = os;
    EXPECT_EQ(circuit.calc.Calculate(0.0, 1e-3, false, false), 0);
    for (FakeCmp* part : parts) EXPECT_EQ(part->state, 1);
    EXPECT_EQ(circuit.calc.cause, " switching triggered by A");
    return Rounds(*parts[0]);
  };
  EXPECT_EQ(rounds(false), 2);
  EXPECT_EQ(rounds(true), 4);
}

TEST(CalcSwitching, TimeOutWithoutAndWithACause) {
  {
    Circuit circuit;
    circuit.calc.settings.timeout = 1;
    circuit.Resistor("R1", 1, 0, 1.0);
    ASSERT_TRUE(circuit.Build());
    circuit.calc.runClock = (ProcessMillis() - 5000u);
    EXPECT_EQ(circuit.calc.Calculate(0.0, 1e-3, false, false), -99);
    EXPECT_EQ(circuit.calc.error, "Calc IC time-out : reason unknown");
    EXPECT_EQ(circuit.calc.historyUsed, 0);
  }
  {
    // A state that never repeats: only the clock ends it.
    Circuit circuit;
    circuit.calc.settings.timeout = 1;
    circuit.Resistor("R1", 1, 0, 1.0);
    FakeCmp& endless = circuit.Add("E1", {1});
    endless.onCheck = [&endless](CCalc& calc, bool apply) {
      if (apply) ++endless.state;
      if (endless.state == 25)
        calc.runClock = (ProcessMillis() - 10000u);
      return true;
    };
    ASSERT_TRUE(circuit.Build());
    circuit.calc.runClock = (ProcessMillis());
    EXPECT_EQ(circuit.calc.Calculate(0.0, 1e-3, false, false), -99);
    EXPECT_EQ(circuit.calc.error, "Calc IC time-out :  switching triggered by E1");
    EXPECT_EQ(endless.state, 25);
    // The history grew in chunks of ten and is kept for the next call.
    EXPECT_EQ(circuit.calc.historyCap, 30);
    EXPECT_EQ(circuit.calc.historyUsed, 0);
  }
  {
    Circuit circuit;  // no time-out: a clock far in the past does not matter
    circuit.Resistor("R1", 1, 0, 1.0);
    ASSERT_TRUE(circuit.Build());
    circuit.calc.runClock = (ProcessMillis() - 50000u);
    EXPECT_EQ(circuit.calc.Calculate(0.0, 1e-3, false, false), 0);
  }
}

TEST(CalcSwitching, InfinityIsReportedOnlyWhenNoComponentWantsToChange) {
  auto make = [](Circuit& circuit, bool withSwitch) {
    circuit.Source("V1", 0, 1, 5.0);
    FakeCmp& second = circuit.Add("V2", {0, 1}, 1);
    FakeCmp* sw = withSwitch ? &circuit.Add("S1", {}) : nullptr;
    second.onStamp = [&second, sw](CCalc& calc, int phase, double) {
      if (phase != STAMP_MATRIX || calc.pass != 0) return 0;
      if (sw == nullptr || sw->state == 0)
        calc.StampVSource(second.pins[0], second.pins[1], second.firstRow, 6.0);
      else
        calc.StampISource(second.pins[0], second.pins[1], second.firstRow, 0.0);
      return 0;
    };
    if (sw != nullptr)
      sw->onCheck = [sw](CCalc&, bool apply) {
        if (sw->state != 0) return false;
        if (apply) sw->state = 1;
        return true;
      };
  };
  {
    Circuit circuit;
    make(circuit, false);
    ASSERT_TRUE(circuit.Build());
    EXPECT_EQ(circuit.calc.Calculate(0.0, 1e-3, false, false), -3);
    EXPECT_EQ(circuit.calc.error, "Infinity at node 2 : V1");
  }
  {
    Circuit circuit;
    make(circuit, true);
    ASSERT_TRUE(circuit.Build());
    EXPECT_EQ(circuit.calc.Calculate(0.0, 1e-3, false, false), 0);
    EXPECT_TRUE(circuit.calc.error.empty());
    EXPECT_NEAR(circuit.calc.x[1], 5.0, 1e-12);
  }
}

TEST(CalcSwitching, StampFailureEndsTheResolution) {
  Circuit circuit;
  FakeCmp& bad = circuit.Add("B", {1});
  bad.onStamp = [](CCalc& calc, int phase, double) {
    if (phase != STAMP_MATRIX) return 0;
    calc.error = "B: cannot stamp";
    return 2;
  };
  ASSERT_TRUE(circuit.Build());
  EXPECT_EQ(circuit.calc.Calculate(0.0, 1e-3, false, false), -10);
  EXPECT_EQ(circuit.calc.error, "B: cannot stamp");
  EXPECT_EQ(circuit.calc.historyUsed, 0);
}

TEST(CalcSwitching, NamesAtRowAndNeighbours) {
  Circuit circuit;
  FakeCmp& r1 = circuit.Resistor("R1", 1, 2, 1.0);
  FakeCmp& v1 = circuit.Source("V1", 0, 1, 1.0);
  FakeCmp& r2 = circuit.Resistor("R2", 2, 0, 1.0);
  r2.path = "X1";
  ASSERT_TRUE(circuit.Build());
  CCalc& calc = circuit.calc;
  EXPECT_EQ(calc.NamesAtRow(1), "R1, V1");
  EXPECT_EQ(calc.NamesAtRow(2), "R1, X1.R2");
  EXPECT_EQ(calc.NamesAtRow(3), "V1");
  EXPECT_EQ(calc.MarkNeighbours(2), 99);  // R2: node 2 is R1's
  EXPECT_TRUE(r1.forceIC);
  EXPECT_FALSE(v1.forceIC);  // ground does not count
  EXPECT_EQ(calc.MarkNeighbours(2), 0);  // nothing new
}

}  // namespace
}  // namespace tz4
