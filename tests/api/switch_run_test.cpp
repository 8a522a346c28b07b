// Switches in a run, through the exports: steered by a voltage with
// hysteresis, by a current, by a logic level and by time; the timed pulse,
// the travel in steps, the second contact of the SPDT forms, and the checks.
#include <cmath>

#include "circuit_run.h"

namespace tz4_test {
namespace {

class SwitchRun : public CircuitRun {
 protected:
  // 10 V through a switch from node 1 to node 2 into 1 kOhm: V(RL) shows
  // whether the first contact is closed.
  static std::string Load() {
    return Element("V_V", "VS", "V", {0, 1}, "v=\"10\"") +
           Element("R_R", "RL", "R", {0, 2}, "r=\"1000\"");
  }
  static std::string Triangle(int node) {
    return Element("V_V", "VC", "PWL", {0, node}, "",
                   "<Signal pwl=\"0,0,5e-3,10,10e-3,0\" c=\"0\" />");
  }
  // The control's value at each change of the load's voltage.
  std::vector<std::pair<double, double>> Changes(int load, int control) {
    std::vector<std::pair<double, double>> out;
    const std::vector<Sample> samples = Samples(load);
    for (size_t i = 1; i < samples.size(); ++i) {
      if (std::fabs(samples[i].v - samples[i - 1].v) < 1) continue;
      double c = 0;
      EXPECT_EQ(TZ4_GetData(h, control, samples[i].t, &c), 0) << Error();
      out.push_back({samples[i].v, c});
    }
    return out;
  }
};

// Threshold 5 V with 2 V of hysteresis: closes at 6 V on the way up, opens
// at 4 V on the way down. "Active" off inverts the contact.
TEST_F(SwitchRun, VoltageControlWithHysteresis) {
  for (int active : {1, 0}) {
    Open(Load() + Triangle(3) +
             Element("S_VCS", "S1", "Switch", {1, 2, 0, 3},
                     "a=\"" + std::to_string(active) + "\" thr=\"5\" hyst=\"2\" ic=\"" +
                         std::to_string(1 - active) + "\""),
         1e-5);
    const int load = Trace("RL"), control = Trace("VC");
    ASSERT_EQ(TZ4_Simulate(h, 10e-3), 0) << Error();
    const auto changes = Changes(load, control);
    ASSERT_EQ(changes.size(), 2u) << "active " << active;
    EXPECT_EQ(changes[0].first, active ? 10.0 : 0.0);
    EXPECT_NEAR(changes[0].second, 6.0, 0.02);
    EXPECT_EQ(changes[1].first, active ? 0.0 : 10.0);
    EXPECT_NEAR(changes[1].second, 4.0, 0.02);
  }
}

// The current through the sense (pins 2 and 3) steers the switch: a current
// source ramping through 5 mA closes it.
TEST_F(SwitchRun, CurrentControl) {
  Open(Load() +
           Element("I_I", "IC", "PWL", {0, 3}, "", "<Signal pwl=\"0,0,10e-3,10e-3\" c=\"0\" />") +
           Element("S_CCS", "S1", "Switch", {1, 2, 0, 3}, "thr=\"5e-3\" hyst=\"0\""),
       1e-5);
  const int load = Trace("RL"), control = Trace("IC", true);
  ASSERT_EQ(TZ4_Simulate(h, 10e-3), 0) << Error();
  const auto changes = Changes(load, control);
  ASSERT_EQ(changes.size(), 1u);
  EXPECT_NEAR(std::fabs(changes[0].second), 5e-3, 2e-5);
}

// A logic generator's pulse steers the single and the SPDT logic switch;
// the SPDT's second contact is closed while the first is open.
TEST_F(SwitchRun, LogicControlAndTheSecondContact) {
  Open(Load() + Element("Y_LG", "G", "Pulse", {3}, "p=\"2e-3\" w=\"1e-3\" d=\"0.5e-3\"") +
           Element("S_LCS", "S1", "Switch", {1, 2, 3}, "") +
           Element("S_LCS3", "S2", "Switch", {4, 1, 3, 5}, "") +
           Element("R_R", "RA", "R", {0, 4}, "r=\"1000\"") +
           Element("R_R", "RB", "R", {0, 5}, "r=\"1000\""),
       1e-5);
  const int load = Trace("RL"), a = Trace("RA"), b = Trace("RB");
  ASSERT_EQ(TZ4_Simulate(h, 4e-3), 0) << Error();
  for (double t : {0.25e-3, 0.75e-3, 1.75e-3, 2.75e-3}) {
    const bool on = std::fmod(t - 0.5e-3, 2e-3) < 1e-3 && t > 0.5e-3;
    double v = 0;
    ASSERT_EQ(TZ4_GetData(h, load, t, &v), 0);
    EXPECT_EQ(v, on ? 10.0 : 0.0) << t;
    ASSERT_EQ(TZ4_GetData(h, a, t, &v), 0);
    EXPECT_EQ(v, on ? 10.0 : 0.0) << t;
    ASSERT_EQ(TZ4_GetData(h, b, t, &v), 0);
    EXPECT_EQ(v, on ? 0.0 : 10.0) << t;
  }
}

// A switch steered by time alone: closed through the pulse's width.
TEST_F(SwitchRun, TimedSwitch) {
  Open(Load() + Element("S_S", "S1", "Pulse", {1, 2}, "p=\"2e-3\" w=\"0.5e-3\" d=\"1e-3\""), 1e-5);
  const int load = Trace("RL");
  ASSERT_EQ(TZ4_Simulate(h, 4e-3), 0) << Error();
  EXPECT_TRUE(HasSampleAt(load, 1e-3));
  for (const auto& [t, on] : {std::pair{0.5e-3, 0}, {1.25e-3, 1}, {2e-3, 0}, {3.25e-3, 1}}) {
    double v = 0;
    ASSERT_EQ(TZ4_GetData(h, load, t, &v), 0);
    EXPECT_EQ(v, on * 10.0) << t;
  }
}

// "Pulse": the control's crossing closes the contact for the full width,
// whatever the control does after; a new pulse needs a fall first.
TEST_F(SwitchRun, ControlledPulseRunsItsWidth) {
  Open(Load() + Triangle(3) +
           Element("S_VCS", "S1", "Pulse", {1, 2, 0, 3}, "thr=\"5\" width=\"1e-3\""),
       1e-5);
  const int load = Trace("RL");
  ASSERT_EQ(TZ4_Simulate(h, 10e-3), 0) << Error();
  double closedFrom = -1, closedTo = -1;
  for (const Sample& s : Samples(load)) {
    if (s.v > 5 && closedFrom < 0) closedFrom = s.t;
    if (s.v > 5) closedTo = s.t;
  }
  EXPECT_NEAR(closedFrom, 2.5e-3, 2e-5);
  EXPECT_NEAR(closedTo, 3.5e-3, 2e-5);
}

// "Steps": 10 steps from 1 kOhm to 0 over 1 ms after the control rises; the
// load's share follows the resistance step by step.
TEST_F(SwitchRun, StepsTravelFromRoffToRon) {
  Open(Load() +
           Element("V_V", "VC", "Step", {0, 3}, "", "<Signal u0=\"0\" u1=\"10\" d=\"1e-3\" />") +
           Element("S_VCS", "S1", "Steps", {1, 2, 0, 3},
                   "thr=\"5\" roff=\"1000\" ron=\"0\" steps=\"10\" width=\"1e-3\" slope=\"0\""),
       1e-5);
  const int load = Trace("RL");
  ASSERT_EQ(TZ4_Simulate(h, 3e-3), 0) << Error();
  for (int k = 0; k <= 10; ++k) {
    // Position k is reached k-1 tenths of a millisecond after the crossing.
    const double t = k == 0 ? 0.5e-3 : 1e-3 + (k - 1 + 0.5) * 0.1e-3;
    const double r = 1000.0 * (1.0 - (k == 0 ? 0 : std::min(k, 10)) / 11.0);
    double v = 0;
    ASSERT_EQ(TZ4_GetData(h, load, t, &v), 0);
    EXPECT_NEAR(v, 10.0 * 1000.0 / (1000.0 + r), 1e-6) << "step " << k;
  }
}

TEST_F(SwitchRun, Checks) {
  const struct {
    std::string element;
    const char* message;
  } cases[] = {
      {Element("S_VCS", "S1", "Switch", {1, 2, 0, 3}, "thr=\"inf\" hyst=\"-1\""),
       "TZ4_Start: S1 : Threshold = infinite; S1 : Hysteresis < 0; "},
      {Element("S_VCS", "S1", "Pulse", {1, 2, 0, 3}, "width=\"-1\""),
       "TZ4_Start: S1 : Width < 0; "},
      {Element("S_VCS", "S1", "Steps", {1, 2, 0, 3}, "roff=\"0\" ron=\"-1\" slope=\"2\""),
       "TZ4_Start: S1 : Roff <= 0; S1 : Ron <= 0; "},
      {Element("S_VCS", "S1", "Steps", {1, 2, 0, 3}, "ron=\"-1\" steps=\"-2\" width=\"inf\""),
       "TZ4_Start: S1 : Ron < 0; S1 : Width = infinite; S1 : Steps < 0; "},
      {Element("S_S", "S1", "Pulse", {1, 2}, "p=\"0\""), "TZ4_Start: S1 : Period <= 0; "},
  };
  for (const auto& c : cases) {
    Open(Load() + Element("V_V", "VC", "V", {0, 3}, "v=\"1\"") + c.element);
    EXPECT_EQ(TZ4_Start(h), -1);
    EXPECT_EQ(Error(), c.message);
  }
}

}  // namespace
}  // namespace tz4_test
