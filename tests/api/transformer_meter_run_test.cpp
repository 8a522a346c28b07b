// Transformers and meters in a run, through the exports: voltage and
// current ratios with power in equal to power out, a tapped secondary, a
// custom set with a reversed winding, a lone winding on a core node, and
// meters that read what the same quantity's trace reads.
#include <cmath>

#include "circuit_run.h"

namespace tz4_test {
namespace {

class TransformerRun : public CircuitRun {
 protected:
  // 10 V from a source on node 1, the device, a load on its secondary.
  double LoadVoltage(const std::string& device, const std::string& load = "RL", int loadNode = 3) {
    Open(Element("V_V", "V1", "V", {0, 1}, "v=\"10\"") + device +
         Element("R_R", load, "R", {0, loadNode}, "r=\"100\""));
    const int v = Trace(load);
    EXPECT_EQ(TZ4_Simulate(h, 1e-4), 0) << Error();
    return Last(v);
  }
};

// n1:n2 = 2:1: half the voltage, twice the current, the same power.
TEST_F(TransformerRun, RatiosAndPower) {
  Open(Element("V_V", "V1", "V", {0, 1}, "v=\"10\"") +
       Element("W_T2", "T1", "Transformer", {1, 0, 3, 0}, "w=\"2\" w1=\"1\"") +
       Element("R_R", "RL", "R", {0, 3}, "r=\"100\""));
  const int v = Trace("RL"), i1 = Trace("V1", true), i2 = Trace("RL", true);
  ASSERT_EQ(TZ4_Simulate(h, 1e-4), 0) << Error();
  EXPECT_NEAR(Last(v), 5.0, 1e-12);
  EXPECT_NEAR(std::fabs(Last(i2)), 2 * std::fabs(Last(i1)), 1e-12);
  EXPECT_NEAR(10.0 * std::fabs(Last(i1)), 5.0 * std::fabs(Last(i2)), 1e-12);
}

TEST_F(TransformerRun, TapsCustomSetsAndTheCore) {
  // Each half of a tapped secondary carries n2 turns: 2 x 5 V end to end.
  EXPECT_NEAR(
      LoadVoltage(Element("W_T3", "T1", "Transformer", {1, 0, 3, 0, 4}, "w=\"2\" w1=\"1\"")), 10.0,
      1e-12);
  // A custom set of two windings, 1:3, the second reversed by its dot.
  const std::string custom =
      "<Custom w=\"1\" h=\"2\" l=\"2\" b=\"0\" r=\"2\" t=\"0\" ldot=\"2\" rdot=\"0\" d=\"false\" "
      "/>";
  EXPECT_NEAR(LoadVoltage(Element("W_CUSTOM", "T1", "Transformer", {1, 0, 3, 0},
                                  "n1=\"1\" n2=\"3\"", custom)),
              -30.0, 1e-9);
  // Two lone windings on one core node are a 1:4 transformer.
  EXPECT_NEAR(LoadVoltage(Element("W_W", "W1", "Winding", {1, 0, 9}, "w=\"1\"") +
                          Element("W_W", "W2", "Winding", {3, 0, 9}, "w=\"4\"")),
              40.0, 1e-9);
}

// 10 V into 600 + 400 Ohm: the ammeter in series reads the current, the
// voltmeter across R1 its voltage, and the wattmeter (voltage from the top
// of R2 to ground, R2's current through its current path) R2's power.
TEST_F(TransformerRun, MetersReadWhatTheTracesRead) {
  Open(Element("V_V", "V1", "V", {0, 1}, "v=\"10\"") +
       Element("A_A", "A1", "Amperemeter", {1, 2}, "") +
       Element("R_R", "R1", "R", {2, 3}, "r=\"600\"") +
       Element("R_R", "R2", "R", {6, 3}, "r=\"400\"") +
       Element("V_VM", "VM", "Voltmeter", {3, 2}, "") +
       Element("W_WM", "WM", "Wattmeter", {3, 0, 6}, ""));
  const int a = Trace("A1", true), vm = Trace("VM"), current = Trace("R1", true),
            voltage = Trace("R1");
  const int wm = TZ4_AddPTrace(h, "WM"), power = TZ4_AddPTrace(h, "R2");
  ASSERT_GE(wm, 0) << Error();
  ASSERT_EQ(TZ4_Simulate(h, 1e-4), 0) << Error();
  EXPECT_NEAR(std::fabs(Last(a)), 10e-3, 1e-12);
  EXPECT_NEAR(std::fabs(Last(a)), std::fabs(Last(current)), 1e-12);
  EXPECT_NEAR(Last(vm), Last(voltage), 1e-12);
  EXPECT_NEAR(Last(wm), 40e-3, 1e-12);
  EXPECT_NEAR(Last(wm), Last(power), 1e-12);
  // Each meter allows exactly the trace it names.
  EXPECT_LT(TZ4_AddVTrace(h, "A1"), 0);
  EXPECT_LT(TZ4_AddITrace(h, "VM"), 0);
  EXPECT_LT(TZ4_AddVTrace(h, "WM"), 0);
}

// A coupler into a matched 50 Ohm load sees only the forward wave: 10 V at
// the input, forward k (V + z0 I) / 2 = 10 V at CF 0, reverse 0; into an
// open end both waves are V / 2; at CF 20 dB the outputs are a tenth.
TEST_F(TransformerRun, CouplerSeparatesTheWaves) {
  const struct {
    const char* load;
    const char* cf;
    double forward, reverse;
  } cases[] = {{"50", "0", 10, 0}, {"inf", "0", 5, 5}, {"50", "20", 1, 0}};
  for (const auto& c : cases) {
    Open(Element("V_V", "V1", "V", {0, 1}, "v=\"10\"") +
         Element("X_DC", "DC", "Coupler", {1, 2, 3, 4},
                 std::string("z=\"50\" cf=\"") + c.cf + "\"") +
         Element("R_R", "RL", "R", {0, 2}, std::string("r=\"") + c.load + "\"") +
         Element("label", "F", "Label", {3}, "") + Element("label", "B", "Label", {4}, ""));
    const int f = Trace("F"), b = Trace("B");
    ASSERT_EQ(TZ4_Simulate(h, 1e-4), 0) << Error();
    EXPECT_NEAR(Last(f), c.forward, 1e-9) << c.load << " " << c.cf;
    EXPECT_NEAR(Last(b), c.reverse, 1e-9) << c.load << " " << c.cf;
  }
}

// A ramp of 1000 V/s sampled by a 1 kHz clock rising at 0.5, 1.5, 2.5 ms:
// sample-and-hold holds 0.5, 1.5, 2.5 V between; track-and-hold follows the
// input while the clock is high and holds what it had when the clock fell.
TEST_F(TransformerRun, SampleAndTrackAndHold) {
  for (int view : {0, 2}) {
    std::string sh = Element("X_SH", "SH", "SH", {1, 2, 3}, "ic=\"0\"");
    sh.replace(sh.find(" model="), 0, " view=\"" + std::to_string(view) + "\"");
    Open(Element("V_V", "R", "PWL", {0, 1}, "", "<Signal pwl=\"0,0,10e-3,10\" c=\"0\" />") +
             Element("Y_LG", "C", "Pulse", {3}, "p=\"1e-3\" w=\"0.5e-3\" d=\"0.5e-3\"") + sh,
         1e-5);
    const int v = Trace("SH");
    ASSERT_EQ(TZ4_Simulate(h, 3e-3), 0) << Error();
    const struct {
      double t, sampled, tracked;
    } points[] = {{0.25e-3, 0, 0}, {0.75e-3, 0.5, 0.75}, {1.25e-3, 0.5, 1.0}, {2.25e-3, 1.5, 2.0}};
    for (const auto& p : points) {
      double out = 0;
      ASSERT_EQ(TZ4_GetData(h, v, p.t, &out), 0);
      EXPECT_NEAR(out, view == 0 ? p.sampled : p.tracked, 0.02) << "view " << view << " t " << p.t;
    }
  }
}

TEST_F(TransformerRun, Checks) {
  const struct {
    std::string element;
    const char* message;
  } cases[] = {
      {Element("W_T2", "T1", "Transformer", {1, 0, 3, 0},
               "w=\"inf\" w1_str=\"%3dnothing\" w1=\"1\""),
       "TZ4_Start: T1 : n1 = infinite; T1 : n2 : formula error; "},
      {Element("W_T2", "T1", "Transformer", {1, 0, 3, 0}, "w=\"1\" w1=\"0\""),
       "OK"},  // 0 turns pass
  };
  for (const auto& c : cases) {
    Open(Element("V_V", "V1", "V", {0, 1}, "v=\"10\"") + c.element +
         Element("R_R", "RL", "R", {0, 3}, "r=\"100\""));
    const bool ok = std::string(c.message) == "OK";
    EXPECT_EQ(TZ4_Start(h), ok ? 0 : -1);
    EXPECT_EQ(Error(), c.message);
  }
}

}  // namespace
}  // namespace tz4_test
