// Signals, independent sources and resistors as a host sees them: real
// circuit files opened, run and read back through the C interface. Every
// stored sample of a source is compared with the closed form of its wave,
// corners must stand among the samples, and the checks are read back as the
// host gets them, word for word.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "../doc/temp_files.h"
#include "tz4.h"

namespace {

constexpr double kPi = 3.14159265358;

std::string Error() { return TZ4_GetError(); }

std::string CircuitFile(const std::string& components, double step) {
  char stepText[32];
  std::snprintf(stepText, sizeof stepText, "%.12g", step);
  return std::string("<?xml version=\"1.0\"?>\n<TZ4>\n  <Version ver=\"2\" />\n  <Doc>\n"
                     "    <Calc zero=\"1e-11\" kmin=\"0.01\" nsr=\"false\" os=\"false\" low=\"0\" "
                     "high=\"5\" thr=\"2.5\" timeout=\"0\" />\n"
                     "    <Tran>\n      <Settings step=\"") +
         stepText + "\" />\n    </Tran>\n    <Cmps>\n" + components +
         "    </Cmps>\n  </Doc>\n</TZ4>\n";
}

// A source "V1" (or "I1") from ground to node 1 with its model and "Signal"
// attributes, loaded by 1 kOhm.
std::string Source(const std::string& model, const std::string& signal,
                   const std::string& type = "V_V", const std::string& body = "") {
  const std::string name = type == "V_V" ? "V1" : "I1";
  return "<Cmp type=\"" + type + "\" id=\"1\" name=\"" + name +
         "\" node0=\"0\" node1=\"1\" model=\"" + model + "\" v=\"10\"><Signal " + signal +
         " />" + body + "</Cmp>\n"
         "<Cmp type=\"R_R\" id=\"2\" name=\"RL\" node0=\"1\" node1=\"0\" model=\"R\" r=\"1000\" />\n";
}

struct Sample {
  double t;
  double v;
};

class SourceConformance : public testing::Test {
 protected:
  void Open(const std::string& components, double step = 1e-4) {
    const std::string path = dir.File("circuit.tz4");
    tz4_test::WriteFile(path, CircuitFile(components, step));
    h = TZ4_Open(path.c_str());
    ASSERT_GE(h, 0) << Error();
  }
  void TearDown() override {
    if (h >= 0) TZ4_Close(h);
  }

  int Trace(const char* name, bool current = false) {
    const int trace = current ? TZ4_AddITrace(h, name) : TZ4_AddVTrace(h, name);
    EXPECT_GE(trace, 0) << Error();
    return trace;
  }

  std::vector<Sample> Samples(int trace) {
    std::vector<Sample> out;
    const int count = TZ4_GetDataSize(h, trace);
    for (int i = 0; i < count; i++) {
      Sample s{0, 0};
      EXPECT_EQ(TZ4_GetDataAt(h, trace, i, &s.t, &s.v), 0) << Error();
      out.push_back(s);
    }
    return out;
  }

  // Every sample equals the closed form, but at the corners listed, where a
  // jump may show either side; returns the number of samples.
  int ExpectWave(int trace, const std::function<double(double)>& wave, double tol,
                 const std::vector<double>& jumps = {}) {
    const std::vector<Sample> samples = Samples(trace);
    for (const Sample& s : samples) {
      bool atJump = false;
      for (double j : jumps) atJump |= std::fabs(s.t - j) <= 1e-12 * std::fmax(j, 1e-300);
      if (atJump) continue;
      EXPECT_NEAR(s.v, wave(s.t), tol) << "at t = " << s.t;
    }
    return static_cast<int>(samples.size());
  }

  bool HasSampleAt(int trace, double at) {
    for (const Sample& s : Samples(trace))
      if (std::fabs(s.t - at) <= 1e-12 * at) return true;
    return false;
  }

  // The longest distance between two samples inside [from, to].
  double LongestGap(int trace, double from, double to) {
    double gap = 0, last = -1;
    for (const Sample& s : Samples(trace)) {
      if (s.t < from * (1 - 1e-12) || s.t > to * (1 + 1e-12)) continue;
      if (last >= 0) gap = std::fmax(gap, s.t - last);
      last = s.t;
    }
    return gap;
  }

  double Last(int trace, double* at = nullptr) {
    double t = 0, v = 0;
    EXPECT_EQ(TZ4_GetLastData(h, trace, &t, &v), 0) << Error();
    if (at != nullptr) *at = t;
    return v;
  }

  tz4_test::TempDir dir{"conformance"};
  int h = -1;
};

// ---- pulse shapes ----

TEST_F(SourceConformance, CosinePulseEdgesAndCorners) {
  Open(Source("Pulse", "u0=\"-1\" u1=\"3\" p=\"1e-3\" w=\"4e-4\" s=\"1\" r=\"1e-4\" f=\"2e-4\" d=\"1e-4\""));
  const int out = Trace("V1");
  ASSERT_EQ(TZ4_Simulate(h, 2.2e-3), 0) << Error();
  auto wave = [](double t) {
    if (t < 1e-4) return -1.0;
    const double tau = std::fmod(t - 1e-4, 1e-3);
    if (tau < 1e-4) return (1 - std::cos(tau / 1e-4 * kPi)) * 4 * 0.5 - 1;
    if (tau < 4e-4) return 3.0;
    if (tau < 6e-4) return 3 - (1 - std::cos((tau - 4e-4) / 2e-4 * kPi)) * 4 * 0.5;
    return -1.0;
  };
  // The wave is continuous, so even the corners hold one value.
  ExpectWave(out, wave, 1e-9);
  for (double corner : {1e-4, 2e-4, 5e-4, 7e-4, 1.1e-3, 1.2e-3, 1.5e-3, 1.7e-3, 2.1e-3})
    EXPECT_TRUE(HasSampleAt(out, corner)) << corner;
  // A quarter of each edge at most between two points on it.
  EXPECT_LE(LongestGap(out, 1.1e-3, 1.2e-3), 2.5e-5 * (1 + 1e-9));
  EXPECT_LE(LongestGap(out, 1.5e-3, 1.7e-3), 5e-5 * (1 + 1e-9));
}

// "Log": charged to the high level at the end of Width and back to the low
// level at the end of the period, Rise and Fall being time constants.
TEST_F(SourceConformance, LogPulseReachesItsLevelsAtWidthAndPeriod) {
  Open(Source("Pulse", "u0=\"1\" u1=\"6\" p=\"1e-3\" w=\"4e-4\" s=\"2\" r=\"1e-4\" f=\"2e-4\" d=\"0\""),
       2e-5);
  const int out = Trace("V1");
  ASSERT_EQ(TZ4_Simulate(h, 2e-3), 0) << Error();
  auto wave = [](double t) {
    const double tau = std::fmod(t, 1e-3);
    if (tau < 4e-4)
      return (1 - std::exp(-tau / 1e-4)) * 5 / (1 - std::exp(-4.0)) + 1;
    const double p = std::exp(-1e-3 / 2e-4);
    return (p - std::exp(-tau / 2e-4)) * 5 / (p - std::exp(-4e-4 / 2e-4)) + 1;
  };
  // At the period's end the wave jumps back to the start of the charge.
  ExpectWave(out, wave, 1e-9, {1e-3, 2e-3});
  EXPECT_TRUE(HasSampleAt(out, 4e-4));
  EXPECT_TRUE(HasSampleAt(out, 1.4e-3));
  double v = 0;
  ASSERT_EQ(TZ4_GetData(h, out, 4e-4, &v), 0);
  EXPECT_NEAR(v, 6.0, 1e-9);
}

TEST_F(SourceConformance, SingleLogPulseWithoutPeriodDecaysFromTheHighLevel) {
  Open(Source("Pulse", "u0=\"0\" u1=\"2\" p=\"inf\" w=\"3e-4\" s=\"2\" r=\"1e-4\" f=\"1e-4\" d=\"0\""),
       2e-5);
  const int out = Trace("V1");
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  auto wave = [](double t) {
    if (t < 3e-4) return (1 - std::exp(-t / 1e-4)) * 2 / (1 - std::exp(-3.0));
    return std::exp(-t / 1e-4) * 2 / std::exp(-3.0);
  };
  ExpectWave(out, wave, 1e-9);
  EXPECT_TRUE(HasSampleAt(out, 3e-4));
  EXPECT_TRUE(HasSampleAt(out, 4e-4));
}

TEST_F(SourceConformance, SharpPulseHasItsCornersAndNoEdgeSteps) {
  Open(Source("Pulse", "u0=\"0\" u1=\"5\" p=\"1e-3\" w=\"3e-4\" d=\"2e-4\""), 1e-3);
  const int out = Trace("V1");
  ASSERT_EQ(TZ4_Simulate(h, 2.5e-3), 0) << Error();
  auto wave = [](double t) {
    if (t < 2e-4) return 0.0;
    return std::fmod(t - 2e-4, 1e-3) < 3e-4 ? 5.0 : 0.0;
  };
  const std::vector<double> corners = {2e-4, 5e-4, 1.2e-3, 1.5e-3, 2.2e-3, 2.5e-3};
  ExpectWave(out, wave, 1e-12, corners);
  for (double corner : corners) EXPECT_TRUE(HasSampleAt(out, corner)) << corner;
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

// ---- step ----

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

// ---- sine ----

TEST_F(SourceConformance, SineWaitsForItsDelayAndStartsAtItsPhase) {
  Open(Source("Sin", "u0=\"1\" u1=\"2\" p=\"1e-3\" ph=\"90\" d=\"2.5e-4\""), 1e-3);
  const int out = Trace("V1");
  ASSERT_EQ(TZ4_Simulate(h, 2e-3), 0) << Error();
  auto wave = [](double t) {
    if (t < 2.5e-4) return 1.0;
    return std::sin((0.25 + (t - 2.5e-4) / 1e-3) * 2 * kPi) * 2 + 1;
  };
  ExpectWave(out, wave, 1e-9, {2.5e-4});
  EXPECT_TRUE(HasSampleAt(out, 2.5e-4));
  // Sixteen points a period, whatever the step of the file.
  EXPECT_LE(LongestGap(out, 2.5e-4, 2e-3), 1e-3 / 16 * (1 + 1e-9));
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

// ---- tables ----

TEST_F(SourceConformance, CyclingListIsASawtoothWithItsCornersLanded) {
  Open(Source("PWL", "pwl=\"0,0,1e-3,1\" c=\"1\""), 1e-3);
  const int out = Trace("V1");
  ASSERT_EQ(TZ4_Simulate(h, 3.5e-3), 0) << Error();
  const std::vector<double> corners = {1e-3, 2e-3, 3e-3};
  ExpectWave(out, [](double t) { return std::fmod(t, 1e-3) / 1e-3; }, 1e-9, corners);
  for (double corner : corners) EXPECT_TRUE(HasSampleAt(out, corner)) << corner;
  EXPECT_LE(LongestGap(out, 1e-3, 2e-3), 2.5e-4 * (1 + 1e-9));
}

TEST_F(SourceConformance, ListWithDelayJumpAndEnd) {
  // Held at the first value until the delay, a jump at equal times, held at
  // the last value after the end.
  Open(Source("PWL", "pwl=\"0,1,1e-3,1,1e-3,4,2e-3,0\" d=\"5e-4\""), 1e-3);
  const int out = Trace("V1");
  ASSERT_EQ(TZ4_Simulate(h, 4e-3), 0) << Error();
  auto wave = [](double t) {
    if (t < 1.5e-3) return 1.0;
    if (t < 2.5e-3) return 4 - (t - 1.5e-3) / 1e-3 * 4;
    return 0.0;
  };
  ExpectWave(out, wave, 1e-9, {1.5e-3});
  EXPECT_TRUE(HasSampleAt(out, 1.5e-3));
  EXPECT_TRUE(HasSampleAt(out, 2.5e-3));
  EXPECT_EQ(Last(out), 0.0);
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

TEST_F(SourceConformance, DataFileFieldsAreSeparatedByBlanksTabsCommasOrSemicolons) {
  // Lines with fewer than two fields are passed over; a function call keeps
  // its own commas and blanks.
  tz4_test::WriteFile(dir.File("data.txt"),
                      "0 2\n\nlonely\n1e-3, max(1, 3)\n2e-3;3\textra\n");
  Open(Source("File", "file=\"data.txt\""));
  const int out = Trace("V1");
  ASSERT_EQ(TZ4_Simulate(h, 3e-3), 0) << Error();
  ExpectWave(out, [](double t) { return t < 1e-3 ? 2 + t / 1e-3 : 3.0; }, 1e-9);
}

TEST_F(SourceConformance, DataFileBesideTheCircuitCycles) {
  tz4_test::WriteFile(dir.File("wave.txt"), "0\t0\n5e-4\t2\n1e-3\t0\n");
  Open(Source("File", "file=\"wave.txt\" c=\"1\""), 1e-3);
  const int out = Trace("V1");
  ASSERT_EQ(TZ4_Simulate(h, 2.5e-3), 0) << Error();
  auto wave = [](double t) {
    const double tau = std::fmod(t, 1e-3);
    return tau < 5e-4 ? tau / 5e-4 * 2 : 2 - (tau - 5e-4) / 5e-4 * 2;
  };
  ExpectWave(out, wave, 1e-9);
  for (double corner : {5e-4, 1e-3, 1.5e-3, 2e-3}) EXPECT_TRUE(HasSampleAt(out, corner)) << corner;
}

// A file is read once per run: a new run reads it afresh.
TEST_F(SourceConformance, DataFileIsReadAgainByANewRun) {
  tz4_test::WriteFile(dir.File("level.txt"), "0,1\n");
  Open(Source("File", "file=\"level.txt\""));
  const int out = Trace("V1");
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  EXPECT_EQ(Last(out), 1.0);
  tz4_test::WriteFile(dir.File("level.txt"), "0,2\n");
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

TEST_F(SourceConformance, FileFailuresAsTheHostReadsThem) {
  struct Case {
    std::string signal;
    std::string body;
    std::string message;
  };
  tz4_test::WriteFile(dir.File("single.txt"), "1\n2\n");
  const Case cases[] = {
      {"file=\"\"", "", "V1 : No file name; "},
      {"file=\"missing.txt\"", "", "V1 : Can't open file \"" + dir.File("missing.txt") + "\"; "},
      {"file=\"single.txt\"", "", "V1 : Empty file \"" + dir.File("single.txt") + "\"; "},
      {"file=\"single.txt\"", "<Attachment>1%0d%0a2</Attachment>", "V1 : Attachment is empty; "},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.signal + c.body);
    Open(Source("File", c.signal, "V_V", c.body));
    EXPECT_EQ(TZ4_Simulate(h, 1e-3), -1);
    EXPECT_EQ(Error(), "TZ4_Simulate: " + c.message);
    TZ4_Close(h);
    h = -1;
  }
}

// ---- function ----

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

// ---- checks, word for word ----

TEST_F(SourceConformance, TraceModelIsRefused) {
  Open(Source("Trace", "trace=\"V(RL)\""));
  EXPECT_EQ(TZ4_Simulate(h, 1e-3), -1);
  EXPECT_EQ(Error(), "TZ4_Simulate: V1 : Trace model not supported; ");
}

TEST_F(SourceConformance, SourceChecksAsTheHostReadsThem) {
  struct Case {
    std::string source;
    std::string message;
  };
  const Case cases[] = {
      {"<Cmp type=\"V_V\" id=\"1\" name=\"V1\" node0=\"0\" node1=\"1\" model=\"V\" v=\"1\" "
       "v_str=\"%3dnothing\" />",
       "V1 : V : formula error; "},
      {"<Cmp type=\"I_I\" id=\"1\" name=\"I1\" node0=\"0\" node1=\"1\" model=\"I\" v=\"inf\" />",
       "I1 : I = infinite; "},
      {"<Cmp type=\"I_I\" id=\"1\" name=\"I1\" node0=\"0\" node1=\"1\" model=\"I\" v=\"1\" "
       "v_str=\"%3dnothing\" />",
       "I1 : I : formula error; "},
      // Both checks of a constant run: a formula that failed keeps its last
      // value, which may be infinite.
      {"<Cmp type=\"V_V\" id=\"1\" name=\"V1\" node0=\"0\" node1=\"1\" model=\"V\" v=\"-inf\" "
       "v_str=\"%3dnothing\" />",
       "V1 : V : formula error; V1 : V = infinite; "},
      {"<Cmp type=\"I_I\" id=\"1\" name=\"I1\" node0=\"0\" node1=\"1\" model=\"Pulse\">"
       "<Signal u0=\"-inf\" p=\"0\" w=\"-1\" r=\"inf\" f=\"-1\" /></Cmp>",
       "I1 : I0 = infinite; I1 : Period <= 0; I1 : Width < 0; I1 : Rise = infinite; I1 : Fall < 0; "},
      {"<Cmp type=\"V_V\" id=\"1\" name=\"V1\" node0=\"0\" node1=\"1\" model=\"Sin\">"
       "<Signal u1=\"inf\" p=\"inf\" ph=\"inf\" /></Cmp>",
       "V1 : V1 = infinite; V1 : Period = infinite; V1 : Phase = infinite; "},
      {"<Cmp type=\"V_V\" id=\"1\" name=\"V1\" node0=\"0\" node1=\"1\" model=\"Pulse\">"
       "<Signal u0_str=\"%3dno\" p_str=\"%3dno\" w_str=\"%3dno\" r_str=\"%3dno\" f=\"inf\" /></Cmp>",
       "V1 : V0 : formula error; V1 : Period : formula error; V1 : Width : formula error; "
       "V1 : Rise : formula error; V1 : Fall = infinite; "},
      {"<Cmp type=\"V_V\" id=\"1\" name=\"V1\" node0=\"0\" node1=\"1\" model=\"Sin\">"
       "<Signal p=\"-1\" ph_str=\"%3dno\" f_str=\"%3dno\" /></Cmp>",
       "V1 : Period <= 0; V1 : Phase : formula error; "},
      {"<Cmp type=\"V_V\" id=\"1\" name=\"V1\" node0=\"0\" node1=\"1\" model=\"PWL\">"
       "<Signal d_str=\"%3dno\" /></Cmp>",
       "V1 : Delay : formula error; "},
      {"<Cmp type=\"V_V\" id=\"1\" name=\"V1\" node0=\"0\" node1=\"1\" model=\"Step\">"
       "<Signal r=\"-1\" d_str=\"%3dnothing\" /></Cmp>",
       "V1 : Rise < 0; V1 : Delay : formula error; "},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.source);
    Open(c.source + "\n<Cmp type=\"R_R\" id=\"2\" name=\"RL\" node0=\"1\" node1=\"0\" model=\"R\" "
                    "r=\"1000\" />\n");
    EXPECT_EQ(TZ4_Simulate(h, 1e-3), -1);
    EXPECT_EQ(Error(), "TZ4_Simulate: " + c.message);
    TZ4_Close(h);
    h = -1;
  }
}

TEST_F(SourceConformance, ResistorChecksAsTheHostReadsThem) {
  struct Case {
    std::string component;
    std::string message;
  };
  const Case cases[] = {
      {"<Cmp type=\"R_R\" id=\"3\" name=\"R1\" node0=\"1\" node1=\"0\" model=\"R\" r=\"1\" "
       "r_str=\"%3dnothing\" />",
       "R1 : R : formula error; "},
      {"<Cmp type=\"R_Pot\" id=\"3\" name=\"P1\" node0=\"1\" node1=\"0\" node2=\"2\" "
       "model=\"Potentiometer\" r=\"1\" r_str=\"%3dnothing\" p=\"2\" />",
       "P1 : R : formula error; P1 : Position > 1; "},
      {"<Cmp type=\"R_Pot\" id=\"3\" name=\"P1\" node0=\"1\" node1=\"0\" node2=\"2\" "
       "model=\"Potentiometer\" r=\"1\" p=\"-1\" p_str=\"%3dnothing\" />",
       "P1 : Position : formula error; P1 : Position < 0; "},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.component);
    Open("<Cmp type=\"V_V\" id=\"1\" name=\"V1\" node0=\"0\" node1=\"1\" model=\"V\" v=\"1\" />\n" +
         c.component + "\n");
    EXPECT_EQ(TZ4_Simulate(h, 1e-3), -1);
    EXPECT_EQ(Error(), "TZ4_Simulate: " + c.message);
    TZ4_Close(h);
    h = -1;
  }
}

// ---- resistors in a run ----

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

// ---- host inputs ----

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

  EXPECT_EQ(TZ4_SetInputValue(h, 3, 1.0), -1);
  EXPECT_EQ(Error(), "TZ4_SetInputValue: wrong input number");
  EXPECT_EQ(TZ4_GetInput(h, "R1"), -1);
  EXPECT_EQ(Error(), "TZ4_GetInput: component R1 cannot be an input");
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
