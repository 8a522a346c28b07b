// Amplifiers and comparators in a run, through the exports: an ideal
// follower, a gain of 0, an inverting op-amp (gain -R2/R1) clipping at its
// limits, a lagging amplifier against its bandwidth, a comparator with
// hysteresis and a delay, a function and a table, and the checks.
#include <cmath>

#include "circuit_run.h"

namespace tz4_test {
namespace {

class AmplifierRun : public CircuitRun {
 protected:
  double Output(const std::string& circuit, const std::string& output = "OUT") {
    Open(Element("V_V", "VI", "V", {0, 1}, "v=\"2\"") + circuit +
             Element("label", "OUT", "Label", {3}, ""),
         1e-6);
    const int v = Trace(output);
    EXPECT_EQ(TZ4_Simulate(h, 1e-5), 0) << Error();
    return Last(v);
  }
};

TEST_F(AmplifierRun, GainsFunctionsAndTables) {
  // An ideal differential amplifier fed back from its output is a follower.
  EXPECT_NEAR(Output(Element("O_OD", "U1", "Linear", {1, 3, 3}, "")), 2.0, 1e-12);
  EXPECT_NEAR(Output(Element("O_O", "U1", "Linear", {1, 3}, "k=\"0\"")), 0.0, 1e-12);
  EXPECT_NEAR(Output(Element("O_O", "U1", "Linear", {1, 3}, "k=\"-3\"")), -6.0, 1e-12);
  EXPECT_NEAR(Output(Element("O_OS", "U1", "Linear", {1, 3, 1}, "k=\"1\"")), 4.0, 1e-12);
  EXPECT_NEAR(Output(Element("O_O", "U1", "Function", {1, 3}, "f=\"x*x%2b1\"")), 5.0, 1e-12);
  // Slope 1 up to 1 V, then 3: 1 + 3 x 1.
  EXPECT_NEAR(Output(Element("O_O", "U1", "PWL", {1, 3}, "pwl=\"1,1,3\"")), 4.0, 1e-12);
}

// Gain -R2/R1 = -10 on a 2 V sine, clipped at +-15 V.
TEST_F(AmplifierRun, InvertingOpAmpClipsAtItsLimits) {
  Open(Element("V_V", "VI", "Sin", {0, 1}, "", "<Signal u0=\"0\" u1=\"2\" p=\"1e-3\" d=\"0\" />") +
           Element("R_R", "R1", "R", {1, 2}, "r=\"1000\"") +
           Element("R_R", "R2", "R", {2, 3}, "r=\"10000\"") +
           Element("O_OD", "U1", "OpAmp", {0, 3, 2}, "k=\"1e6\" f1=\"inf\" hi=\"15\" lo=\"-15\"") +
           Element("label", "OUT", "Label", {3}, ""),
       1e-5);
  const int in = Trace("VI"), out = Trace("OUT");
  ASSERT_EQ(TZ4_Simulate(h, 2e-3), 0) << Error();
  int clipped = 0;
  for (const Sample& s : Samples(out)) {
    double v = 0;
    ASSERT_EQ(TZ4_GetData(h, in, s.t, &v), 0);
    const double ideal = std::fmax(-15.0, std::fmin(15.0, -10.0 * v));
    EXPECT_NEAR(s.v, ideal, 2e-3) << s.t;
    clipped += std::fabs(ideal) == 15.0;
  }
  EXPECT_GE(clipped, 4);  // both limits, in each of the two periods
}

// A follower with a gain-bandwidth of 1 kHz lags as a first-order system
// with tau = 1 / (2 pi f1).
TEST_F(AmplifierRun, BandwidthIsAFirstOrderLag) {
  Open(Element("V_V", "VI", "Step", {0, 1}, "", "<Signal u0=\"0\" u1=\"1\" d=\"1e-4\" />") +
           Element("O_O", "U1", "Linear", {1, 3}, "k=\"1\" f1=\"1e3\" ic=\"0\"") +
           Element("label", "OUT", "Label", {3}, ""),
       1e-6);
  const int out = Trace("OUT");
  ASSERT_EQ(TZ4_Simulate(h, 1.2e-3), 0) << Error();
  const double tau = 0.5 / 1e3 / 3.14159265358;
  ExpectWave(
      out, [tau](double t) { return t < 1e-4 ? 0.0 : 1.0 - std::exp(-(t - 1e-4) / tau); }, 2e-3);
}

// Hysteresis 1 V: on above 0.5 V, off below -0.5 V; with a delay of 0.1 ms
// the output follows 0.1 ms late.
TEST_F(AmplifierRun, ComparatorWithHysteresisAndDelay) {
  for (const double delay : {0.0, 1e-4}) {
    Open(Element("V_V", "VI", "PWL", {0, 1}, "", "<Signal pwl=\"0,-2,1e-3,2,2e-3,-2\" c=\"0\" />") +
             Element("O_O", "U1", "Comparator", {1, 3},
                     "hyst=\"1\" hi=\"5\" lo=\"0\" delay=\"" + Number(delay) + "\" comp_ic=\"0\"") +
             Element("label", "OUT", "Label", {3}, ""),
         1e-6);
    const int out = Trace("OUT");
    ASSERT_EQ(TZ4_Simulate(h, 2e-3), 0) << Error();
    double on = -1, off = -1, last = 0;
    for (const Sample& s : Samples(out)) {
      if (last < 2.5 && s.v > 2.5) on = s.t;
      if (last > 2.5 && s.v < 2.5) off = s.t;
      last = s.v;
    }
    // The ramp of 4 V/ms crosses 0.5 V at 0.625 ms and -0.5 V at 1.625 ms.
    EXPECT_NEAR(on, 0.625e-3 + delay, 5e-6) << delay;
    EXPECT_NEAR(off, 1.625e-3 + delay, 5e-6) << delay;
  }
}

TEST_F(AmplifierRun, Checks) {
  const struct {
    std::string element;
    const char* message;
  } cases[] = {
      {Element("O_O", "U1", "OpAmp", {1, 3}, "f1=\"-1\" hi=\"-1\" lo=\"1\""),
       "TZ4_Start: U1 : f1 < 0; U1 : Vhi < Vlo; "},
      {Element("O_O", "U1", "Comparator", {1, 3}, "hyst=\"-1\" delay=\"inf\""),
       "TZ4_Start: U1 : Hysteresis < 0; U1 : Delay = infinite; "},
      {Element("O_O", "U1", "Linear", {1, 0}, ""),
       "TZ4_Start: Transient error at t=0 : U1 : grounded output"},
  };
  for (const auto& c : cases) {
    Open(Element("V_V", "VI", "V", {0, 1}, "v=\"2\"") + c.element);
    EXPECT_EQ(TZ4_Start(h), -1);
    EXPECT_EQ(Error(), c.message);
  }
}

}  // namespace
}  // namespace tz4_test
