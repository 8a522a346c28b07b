// Controlled sources in a run, through the exports: the four gains, a table,
// a function, an oscillator's frequency against its control, a modulator's
// duty against its control (and at a control of 0), a one-shot pulse, and
// the checks.
#include <cmath>

#include "circuit_run.h"

namespace tz4_test {
namespace {

class ControlledRun : public CircuitRun {
 protected:
  // A 2 V control on node 1 (with 1 kOhm to ground for a current of 2 mA
  // through a current sense), the source on node 2 into 1 kOhm.
  double Output(const std::string& source, double until = 1e-4) {
    Open(Element("V_V", "VC", "V", {0, 1}, "v=\"2\"") +
             Element("R_R", "RC", "R", {4, 0}, "r=\"1000\"") + source +
             Element("R_R", "RL", "R", {0, 2}, "r=\"1000\""),
         1e-6);
    const int v = Trace("RL");
    EXPECT_EQ(TZ4_Simulate(h, until), 0) << Error();
    return Last(v);
  }
};

TEST_F(ControlledRun, GainsTablesAndFunctions) {
  const struct {
    const char* tag;
    const char* model;
    const char* attributes;
    double expected;
  } cases[] = {
      {"V_VCVS", "Linear", "k=\"3\"", 6.0},
      {"V_CCVS", "Linear", "k=\"1000\"", 2.0},  // 2 mA x 1 kOhm
      {"I_VCCS", "Linear", "k=\"1e-3\"", 2.0},  // 2 mS x 2 V into 1 kOhm
      {"I_CCCS", "Linear", "k=\"2\"", 4.0},     // 4 mA into 1 kOhm
      {"V_VCVS", "PWL", "pwl=\"1,1,3\"", 4.0},  // slope 1 below 1 V, 3 above: 1 + 3 x 1
      {"V_VCVS", "Function", "f=\"x*x%2b1\"", 5.0},
  };
  for (const auto& c : cases) {
    // A current control counts positive the current its sense delivers into
    // the first control pin: here the 2 mA from node 1 into node 4.
    const bool current = c.tag[2] == 'C';
    const std::vector<int> pins =
        current ? std::vector<int>{0, 2, 4, 1} : std::vector<int>{0, 2, 0, 1};
    EXPECT_NEAR(Output(Element(c.tag, "E1", c.model, pins, c.attributes)), c.expected, 1e-9)
        << c.tag << " " << c.model;
  }
}

// A square VCO of 1 kHz per volt at 2 V runs at 2 kHz: 10 rising edges in
// 5 ms; a PWM at 1 kHz with Vmax 10 V and 3 V of control is high 30 % of
// each period; with no control it stays low without stalling.
TEST_F(ControlledRun, OscillatorAndModulator) {
  Open(Element("V_V", "VC", "V", {0, 1}, "v=\"2\"") +
           Element("V_VCVS", "E1", "VCO", {0, 2, 0, 1},
                   "v0=\"0\" v1=\"1\" dfdv=\"1000\" phase=\"0\" vcotype=\"1\"") +
           Element("R_R", "RL", "R", {0, 2}, "r=\"1000\""),
       1e-6);
  const int vco = Trace("RL");
  ASSERT_EQ(TZ4_Simulate(h, 5.01e-3), 0) << Error();
  int edges = 0;
  double last = 0;
  for (const Sample& s : Samples(vco)) {
    if (last < 0.5 && s.v > 0.5) ++edges;
    last = s.v;
  }
  EXPECT_EQ(edges, 10);

  for (const double control : {3.0, 0.0}) {
    Open(Element("V_V", "VC", "V", {0, 1}, "v=\"" + Number(control) + "\"") +
             Element("V_VCVS", "E1", "PWM", {0, 2, 0, 1},
                     "v0=\"0\" v1=\"1\" dfdv=\"1000\" phase=\"0\" max=\"10\"") +
             Element("R_R", "RL", "R", {0, 2}, "r=\"1000\""),
         1e-5);
    const int pwm = Trace("RL");
    ASSERT_EQ(TZ4_Simulate(h, 10e-3), 0) << Error();
    double high = 0, previousT = 0, previousV = 0;
    for (const Sample& s : Samples(pwm)) {
      high += previousV * (s.t - previousT);
      previousT = s.t;
      previousV = s.v;
    }
    EXPECT_NEAR(high / previousT, control / 10, 0.01) << control;
  }
}

// The pulse fires once on the rising crossing and lasts its width even
// though the control stays above the threshold.
TEST_F(ControlledRun, OneShotPulseDoesNotRefire) {
  Open(Element("V_V", "VC", "PWL", {0, 1}, "", "<Signal pwl=\"0,0,1e-3,10\" c=\"0\" />") +
           Element("V_VCVS", "E1", "Pulse", {0, 2, 0, 1},
                   "v0=\"0\" v1=\"1\" thr=\"5\" width=\"1e-4\"") +
           Element("R_R", "RL", "R", {0, 2}, "r=\"1000\""),
       1e-6);
  const int v = Trace("RL");
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  double from = -1, to = -1;
  for (const Sample& s : Samples(v)) {
    if (s.v > 0.5 && from < 0) from = s.t;
    if (s.v > 0.5) to = s.t;
  }
  EXPECT_NEAR(from, 0.5e-3, 2e-6);
  EXPECT_NEAR(to, 0.6e-3, 2e-6);
}

TEST_F(ControlledRun, Checks) {
  const struct {
    std::string element;
    const char* message;
  } cases[] = {
      {Element("I_VCCS", "E1", "PWM", {0, 2, 0, 1},
               "v0=\"inf\" dfdv=\"0\" max=\"-1\" phase=\"-1\""),
       "TZ4_Start: E1 : I0 = infinite; E1 : Vmax <= 0; E1 : F <= 0; E1 : Phase < 0; "},
      {Element("V_VCVS", "E1", "Function", {0, 2, 0, 1}, "ic=\"inf\""),
       "TZ4_Start: E1 : IC = infinite; "},
      {Element("V_CCVS", "E1", "Pulse", {0, 2, 4, 1}, "width=\"-1\" max=\"0\""),
       "TZ4_Start: E1 : Width < 0; E1 : Imax <= 0; "},
  };
  for (const auto& c : cases) {
    Open(Element("V_V", "VC", "V", {0, 1}, "v=\"2\"") +
         Element("R_R", "RC", "R", {4, 0}, "r=\"1000\"") + c.element +
         Element("R_R", "RL", "R", {0, 2}, "r=\"1000\""));
    EXPECT_EQ(TZ4_Start(h), -1);
    EXPECT_EQ(Error(), c.message);
  }
}

}  // namespace
}  // namespace tz4_test
