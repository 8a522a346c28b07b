// Resistors in the solver: circuits read from their file elements, solved,
// and compared with hand calculations. Covers the fixed resistor with its
// short and open limits, the potentiometer at and between its ends, the
// tables in both directions with their switching, the controlled types that
// follow their control after a step, the fixed stand-in of "Function", and
// the parameter checks word for word.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "devices/registry.h"
#include "../solver/calc_internals.h"
#include "base/last_error.h"
#include "devices/resistor.h"
#include "components/cmps.h"
#include "xml/xml_node.h"
#include "solver/calc.h"

namespace tz4 {
namespace {

// A circuit from its "Cmp" elements, in one run list. Nodes numbered 1, 2,
// ... without gaps keep their numbers through the numbering.
class Bench {
 public:
  explicit Bench(const std::string& elements) {
    CXmlNode root("Cmps");
    EXPECT_EQ(root.LoadFromText("<Cmps>" + elements + "</Cmps>"), 0);
    EXPECT_TRUE(cmps.Serialize(&root, ComponentTypes())) << LastError();
    cmps.UpdateFormulas();
  }

  // Checks, adds, numbers and allocates; the code of AddComponents.
  int Build() {
    SetLastError("");
    EXPECT_TRUE(cmps.CheckParams()) << LastError();
    const int added = calc.AddComponents(cmps);
    calc.MergeNodes();
    calc.NumberNodes();
    EXPECT_TRUE(calc.AllocateSystem());
    calc.step = 1e-3;
    return added;
  }

  // The switching loop at one instant, with the algebraic form.
  int Solve(double t = 0.0) { return calc.Calculate(t, 1e-6, false, false); }

  CElemR& R(const std::string& name) {
    auto* r = dynamic_cast<CElemR*>(cmps.Find(name));
    EXPECT_NE(r, nullptr) << name;
    return *r;
  }
  double V(int node) const { return calc.V(node); }
  // V(pins[1]) - V(pins[0]) of a component.
  double Across(const std::string& name) {
    CCmp* cmp = cmps.Find(name);
    return calc.V(cmp->pins[1]) - calc.V(cmp->pins[0]);
  }
  double Row(const std::string& name, int extra = 0) {
    return calc.V(cmps.Find(name)->firstRow + extra);
  }

  CCmps cmps;
  CCalc calc;
};

std::string Source(const std::string& name, int a, int b, double v) {
  return "<Cmp type=\"V_V\" id=\"90\" name=\"" + name + "\" node0=\"" + std::to_string(a) +
         "\" node1=\"" + std::to_string(b) + "\" model=\"V\" v=\"" + std::to_string(v) + "\" />";
}

std::string Resistor(const std::string& name, int a, int b, const std::string& r,
                     const std::string& extra = "") {
  return "<Cmp type=\"R_R\" id=\"91\" name=\"" + name + "\" node0=\"" + std::to_string(a) +
         "\" node1=\"" + std::to_string(b) + "\" model=\"R\" r=\"" + r + "\" " + extra + " />";
}

std::string Table(const std::string& type, const std::string& model, const std::string& name,
                  const std::string& nodes, const std::string& text) {
  const std::string attribute = model == "PWL-I" ? "pwli" : "pwl";
  return "<Cmp type=\"" + type + "\" id=\"92\" name=\"" + name + "\" " + nodes + " model=\"" +
         model + "\" " + attribute + "=\"" + text + "\" />";
}

std::string Pot(const std::string& r, const std::string& p) {
  return "<Cmp type=\"R_Pot\" id=\"93\" name=\"P1\" node0=\"1\" node1=\"3\" node2=\"2\" "
         "model=\"Potentiometer\" r=\"" + r + "\" p=\"" + p + "\" />";
}

// End a at 10 V, end b through 1 kOhm to ground, the wiper (node 2) open:
// 2.5 mA through the whole track. At an end the wiper is shorted to that
// end by a row of its own, which carries the track's current.
TEST(PotentiometerRun, WiperAlongTheTrack) {
  const struct {
    const char* position;
    int rows;
    double wiper;
    double shortCurrent;
  } kCases[] = {{"0.25", 0, 10.0 - 750 * 2.5e-3, 0}, {"0", 1, 10.0, -2.5e-3}, {"1", 1, 2.5, -2.5e-3}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.position);
    Bench bench(Source("V1", 0, 1, 10) + Pot("3000", c.position) + Resistor("RL", 3, 0, "1000"));
    ASSERT_EQ(bench.Build(), 0);
    EXPECT_EQ(bench.R("P1").GetExtraRows(), c.rows);
    ASSERT_EQ(bench.Solve(), 0);
    EXPECT_NEAR(bench.V(3), 2.5, 1e-12);
    EXPECT_NEAR(bench.V(2), c.wiper, 1e-12);
    if (c.rows > 0) {
      EXPECT_NEAR(bench.Row("P1"), c.shortCurrent, 1e-15);
    }
  }
}

TEST(PotentiometerRun, ZeroResistanceIsTwoShortsEvenAtAnEnd) {
  Bench bench(Source("V1", 0, 1, 10) + Pot("0", "0") + Resistor("RL", 3, 0, "1000"));
  ASSERT_EQ(bench.Build(), 0);
  EXPECT_EQ(bench.R("P1").GetExtraRows(), 2);
  ASSERT_EQ(bench.Solve(), 0);
  EXPECT_NEAR(bench.V(2), 10.0, 1e-12);
  EXPECT_NEAR(bench.V(3), 10.0, 1e-12);
  // 10 mA from a through the wiper to b: both shorts see it against their sense.
  EXPECT_NEAR(bench.Row("P1"), -0.01, 1e-15);
  EXPECT_NEAR(bench.Row("P1", 1), -0.01, 1e-15);
}

// The check's verdict and its text, word for word; models without checks
// pass silently.
TEST(ResistorChecks, EveryFaultIsListedInOrder) {
  Bench bench("<Cmp type=\"R_Pot\" id=\"1\" name=\"P1\" node0=\"1\" node1=\"0\" node2=\"2\" "
              "model=\"Potentiometer\" r=\"1\" r_str=\"%3dnothing*2\" p=\"1.5\" />"
              "<Cmp type=\"R_Pot\" id=\"2\" name=\"P2\" node0=\"1\" node1=\"0\" node2=\"2\" "
              "model=\"Potentiometer\" r=\"1\" p=\"-0.5\" p_str=\"%3dnothing\" />"
              "<Cmp type=\"R_Pot\" id=\"3\" name=\"P3\" node0=\"1\" node1=\"0\" node2=\"2\" "
              "model=\"Potentiometer\" r=\"1000\" p=\"1\" />"
              "<Cmp type=\"R_R\" id=\"1\" name=\"R1\" node0=\"1\" node1=\"0\" model=\"R\" r=\"5\" "
              "r_str=\"%3dR1.R\" />" +
              Table("R_R", "PWL", "R2", "node0=\"1\" node1=\"0\"", "1,0,2") +
              Table("R_VCR", "PWL", "R3", "node0=\"1\" node1=\"0\" node2=\"0\" node3=\"1\"", "1") +
              "<Cmp type=\"R_R\" id=\"4\" name=\"R4\" node0=\"1\" node1=\"0\" model=\"Function\" "
              "fs=\"1%2bs\" />");
  const struct {
    const char* name;
    const char* text;
  } kCases[] = {{"P1", "P1 : R : formula error; P1 : Position > 1; "},
                {"P2", "P2 : Position : formula error; P2 : Position < 0; "},
                {"P3", ""},
                // A formula that reads itself is cut off as invalid.
                {"R1", "R1 : R : formula error; "},
                {"R2", ""},
                {"R3", ""},
                {"R4", ""}};
  for (const auto& c : kCases) {
    SetLastError("");
    EXPECT_EQ(bench.R(c.name).CheckParams(), *c.text == '\0') << c.name;
    EXPECT_EQ(LastError(), c.text);
  }
}

TEST(ResistorTable, DefaultTextIsOneOhmInOneSegment) {
  Bench bench(Source("V1", 0, 1, 3) + Table("R_R", "PWL", "RT", "node0=\"0\" node1=\"1\"", "1.0"));
  ASSERT_EQ(bench.Build(), 0);
  int low = 5, high = 5;
  EXPECT_FALSE(bench.R("RT").GetStateRange(low, high));
  EXPECT_EQ(low, 0);
  EXPECT_EQ(high, 0);
  ASSERT_EQ(bench.Solve(), 0);
  EXPECT_NEAR(bench.Row("RT"), 3.0, 1e-12);
  EXPECT_EQ(bench.R("RT").state, 0);
}

// A voltage-controlled resistor: 1 kOhm while |Vc| < 1 V, 10 Ohm beyond.
// 10 V through 1 kOhm into it; the control is a second source.
std::string VcrCircuit(double control) {
  return Source("V1", 0, 1, 10) + Resistor("RS", 1, 2, "1000") + Source("VC", 0, 3, control) +
         Table("R_VCR", "PWL", "RV", "node0=\"0\" node1=\"2\" node2=\"0\" node3=\"3\"", "1000,1,10");
}

TEST(ControlledResistor, VoltageControlFollowsAfterTheStep) {
  Bench bench(VcrCircuit(2.0));
  ASSERT_EQ(bench.Build(), 0);
  CElemR& rv = bench.R("RV");
  EXPECT_EQ(rv.GetExtraRows(), 1);
  int low = 0, high = 0;
  EXPECT_FALSE(rv.GetStateRange(low, high));  // not a searchable state
  ASSERT_EQ(bench.Solve(), 0);
  // The switching loop leaves the controlled type alone.
  EXPECT_NEAR(bench.V(2), 5.0, 1e-12);
  EXPECT_NEAR(bench.Row("RV"), 5e-3, 1e-15);

  bool changed = false;
  EXPECT_TRUE(rv.PostStep(bench.calc, false, 0.0, changed));
  EXPECT_TRUE(changed);
  EXPECT_EQ(rv.pwl.Segment, 0);
  EXPECT_TRUE(rv.PostStep(bench.calc, true, 0.0, changed));
  EXPECT_TRUE(changed);
  EXPECT_EQ(rv.pwl.Segment, 1);
  EXPECT_EQ(rv.state, 0);  // the segment itself is the state

  ASSERT_EQ(bench.Solve(), 0);
  EXPECT_NEAR(bench.V(2), 10.0 * 10 / 1010, 1e-12);
  EXPECT_TRUE(rv.PostStep(bench.calc, true, 0.0, changed));
  EXPECT_FALSE(changed);

  // A control that jumps across the middle stops there for one step.
  bench.calc.x[3] = -3.0;
  rv.PostStep(bench.calc, true, 0.0, changed);
  EXPECT_TRUE(changed);
  EXPECT_EQ(rv.pwl.Segment, 0);
  rv.PostStep(bench.calc, true, 0.0, changed);
  EXPECT_EQ(rv.pwl.Segment, -1);
}

// A current-controlled resistor sensing 20 mA from a current source through
// its control pins; 1 kOhm below 10 mA, 10 Ohm above.
TEST(ControlledResistor, CurrentControlIsSensedInTheSecondRow) {
  Bench bench(Source("V1", 0, 1, 10) + Resistor("RS", 1, 2, "1000") +
              "<Cmp type=\"I_I\" id=\"94\" name=\"IC\" node0=\"0\" node1=\"3\" model=\"I\" v=\"0.02\" />" +
              Table("R_CCR", "PWL", "RC", "node0=\"0\" node1=\"2\" node2=\"0\" node3=\"3\"", "1000,0.01,10"));
  ASSERT_EQ(bench.Build(), 0);
  CElemR& rc = bench.R("RC");
  EXPECT_EQ(rc.GetExtraRows(), 2);
  ASSERT_EQ(bench.Solve(), 0);
  EXPECT_NEAR(bench.V(3), 0.0, 1e-15);  // the sense is a short
  EXPECT_NEAR(bench.Row("RC", 1), 0.02, 1e-15);
  EXPECT_NEAR(bench.V(2), 5.0, 1e-12);

  bool changed = false;
  EXPECT_TRUE(rc.PostStep(bench.calc, true, 0.0, changed));
  EXPECT_TRUE(changed);
  EXPECT_EQ(rc.pwl.Segment, 1);
  ASSERT_EQ(bench.Solve(), 0);
  EXPECT_NEAR(bench.V(2), 10.0 * 10 / 1010, 1e-12);
  EXPECT_NEAR(bench.Row("RC"), 10.0 / 1010, 1e-12);
}

TEST(ResistorSubcircuit, PassesItsChecksAndTracesOnlyVoltage) {
  Bench bench("<Cmp type=\"R_R\" id=\"1\" name=\"X1\" node0=\"1\" node1=\"0\" model=\"SubCir\" />");
  SetLastError("");
  EXPECT_TRUE(bench.R("X1").CheckParams());
  EXPECT_EQ(LastError(), "");
  int a = 0, b = 0, row = 0;
  double value = 0;
  EXPECT_TRUE(bench.R("X1").GetTraceInfo(0, a, b, row, value));
  EXPECT_FALSE(bench.R("X1").GetTraceInfo(1, a, b, row, value));
}

}  // namespace
}  // namespace tz4
