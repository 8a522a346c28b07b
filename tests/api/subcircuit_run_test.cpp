// Subcircuits through real files: an RC filter used twice with different
// resistances set by "cmd", a nested subcircuit, paths into inner
// components for traces, values and outputs, the messages of a missing file
// and a missing label, a save that leaves the inner file alone, and initial
// conditions saved from inside.
#include <cmath>

#include "circuit_run.h"

namespace tz4_test {
namespace {

class SubcircuitRun : public CircuitRun {
 protected:
  void SetUp() override {
    // The filter: IN -- R1 -- OUT, C1 from OUT to ground.
    WriteFile(dir.File("rc.tz4"),
              CircuitFile(Element("label", "IN", "Label", {1}, "") +
                          Element("R_R", "R1", "R", {1, 2}, "r=\"1000\"") +
                          Element("C_C", "C1", "C", {0, 2}, "c=\"1e-6\" ic=\"0\"") +
                          Element("label", "OUT", "Label", {2}, "")));
  }
  static std::string Block(const std::string& name, const std::vector<int>& nodes,
                           const std::string& file, const std::string& cmd,
                           const std::string& label2 = "OUT") {
    return Element("X_B2", name, "SubCir", nodes, "",
                   "<SubCir file=\"" + file + "\" label1=\"IN\" label2=\"" + label2 + "\" cmd=\"" +
                       cmd + "\" ic=\"\" />");
  }
  static std::string Source() { return Element("V_V", "V1", "V", {0, 1}, "v=\"10\""); }
  // The time at which a trace first reaches 63.2 % of 10 V.
  double TimeConstant(int trace) {
    double lastT = 0, lastV = 0;
    for (const Sample& s : Samples(trace)) {
      if (s.v >= 6.32120558828558)
        return lastT + (6.32120558828558 - lastV) / (s.v - lastV) * (s.t - lastT);
      lastT = s.t;
      lastV = s.v;
    }
    return NAN;
  }
};

TEST_F(SubcircuitRun, OneFilterUsedTwiceWithItsOwnCommands) {
  Open(Source() + Block("X1", {1, 2}, "rc", "R1.R=1k") + Block("X2", {1, 3}, "rc", "R1.R=2k"),
       1e-5);
  const int one = Trace("X1.C1"), two = Trace("X2.C1");
  double r = 0;
  ASSERT_EQ(TZ4_GetValue(h, "X2.R1.R", &r), 0) << Error();
  EXPECT_EQ(r, 2000.0);
  ASSERT_EQ(TZ4_Simulate(h, 10e-3), 0) << Error();
  EXPECT_NEAR(TimeConstant(one), 1e-3, 1e-5);
  EXPECT_NEAR(TimeConstant(two), 2e-3, 2e-5);
  // The outer nodes joined to the inner labels carry the same voltages.
  const int out = TZ4_GetOutput(h, "X2.OUT");
  ASSERT_GE(out, 0) << Error();
  double v = 0;
  ASSERT_EQ(TZ4_GetOutputValue(h, out, &v), 0) << Error();
  EXPECT_NEAR(v, Last(two), 1e-9);
  // A second run restores the contents and applies the commands again.
  ASSERT_EQ(TZ4_Start(h), 0) << Error();
  ASSERT_EQ(TZ4_Simulate(h, 10e-3), 0) << Error();
  EXPECT_NEAR(TimeConstant(two), 2e-3, 2e-5);
}

// A host feeds an inner label and reads another, step by step; the
// subcircuit's own table answers to its names.
TEST_F(SubcircuitRun, InputsOutputsAndTheOwnTableByPath) {
  Open(Block("X1", {1, 2}, "rc", ""), 1e-4);
  char file[16] = {};
  ASSERT_GT(TZ4_GetText(h, "X1.File", file, sizeof file), 0) << Error();
  EXPECT_STREQ(file, "rc");
  const int in = TZ4_GetInput(h, "X1.IN"), out = TZ4_GetOutput(h, "X1.OUT");
  ASSERT_GE(in, 0) << Error();
  ASSERT_GE(out, 0) << Error();
  ASSERT_EQ(TZ4_SetInputValue(h, in, 10.0), 0) << Error();
  double t = 0, v = 0;
  while (t < 1e-3 * (1 - 1e-9)) {
    ASSERT_EQ(TZ4_SimulateStep(h), 0) << Error();
    ASSERT_EQ(TZ4_GetSimulationTime(h, &t), 0);
  }
  ASSERT_EQ(TZ4_GetOutputValue(h, out, &v), 0) << Error();
  EXPECT_NEAR(v, 10.0 * (1.0 - std::exp(-t / 1e-3)), 5e-3);
}

// The contents may come with the component, as an attachment.
TEST_F(SubcircuitRun, AttachmentTakesThePlaceOfTheFile) {
  const std::string inner = CircuitFile(Element("label", "IN", "Label", {1}, "") +
                                        Element("R_R", "R1", "R", {1, 2}, "r=\"3000\"") +
                                        Element("label", "OUT", "Label", {2}, ""));
  const size_t start = inner.find("<TZ4>");
  Open(Source() +
       Element("X_TZ4", "X1", "SubCir", {1, 2}, "",
               "<SubCir file=\"\" label1=\"IN\" label2=\"OUT\" cmd=\"\" ic=\"\" />"
               "<Attachment>" +
                   inner.substr(start) + "</Attachment>") +
       Element("R_R", "RL", "R", {0, 2}, "r=\"1000\""));
  const int v = Trace("RL");
  // The power a subcircuit takes is what its contents take.
  const int p = TZ4_AddPTrace(h, "X1");
  ASSERT_GE(p, 0) << Error();
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  EXPECT_NEAR(Last(v), 2.5, 1e-9);
  EXPECT_NEAR(Last(p), 2.5e-3 * 2.5e-3 * 3000, 1e-12);
}

TEST_F(SubcircuitRun, NestedSubcircuit) {
  WriteFile(dir.File("nest.tz4"), CircuitFile(Element("label", "IN", "Label", {1}, "") +
                                              Block("Y1", {1, 2}, "rc", "R1.R=3k") +
                                              Element("label", "OUT", "Label", {2}, "")));
  Open(Source() + Block("X1", {1, 2}, "nest", ""), 1e-5);
  const int v = Trace("X1.Y1.C1");
  ASSERT_EQ(TZ4_Simulate(h, 15e-3), 0) << Error();
  EXPECT_NEAR(TimeConstant(v), 3e-3, 3e-5);
}

TEST_F(SubcircuitRun, MissingFileAndMissingLabel) {
  Open(Source() + Block("X1", {1, 2}, "missing", ""));
  EXPECT_EQ(TZ4_Start(h), -1);
  EXPECT_EQ(Error(), "TZ4_Start: X1 : Can't open file \"" + dir.File("missing.tz4") + "\"; ");
  Open(Source() + Block("X1", {1, 2}, "rc", "", "NOPE"));
  EXPECT_EQ(TZ4_Start(h), -1);
  EXPECT_EQ(Error(), "TZ4_Start: X1 : Label \"NOPE\" not found; ");
  Open(Source() + Block("X1", {1, 2}, "", ""));
  EXPECT_EQ(TZ4_Start(h), -1);
  EXPECT_EQ(Error(), "TZ4_Start: X1 : No file name; ");
}

// The state reached inside is saved as commands of the subcircuit, named
// inside it; the inner file stays as it was, and a second opening of the
// saved circuit starts from that state.
TEST_F(SubcircuitRun, InitialConditionsSavedFromInside) {
  const std::string inner = ReadFile(dir.File("rc.tz4"));
  Open(Source() + Block("X1", {1, 2}, "rc", ""), 1e-5);
  ASSERT_EQ(TZ4_Simulate(h, 1e-3), 0) << Error();
  ASSERT_EQ(TZ4_SaveIC(h), 0) << Error();
  const std::string saved = dir.File("saved.tz4");
  ASSERT_EQ(TZ4_SaveAs(h, saved.c_str()), 0) << Error();
  EXPECT_EQ(ReadFile(dir.File("rc.tz4")), inner);
  const std::string text = ReadFile(saved);
  EXPECT_EQ(text.find("R_R"), std::string::npos);  // no inner component in the outer file
  EXPECT_NE(text.find("ic=\"C1.IC=6.32"), std::string::npos) << text;

  TZ4_Close(h);
  h = TZ4_Open(saved.c_str());
  ASSERT_GE(h, 0) << Error();
  const int v = Trace("X1.C1");
  ASSERT_EQ(TZ4_Simulate(h, 1e-5), 0) << Error();
  EXPECT_NEAR(AtStart(v), 10.0 * (1.0 - std::exp(-1.0)), 1e-3);
}

}  // namespace
}  // namespace tz4_test
