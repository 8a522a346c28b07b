// Signals, independent sources and resistors as a host sees them: real
// circuit files opened, run and read back through the C interface. Every
// stored sample of a source is compared with the closed form of its wave,
// corners must stand among the samples, and the checks are read back as the
// host gets them, word for word.
#include <array>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "circuit_run.h"

namespace {

using namespace tz4_test;

const std::string kLoad =
    "<Cmp type=\"R_R\" id=\"2\" name=\"RL\" node0=\"1\" node1=\"0\" model=\"R\" r=\"1000\" />\n";

// A source "V1" (or "I1") from ground to node 1 with its model and "Signal"
// attributes, loaded by 1 kOhm.
std::string Source(const std::string& model, const std::string& signal,
                   const std::string& type = "V_V", const std::string& body = "") {
  const std::string name = type == "V_V" ? "V1" : "I1";
  return "<Cmp type=\"" + type + "\" id=\"1\" name=\"" + name +
         "\" node0=\"0\" node1=\"1\" model=\"" + model + "\" v=\"10\"><Signal " + signal +
         " />" + body + "</Cmp>\n" + kLoad;
}

using SourceConformance = CircuitRun;

// The waves of the signal models, every sample against the closed form:
// corners and jumps landed on, and no more than a set distance between two
// samples where the wave bends.
TEST_F(SourceConformance, EverySampleFollowsTheWave) {
  struct Case {
    const char* what;
    std::string components;
    double step, until;
    std::function<double(double)> wave;
    double tol;
    std::vector<double> jumps, corners;
    std::vector<std::array<double, 3>> gaps;  // from, to, longest gap
  };
  // Data file lines with fewer than two fields are passed over; a function
  // call keeps its own commas and blanks.
  WriteFile(dir.File("data.txt"), "0 2\n\nlonely\n1e-3, max(1, 3)\n2e-3;3\textra\n");
  WriteFile(dir.File("wave.txt"), "0\t0\n5e-4\t2\n1e-3\t0\n");
  const Case cases[] = {
      {"cosine pulse, continuous even at its corners",
       Source("Pulse", "u0=\"-1\" u1=\"3\" p=\"1e-3\" w=\"4e-4\" s=\"1\" r=\"1e-4\" f=\"2e-4\" d=\"1e-4\""),
       1e-4, 2.2e-3,
       [](double t) {
         if (t < 1e-4) return -1.0;
         const double tau = std::fmod(t - 1e-4, 1e-3);
         if (tau < 1e-4) return (1 - std::cos(tau / 1e-4 * kPi)) * 4 * 0.5 - 1;
         if (tau < 4e-4) return 3.0;
         if (tau < 6e-4) return 3 - (1 - std::cos((tau - 4e-4) / 2e-4 * kPi)) * 4 * 0.5;
         return -1.0;
       },
       1e-9, {}, {1e-4, 2e-4, 5e-4, 7e-4, 1.1e-3, 1.2e-3, 1.5e-3, 1.7e-3, 2.1e-3},
       // A quarter of each edge at most between two points on it.
       {{1.1e-3, 1.2e-3, 2.5e-5}, {1.5e-3, 1.7e-3, 5e-5}}},
      // Charged to the high level at the end of Width and back to the low
      // level at the end of the period, Rise and Fall being time constants;
      // at the period's end the wave jumps back to the start of the charge.
      {"log pulse",
       Source("Pulse", "u0=\"1\" u1=\"6\" p=\"1e-3\" w=\"4e-4\" s=\"2\" r=\"1e-4\" f=\"2e-4\" d=\"0\""), 2e-5,
       2e-3,
       [](double t) {
         const double tau = std::fmod(t, 1e-3);
         if (tau < 4e-4) return (1 - std::exp(-tau / 1e-4)) * 5 / (1 - std::exp(-4.0)) + 1;
         const double p = std::exp(-1e-3 / 2e-4);
         return (p - std::exp(-tau / 2e-4)) * 5 / (p - std::exp(-4e-4 / 2e-4)) + 1;
       },
       1e-9, {1e-3, 2e-3}, {4e-4, 1.4e-3}, {}},
      {"single log pulse without period decays from the high level",
       Source("Pulse", "u0=\"0\" u1=\"2\" p=\"inf\" w=\"3e-4\" s=\"2\" r=\"1e-4\" f=\"1e-4\" d=\"0\""), 2e-5,
       1e-3,
       [](double t) {
         if (t < 3e-4) return (1 - std::exp(-t / 1e-4)) * 2 / (1 - std::exp(-3.0));
         return std::exp(-t / 1e-4) * 2 / std::exp(-3.0);
       },
       1e-9, {}, {3e-4, 4e-4}, {}},
      {"sharp pulse: corners and no edge steps", Source("Pulse", "u0=\"0\" u1=\"5\" p=\"1e-3\" w=\"3e-4\" d=\"2e-4\""),
       1e-3, 2.5e-3, [](double t) { return t < 2e-4 ? 0.0 : std::fmod(t - 2e-4, 1e-3) < 3e-4 ? 5.0 : 0.0; },
       1e-12, {2e-4, 5e-4, 1.2e-3, 1.5e-3, 2.2e-3, 2.5e-3}, {2e-4, 5e-4, 1.2e-3, 1.5e-3, 2.2e-3, 2.5e-3}, {}},
      // Sixteen points a period, whatever the step of the file.
      {"sine waits for its delay and starts at its phase",
       Source("Sin", "u0=\"1\" u1=\"2\" p=\"1e-3\" ph=\"90\" d=\"2.5e-4\""), 1e-3, 2e-3,
       [](double t) { return t < 2.5e-4 ? 1.0 : std::sin((0.25 + (t - 2.5e-4) / 1e-3) * 2 * kPi) * 2 + 1; },
       1e-9, {2.5e-4}, {2.5e-4}, {{2.5e-4, 2e-3, 1e-3 / 16}}},
      {"cycling list is a sawtooth", Source("PWL", "pwl=\"0,0,1e-3,1\" c=\"1\""), 1e-3, 3.5e-3,
       [](double t) { return std::fmod(t, 1e-3) / 1e-3; }, 1e-9, {1e-3, 2e-3, 3e-3}, {1e-3, 2e-3, 3e-3},
       {{1e-3, 2e-3, 2.5e-4}}},
      // Held at the first value until the delay, a jump at equal times, held
      // at the last value after the end.
      {"list with delay, jump and end", Source("PWL", "pwl=\"0,1,1e-3,1,1e-3,4,2e-3,0\" d=\"5e-4\""), 1e-3, 4e-3,
       [](double t) { return t < 1.5e-3 ? 1.0 : t < 2.5e-3 ? 4 - (t - 1.5e-3) / 1e-3 * 4 : 0.0; }, 1e-9,
       {1.5e-3}, {1.5e-3, 2.5e-3}, {}},
      {"data file fields separated by blanks, tabs, commas or semicolons", Source("File", "file=\"data.txt\""),
       1e-4, 3e-3, [](double t) { return t < 1e-3 ? 2 + t / 1e-3 : 3.0; }, 1e-9, {}, {}, {}},
      {"data file beside the circuit cycles", Source("File", "file=\"wave.txt\" c=\"1\""), 1e-3, 2.5e-3,
       [](double t) {
         const double tau = std::fmod(t, 1e-3);
         return tau < 5e-4 ? tau / 5e-4 * 2 : 2 - (tau - 5e-4) / 5e-4 * 2;
       },
       1e-9, {}, {5e-4, 1e-3, 1.5e-3, 2e-3}, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Open(c.components, c.step);
    const int out = Trace("V1");
    ASSERT_EQ(TZ4_Simulate(h, c.until), 0) << Error();
    ExpectWave(out, c.wave, c.tol, c.jumps);
    for (double corner : c.corners) EXPECT_TRUE(HasSampleAt(out, corner)) << corner;
    for (const auto& [from, to, gap] : c.gaps) EXPECT_LE(LongestGap(out, from, to), gap * (1 + 1e-9)) << from;
  }
}

// Without a falling edge every period starts with a new rise from the low
// level; an infinite delay keeps a pulse, a step and a sine at their low
// level for ever.
TEST_F(SourceConformance, EndlessWidthRisesEachPeriodAndInfiniteDelaysNever) {
  Open(Source("Pulse", "u0=\"0\" u1=\"2\" p=\"1e-3\" w=\"inf\" r=\"2e-4\" d=\"0\"") +
       "<Cmp type=\"V_V\" id=\"3\" name=\"V2\" node0=\"0\" node1=\"2\" model=\"Pulse\">"
       "<Signal u0=\"-1\" d=\"inf\" /></Cmp>\n"
       "<Cmp type=\"V_V\" id=\"4\" name=\"V3\" node0=\"0\" node1=\"3\" model=\"Step\">"
       "<Signal u0=\"-2\" d=\"inf\" /></Cmp>\n"
       "<Cmp type=\"V_V\" id=\"5\" name=\"V4\" node0=\"0\" node1=\"4\" model=\"Sin\">"
       "<Signal u0=\"-3\" d=\"inf\" /></Cmp>\n",
       1e-4);
  const int pulse = Trace("V1");
  const int never[] = {Trace("V2"), Trace("V3"), Trace("V4")};
  ASSERT_EQ(TZ4_Simulate(h, 2.5e-3), 0) << Error();
  auto wave = [](double t) {
    const double tau = std::fmod(t, 1e-3);
    return tau < 2e-4 ? tau / 2e-4 * 2 : 2.0;
  };
  ExpectWave(pulse, wave, 1e-9, {1e-3, 2e-3});
  for (double corner : {2e-4, 1e-3, 1.2e-3, 2e-3, 2.2e-3}) EXPECT_TRUE(HasSampleAt(pulse, corner)) << corner;
  for (int k = 0; k < 3; k++) ExpectWave(never[k], [k](double) { return -1.0 - k; }, 0.0);
}

TEST_F(SourceConformance, StepRampsAndTheLogStepApproaches) {
  Open(Source("Step", "u0=\"1\" u1=\"5\" r=\"4e-4\" d=\"3e-4\"") +
       "<Cmp type=\"V_V\" id=\"3\" name=\"V2\" node0=\"0\" node1=\"2\" model=\"Step\" v=\"10\">"
       "<Signal u0=\"1\" u1=\"5\" s=\"2\" r=\"2e-4\" d=\"3e-4\" /></Cmp>\n",
       1e-3);
  const int linear = Trace("V1");
  const int log = Trace("V2");
  ASSERT_EQ(TZ4_Simulate(h, 2e-3), 0) << Error();
  ExpectWave(linear, [](double t) { return t < 3e-4 ? 1.0 : t < 7e-4 ? 1 + (t - 3e-4) / 4e-4 * 4 : 5.0; },
             1e-9);
  EXPECT_TRUE(HasSampleAt(linear, 3e-4));
  EXPECT_TRUE(HasSampleAt(linear, 7e-4));
  EXPECT_LE(LongestGap(linear, 3e-4, 7e-4), 1e-4 * (1 + 1e-9));
  ExpectWave(log, [](double t) { return t < 3e-4 ? 1.0 : (1.0 - 5) * std::exp(-(t - 3e-4) / 2e-4) + 5; },
             1e-9);
}

// The first evaluation, for the initial conditions at 0, comes before any
// stage is decided: the step shows its low level there and its high level
// from the first step on.
TEST_F(SourceConformance, StepAtZeroWithoutRiseIsHighAfterTheStart) {
  Open(Source("Step", "u0=\"-2\" u1=\"4\" r=\"0\" d=\"0\""));
  const int out = Trace("V1");
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  const std::vector<Sample> samples = Samples(out);
  ASSERT_GE(samples.size(), 3u);
  EXPECT_EQ(samples[0].t, 0.0);
  EXPECT_EQ(samples[0].v, -2.0);
  for (size_t i = 1; i < samples.size(); i++) EXPECT_EQ(samples[i].v, 4.0) << samples[i].t;
}

// A period changed between two calls bends the wave without a jump: the
// phase goes on from where it stood.
TEST_F(SourceConformance, SinePeriodChangedMidRunKeepsItsPhase) {
  Open(Source("Sin", "u0=\"0\" u1=\"1\" p=\"1e-3\" d=\"0\""), 1e-3);
  const int out = Trace("V1");
  ASSERT_EQ(TZ4_SimulateInterval(h, 1.1e-3), 0) << Error();
  double t1 = 0;
  const double before = Last(out, &t1);
  EXPECT_NEAR(t1, 1.1e-3, 1e-15);
  EXPECT_NEAR(before, std::sin(1.1 * 2 * kPi), 1e-9);
  ASSERT_EQ(TZ4_SetValue(h, "V1.Period", 4e-4), 0) << Error();
  ASSERT_EQ(TZ4_SimulateInterval(h, 1e-3), 0) << Error();
  auto wave = [t1](double t) {
    if (t <= t1) return std::sin(t / 1e-3 * 2 * kPi);
    return std::sin((t1 / 1e-3 + (t - t1) / 4e-4) * 2 * kPi);
  };
  ExpectWave(out, wave, 1e-9);
  // The largest step follows the new period.
  EXPECT_LE(LongestGap(out, 0, t1), 1e-3 / 16 * (1 + 1e-9));
  EXPECT_LE(LongestGap(out, t1, t1 + 1e-3), 4e-4 / 16 * (1 + 1e-9));
}

// The saved point of a sine moves its delay into the last period, so that a
// new run goes on with the phase where the old one stood.
TEST_F(SourceConformance, SineContinuesAtItsSavedPhase) {
  Open(Source("Sin", "u0=\"0\" u1=\"1\" p=\"1e-3\" d=\"0\""), 1e-5);
  const int out = Trace("V1");
  ASSERT_EQ(TZ4_SimulateInterval(h, 2.25e-3), 0) << Error();
  ASSERT_EQ(TZ4_SaveIC(h), 0) << Error();
  double delay = 0;
  ASSERT_EQ(TZ4_GetValue(h, "V1.Delay", &delay), 0) << Error();
  EXPECT_NEAR(delay, -2.5e-4, 1e-15);
  ASSERT_EQ(TZ4_Start(h), 0) << Error();
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  ExpectWave(out, [](double t) { return std::sin((t + 2.5e-4) / 1e-3 * 2 * kPi); }, 1e-9);
}

// Fields are split as words: a formula, which may read the document's
// values, may hold blanks and a function may take several arguments; a
// list that is one word gives no point.
TEST_F(SourceConformance, ListFieldsMayHoldBlanksAndArgumentLists) {
  Open(Source("PWL", "pwl=\"0, RL.R / 1000 %2b 1, 1m, max(3, RL.R / 250)\"") +
       "<Cmp type=\"V_V\" id=\"3\" name=\"V2\" node0=\"0\" node1=\"2\" model=\"PWL\">"
       "<Signal pwl=\"0 5 1m 6\" /></Cmp>\n");
  const int out = Trace("V1");
  const int single = Trace("V2");
  ASSERT_EQ(TZ4_Simulate(h, 2e-3), 0) << Error();
  ExpectWave(out, [](double t) { return t < 1e-3 ? 2 + t / 1e-3 * 2 : 4.0; }, 1e-9);
  ExpectWave(single, [](double) { return 0.0; }, 0.0);
}

// A file is read once per run: a new run reads it afresh.
TEST_F(SourceConformance, DataFileIsReadAgainByANewRun) {
  WriteFile(dir.File("level.txt"), "0,1\n");
  Open(Source("File", "file=\"level.txt\""));
  const int out = Trace("V1");
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  EXPECT_EQ(Last(out), 1.0);
  WriteFile(dir.File("level.txt"), "0,2\n");
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  EXPECT_EQ(Last(out), 1.0);
  ASSERT_EQ(TZ4_Start(h), 0) << Error();
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  EXPECT_EQ(Last(out), 2.0);
}

// A list changed in the middle of a run is read again and placed at the
// present time.
TEST_F(SourceConformance, ListChangedMidRunTakesOverAtThePresentTime) {
  Open(Source("PWL", "pwl=\"0,0,2m,2\""), 1e-3);
  const int out = Trace("V1");
  ASSERT_EQ(TZ4_SimulateInterval(h, 5e-4), 0) << Error();
  double t1 = 0;
  EXPECT_NEAR(Last(out, &t1), 0.5, 1e-12);
  ASSERT_EQ(TZ4_SetText(h, "V1.pwl", "0,0,2m,6"), 0) << Error();
  ASSERT_EQ(TZ4_Simulate(h, 2e-3), 0) << Error();
  ExpectWave(out, [t1](double t) { return t <= t1 ? t / 1e-3 : std::fmin(t, 2e-3) / 2e-3 * 6; }, 1e-9);
  EXPECT_TRUE(HasSampleAt(out, 2e-3));
}

TEST_F(SourceConformance, AttachmentTakesThePlaceOfTheFile) {
  Open(Source("File", "file=\"nowhere.txt\"", "I_I",
              "<Attachment>0,0%0d%0a1e-3,2e-3%0d%0a</Attachment>"));
  const int out = Trace("RL");
  ASSERT_EQ(TZ4_Simulate(h, 2e-3), 0) << Error();
  // 2 mA at most through 1 kOhm, from ground into node 1.
  ExpectWave(out, [](double t) { return -2.0 * std::fmin(t / 1e-3, 1.0); }, 1e-9);
}

TEST_F(SourceConformance, FunctionOfTimeAndOfTheSolution) {
  Open("<Cmp type=\"V_V\" id=\"1\" name=\"VA\" node0=\"0\" node1=\"1\" model=\"V\" v=\"3\" />\n"
       "<Cmp type=\"R_R\" id=\"2\" name=\"RA\" node0=\"1\" node1=\"0\" model=\"R\" r=\"1000\" />\n"
       "<Cmp type=\"V_V\" id=\"3\" name=\"VF\" node0=\"0\" node1=\"2\" model=\"Function\">"
       "<Signal function=\"t*1000 %2b V(VA) - I(RA)*1000\" /></Cmp>\n"
       "<Cmp type=\"R_R\" id=\"4\" name=\"RB\" node0=\"2\" node1=\"0\" model=\"R\" r=\"1000\" />\n");
  const int out = Trace("VF");
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  // RA's current runs from its second pin (ground) to the first: -3 mA.
  // The solution that a step reads is that of the point before it, so the
  // first points may lag; the rest follow the formula.
  int checked = 0;
  for (const Sample& s : Samples(out)) {
    if (s.t < 2e-4) continue;
    EXPECT_NEAR(s.v, s.t * 1000 + 6, 1e-9) << s.t;
    checked++;
  }
  EXPECT_GE(checked, 5);
}

TEST_F(SourceConformance, FunctionFailureEndsTheRunWithTheSourcesName) {
  Open(Source("Function", "function=\"t %2b nothing_here\""));
  EXPECT_EQ(TZ4_Simulate(h, 1e-3), -1);
  const std::string error = Error();
  EXPECT_EQ(error.rfind("TZ4_Simulate: ", 0), 0u) << error;
  EXPECT_NE(error.find("V1: "), std::string::npos) << error;
}

// The checks of sources and resistors, read back as the host gets them.
TEST_F(SourceConformance, ChecksAsTheHostReadsThem) {
  const std::string supply =
      "<Cmp type=\"V_V\" id=\"1\" name=\"V1\" node0=\"0\" node1=\"1\" model=\"V\" v=\"1\" />\n";
  WriteFile(dir.File("single.txt"), "1\n2\n");
  const std::pair<std::string, std::string> cases[] = {
      {Source("File", "file=\"\""), "V1 : No file name; "},
      {Source("File", "file=\"missing.txt\""), "V1 : Can't open file \"" + dir.File("missing.txt") + "\"; "},
      {Source("File", "file=\"single.txt\""), "V1 : Empty file \"" + dir.File("single.txt") + "\"; "},
      {Source("File", "file=\"single.txt\"", "V_V", "<Attachment>1%0d%0a2</Attachment>"),
       "V1 : Attachment is empty; "},
      {Source("Trace", "trace=\"V(RL)\""), "V1 : Trace model not supported; "},
      {"<Cmp type=\"V_V\" id=\"1\" name=\"V1\" node0=\"0\" node1=\"1\" model=\"V\" v=\"1\" "
       "v_str=\"%3dnothing\" />\n" + kLoad,
       "V1 : V : formula error; "},
      {"<Cmp type=\"I_I\" id=\"1\" name=\"I1\" node0=\"0\" node1=\"1\" model=\"I\" v=\"inf\" />\n" + kLoad,
       "I1 : I = infinite; "},
      {"<Cmp type=\"I_I\" id=\"1\" name=\"I1\" node0=\"0\" node1=\"1\" model=\"I\" v=\"1\" "
       "v_str=\"%3dnothing\" />\n" + kLoad,
       "I1 : I : formula error; "},
      // Both checks of a constant run: a formula that failed keeps its last
      // value, which may be infinite.
      {"<Cmp type=\"V_V\" id=\"1\" name=\"V1\" node0=\"0\" node1=\"1\" model=\"V\" v=\"-inf\" "
       "v_str=\"%3dnothing\" />\n" + kLoad,
       "V1 : V : formula error; V1 : V = infinite; "},
      {Source("Pulse", "u0=\"-inf\" p=\"0\" w=\"-1\" r=\"inf\" f=\"-1\"", "I_I"),
       "I1 : I0 = infinite; I1 : Period <= 0; I1 : Width < 0; I1 : Rise = infinite; I1 : Fall < 0; "},
      {Source("Sin", "u1=\"inf\" p=\"inf\" ph=\"inf\""),
       "V1 : V1 = infinite; V1 : Period = infinite; V1 : Phase = infinite; "},
      {Source("Pulse", "u0_str=\"%3dno\" p_str=\"%3dno\" w_str=\"%3dno\" r_str=\"%3dno\" f=\"inf\""),
       "V1 : V0 : formula error; V1 : Period : formula error; V1 : Width : formula error; "
       "V1 : Rise : formula error; V1 : Fall = infinite; "},
      {Source("Sin", "p=\"-1\" ph_str=\"%3dno\" f_str=\"%3dno\""), "V1 : Period <= 0; V1 : Phase : formula error; "},
      {Source("PWL", "d_str=\"%3dno\""), "V1 : Delay : formula error; "},
      {Source("Step", "r=\"-1\" d_str=\"%3dnothing\""), "V1 : Rise < 0; V1 : Delay : formula error; "},
      {supply + "<Cmp type=\"R_R\" id=\"3\" name=\"R1\" node0=\"1\" node1=\"0\" model=\"R\" r=\"1\" "
                "r_str=\"%3dnothing\" />\n",
       "R1 : R : formula error; "},
      {supply + "<Cmp type=\"R_Pot\" id=\"3\" name=\"P1\" node0=\"1\" node1=\"0\" node2=\"2\" "
                "model=\"Potentiometer\" r=\"1\" r_str=\"%3dnothing\" p=\"2\" />\n",
       "P1 : R : formula error; P1 : Position > 1; "},
      {supply + "<Cmp type=\"R_Pot\" id=\"3\" name=\"P1\" node0=\"1\" node1=\"0\" node2=\"2\" "
                "model=\"Potentiometer\" r=\"1\" p=\"-1\" p_str=\"%3dnothing\" />\n",
       "P1 : Position : formula error; P1 : Position < 0; "},
  };
  for (const auto& [components, message] : cases) {
    SCOPED_TRACE(components);
    Open(components);
    EXPECT_EQ(TZ4_Simulate(h, 1e-3), -1);
    EXPECT_EQ(Error(), "TZ4_Simulate: " + message);
  }
}

TEST_F(SourceConformance, ResistorModelsInOneCircuit) {
  // 10 V on node 1. R0 (a short) joins node 1 to node 2; RX (open) hangs
  // on node 2; the potentiometer runs from node 2 over its wiper (node 3)
  // to node 4, which RB (1 kOhm) takes to ground; RF, the stand-in of
  // "Function", is 1 Ohm behind 999 Ohm from node 1.
  Open("<Cmp type=\"V_V\" id=\"1\" name=\"V1\" node0=\"0\" node1=\"1\" model=\"V\" v=\"10\" />\n"
       "<Cmp type=\"R_R\" id=\"2\" name=\"R0\" node0=\"1\" node1=\"2\" model=\"R\" r=\"0\" />\n"
       "<Cmp type=\"R_R\" id=\"3\" name=\"RX\" node0=\"2\" node1=\"0\" model=\"R\" r=\"inf\" />\n"
       "<Cmp type=\"R_Pot\" id=\"4\" name=\"P1\" node0=\"2\" node1=\"4\" node2=\"3\" "
       "model=\"Potentiometer\" r=\"3000\" p=\"0.25\" />\n"
       "<Cmp type=\"R_R\" id=\"5\" name=\"RB\" node0=\"4\" node1=\"0\" model=\"R\" r=\"1000\" />\n"
       "<Cmp type=\"R_R\" id=\"6\" name=\"RS\" node0=\"1\" node1=\"5\" model=\"R\" r=\"999\" />\n"
       "<Cmp type=\"R_R\" id=\"7\" name=\"RF\" node0=\"5\" node1=\"0\" model=\"Function\" fs=\"1%2bs\" />\n");
  const int shortCurrent = Trace("R0", true);
  const int openVoltage = Trace("RX");
  const int openCurrent = Trace("RX", true);
  const int wiper = Trace("P1");
  const int load = Trace("RB");
  const int function = Trace("RF");
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  // 2.5 mA from node 1 through the short, against its positive sense.
  EXPECT_NEAR(Last(shortCurrent), -2.5e-3, 1e-15);
  EXPECT_NEAR(Last(openVoltage), -10.0, 1e-12);
  EXPECT_EQ(Last(openCurrent), 0.0);
  // The potentiometer's voltage is that of its ends, from node 2 to node 4.
  EXPECT_NEAR(Last(wiper), 2.5 - 10.0, 1e-12);
  EXPECT_NEAR(Last(load), -2.5, 1e-12);
  EXPECT_NEAR(Last(function), -10.0 / 1000, 1e-12);
}

TEST_F(SourceConformance, CurrentControlledResistorFollowsItsControl) {
  // 10 V through 1 kOhm into RC; its control senses the current of a PWL
  // current source rising from 0 to 20 mA: 1 kOhm below 10 mA, 10 Ohm above.
  Open("<Cmp type=\"V_V\" id=\"1\" name=\"V1\" node0=\"0\" node1=\"1\" model=\"V\" v=\"10\" />\n"
       "<Cmp type=\"R_R\" id=\"2\" name=\"RS\" node0=\"1\" node1=\"2\" model=\"R\" r=\"1000\" />\n"
       "<Cmp type=\"I_I\" id=\"3\" name=\"IC\" node0=\"0\" node1=\"3\" model=\"PWL\">"
       "<Signal pwl=\"0,0,1e-3,0.02\" /></Cmp>\n"
       "<Cmp type=\"R_CCR\" id=\"4\" name=\"RC\" node0=\"0\" node1=\"2\" node2=\"0\" node3=\"3\" "
       "model=\"PWL\" pwl=\"1000,0.01,10\" />\n");
  const int out = Trace("RC");
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  // The segment follows the control after the step that crosses 10 mA.
  for (const Sample& s : Samples(out)) {
    if (s.t < 0.45e-3) {
      EXPECT_NEAR(s.v, 5.0, 1e-9) << s.t;
    } else if (s.t > 0.55e-3) {
      EXPECT_NEAR(s.v, 10.0 * 10 / 1010, 1e-9) << s.t;
    }
  }
}

TEST_F(SourceConformance, InputsOnSourcesKeepOrResetTheirValue) {
  Open("<Cmp type=\"V_V\" id=\"1\" name=\"V1\" node0=\"0\" node1=\"1\" model=\"V\" v=\"2\" />\n"
       "<Cmp type=\"R_R\" id=\"2\" name=\"R1\" node0=\"1\" node1=\"0\" model=\"R\" r=\"1000\" />\n"
       "<Cmp type=\"I_I\" id=\"3\" name=\"I1\" node0=\"0\" node1=\"2\" model=\"Sin\">"
       "<Signal u1=\"1\" p=\"1e-3\" /></Cmp>\n"
       "<Cmp type=\"R_R\" id=\"4\" name=\"R2\" node0=\"2\" node1=\"0\" model=\"R\" r=\"100\" />\n");
  const int constant = TZ4_GetInput(h, "V1");
  ASSERT_GE(constant, 0) << Error();
  EXPECT_EQ(Error(), "OK");
  const int again = TZ4_GetInput(h, "v1");
  EXPECT_EQ(again, constant + 1);
  const int sine = TZ4_GetInput(h, "I1");
  ASSERT_GE(sine, 0) << Error();
  const int v1 = Trace("R1");
  const int i1 = Trace("R2");
  ASSERT_EQ(TZ4_Simulate(h, 5e-4), 0) << Error();
  // The constant source kept its value, the sine became a constant of 0.
  EXPECT_NEAR(Last(v1), -2.0, 1e-12);
  EXPECT_EQ(Last(i1), 0.0);
  double end = 0;
  Last(v1, &end);

  ASSERT_EQ(TZ4_SetInputValue(h, again, 7.0), 0) << Error();
  EXPECT_EQ(Error(), "OK");
  ASSERT_EQ(TZ4_SetInputValue(h, sine, 0.05), 0) << Error();
  ASSERT_EQ(TZ4_Simulate(h, 5e-4), 0) << Error();
  ExpectWave(v1, [end](double t) { return t <= end ? -2.0 : -7.0; }, 1e-12);
  ExpectWave(i1, [end](double t) { return t <= end ? 0.0 : -5.0; }, 1e-12);
  double value = 0;
  ASSERT_EQ(TZ4_GetValue(h, "I1", &value), 0) << Error();
  EXPECT_EQ(value, 0.05);
}

// A source turned into an input in the middle of a run drops its wave at
// the next step and takes the host's value from then on.
TEST_F(SourceConformance, InputTakenInTheMiddleOfARun) {
  Open(Source("Sin", "u0=\"1\" u1=\"1\" p=\"1e-3\""), 1e-5);
  const int out = Trace("V1");
  ASSERT_EQ(TZ4_SimulateInterval(h, 2.5e-4), 0) << Error();
  double end = 0;
  EXPECT_NEAR(Last(out, &end), 2.0, 1e-9);
  const int input = TZ4_GetInput(h, "V1");
  ASSERT_GE(input, 0) << Error();
  ASSERT_EQ(TZ4_SetInputValue(h, input, 3.0), 0) << Error();
  ASSERT_EQ(TZ4_Simulate(h, 5e-4), 0) << Error();
  ExpectWave(out, [end](double t) { return t <= end ? 1 + std::sin(t / 1e-3 * 2 * kPi) : 3.0; }, 1e-9);
}

}  // namespace
