// Logic elements in a run, through the exports: truth tables of the gates,
// flip-flops against an edge count, a ring of inverters at the period its
// delays give, the Schmitt trigger's hysteresis, set/reset triggers, pulses
// narrower than a delay, and the checks. Logic levels are 0 V and 5 V with
// the threshold at 2.5 V.
#include <cmath>

#include "circuit_run.h"

namespace tz4_test {
namespace {

class LogicRun : public CircuitRun {
 protected:
  // A constant level on a node, from a source to ground.
  static std::string Level(const std::string& name, int node, double volts) {
    return Element("V_V", name, "V", {0, node}, "v=\"" + Number(volts) + "\"");
  }
  static std::string Gate(const std::string& tag, const std::string& name, int view,
                          const std::vector<int>& nodes, const std::string& model = "Logic",
                          const std::string& attributes = "") {
    std::string text = Element(tag, name, model, nodes, attributes);
    return text.replace(text.find(" model="), 0, " view=\"" + std::to_string(view) + "\"");
  }
  // The output level after a short run.
  double OutputAfterStart(const std::string& circuit, const std::string& output = "G") {
    Open(circuit, 1e-6);
    const int v = Trace(output);
    EXPECT_EQ(TZ4_Simulate(h, 2e-6), 0) << Error();
    return Last(v);
  }
  // Rising edges of a trace's samples.
  int RisingEdges(int trace) {
    int edges = 0;
    const std::vector<Sample> samples = Samples(trace);
    double last = samples.empty() ? 0 : samples.front().v;
    for (const Sample& s : samples) {
      if (last < 2.5 && s.v > 2.5) ++edges;
      last = s.v;
    }
    return edges;
  }
};

TEST_F(LogicRun, TruthTablesOfTheGates) {
  // view: 0 AND, 1 NAND, 2 OR, 3 NOR, 4 all equal, 5 not all equal.
  const int expected[6][4] = {{0, 0, 0, 1}, {1, 1, 1, 0}, {0, 1, 1, 1},
                              {1, 0, 0, 0}, {1, 0, 0, 1}, {0, 1, 1, 0}};
  for (int view = 0; view < 6; ++view) {
    for (int in = 0; in < 4; ++in) {
      const double out =
          OutputAfterStart(Level("A", 1, (in & 2) ? 5 : 0) + Level("B", 2, (in & 1) ? 5 : 0) +
                           Gate("Y_2", "G", view, {1, 2, 3}));
      EXPECT_EQ(out, expected[view][in] * 5.0) << "view " << view << " inputs " << in;
    }
  }
  // One input: view 0 inverts, 1 buffers, and a view past 5 keeps the state.
  // Three inputs, view 5: "not all equal", which is not the parity.
  EXPECT_EQ(OutputAfterStart(Level("A", 1, 5) + Gate("Y_1", "G", 0, {1, 2})), 0.0);
  EXPECT_EQ(OutputAfterStart(Level("A", 1, 5) + Gate("Y_1", "G", 1, {1, 2})), 5.0);
  EXPECT_EQ(OutputAfterStart(Level("A", 1, 5) + Gate("Y_1", "G", 7, {1, 2})), 0.0);
  EXPECT_EQ(OutputAfterStart(Level("A", 1, 5) + Level("B", 2, 5) + Level("C", 3, 5) +
                             Gate("Y_3", "G", 5, {1, 2, 3, 4})),
            0.0);
  EXPECT_EQ(OutputAfterStart(Level("A", 1, 5) + Level("B", 2, 5) + Level("C", 3, 0) +
                             Gate("Y_3", "G", 5, {1, 2, 3, 4})),
            5.0);
}

// A D flip-flop with Q-bar fed back to D halves its clock: 10 rising clock
// edges give 5 rising edges at Q.
TEST_F(LogicRun, DFlipFlopDividesItsClock) {
  Open(Element("V_V", "CLK", "Pulse", {0, 1}, "",
               "<Signal u0=\"0\" u1=\"5\" p=\"1e-3\" w=\"0.5e-3\" d=\"0.25e-3\" />") +
           Gate("Y_FF", "FF", 0, {3, 1, 2, 3}),
       1e-5);
  const int q = Trace("FF");
  ASSERT_EQ(TZ4_Simulate(h, 10e-3), 0) << Error();
  EXPECT_EQ(RisingEdges(q), 5);
}

// Three inverters in a ring, each with a delay of 1 us, oscillate with a
// period of 2 * 3 * 1 us.
TEST_F(LogicRun, RingOfInvertersOscillatesAtTheDelaysPeriod) {
  Open(Gate("Y_1", "U1", 0, {1, 2}, "Delay", "delay=\"1e-6\"") +
           Gate("Y_1", "U2", 0, {2, 3}, "Delay", "delay=\"1e-6\"") +
           Gate("Y_1", "U3", 0, {3, 1}, "Delay", "delay=\"1e-6\" ic=\"1\""),
       1e-7);
  const int v = Trace("U3");
  ASSERT_EQ(TZ4_Simulate(h, 60.5e-6), 0) << Error();
  EXPECT_EQ(RisingEdges(v), 10);
}

// A Schmitt trigger with 1 V of hysteresis on a triangle from 0 to 5 V
// switches up at 3 V and down at 2 V.
TEST_F(LogicRun, SchmittTriggerSwitchesAtItsThresholds) {
  Open(Element("V_V", "IN", "PWL", {0, 1}, "", "<Signal pwl=\"0,0,5e-3,5,10e-3,0\" c=\"0\" />") +
           Gate("Y_ST", "ST", 1, {1, 2}, "Logic", "hyst=\"1\""),
       1e-5);
  const int in = Trace("IN"), out = Trace("ST");
  ASSERT_EQ(TZ4_Simulate(h, 10e-3), 0) << Error();
  const std::vector<Sample> output = Samples(out);
  for (size_t i = 1; i < output.size(); ++i) {
    if (output[i].v == output[i - 1].v) continue;
    double input = 0;
    ASSERT_EQ(TZ4_GetData(h, in, output[i].t, &input), 0) << Error();
    EXPECT_NEAR(input, output[i].v > 2.5 ? 3.0 : 2.0, 0.02) << "at " << output[i].t;
  }
  EXPECT_EQ(RisingEdges(out), 1);
}

// S and R both high with no dominance give Q = Q-bar = 1; both falling low
// together then gives Q = 0, Q-bar = 1.
TEST_F(LogicRun, SetAndResetTogetherWithoutDominance) {
  Open(Element("V_V", "SR", "Pulse", {0, 5}, "",
               "<Signal u0=\"5\" u1=\"0\" p=\"1\" w=\"1\" d=\"1e-3\" />") +
           Level("D", 1, 0) + Level("C", 2, 0) +
           Element("Y_RS", "T", "Logic", {1, 2, 3, 4, 5, 5}, "dominance=\"0\"") +
           Element("label", "QB", "Label", {4}, ""),
       1e-5);
  const int q = Trace("T"), qBar = Trace("QB");
  ASSERT_EQ(TZ4_Simulate(h, 0.5e-3), 0) << Error();
  EXPECT_EQ(Last(q), 5.0);
  EXPECT_EQ(Last(qBar), 5.0);
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  EXPECT_EQ(Last(q), 0.0);
  EXPECT_EQ(Last(qBar), 5.0);
}

// After a set, the clock level is taken at once, so that the next rising
// edge is seen: D low then clears the Q that the set pulse gave.
TEST_F(LogicRun, EdgeAfterASetIsSeen) {
  Open(Level("D", 1, 0) +
           Element("V_V", "CLK", "Pulse", {0, 2}, "",
                   "<Signal u0=\"0\" u1=\"5\" p=\"1\" w=\"1\" d=\"2e-3\" />") +
           Element("V_V", "S", "Pulse", {0, 5}, "",
                   "<Signal u0=\"0\" u1=\"5\" p=\"1\" w=\"0.5e-3\" d=\"0.5e-3\" />") +
           Element("Y_RS", "T", "Logic", {1, 2, 3, 4, 5, 0}, ""),
       1e-5);
  const int q = Trace("T");
  ASSERT_EQ(TZ4_Simulate(h, 1.5e-3), 0) << Error();
  EXPECT_EQ(Last(q), 5.0);  // set
  ASSERT_EQ(TZ4_Simulate(h, 1.5e-3), 0) << Error();
  EXPECT_EQ(Last(q), 0.0);  // the edge at 2 ms took D
}

// A pulse narrower than the gate's delay never reaches the output; a wider
// one arrives late by the delay.
TEST_F(LogicRun, DelaySwallowsNarrowPulses) {
  Open(Element("V_V", "IN", "Pulse", {0, 1}, "",
               "<Signal u0=\"0\" u1=\"5\" p=\"1\" w=\"0.5e-6\" d=\"1e-6\" />") +
           Element("V_V", "IN2", "Pulse", {0, 3}, "",
                   "<Signal u0=\"0\" u1=\"5\" p=\"1\" w=\"3e-6\" d=\"1e-6\" />") +
           Gate("Y_1", "G", 1, {1, 2}, "Delay", "delay=\"1e-6\"") +
           Gate("Y_1", "G2", 1, {3, 4}, "Delay", "delay=\"1e-6\""),
       1e-7);
  const int narrow = Trace("G"), wide = Trace("G2");
  ASSERT_EQ(TZ4_Simulate(h, 10e-6), 0) << Error();
  EXPECT_EQ(RisingEdges(narrow), 0);
  ASSERT_EQ(RisingEdges(wide), 1);
  double firstHigh = -1;
  for (const Sample& s : Samples(wide))
    if (s.v > 2.5 && firstHigh < 0) firstHigh = s.t;
  // The change comes at the event; the point after it shows the new level.
  EXPECT_GE(firstHigh, 2e-6 * (1 - 1e-12));
  EXPECT_LT(firstHigh, 2.01e-6);
}

// The logic generator: "Active" low makes a pulse idle high and pulse low;
// a cycled list repeats from its first point.
TEST_F(LogicRun, GeneratorPulsesAndLists) {
  Open(Element("Y_LG", "P", "Pulse", {1}, "a=\"0\" p=\"10e-3\" w=\"2e-3\" d=\"1e-3\"") +
           Element("Y_LG", "L", "List", {2}, "list=\"0,1,1e-3,0,2e-3,1\" c=\"1\" d=\"0\""),
       1e-4);
  const int p = Trace("P"), l = Trace("L");
  const struct {
    double t, pulse, list;
  } points[] = {{0.5e-3, 5, 5}, {1.5e-3, 0, 0}, {2.5e-3, 0, 5}, {3.5e-3, 5, 0}, {4.5e-3, 5, 5}};
  ASSERT_EQ(TZ4_Simulate(h, 5e-3), 0) << Error();
  for (const auto& point : points) {
    double v = 0;
    ASSERT_EQ(TZ4_GetData(h, p, point.t, &v), 0) << Error();
    EXPECT_EQ(v, point.pulse) << "pulse at " << point.t;
    ASSERT_EQ(TZ4_GetData(h, l, point.t, &v), 0) << Error();
    EXPECT_EQ(v, point.list) << "list at " << point.t;
  }
}

// A thyristor fired by a logic level: blocked until the generator's step at
// 1 ms, conducting after it with its 1 V drop.
TEST_F(LogicRun, LogicLevelFiresAThyristor) {
  Open(Level("VS", 1, 10) +
           Element("D_LCT", "T1", "Thyristor", {2, 1, 3}, "vd=\"1\" hold=\"1e-3\"") +
           Element("R_R", "RL", "R", {0, 2}, "r=\"100\"") +
           Element("Y_LG", "G", "Step", {3}, "d=\"1e-3\""),
       1e-5);
  const int load = Trace("RL");
  ASSERT_EQ(TZ4_Simulate(h, 2e-3), 0) << Error();
  double v = 0;
  ASSERT_EQ(TZ4_GetData(h, load, 0.5e-3, &v), 0);
  EXPECT_NEAR(v, 0.0, 1e-9);
  EXPECT_NEAR(Last(load), 9.0, 1e-9);
}

TEST_F(LogicRun, ChecksAndAGroundedOutput) {
  const struct {
    std::string gate;
    const char* message;
  } cases[] = {
      {Gate("Y_1", "G", 0, {1, 2}, "Delay", "delay=\"-1\""), "TZ4_Start: G : Delay < 0; "},
      {Gate("Y_1", "G", 0, {1, 2}, "Delay2", "delay=\"inf\" down=\"-2\""),
       "TZ4_Start: G : Up = infinite; G : Down < 0; "},
      {Gate("Y_ST", "G", 0, {1, 2}, "Logic", "hyst=\"-1\""), "TZ4_Start: G : Hysteresis < 0; "},
      {Gate("Y_1", "G", 0, {1, 0}), "TZ4_Start: Transient error at t=0 : G : grounded output"},
      {Element("Y_LG", "G", "V", {0}, "a=\"1\""),
       "TZ4_Start: Transient error at t=0 : G : grounded output"},
      {Element("Y_LG", "G", "V", {0}, "a=\"0\""), "OK"},
      {Element("Y_LG", "G", "Pulse", {1}, "p=\"0\""), "TZ4_Start: G : Period <= 0; "},
  };
  for (const auto& c : cases) {
    Open(Level("A", 1, 5) + c.gate);
    EXPECT_EQ(TZ4_Start(h), std::string(c.message) == "OK" ? 0 : -1);
    EXPECT_EQ(Error(), c.message);
  }
}

}  // namespace
}  // namespace tz4_test
