// Independent sources in the solver: circuits read from their file
// elements, with the value entering through the varying term. Covers the
// constant models and a host's input value, each signal model as the
// solver sees it (values, corners, largest steps, the derivative in the
// state form), data files beside the circuit, a continued run, the time
// shift of a saved state, and the parameter checks word for word.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>

#include "devices/registry.h"
#include "../solver/calc_internals.h"
#include "base/last_error.h"
#include "devices/resistor.h"
#include "devices/source.h"
#include "components/cmps.h"
#include "xml/xml_node.h"
#include "solver/calc.h"

namespace tz4 {
namespace {

constexpr double kPi = 3.14159265358;

// Loads "Cmp" elements into a collection.
void LoadInto(CCmps& cmps, const std::string& elements) {
  CXmlNode root("Cmps");
  ASSERT_EQ(root.LoadFromText("<Cmps>" + elements + "</Cmps>"), 0);
  ASSERT_TRUE(cmps.Serialize(&root, ComponentTypes())) << LastError();
  cmps.UpdateFormulas();
}

// A circuit in one run list; nodes 1, 2, ... keep their numbers.
class Bench {
 public:
  explicit Bench(const std::string& elements, const CCalcSettings& settings = {}) {
    calc.settings = settings;
    LoadInto(cmps, elements);
    calc.step = 1e-3;
  }

  // Checks, adds, numbers and allocates; the code of AddComponents.
  int Build() {
    const int added = calc.AddComponents(cmps);
    calc.MergeNodes();
    calc.FreeSystem();
    calc.NumberNodes();
    EXPECT_TRUE(calc.AllocateSystem());
    return added;
  }

  // The algebraic solve of the step from t to t + h: sources at t + h.
  void Step(double t, double h) { ASSERT_TRUE(calc.StepAlgebraic(t, h)) << calc.error; }

  CElemV& Src(const std::string& name) {
    auto* v = dynamic_cast<CElemV*>(cmps.Find(name));
    EXPECT_NE(v, nullptr) << name;
    return *v;
  }
  double V(int node) const { return calc.V(node); }
  double Row(const std::string& name) { return calc.V(cmps.Find(name)->firstRow); }
  size_t RowOf(const std::string& name) { return static_cast<size_t>(cmps.Find(name)->firstRow); }

  CCmps cmps;
  CCalc calc;
};

std::string Load(int node) {
  return "<Cmp type=\"R_R\" id=\"80\" name=\"RL\" node0=\"" + std::to_string(node) +
         "\" node1=\"0\" model=\"R\" r=\"1000\" />";
}

// A voltage source from ground to node 1 of the model, with its "Signal"
// attributes.
std::string Signal(const std::string& model, const std::string& signal,
                   const std::string& type = "V_V", const std::string& name = "V1") {
  return "<Cmp type=\"" + type + "\" id=\"81\" name=\"" + name +
         "\" node0=\"0\" node1=\"1\" model=\"" + model + "\" v=\"10\"><Signal " + signal +
         " /></Cmp>";
}

TEST(SourceChecks, ConstantValueMessagesUseTheSourcesLetter) {
  Bench bench("<Cmp type=\"V_V\" id=\"1\" name=\"V1\" node0=\"0\" node1=\"1\" model=\"V\" v=\"1\" "
              "v_str=\"%3dnothing\" />"
              "<Cmp type=\"V_V\" id=\"2\" name=\"V2\" node0=\"0\" node1=\"1\" model=\"V\" v=\"inf\" />"
              "<Cmp type=\"I_I\" id=\"3\" name=\"I1\" node0=\"0\" node1=\"1\" model=\"I\" v=\"1\" "
              "v_str=\"%3dnothing\" />"
              "<Cmp type=\"I_I\" id=\"4\" name=\"I2\" node0=\"0\" node1=\"1\" model=\"I\" v=\"-inf\" />"
              "<Cmp type=\"I_I\" id=\"5\" name=\"I3\" node0=\"0\" node1=\"1\" model=\"I\" v=\"0\" />");
  const struct {
    const char* name;
    const char* text;
  } kCases[] = {{"V1", "V1 : V : formula error; "},
                {"V2", "V2 : V = infinite; "},
                {"I1", "I1 : I : formula error; "},
                {"I2", "I2 : I = infinite; "}};
  for (const auto& c : kCases) {
    SetLastError("");
    EXPECT_FALSE(bench.cmps.Find(c.name)->CheckParams()) << c.name;
    EXPECT_EQ(LastError(), c.text);
  }
  SetLastError("");
  EXPECT_TRUE(bench.cmps.Find("I3")->CheckParams());
  EXPECT_EQ(LastError(), "");
}

TEST(SourceChecks, SignalModelsCheckTheirSignal) {
  Bench bench(Signal("Pulse", "u1=\"inf\" r=\"-1\"", "I_I", "I1") +
              Signal("Trace", "", "V_V", "V2") + Signal("Function", "function=\"nothing(\"", "V_V", "V3") +
              "<Cmp type=\"V_V\" id=\"83\" name=\"X1\" node0=\"0\" node1=\"1\" model=\"SubCir\" />");
  CCmp* pulse = bench.cmps.Find("I1");
  CCmp* trace = bench.cmps.Find("V2");
  CCmp* function = bench.cmps.Find("V3");
  SetLastError("");
  EXPECT_FALSE(pulse->CheckParams());
  EXPECT_EQ(LastError(), "I1 : I1 = infinite; I1 : Rise < 0; ");
  SetLastError("");
  EXPECT_FALSE(trace->CheckParams());
  EXPECT_EQ(LastError(), "V2 : Trace model not supported; ");
  // A function is only read while running.
  SetLastError("");
  EXPECT_TRUE(function->CheckParams());
  EXPECT_EQ(LastError(), "");
  SetLastError("");
  EXPECT_TRUE(bench.Src("X1").CheckParams());  // runs as its contents
  EXPECT_EQ(LastError(), "");
}

class SourceFile : public ::testing::Test {
 protected:
  void SetUp() override {
    folder = std::filesystem::temp_directory_path() /
             (std::string("tz4_source_") +
              ::testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "ramp.txt") << "0\t0\n1e-3\t5\nheader\n2e-3,5\n";
    settings.folder = folder.string() + "/";
  }
  void TearDown() override { std::filesystem::remove_all(folder); }

  std::filesystem::path folder;
  CCalcSettings settings;
};

TEST_F(SourceFile, DataFileNamedAloneIsFoundBesideTheCircuit) {
  Bench bench(Signal("File", "file=\"ramp.txt\"") + Load(1), settings);
  SetLastError("");
  ASSERT_EQ(bench.Build(), 0) << LastError();
  EXPECT_EQ(bench.Src("V1").Signal.PointCount, 3);
  bench.Step(0.0, 6e-4);
  EXPECT_NEAR(bench.V(1), 3.0, 1e-12);
}

TEST_F(SourceFile, MissingFileFailsTheBuildWithItsPath) {
  Bench bench(Signal("File", "file=\"missing.txt\"") + Load(1), settings);
  SetLastError("");
  EXPECT_EQ(bench.Build(), -1);
  EXPECT_EQ(LastError(), "V1 : Can't open file \"" + settings.folder + "missing.txt\"; ");
}

TEST(SourceRestart, ContinuedRunKeepsTheSinePhaseAndAFreshRunRestartsIt) {
  Bench bench(Signal("Sin", "u0=\"0\" u1=\"1\" p=\"1e-3\" d=\"0\"") + Load(1));
  ASSERT_EQ(bench.Build(), 0);
  bench.Step(0.0, 2.5e-4);
  EXPECT_NEAR(bench.V(1), 1.0, 1e-9);

  // A rebuild in the middle of the run, at the last time point.
  bench.calc.lastTime = 2.5e-4;
  bench.calc.ClearRunList();
  ASSERT_EQ(bench.Build(), 0);
  bench.Step(2.5e-4, 2.5e-4);
  EXPECT_NEAR(bench.V(1), 0.0, 1e-9);
  bench.Step(5e-4, 2.5e-4);
  EXPECT_NEAR(bench.V(1), -1.0, 1e-9);

  // A fresh run starts over from phase 0.
  CElemV& v1 = bench.Src("V1");
  v1.prevModelId = 0;
  v1.Stamp(bench.calc, STAMP_RESET, 0.0);
  bench.calc.ClearRunList();
  ASSERT_EQ(bench.Build(), 0);
  bench.Step(0.0, 2.5e-4);
  EXPECT_NEAR(bench.V(1), 1.0, 1e-9);
}

TEST(SourceSaveIC, TimedModelsMoveTheirOriginToTheSavedPoint) {
  Bench bench(Signal("Step", "d=\"2e-3\" d_str=\"%3d0.002\"") +
              "<Cmp type=\"V_V\" id=\"84\" name=\"V2\" node0=\"0\" node1=\"2\" model=\"Pulse\" v=\"10\">"
              "<Signal p=\"1e-3\" d=\"0\" /></Cmp>"
              "<Cmp type=\"V_V\" id=\"85\" name=\"V3\" node0=\"0\" node1=\"3\" model=\"V\" v=\"1\" />" +
              Load(1));
  ASSERT_EQ(bench.Build(), 0);
  bench.calc.lastTime = 2.5e-4;
  bench.calc.SaveIC();
  CElemV& step = bench.Src("V1");
  EXPECT_NEAR(step.Signal.Delay.Value, 1.75e-3, 1e-15);
  EXPECT_EQ(step.Signal.Delay.Text, "");
  std::string text;
  EXPECT_EQ(step.GetICText(text), "V1.Delay=1.75e-3");
  // The pulse keeps its phase: 250 us into a 1 ms period.
  EXPECT_NEAR(bench.Src("V2").Signal.Delay.Value, -2.5e-4, 1e-15);
  EXPECT_EQ(bench.Src("V3").GetICText(text), "");
}

}  // namespace
}  // namespace tz4
