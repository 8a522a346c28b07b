// Resistive circuits with independent sources, run through the C interface
// from real circuit files: every stored sample is compared with the closed
// form of the circuit at its time. Covers the signal models as the driver
// steps them (corners landed on, ramps, sines), table resistors switching
// along a ramp in both directions of the table, a resistor that follows its
// control after a step, a host's input, and the saved initial condition of
// a timed source.
#include <cmath>
#include <string>

#include "circuit_run.h"

namespace {

using namespace tz4_test;
using ResistiveRun = CircuitRun;

TEST_F(ResistiveRun, SineThroughADivider) {
  Open("<Cmp type=\"V_V\" id=\"1\" name=\"V1\" node0=\"0\" node1=\"1\" model=\"Sin\" v=\"10\">"
       "<Signal u0=\"1\" u1=\"2\" p=\"1e-3\" d=\"0\" /></Cmp>\n"
       "<Cmp type=\"R_R\" id=\"2\" name=\"R1\" node0=\"1\" node1=\"2\" model=\"R\" r=\"1000\" />\n"
       "<Cmp type=\"R_R\" id=\"3\" name=\"R2\" node0=\"2\" node1=\"0\" model=\"R\" r=\"3000\" />\n");
  const int out = Trace("R2");
  ASSERT_EQ(TZ4_Simulate(h, 2e-3), 0) << Error();
  // R2's voltage runs from its second pin (ground) to its first.
  const int count = ExpectWave(
      out, [](double t) { return -0.75 * (1 + 2 * std::sin(2 * kPi * 1000 * t)); }, 1e-9);
  // Sixteen points a period at least.
  EXPECT_GE(count, 32);
}

double Pulse(double t) {
  const double tau = std::fmod(t, 1e-3);
  if (tau < 1e-4) return tau / 1e-4;
  if (tau < 5e-4) return 1.0;
  if (tau < 6e-4) return 1.0 - (tau - 5e-4) / 1e-4;
  return 0.0;
}

TEST_F(ResistiveRun, PulseCurrentLandsOnItsCorners) {
  Open("<Cmp type=\"I_I\" id=\"1\" name=\"I1\" node0=\"0\" node1=\"1\" model=\"Pulse\" v=\"10\">"
       "<Signal u0=\"0\" u1=\"1e-3\" p=\"1e-3\" w=\"5e-4\" r=\"1e-4\" f=\"1e-4\" d=\"0\" /></Cmp>\n"
       "<Cmp type=\"R_R\" id=\"2\" name=\"R1\" node0=\"0\" node1=\"1\" model=\"R\" r=\"2000\" />\n");
  const int out = Trace("R1");
  const int current = Trace("I1", true);
  ASSERT_EQ(TZ4_Simulate(h, 2e-3), 0) << Error();
  ExpectWave(out, [](double t) { return 2.0 * Pulse(t); }, 1e-9);
  ExpectWave(current, [](double t) { return 1e-3 * Pulse(t); }, 1e-12);
  for (double corner : {1e-4, 5e-4, 6e-4, 1e-3, 1.1e-3, 1.5e-3, 1.6e-3})
    EXPECT_TRUE(HasSampleAt(out, corner)) << corner;
}

// 1 kOhm within +-1 V, 10 Ohm beyond, behind 100 Ohm from a ramp of 5 V/ms
// that then holds. Beyond the breakpoint 1 mA + (V - 1) / 10 = (E - V) / 100.
double TableVoltage(double e) {
  const double inner = e * 1000 / 1100;
  if (std::fabs(inner) <= 1) return inner;
  const double sign = e > 0 ? 1 : -1;
  return sign * (std::fabs(e) / 100 + 0.099) / 0.11;
}

TEST_F(ResistiveRun, TableResistorSwitchesAlongARamp) {
  Open("<Cmp type=\"V_V\" id=\"1\" name=\"V1\" node0=\"1\" node1=\"0\" model=\"PWL\" v=\"10\">"
       "<Signal pwl=\"0,0,1e-3,5\" /></Cmp>\n"
       "<Cmp type=\"R_R\" id=\"2\" name=\"RS\" node0=\"0\" node1=\"2\" model=\"R\" r=\"100\" />\n"
       "<Cmp type=\"R_R\" id=\"3\" name=\"RT\" node0=\"2\" node1=\"1\" model=\"PWL\" pwl=\"1000,1,10\" />\n");
  // The source drives node 1 negative: the table is walked on its lower side.
  const int out = Trace("RT");
  ASSERT_EQ(TZ4_Simulate(h, 1.5e-3), 0) << Error();
  ExpectWave(
      out, [](double t) { return TableVoltage(-5000 * std::fmin(t, 1e-3)); }, 1e-9);
  EXPECT_NEAR(Last(out), TableVoltage(-5), 1e-9);
}

// V(I): 100 Ohm up to 10 mA, 1 kOhm beyond, fed by a current ramp.
TEST_F(ResistiveRun, CurrentTableResistorSwitchesAlongARamp) {
  Open("<Cmp type=\"I_I\" id=\"1\" name=\"I1\" node0=\"0\" node1=\"1\" model=\"PWL\" v=\"10\">"
       "<Signal pwl=\"0,0,1e-3,0.02\" /></Cmp>\n"
       "<Cmp type=\"R_R\" id=\"2\" name=\"RI\" node0=\"0\" node1=\"1\" model=\"PWL-I\" pwli=\"100,0.01,1000\" />\n");
  const int out = Trace("RI");
  const int current = Trace("RI", true);
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  auto voltage = [](double t) {
    const double i = 20 * t;
    return i <= 0.01 ? 100 * i : 1 + 1000 * (i - 0.01);
  };
  ExpectWave(out, voltage, 1e-9);
  ExpectWave(current, [](double t) { return 20 * t; }, 1e-12);
  EXPECT_NEAR(Last(out), 11.0, 1e-9);
}

TEST_F(ResistiveRun, ControlledResistorFollowsItsControl) {
  Open("<Cmp type=\"V_V\" id=\"1\" name=\"V1\" node0=\"0\" node1=\"1\" model=\"V\" v=\"10\" />\n"
       "<Cmp type=\"R_R\" id=\"2\" name=\"RS\" node0=\"1\" node1=\"2\" model=\"R\" r=\"1000\" />\n"
       "<Cmp type=\"V_V\" id=\"3\" name=\"VC\" node0=\"0\" node1=\"3\" model=\"Step\" v=\"10\">"
       "<Signal u0=\"0\" u1=\"2\" r=\"0\" d=\"5e-4\" /></Cmp>\n"
       "<Cmp type=\"R_VCR\" id=\"4\" name=\"RV\" node0=\"0\" node1=\"2\" node2=\"0\" node3=\"3\" "
       "model=\"PWL\" pwl=\"1000,1,10\" />\n");
  const int out = Trace("RV");
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  int after = 0;
  for (const Sample& s : Samples(out)) {
    if (s.t <= 5e-4 * (1 + 1e-12)) {
      EXPECT_NEAR(s.v, 5.0, 1e-9) << s.t;
    } else if (s.t >= 5.1e-4) {
      EXPECT_NEAR(s.v, 10.0 * 10 / 1010, 1e-9) << s.t;
      after++;
    }
  }
  // Flat stretches are stored as their two ends.
  EXPECT_GE(after, 1);
  double v = 0;
  ASSERT_EQ(TZ4_GetData(h, out, 7.5e-4, &v), 0) << Error();
  EXPECT_NEAR(v, 10.0 * 10 / 1010, 1e-9);
}

TEST_F(ResistiveRun, HostInputDrivesASource) {
  Open("<Cmp type=\"V_V\" id=\"1\" name=\"V1\" node0=\"0\" node1=\"1\" model=\"Pulse\" v=\"10\">"
       "<Signal u1=\"5\" /></Cmp>\n"
       "<Cmp type=\"R_R\" id=\"2\" name=\"R1\" node0=\"1\" node1=\"2\" model=\"R\" r=\"1000\" />\n"
       "<Cmp type=\"R_R\" id=\"3\" name=\"R2\" node0=\"0\" node1=\"2\" model=\"R\" r=\"3000\" />\n");
  const int input = TZ4_GetInput(h, "V1");
  ASSERT_GE(input, 0) << Error();
  const int out = Trace("R2");
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  double end = 0;
  EXPECT_NEAR(Last(out, &end), 0.0, 1e-12);
  EXPECT_GE(end, 1e-3);
  ASSERT_EQ(TZ4_SetInputValue(h, input, 4.0), 0) << Error();
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  // From the first point after the change on.
  ExpectWave(out, [end](double t) { return t <= end ? 0.0 : 3.0; }, 1e-12);
  EXPECT_NEAR(Last(out), 3.0, 1e-12);
}

TEST_F(ResistiveRun, SavedInitialConditionMovesAStepsDelay) {
  Open("<Cmp type=\"V_V\" id=\"1\" name=\"V1\" node0=\"0\" node1=\"1\" model=\"Step\" v=\"10\">"
       "<Signal u0=\"0\" u1=\"5\" r=\"0\" d=\"2e-3\" d_str=\"%3d0.002\" /></Cmp>\n"
       "<Cmp type=\"R_R\" id=\"2\" name=\"R1\" node0=\"0\" node1=\"1\" model=\"R\" r=\"1000\" />\n");
  const int out = Trace("R1");
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  double end = 0;
  EXPECT_EQ(Last(out, &end), 0.0);
  char text[32];
  ASSERT_GT(TZ4_GetText(h, "V1.Delay", text, sizeof text), 0) << Error();
  EXPECT_STREQ(text, "=0.002");
  // The formula gives way to the number.
  EXPECT_NE(SavedIC("V1.Delay")[0], '=');
  double delay = 0;
  ASSERT_EQ(TZ4_GetValue(h, "V1.Delay", &delay), 0) << Error();
  EXPECT_NEAR(delay, 2e-3 - end, 1e-15);

  // A new run starts from the saved point: the step comes that much earlier.
  ASSERT_EQ(TZ4_Start(h), 0) << Error();
  ASSERT_EQ(TZ4_Simulate(h, 1.5e-3), 0) << Error();
  // At the corner itself either level is right.
  ExpectWave(out, [delay](double t) { return t < delay ? 0.0 : 5.0; }, 0.0, {delay});
  EXPECT_TRUE(HasSampleAt(out, delay));
  EXPECT_EQ(Last(out), 5.0);
}

}  // namespace
