// The start of a run through the C interface, from real circuit files:
// charged capacitors that disagree with a source or with each other, whose
// voltages jump at t = 0 as the charge that moves dictates, whatever the
// names of the components and hence their order; a contradiction that no
// jump can resolve; and a latched thyristor that lets go at the start next
// to a charged capacitor, which keeps its charge.
#include <cmath>
#include <string>

#include "circuit_run.h"

namespace {

using namespace tz4_test;

std::string Capacitor(const std::string& name, int a, int b, const std::string& c, const std::string& ic) {
  return Element("C_C", name, "C", {a, b}, "c=\"" + c + "\" ic=\"" + ic + "\"");
}
std::string Source(const std::string& name, int a, int b, const std::string& v) {
  return Element("V_V", name, "V", {a, b}, "v=\"" + v + "\"");
}
std::string Resistor(const std::string& name, int a, int b, const std::string& r) {
  return Element("R_R", name, "R", {a, b}, "r=\"" + r + "\"");
}

class IcSearch : public CircuitRun {
 protected:
  void Open(const std::string& components) { CircuitRun::Open(components, 1e-5); }
};

// ------------------------------------------------- a capacitor and a source

TEST_F(IcSearch, ChargedCapacitorAcrossASourceTakesItsVoltageWhateverTheNames) {
  // 3 V stored against 10 V: the charge C * 7 V comes through the source at
  // once, and the capacitor starts at 10 V and carries no current while the
  // source stays constant. The names put the source's row after the
  // capacitor's ("V1") or before it ("A1"); the file lists them both ways.
  for (const std::string source : {"V1", "A1"}) {
    for (bool capacitorFirst : {true, false}) {
      for (const std::string load : {"1000", "0.1"}) {
        SCOPED_TRACE(source + (capacitorFirst ? ", capacitor first" : ", source first") + ", load " + load);
        const std::string c = Capacitor("C1", 0, 1, "1e-6", "3");
        const std::string v = Source(source, 0, 1, "10");
        Open((capacitorFirst ? c + v : v + c) + Resistor("R1", 1, 0, load));
        const int vc = Trace("C1");
        const int ic = Trace("C1", true);
        const int iv = Trace(source, true);
        ASSERT_EQ(TZ4_Simulate(h, 1e-4), 0) << Error();
        // A flat trace keeps only the ends of its stretch.
        const auto voltage = Samples(vc);
        ASSERT_GE(voltage.size(), 2u);
        EXPECT_GE(voltage.back().t, 1e-4 * (1 - 1e-9));
        for (const Sample& s : voltage) ASSERT_NEAR(s.v, 10.0, 1e-9) << s.t;
        for (const Sample& s : Samples(ic)) ASSERT_NEAR(s.v, 0.0, 1e-9) << s.t;
        // The source feeds the load from the first point on.
        EXPECT_NEAR(AtStart(iv), 10.0 / std::stod(load), 1e-9);
        EXPECT_EQ(SavedIC("C1.IC"), "10");
      }
    }
  }
}

TEST_F(IcSearch, ReversedCapacitorAcrossASourceTakesTheNegativeVoltage) {
  for (const std::string source : {"V1", "A1"}) {
    SCOPED_TRACE(source);
    Open(Capacitor("C1", 1, 0, "1e-6", "-3") + Source(source, 0, 1, "10") + Resistor("R1", 1, 0, "1000"));
    const int vc = Trace("C1");
    ASSERT_EQ(TZ4_Simulate(h, 1e-4), 0) << Error();
    for (const Sample& s : Samples(vc)) ASSERT_NEAR(s.v, -10.0, 1e-9) << s.t;
  }
}

TEST_F(IcSearch, AgreeingCapacitorAndSourceLeaveTheLoadToTheSource) {
  // Nothing moves at the start; the load's current is the source's, not
  // the capacitor's, in either order.
  for (const std::string source : {"V1", "A1"}) {
    SCOPED_TRACE(source);
    Open(Source(source, 0, 1, "10") + Capacitor("C1", 0, 1, "1e-6", "10") + Resistor("R1", 1, 0, "1000"));
    const int ic = Trace("C1", true);
    const int iv = Trace(source, true);
    ASSERT_EQ(TZ4_Simulate(h, 1e-4), 0) << Error();
    EXPECT_EQ(AtStart(ic), 0.0);
    EXPECT_NEAR(AtStart(iv), 0.01, 1e-15);
  }
}

// ------------------------------------------------ capacitors among themselves

TEST_F(IcSearch, ParallelCapacitorsShareTheirCharge) {
  // 1 uF at 2 V and 3 uF at 6 V: 20 uC over 4 uF is 5 V at once. Then the
  // 10 V source charges both through 1 kOhm, 5 mA split as the capacitances.
  for (const std::string names : {"C1C2", "C2C1"}) {
    SCOPED_TRACE(names);
    const std::string small = names.substr(0, 2), large = names.substr(2, 2);
    Open(Source("V1", 0, 1, "10") + Resistor("R1", 1, 2, "1000") + Capacitor(small, 0, 2, "1e-6", "2") +
         Capacitor(large, 0, 2, "3e-6", "6"));
    const int vSmall = Trace(small), vLarge = Trace(large);
    const int iSmall = Trace(small, true), iLarge = Trace(large, true);
    ASSERT_EQ(TZ4_Simulate(h, 1e-4), 0) << Error();
    EXPECT_NEAR(AtStart(vSmall), 5.0, 1e-12);
    EXPECT_NEAR(AtStart(vLarge), 5.0, 1e-12);
    EXPECT_NEAR(AtStart(iSmall), 1.25e-3, 1e-15);
    EXPECT_NEAR(AtStart(iLarge), 3.75e-3, 1e-15);
    // From there, one RC charge with tau = 1k * 4 uF.
    for (const Sample& s : Samples(vSmall)) ASSERT_NEAR(s.v, 10.0 - 5.0 * std::exp(-s.t / 4e-3), 1e-6) << s.t;
  }
}

TEST_F(IcSearch, SeriesCapacitorsAcrossASourceTakeTheSameCharge) {
  // 1 uF and 3 uF at 1 V each across 10 V: the same 6 uC goes through both,
  // 6 V onto the small one and 2 V onto the large one.
  for (const std::string source : {"V1", "A1"}) {
    SCOPED_TRACE(source);
    Open(Source(source, 0, 1, "10") + Capacitor("C1", 2, 1, "1e-6", "1") + Capacitor("C2", 0, 2, "3e-6", "1") +
         Resistor("R1", 2, 0, "1e6"));
    const int v1 = Trace("C1"), v2 = Trace("C2");
    ASSERT_EQ(TZ4_Simulate(h, 1e-4), 0) << Error();
    EXPECT_NEAR(AtStart(v1), 7.0, 1e-12);
    EXPECT_NEAR(AtStart(v2), 3.0, 1e-12);
  }
}

// ---------------------------------------------------------- no way out

TEST_F(IcSearch, SourcesOfDifferentValueInParallelStopTheStart) {
  Open(Source("V1", 0, 1, "10") + Source("V2", 0, 1, "5") + Resistor("R1", 1, 0, "1000"));
  Trace("R1");
  EXPECT_EQ(TZ4_Simulate(h, 1e-4), -1);
  EXPECT_EQ(Error().rfind("TZ4_Simulate: Transient error at t=0 : Infinity at node ", 0), 0u) << Error();
}

// ------------------------------------------------- a thyristor at the start

TEST_F(IcSearch, ThyristorReleasedAtTheStartLeavesItsNeighboursTheirCharge) {
  // T1 starts latched, but 1.5 V through 1 kOhm past its 1 V drop is 0.5 mA,
  // below the 1 mA holding current: it lets go at once. C1 on its node keeps
  // its 1 V, and the supply sees RA, C1 and R2 in series: 0.25 mA.
  Open(Source("VA", 0, 1, "1.5") + Resistor("RA", 1, 2, "1000") +
       Element("D_VCT", "T1", "Thyristor", {0, 2, 0, 4}, "vd=\"1\" thr=\"2\" hold=\"1e-3\" ic=\"1\"") +
       Capacitor("C1", 3, 2, "1e-6", "1") + Resistor("R2", 3, 0, "1000") + Resistor("RG", 4, 0, "1000"));
  const int vc = Trace("C1"), vt = Trace("T1"), it = Trace("T1", true);
  ASSERT_EQ(TZ4_Simulate(h, 1e-4), 0) << Error();
  EXPECT_NEAR(AtStart(vc), 1.0, 1e-12);
  EXPECT_NEAR(AtStart(vt), 1.25, 1e-12);
  EXPECT_EQ(AtStart(it), 0.0);
  for (const Sample& s : Samples(it)) ASSERT_EQ(s.v, 0.0) << s.t;
  EXPECT_EQ(SavedIC("T1.IC"), "Off");
}

}  // namespace
