// Function blocks in a run, through the exports, against hand-computed
// values: arithmetic, tables at, between and beyond their points, formula
// blocks with named inputs, the integrator, a clocked block, buses, and the
// checks.
#include <cmath>

#include "circuit_run.h"

namespace tz4_test {
namespace {

class FunctionBlockRun : public CircuitRun {
 protected:
  static std::string Level(const std::string& name, int node, double volts) {
    return Element("V_V", name, "V", {0, node}, "v=\"" + Number(volts) + "\"");
  }
  static std::string Custom(const std::string& tag, const std::string& name,
                            const std::string& model, const std::vector<int>& nodes,
                            const std::string& attributes, const std::vector<std::string>& inputs,
                            bool clocked = false) {
    std::string ins;
    for (const std::string& in : inputs) ins += "<In name=\"" + in + "\" />";
    const int pins = static_cast<int>(nodes.size());
    return Element(tag, name, model, nodes, attributes,
                   "<Custom w=\"2\" h=\"3\" l=\"" + std::to_string(pins - 1) +
                       "\" b=\"0\" r=\"1\" t=\"0\" d=\"" + (clocked ? "true" : "false") +
                       "\"><Ins>" + ins + "</Ins></Custom>");
  }
  // The block's output after a short run on constant inputs.
  double Output(const std::string& circuit, const std::string& block = "F") {
    Open(circuit, 1e-5);
    const int v = Trace(block);
    EXPECT_EQ(TZ4_Simulate(h, 1e-4), 0) << Error();
    return Last(v);
  }
};

TEST_F(FunctionBlockRun, ArithmeticAndTables) {
  const struct {
    const char* tag;
    const char* model;
    double a, b;
    const char* attributes;
    double expected;
  } cases[] = {
      {"F_2", "Sum", 3, 4, "k=\"2\"", 14},
      {"F_2", "Sub", 3, 4, "", -1},
      {"F_2", "Mul", 3, 4, "", 12},
      {"F_2", "Div", 3, 0, "", 0},  // a zero divisor gives 0
      {"F_2", "Max", 3, 4, "", 4},
      {"F_2", "GT", 3, 4, "", 0},
      {"F_2", "LT", 3, 4, "", 5},
      {"F_2", "Mag", 3, 4, "", 5},
      {"F_2", "Phase", 1, 1, "", 45},
      {"F_2", "Pwr", -2, 3, "", -8},
      {"F_1", "Pwr", -4, 0, "pow=\"0.5\"", -2},  // a negative root
      {"F_1", "Abs", -4, 0, "k=\"3\"", 12},
      {"F_1", "Int", 2.34, 0, "res=\"0.5\"", 2.5},
      {"F_1", "Int", 2.34, 0, "res=\"0\"", 2.34},  // no resolution passes the input
      {"F_1", "Lim", 12, 0, "max=\"10\" min=\"-10\"", 10},
      // (0,0), (1,2), (3,5): at, between and beyond the points.
      {"F_1", "Table", 1, 0, "table=\"0,0,1,2,3,5\"", 2},
      {"F_1", "Table", 2, 0, "table=\"0,0,1,2,3,5\"", 3.5},
      {"F_1", "Table", 4, 0, "table=\"0,0,1,2,3,5\"", 6.5},
      {"F_1", "Table", -1, 0, "table=\"0,0,1,2,3,5\"", -2},
      {"F_1", "Table", 7, 0, "table=\"1,4\"", 4},  // one pair: a constant
      // Corners 0, 1 (x), 2 (y), 3: bilinear inside, extrapolated outside.
      {"F_2", "Table", 0.5, 0.5, "table_x=\"0,1\" table_y=\"0,1\" table=\"0,1,2,3\"", 1.5},
      {"F_2", "Table", 2, 0, "table_x=\"0,1\" table_y=\"0,1\" table=\"0,1,2,3\"", 2},
  };
  for (const auto& c : cases) {
    const bool two = std::string(c.tag) == "F_2";
    const std::string block = two ? Element(c.tag, "F", c.model, {1, 2, 3}, c.attributes)
                                  : Element(c.tag, "F", c.model, {1, 3}, c.attributes);
    EXPECT_NEAR(Output(Level("A", 1, c.a) + Level("B", 2, c.b) + block), c.expected, 1e-9)
        << c.tag << " " << c.model << " " << c.attributes;
  }
}

// A formula block reads its inputs by the names of its shape, and "t".
TEST_F(FunctionBlockRun, FormulaWithNamedInputs) {
  EXPECT_NEAR(
      Output(Level("A", 1, 3) + Level("B", 2, 4) +
             Custom("F_CUSTOM", "F", "Function", {1, 2, 3}, "func=\"u*10%2bv\"", {"u", "v"})),
      34.0, 1e-9);
  EXPECT_NEAR(Output(Level("A", 1, 3) + Element("F_1", "F", "Function", {1, 3}, "func=\"x*t\"")),
              3 * 1e-4, 3e-5);
  // Logic: inputs as booleans, the result as a logic level.
  EXPECT_EQ(
      Output(Level("A", 1, 5) + Level("B", 2, 0) +
             Custom("Y_FUNCTION", "F", "Function", {1, 2, 3}, "func=\"p%26%26!q\"", {"p", "q"})),
      5.0);
}

// The integrator of 1 V with K = 2 is a ramp of 2 V/s; of a 50 Hz sine of
// 1 V it is (1 - cos(w t)) / w.
TEST_F(FunctionBlockRun, IntegratorOfAConstantAndOfASine) {
  Open(Level("A", 1, 1) + Element("F_1", "F", "Integral", {1, 3}, "k=\"2\""), 1e-4);
  const int ramp = Trace("F");
  ASSERT_EQ(TZ4_Simulate(h, 10e-3), 0) << Error();
  ExpectWave(
      ramp, [](double t) { return 2 * t; }, 1e-9);

  Open(Element("V_V", "S", "Sin", {0, 1}, "", "<Signal u0=\"0\" u1=\"1\" p=\"20e-3\" d=\"0\" />") +
           Element("F_1", "F", "Integral", {1, 3}, "k=\"1\""),
       1e-5);
  const int integral = Trace("F");
  ASSERT_EQ(TZ4_Simulate(h, 40e-3), 0) << Error();
  const double w = 2 * kPi / 20e-3;
  ExpectWave(
      integral, [w](double t) { return (1 - std::cos(w * t)) / w; }, 1e-6);
}

// A clocked block samples its input on rising clock edges only: a ramp of
// 1000 V/s sampled at 1, 3, 5 ms holds 1, 3, 5 V between.
TEST_F(FunctionBlockRun, ClockedBlockSamplesOnRisingEdges) {
  Open(Element("V_V", "R", "PWL", {0, 1}, "", "<Signal pwl=\"0,0,10e-3,10\" c=\"0\" />") +
           Element("Y_LG", "C", "Pulse", {2}, "p=\"2e-3\" w=\"1e-3\" d=\"1e-3\"") +
           Custom("F_CUSTOM", "F", "Function", {1, 3, 2}, "func=\"x\"", {"x"}, true),
       1e-5);
  const int v = Trace("F");
  ASSERT_EQ(TZ4_Simulate(h, 6e-3), 0) << Error();
  for (const auto& [t, held] : {std::pair{2.5e-3, 1.0}, {3.9e-3, 3.0}, {5.5e-3, 5.0}}) {
    double out = 0;
    ASSERT_EQ(TZ4_GetData(h, v, t, &out), 0);
    EXPECT_NEAR(out, held, 0.02) << t;
  }
}

// Three bits, the first the most significant: a signed bus with all inputs
// high gives -4 + 2 + 1 = -1; the linear bus takes the voltages as they are.
TEST_F(FunctionBlockRun, BusesTurnBitsIntoANumber) {
  const std::string bits = Level("A", 1, 5) + Level("B", 2, 5) + Level("C", 3, 5);
  EXPECT_EQ(Output(bits + Custom("Y_BUS", "F", "Function", {1, 2, 3, 4}, "format=\"1\"", {})),
            -1.0);
  EXPECT_EQ(Output(bits + Custom("Y_BUS", "F", "Function", {1, 2, 3, 4}, "format=\"0\"", {})), 7.0);
  EXPECT_NEAR(Output(Level("A", 1, 2.5) + Level("B", 2, 0) + Level("C", 3, 5) +
                     Custom("Y_BUS", "F", "Linear", {1, 2, 3, 4}, "format=\"0\"", {})),
              4 * 0.5 + 1, 1e-9);
}

TEST_F(FunctionBlockRun, Checks) {
  const struct {
    std::string block;
    const char* message;
  } cases[] = {
      {Element("F_1", "F", "Lim", {1, 3}, "max=\"-1\" min=\"1\""), "TZ4_Start: F : Max < Min; "},
      {Element("F_1", "F", "Int", {1, 3}, "res=\"-1\" k=\"inf\""),
       "TZ4_Start: F : K = infinite; F : Resolution < 0; "},
      {Element("F_1", "F", "Table", {1, 3}, "table=\"0,1,2\""),
       "TZ4_Start: F : wrong number of Table parameters"},
      {Element("F_1", "F", "Abs", {1, 0}, ""),
       "TZ4_Start: Transient error at t=0 : F : grounded output"},
  };
  for (const auto& c : cases) {
    Open(Level("A", 1, 1) + c.block);
    EXPECT_EQ(TZ4_Start(h), -1);
    EXPECT_EQ(Error(), c.message);
  }
}

}  // namespace
}  // namespace tz4_test
