// Labels in a run, through the exports: a host's input on a label and an
// output read from another, the initial voltage "VIC", the source models,
// and the checks.
#include <cmath>

#include "circuit_run.h"

namespace tz4_test {
namespace {

class LabelRun : public CircuitRun {};

std::string Label(const std::string& name, int node, const std::string& model,
                  const std::string& attributes = "", const std::string& inner = "") {
  return Element("label", name, model, {node}, attributes, inner);
}

TEST_F(LabelRun, HostInputAndOutputInAStepLoop) {
  Open(Label("IN", 1, "Label") + Element("R_R", "R1", "R", {1, 2}, "r=\"1000\"") +
       Element("R_R", "R2", "R", {2, 0}, "r=\"3000\"") + Label("OUT", 2, "Label"));
  const int in = TZ4_GetInput(h, "IN");
  const int out = TZ4_GetOutput(h, "OUT");
  ASSERT_GE(in, 0) << Error();
  ASSERT_GE(out, 0) << Error();
  for (int k = 1; k <= 5; ++k) {
    ASSERT_EQ(TZ4_SetInputValue(h, in, 4.0 * k), 0) << Error();
    ASSERT_EQ(TZ4_SimulateStep(h), 0) << Error();
    double v = 0;
    ASSERT_EQ(TZ4_GetOutputValue(h, out, &v), 0) << Error();
    EXPECT_NEAR(v, 3.0 * k, 1e-9) << "step " << k;
  }
  // The label took the "V" model, which is what a saved file shows.
  char model[16] = {};
  ASSERT_GT(TZ4_GetText(h, "IN.V", model, sizeof model), 0) << Error();
  EXPECT_STREQ(model, "20");
}

// "VIC" with R = 0 forces the node at the start, and the capacitor then
// discharges through the resistor; through a resistance the label only pulls
// its node (10 V through 1 kOhm against 1 kOhm gives half). A saved state
// carries the solution, not the request: TZ4_SaveIC empties "VIC".
TEST_F(LabelRun, InitialVoltageForcesOrPullsTheNodeAtTheStart) {
  const struct {
    const char* attributes;
    double start;
  } cases[] = {
      {"ic=\"5\" r=\"0\"", 5.0}, {"ic=\"10\" r=\"1000\"", 5.0}, {"ic=\"10\" r=\"inf\"", 0.0}};
  for (const auto& c : cases) {
    Open(Label("N", 1, "Label", c.attributes) + Element("C_C", "C1", "C", {0, 1}, "c=\"1e-6\"") +
             Element("R_R", "R1", "R", {1, 0}, "r=\"1000\""),
         1e-5);
    const int v = Trace("C1");
    ASSERT_EQ(TZ4_Simulate(h, 2e-3), 0) << Error();
    EXPECT_NEAR(AtStart(v), c.start, 1e-9) << c.attributes;
    ExpectWave(
        v, [&](double t) { return c.start * std::exp(-t / 1e-3); }, 5e-3);
    EXPECT_EQ(SavedIC("N.VIC"), "");
  }
}

// A label in its pulse model drives its node from ground: the RC charge
// reaches 63.2 % after one time constant.
TEST_F(LabelRun, PulseModelChargesAnRc) {
  Open(
      Label("SRC", 1, "Pulse", "", "<Signal u0=\"0\" u1=\"10\" p=\"10e-3\" w=\"5e-3\" d=\"0\" />") +
          Element("R_R", "R1", "R", {1, 2}, "r=\"1000\"") +
          Element("C_C", "C1", "C", {0, 2}, "c=\"1e-6\""),
      1e-5);
  const int v = Trace("C1");
  const int src = Trace("SRC");
  ASSERT_EQ(TZ4_SimulateInterval(h, 1e-3), 0) << Error();
  EXPECT_NEAR(Last(v), 10.0 * (1.0 - std::exp(-1.0)), 2e-3);
  EXPECT_NEAR(Last(src), 10.0, 1e-12);
  EXPECT_EQ(SavedIC("SRC.Delay"), "-1e-3");
}

TEST_F(LabelRun, ChecksNameTheLabel) {
  const struct {
    std::string label;
    const char* message;
  } cases[] = {
      {Label("N", 1, "V", "v=\"inf\""), "TZ4_Start: N : V = infinite; "},
      {Label("N", 1, "V", "v_str=\"%3dnothing\" v=\"1\""), "TZ4_Start: N : V : formula error; "},
      {Label("N", 1, "Label", "r_str=\"%3dnothing\" r=\"1\""),
       "TZ4_Start: N : R : formula error; "},
      {Label("N", 1, "Sin", "", "<Signal p=\"0\" />"), "TZ4_Start: N : Period <= 0; "},
  };
  for (const auto& c : cases) {
    Open(c.label + Element("R_R", "R1", "R", {1, 0}, "r=\"1000\""));
    EXPECT_EQ(TZ4_Start(h), -1);
    EXPECT_EQ(Error(), c.message);
  }
}

}  // namespace
}  // namespace tz4_test
