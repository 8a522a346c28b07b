// Circuit files through the library: every type loads and saves without
// losing or changing anything, a sparse element takes the defaults of its
// family, the type list and the model tables are the fixed ones, and every
// parameter of every model answers to its name.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "devices/registry.h"
#include "components/cmp.h"
#include "components/param_ops.h"
#include "devices/label.h"
#include "doc/doc.h"
#include "tz4.h"
#include "temp_files.h"

namespace {

using tz4_test::ReadFile;
using tz4_test::TempDir;
using tz4_test::WriteFile;

std::string CircuitFile(const std::string& name) {
  return std::string(TZ4_SOURCE_DIR) + "/tests/doc/circuits/" + name;
}

// Opens `path` through the library and saves it as `target`; the saved bytes,
// or empty with a failure when either call fails.
std::string OpenAndSave(const std::string& path, const std::string& target) {
  const int handle = TZ4_Open(path.c_str());
  EXPECT_GE(handle, 0) << path << ": " << TZ4_GetError();
  if (handle < 0) return std::string();
  EXPECT_GE(TZ4_SaveAs(handle, target.c_str()), 0) << path << ": " << TZ4_GetError();
  TZ4_Close(handle);
  return ReadFile(target);
}

// The first line in which two texts differ, for a readable failure.
std::string FirstDifference(const std::string& a, const std::string& b) {
  size_t start = 0;
  while (start < a.size() && start < b.size()) {
    const size_t endA = a.find('\n', start);
    const size_t endB = b.find('\n', start);
    const std::string lineA = a.substr(start, endA == std::string::npos ? std::string::npos : endA - start);
    const std::string lineB = b.substr(start, endB == std::string::npos ? std::string::npos : endB - start);
    if (lineA != lineB) return "expected: " + lineA + "\n  actual: " + lineB;
    if (endA == std::string::npos || endB == std::string::npos) break;
    start = endA + 1;
  }
  return a.size() == b.size() ? std::string() : "lengths differ";
}

// Every type saves byte for byte; sparse elements take the defaults of
// their family.
TEST(FileFidelity, EveryTypeSavesAsExpected) {
  TempDir dir("fidelity");
  for (const auto& [input, output] : {std::pair<const char*, const char*>{"every_type.tz4", "every_type.tz4"},
                                      {"every_type_sparse.tz4", "every_type_defaults.tz4"}}) {
    SCOPED_TRACE(input);
    const std::string expected = ReadFile(CircuitFile(output));
    ASSERT_FALSE(expected.empty());
    const std::string saved = OpenAndSave(CircuitFile(input), dir.File("saved.tz4"));
    EXPECT_EQ(saved, expected) << FirstDifference(expected, saved);
  }
}

// Every circuit that ships with the library: a file written by the library
// saves to the same bytes, and any other file saves to a form that a second
// save keeps.
TEST(FileFidelity, ShippedCircuitsSurviveASave) {
  TempDir dir("fidelity");
  int files = 0;
  for (const char* folder : {"/examples", "/tests/data", "/tests/doc/circuits"}) {
    for (const auto& entry : std::filesystem::directory_iterator(std::string(TZ4_SOURCE_DIR) + folder)) {
      if (entry.path().extension() != ".tz4") continue;
      const std::string path = entry.path().string();
      SCOPED_TRACE(path);
      files++;
      const std::string original = ReadFile(path);
      std::string first = OpenAndSave(path, dir.File("first.tz4"));
      if (first == original) continue;
      // A file with an unknown type keeps only the components before it, in
      // file order; the saved file then loads in full and sorts.
      if (entry.path().filename() == "unknown_type.tz4") {
        EXPECT_EQ(first.find("C1"), std::string::npos);
        EXPECT_EQ(first.find("Q_Nothing"), std::string::npos);
        first = OpenAndSave(dir.File("first.tz4"), dir.File("first.tz4"));
      }
      const std::string second = OpenAndSave(dir.File("first.tz4"), dir.File("second.tz4"));
      EXPECT_EQ(second, first) << FirstDifference(first, second);
    }
  }
  EXPECT_GE(files, 10);
}

TEST(FileFidelity, TextsComeBackAsTheyWereWritten) {
  const int h = TZ4_Open(CircuitFile("every_type.tz4").c_str());
  ASSERT_GE(h, 0) << TZ4_GetError();
  auto text = [h](const char* name) {
    char buffer[256] = {};
    EXPECT_GE(TZ4_GetText(h, name, buffer, sizeof buffer), 0) << name << ": " << TZ4_GetError();
    return std::string(buffer);
  };
  // Initial conditions are texts that the percent-encoding carries intact.
  EXPECT_EQ(text("L1.IC"), "1e+3");
  EXPECT_EQ(text("L4.IC2"), "1");
  EXPECT_EQ(text("L5.IC1"), "1");
  EXPECT_EQ(text("T1.IC"), "1e-3");
  // Formula texts and the names of custom windings.
  EXPECT_EQ(text("R1.R"), "=Rval.Value*2");
  EXPECT_EQ(text("W4.n2"), "=turns.Value");
  EXPECT_EQ(text("W4.n3"), "2.5");
  EXPECT_EQ(text("L5.K23"), "=kc.Value");
  EXPECT_EQ(text("X12.IC"), "s=0,n=1");
  EXPECT_EQ(text("X13.Main"), "step");
  EXPECT_EQ(text("E2.F(s)"), "1/(1+s)");
  // Formulas see the values of the file.
  double value = 0;
  EXPECT_GE(TZ4_GetValue(h, "G2.K", &value), 0) << TZ4_GetError();
  EXPECT_EQ(value, 100.0);
  EXPECT_GE(TZ4_GetValue(h, "R1.R", &value), 0) << TZ4_GetError();
  EXPECT_EQ(value, 4700.0);
  TZ4_Close(h);

  // The program text holds line ends; the host has no text of it through
  // the strict entries, so it is read on the component.
  tz4::CDoc doc;
  ASSERT_TRUE(doc.Load(CircuitFile("every_type.tz4")));
  tz4::CParam code;
  ASSERT_TRUE(doc.FindParam("X12.Code", code));
  std::string program;
  EXPECT_TRUE(tz4::GetFullText(code, program) || code.Kind == tz4::PK_CODE);
  EXPECT_EQ(*std::get<std::string*>(code.Value), "double s;\nvoid main() { y = x * 2; }\n");
}

// The shape of custom components, read from their "Custom" element.
TEST(FileFidelity, CustomShapesAreRead) {
  tz4::CDoc doc;
  ASSERT_TRUE(doc.Load(CircuitFile("every_type.tz4")));
  auto shape = [&doc](const char* name) -> const tz4::CCustomElemType* {
    tz4::CCmp* cmp = doc.cmps.Find(name);
    EXPECT_NE(cmp, nullptr) << name;
    return cmp != nullptr ? cmp->customType.get() : nullptr;
  };
  const tz4::CCustomElemType* code = shape("X12");
  ASSERT_NE(code, nullptr);
  EXPECT_EQ(code->inNames, "x,clk");
  EXPECT_EQ(code->outNames, "y");
  EXPECT_EQ(code->varNames, "s,n");
  EXPECT_TRUE(code->flag);
  EXPECT_EQ(code->leftCount, 2);
  EXPECT_EQ(code->rightCount, 1);
  EXPECT_STREQ(doc.cmps.Find("X12")->type->tag, "X_C");

  const tz4::CCustomElemType* windings = shape("L5");
  ASSERT_NE(windings, nullptr);
  EXPECT_EQ(windings->leftDots, 2);
  EXPECT_EQ(windings->left[2], 3);
  EXPECT_EQ(shape("W4")->rightDots, 4);
  EXPECT_EQ(shape("X10")->bottom, 1);
  EXPECT_EQ(shape("Y5")->inNames, "p,q");
  // The bus keeps its default bit list: its element carries no name lists.
  EXPECT_EQ(shape("Y6")->inNames, "2,1,0");
  EXPECT_EQ(doc.cmps.Find("L5")->pinCount, 6);
  EXPECT_EQ(doc.cmps.Find("W4")->GetExtraRows(), 4);
}

TEST(FileFidelity, CustomElementIsWrittenInItsFixedForm) {
  TempDir dir("fidelity");
  // Attributes in another order, zero positions spelled out, lists on a type
  // that has none, an unknown attribute: the element is written anew.
  const std::string file =
      "<?xml version=\"1.0\"?>\n<TZ4>\n  <Doc>\n    <Cmps>\n"
      "      <Cmp type=\"X_CUSTOM\" id=\"1\" name=\"X1\" node0=\"1\" node1=\"2\" model=\"SubCir\">\n"
      "        <Custom d=\"true\" h=\"4\" w=\"3\" l=\"2\" l1=\"0\" l2=\"1\" b=\"0\" t=\"0\" extra=\"9\">\n"
      "          <Ins>\n            <In name=\"a\" />\n          </Ins>\n"
      "        </Custom>\n      </Cmp>\n"
      "      <Cmp type=\"F_CUSTOM\" id=\"2\" name=\"X2\" node0=\"1\" node1=\"2\" model=\"Function\">\n"
      "        <Custom />\n      </Cmp>\n"
      "    </Cmps>\n  </Doc>\n</TZ4>\n";
  WriteFile(dir.File("in.tz4"), file);
  const std::string saved = OpenAndSave(dir.File("in.tz4"), dir.File("out.tz4"));
  EXPECT_NE(saved.find("<Custom w=\"3\" h=\"4\" l=\"2\" l2=\"1\" b=\"0\" t=\"0\" d=\"true\" />"),
            std::string::npos)
      << saved;
  // A custom function without counts keeps its width and height, and its
  // name lists are written, empty ones too.
  EXPECT_NE(saved.find("<Custom w=\"2\" h=\"3\" b=\"0\" t=\"0\" d=\"false\">\n"
                       "          <Ins />\n          <Outs />\n          <Vars />\n"
                       "        </Custom>"),
            std::string::npos)
      << saved;
}

// ------------------------------------------------------------ type list

struct TypeRow {
  const char* tag;
  int pins;
};

// The seventy-six types in their fixed order, with their pin counts.
const TypeRow kTypes[] = {
    {"R_R", 2},      {"R_Pot", 3},      {"R_VCR", 4},     {"R_CCR", 4},   {"C_C", 2},     {"C_VCC", 4},
    {"C_CCC", 4},    {"L_L", 2},        {"L_VCL", 4},     {"L_CCL", 4},   {"L_CL", 4},    {"L_CUSTOM", 0},
    {"D_D", 2},      {"D_Z", 2},        {"D_ZS", 2},      {"D_BR", 4},    {"D_LCT", 3},   {"D_VCT", 4},
    {"D_CCT", 4},    {"V_V", 2},        {"V_VCVS", 4},    {"V_CCVS", 4},  {"V_VM", 2},    {"I_I", 2},
    {"I_VCCS", 4},   {"I_CCCS", 4},     {"S_S", 2},       {"S_LCS", 3},   {"S_VCS", 4},   {"S_CCS", 4},
    {"S_S3", 3},     {"S_LCS3", 4},     {"S_VCS3", 5},    {"S_CCS3", 5},  {"A_A", 2},     {"O_O", 2},
    {"O_OD", 3},     {"O_OS", 3},       {"O_VCG", 4},     {"O_CCG", 4},   {"T_TNPN", 3},  {"T_TPNP", 3},
    {"T_NFET", 3},   {"T_PFET", 3},     {"X_Delay", 2},   {"F_1", 2},     {"F_2", 3},     {"F_CUSTOM", 0},
    {"W_W", 3},      {"W_T2", 4},       {"W_T3", 5},      {"W_CUSTOM", 0}, {"W_WM", 3},   {"Y_1", 2},
    {"Y_2", 3},      {"Y_3", 4},        {"Y_CUSTOM", 0},  {"Y_FUNCTION", 0}, {"Y_BUS", 0}, {"Y_FF", 4},
    {"Y_RS", 6},     {"Y_JK", 7},       {"Y_ST", 2},      {"Y_LG", 1},    {"X_Line", 4},  {"X_SH", 3},
    {"X_DC", 4},     {"X_B2", 2},       {"X_B3", 3},      {"X_B4", 4},    {"X_B6", 6},    {"X_B8", 8},
    {"X_CUSTOM", 0}, {"X_TZ4", 0},      {"X_C", 0},       {"X_DLL", 0},
};

TEST(FileFidelity, TheSeventySixTypesStandInOrderWithTheirPins) {
  const auto& types = tz4::ComponentTypes().Types();
  ASSERT_EQ(types.size(), std::size(kTypes));
  for (size_t i = 0; i < types.size(); i++) {
    EXPECT_STREQ(types[i]->tag, kTypes[i].tag) << i;
    EXPECT_EQ(types[i]->pinCount, kTypes[i].pins) << kTypes[i].tag;
    auto cmp = tz4::ComponentTypes().Create(kTypes[i].tag);
    ASSERT_NE(cmp, nullptr) << kTypes[i].tag;
    EXPECT_EQ(cmp->pinCount, kTypes[i].pins) << kTypes[i].tag;
  }
}

// ------------------------------------------------------------ model tables

constexpr int kAny = -1;  // not fixed by the description of the family

struct ModelRow {
  const char* name;
  int id;
  int rows;
  int mask;
  std::vector<const char*> params;  // in table order; empty: none or built per instance
};

struct ModelTable {
  std::vector<const char*> tags;
  std::vector<ModelRow> models;
  bool paramsAnyOrder = false;  // the family lists its parameters without an order
};

const std::vector<const char*> kPulse = {"V1", "V0", "Period", "Width", "Slope", "Rise", "Fall", "Delay"};
const std::vector<const char*> kStep = {"V1", "V0", "Slope", "Rise", "Delay"};
const std::vector<const char*> kSin = {"V1", "V0", "Period", "Phase", "Delay"};
const std::vector<const char*> kIPulse = {"I1", "I0", "Period", "Width", "Slope", "Rise", "Fall", "Delay"};
const std::vector<const char*> kIStep = {"I1", "I0", "Slope", "Rise", "Delay"};
const std::vector<const char*> kISin = {"I1", "I0", "Period", "Phase", "Delay"};

std::vector<ModelRow> ControlledSwitch(int rows, int mask, int subMask, bool analog) {
  std::vector<const char*> sw = {"Threshold", "Hysteresis", "Active", "IC"};
  std::vector<const char*> pulse = {"Width", "Threshold", "Active"};
  std::vector<const char*> steps = {"Threshold", "Hysteresis", "Roff", "Ron", "Slope", "Ramp", "Steps", "IC"};
  if (!analog) {
    sw = {"Active", "IC"};
    pulse = {"Width", "Active"};
    steps = {"Roff", "Ron", "Slope", "Ramp", "Steps", "IC"};
  }
  return {{"Switch", 14, rows, mask, sw},
          {"Pulse", 2, rows, mask, pulse},
          {"Steps", 3, rows, mask, steps},
          {"SubCir", 7, 0, subMask, {}}};
}

std::vector<ModelRow> TimedSwitch(int rows, int mask, int subMask) {
  return {{"Switch", 14, rows, mask, {"Switch"}},
          {"Pulse", 2, rows, mask, {"Period", "Width", "Delay", "Active"}},
          {"Step", 3, rows, mask, {"Delay", "Active"}},
          {"List", 8, rows, mask, {"List", "Cycle", "Delay"}},
          {"File", 6, rows, mask, {"File", "Cycle", "Delay"}},
          {"SubCir", 7, 0, subMask, {}}};
}

std::vector<ModelRow> ControlledSource(int rows, const char* level1, const char* level0, const char* rate,
                                       const char* max, const char* oscillator) {
  return {{"Linear", 15, rows, kAny, {"K"}},
          {"Function", 5, rows, kAny, {"F(x)", "F(s)", "IC"}},
          {"PWL", 8, rows, kAny, {"pwl"}},
          {oscillator, 42, rows, kAny, {level1, level0, rate, "Phase", "Type"}},
          {"Pulse", 2, rows, kAny, {"Width", "Threshold", level1, level0}},
          {"PWM", 47, rows, kAny, {level1, level0, "F", "Phase", max}},
          {"SubCir", 7, 0, kAny, {}}};
}

std::vector<ModelRow> Logic(std::vector<const char*> before, std::vector<const char*> after) {
  auto join = [&](std::vector<const char*> middle) {
    std::vector<const char*> all = before;
    all.insert(all.end(), middle.begin(), middle.end());
    all.insert(all.end(), after.begin(), after.end());
    all.push_back("IC");
    return all;
  };
  return {{"Logic", 41, kAny, kAny, join({})},
          {"Delay", 23, kAny, kAny, join({"Delay"})},
          {"Delay2", 58, kAny, kAny, join({"Up", "Down"})}};
}

std::vector<ModelRow> SourceModels(const char* constant, bool current, int firstId, int firstRows,
                                   int firstMask, std::vector<const char*> firstParams) {
  return {{constant, firstId, firstRows, firstMask, firstParams},
          {"Pulse", 2, 1, 23, current ? kIPulse : kPulse},
          {"Step", 3, 1, 23, current ? kIStep : kStep},
          {"Sin", 4, 1, 23, current ? kISin : kSin},
          {"PWL", 8, 1, 23, {"pwl", "Cycle", "Delay"}},
          {"Function", 5, 1, 23, {"F(t)"}},
          {"File", 6, 1, 23, {"File", "Cycle", "Delay"}},
          {"Trace", 53, 1, 23, {"Trace", "Cycle", "Delay"}},
          {"SubCir", 7, 0, 5, {}}};
}

std::vector<ModelTable> AllModelTables() {
  std::vector<ModelTable> t;
  t.push_back({{"R_R"},
               {{"R", 9, 1, 7, {"R"}},
                {"PWL", 8, 1, 7, {"pwl"}},
                {"PWL-I", 51, 1, 7, {"pwl"}},
                {"Function", 5, 1, 7, {"Z(s)"}},
                {"SubCir", 7, 0, 5, {}}}});
  t.push_back({{"R_Pot"}, {{"Potentiometer", 45, 0, 1, {"R", "Position"}}}});
  t.push_back({{"R_VCR"}, {{"PWL", 8, 1, 7, {"pwl"}}}});
  t.push_back({{"R_CCR"}, {{"PWL", 8, 2, 7, {"pwl"}}}});
  t.push_back({{"C_C"},
               {{"C", 10, 1, 7, {"C", "IC"}},
                {"PWL", 8, 1, 7, {"pwl", "IC"}},
                {"Function", 5, 1, 7, {"Z(s)"}},
                {"SubCir", 7, 0, 5, {}}}});
  t.push_back({{"C_VCC"}, {{"PWL", 8, 1, 7, {"pwl", "IC"}}}});
  t.push_back({{"C_CCC"}, {{"PWL", 8, 2, 7, {"pwl", "IC"}}}});
  t.push_back({{"L_L"},
               {{"L", 11, 1, 7, {"L", "IC"}},
                {"PWL", 8, 1, 7, {"pwl", "IC"}},
                {"Function", 5, 1, 7, {"Z(s)"}},
                {"SubCir", 7, 0, 5, {}}}});
  t.push_back({{"L_CL"}, {{"L", 11, 2, 0, {"L1", "L2", "K", "IC1", "IC2"}}}});
  t.push_back({{"L_CUSTOM"}, {{"L", 11, 0, 0, {}}, {"SubCir", 7, 0, 0, {}}}});
  t.push_back({{"L_VCL"}, {{"PWL", 8, 1, 7, {"pwl", "IC"}}}});
  t.push_back({{"L_CCL"}, {{"PWL", 8, 2, 7, {"pwl", "IC"}}}});
  t.push_back({{"D_D"},
               {{"Diode", 12, 1, 7, {"Vd", "IC"}},
                {"Storage", 39, 2, 7, {"Vd", "t", "IC", "ICQ"}},
                {"Soft", 50, 2, 7, {"Vd", "t", "ts", "IC", "ICQ"}},
                {"PWL", 8, 1, 7, {"pwl"}},
                {"SubCir", 7, 0, 5, {}}}});
  t.push_back({{"D_Z"}, {{"Zener", 12, 1, 7, {"V", "Vd", "IC"}}, {"PWL", 8, 1, 7, {"pwl"}}, {"SubCir", 7, 0, 5, {}}}});
  t.push_back({{"D_ZS"}, {{"Zener", 12, 1, 7, {"V", "IC"}}, {"PWL", 8, 1, 7, {"pwl"}}, {"SubCir", 7, 0, 5, {}}}});
  t.push_back({{"D_VCT"}, {{"Thyristor", 12, 1, 7, {"Vd", "Ihold", "Threshold", "IC"}}, {"SubCir", 7, 0, 5, {}}}});
  t.push_back({{"D_CCT"}, {{"Thyristor", 12, 2, 7, {"Vd", "Ihold", "Threshold", "IC"}}, {"SubCir", 7, 0, 5, {}}}});
  t.push_back({{"D_LCT"}, {{"Thyristor", 12, 1, 7, {"Vd", "Ihold", "IC"}}, {"SubCir", 7, 0, 5, {}}}});
  t.push_back({{"D_BR"}, {{"Diode", 12, 4, 4, {"Vd"}}}});
  t.push_back({{"V_V"}, SourceModels("V", false, 13, 1, 23, {"V"})});
  t.push_back({{"I_I"}, SourceModels("I", true, 13, 1, 23, {"I"})});
  t.push_back({{"S_VCS"}, ControlledSwitch(1, 7, 5, true)});
  t.push_back({{"S_CCS"}, ControlledSwitch(2, 7, 5, true)});
  t.push_back({{"S_LCS"}, ControlledSwitch(1, 7, 5, false)});
  t.push_back({{"S_VCS3"}, ControlledSwitch(2, 0, 4, true)});
  t.push_back({{"S_CCS3"}, ControlledSwitch(3, 0, 4, true)});
  t.push_back({{"S_LCS3"}, ControlledSwitch(2, 0, 4, false)});
  t.push_back({{"S_S"}, TimedSwitch(1, 7, 5)});
  t.push_back({{"S_S3"}, TimedSwitch(2, 0, 4)});
  t.push_back({{"T_TNPN", "T_TPNP"},
               {{"Linear", 15, 2, kAny, {"B", "f1", "IC"}},
                {"Switch", 14, 2, kAny, {"Vbe", "IC"}},
                {"Transistor", 19, 3, kAny, {"B", "f1", "Vbe", "Vsat", "IC", "ICbe", "ICbc"}},
                {"SubCir", 7, kAny, kAny, {}}},
               true});
  t.push_back({{"T_NFET", "T_PFET"},
               {{"Linear", 15, 1, kAny, {"S", "f1", "IC"}},
                {"Switch", 14, 1, kAny, {"Vth", "IC"}},
                {"FET", 20, 1, kAny, {"S", "Vth", "Rdson", "IC"}},
                {"FET-D", 57, 1, kAny, {"S", "Vth", "Rdson", "Vd", "IC"}},
                {"SubCir", 7, kAny, kAny, {}}},
               true});
  const ModelRow linear = {"Linear", 15, 1, kAny, {"K", "f1", "IC"}};
  const ModelRow opamp = {"OpAmp", 17, 1, kAny, {"K", "f1", "Vhi", "Vlo", "IC"}};
  const ModelRow comparator = {"Comparator", 18, 1, kAny, {"Hysteresis", "Vhi", "Vlo", "Delay", "IC"}};
  const ModelRow function = {"Function", 5, 1, kAny, {"F(x)", "F(s)", "IC"}};
  const ModelRow pwl = {"PWL", 8, 1, kAny, {"pwl"}};
  const ModelRow subcir = {"SubCir", 7, 0, kAny, {}};
  t.push_back({{"O_O", "O_OD"}, {linear, opamp, comparator, function, pwl, subcir}});
  t.push_back({{"O_OS"}, {linear, opamp, function, pwl, subcir}});
  t.push_back({{"O_VCG"}, {pwl}});
  t.push_back({{"O_CCG"}, {{"PWL", 8, 2, kAny, {"pwl"}}}});
  t.push_back({{"V_VCVS"}, ControlledSource(1, "V1", "V0", "dFdV", "Vmax", "VCO")});
  t.push_back({{"V_CCVS"}, ControlledSource(2, "V1", "V0", "dFdI", "Imax", "CCO")});
  t.push_back({{"I_VCCS"}, ControlledSource(1, "I1", "I0", "dFdV", "Vmax", "VCO")});
  t.push_back({{"I_CCCS"}, ControlledSource(2, "I1", "I0", "dFdI", "Imax", "CCO")});
  t.push_back({{"Y_1", "Y_2", "Y_3", "Y_CUSTOM", "Y_FF"}, Logic({}, {})});
  t.push_back({{"Y_RS", "Y_JK"}, Logic({}, {"Dominance"})});
  t.push_back({{"Y_ST"}, Logic({"Hysteresis"}, {})});
  t.push_back({{"Y_LG"},
               {{"V", 13, 0, kAny, {"Out"}},
                {"Pulse", 2, 0, kAny, {"Period", "Width", "Delay", "Active"}},
                {"Step", 3, 0, kAny, {"Delay", "Active"}},
                {"List", 8, 0, kAny, {"List", "Cycle", "Delay"}},
                {"File", 6, 0, kAny, {"File", "Cycle", "Delay"}}}});
  const std::vector<const char*> gain = {"K", "IC"};
  t.push_back({{"F_1"},
               {{"Function", 5, 1, kAny, {"F(x)", "F(s)", "IC"}},
                {"Pwr", 25, 1, kAny, {"power", "K", "IC"}},
                {"Abs", 26, 1, kAny, gain},
                {"Int", 27, 1, kAny, {"resolution", "K", "IC"}},
                {"Lim", 28, 1, kAny, {"Max", "Min", "IC"}},
                {"Integral", 54, 1, kAny, gain},
                {"Table", 52, 1, kAny, {"Table", "IC"}},
                {"SubCir", 7, kAny, kAny, {}}}});
  t.push_back({{"F_2"},
               {{"Function", 5, 1, kAny, {"F(x,y)", "F(s)", "IC"}},
                {"Mul", 29, 1, kAny, gain},
                {"Div", 30, 1, kAny, gain},
                {"Sum", 31, 1, kAny, gain},
                {"Sub", 32, 1, kAny, gain},
                {"Max", 33, 1, kAny, gain},
                {"Min", 34, 1, kAny, gain},
                {"GT", 35, 1, kAny, {"IC"}},
                {"LT", 36, 1, kAny, {"IC"}},
                {"Pwr", 25, 1, kAny, gain},
                {"Mag", 37, 1, kAny, gain},
                {"Phase", 38, 1, kAny, gain},
                {"Table", 52, 1, kAny, {"X", "Y", "Table", "IC"}},
                {"SubCir", 7, kAny, kAny, {}}}});
  t.push_back({{"F_CUSTOM"}, {{"Function", 5, 1, kAny, {"F(x)", "F(s)", "IC"}}}});
  t.push_back({{"Y_FUNCTION"}, {{"Function", 5, 1, kAny, {"F(b)", "IC"}}}});
  t.push_back({{"Y_BUS"}, {{"Linear", 15, 1, kAny, {"Format"}}, {"Function", 5, 1, kAny, {"Format", "IC"}}}});
  t.push_back({{"X_Delay"}, {{"Delay", 23, 1, kAny, {"t0", "IC"}}, {"SubCir", 7, kAny, kAny, {}}}});
  t.push_back({{"X_Line"},
               {{"Line", 21, 2, kAny, {"t0", "z0", "VIC", "IIC"}},
                {"Lossy", 22, 2, kAny, {"t0", "z0", "r", "G", "fr", "fG", "VIC", "IIC"}}}});
  t.push_back({{"W_W"}, {{"Winding", 24, 1, kAny, {"n"}}}});
  t.push_back({{"W_T2"}, {{"Transformer", 24, 3, kAny, {"n1", "n2"}}, {"SubCir", 7, kAny, kAny, {}}}});
  t.push_back({{"W_T3"}, {{"Transformer", 24, 4, kAny, {"n1", "n2"}}, {"SubCir", 7, kAny, kAny, {}}}});
  t.push_back({{"W_CUSTOM"}, {{"Transformer", 24, kAny, kAny, {}}, {"SubCir", 7, kAny, kAny, {}}}});
  t.push_back({{"A_A"}, {{"Amperemeter", 16, 1, kAny, {}}}});
  t.push_back({{"V_VM"}, {{"Voltmeter", 13, 0, kAny, {}}}});
  t.push_back({{"W_WM"}, {{"Wattmeter", 44, 1, kAny, {}}}});
  t.push_back({{"X_DC"}, {{"Coupler", 46, 3, kAny, {"z0", "CF"}}}});
  t.push_back({{"X_SH"}, {{"SH", 40, 1, kAny, {"IC"}}, {"SubCir", 7, kAny, kAny, {}}}});
  t.push_back({{"X_B2", "X_B3", "X_B4", "X_B6", "X_B8", "X_CUSTOM", "X_TZ4"}, {{"SubCir", 7, kAny, kAny, {}}}});
  t.push_back({{"X_C"}, {{"C", 48, kAny, kAny, {"Code", "IC"}}, {"File", 56, kAny, kAny, {"File", "IC"}}}});
  t.push_back({{"X_DLL"}, {{"DLL", 49, kAny, kAny, {"DLL", "Init", "Main", "IC"}}}});
  return t;
}

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

void ExpectModels(tz4::CCmp& cmp, const std::string& tag, const ModelTable& table) {
  ASSERT_NE(cmp.models, nullptr) << tag;
  size_t count = 0;
  while (cmp.models[count].name != nullptr) count++;
  ASSERT_EQ(count, table.models.size()) << tag;
  for (size_t i = 0; i < count; i++) {
    const tz4::ModelInfo& info = cmp.models[i];
    const ModelRow& row = table.models[i];
    SCOPED_TRACE(tag + " model " + row.name);
    EXPECT_STREQ(info.name, row.name);
    EXPECT_EQ(info.id, row.id);
    if (row.rows != kAny) {
      EXPECT_EQ(info.extraRows, row.rows);
    }
    if (row.mask != kAny) {
      EXPECT_EQ(info.traceMask, row.mask);
    }
    if (row.params.empty()) continue;
    cmp.modelIndex = static_cast<int32_t>(i);
    std::vector<std::string> names;
    for (const tz4::CParam& param : cmp.BindParams()) names.push_back(param.Name);
    std::vector<std::string> expected(row.params.begin(), row.params.end());
    if (table.paramsAnyOrder) {
      std::sort(names.begin(), names.end());
      std::sort(expected.begin(), expected.end());
    }
    EXPECT_EQ(names, expected);
    // Each answers to its name in any case, and has a text.
    for (const char* name : row.params) {
      tz4::CParam param;
      ASSERT_TRUE(cmp.FindParam(Lower(name), param)) << name;
      EXPECT_STREQ(param.Name, name);
      std::string text;
      EXPECT_TRUE(param.Kind == tz4::PK_CODE || tz4::GetFullText(param, text)) << name;
    }
  }
}

TEST(FileFidelity, ModelTablesAndParameterNamesOfEveryType) {
  std::set<std::string> seen;
  for (const ModelTable& table : AllModelTables()) {
    for (const char* tag : table.tags) {
      auto cmp = tz4::ComponentTypes().Create(tag);
      ASSERT_NE(cmp, nullptr) << tag;
      ExpectModels(*cmp, tag, table);
      seen.insert(tag);
    }
  }
  EXPECT_EQ(seen.size(), std::size(kTypes));

  // The label stands outside the type list; its "V" row is the second.
  ModelTable label{{"label"}, SourceModels("V", false, 13, 1, 23, {"V"})};
  label.models.insert(label.models.begin(), {"Label", 1, 0, 33, {"VIC", "R"}});
  ExpectModels(*tz4::CreateLabel(), "label", label);
}

// The tables that custom components build for themselves.
TEST(FileFidelity, CustomWindingsAnswerToTheirNames) {
  const int h = TZ4_Open(CircuitFile("every_type.tz4").c_str());
  ASSERT_GE(h, 0) << TZ4_GetError();
  double value = 0;
  for (const char* name : {"L5.L1", "L5.L2", "L5.L3", "L5.K12", "L5.K13", "L5.K23", "W4.n1", "W4.n2", "W4.n3"})
    EXPECT_GE(TZ4_GetValue(h, name, &value), 0) << name << ": " << TZ4_GetError();
  EXPECT_GE(TZ4_GetValue(h, "W4.n1", &value), 0);
  EXPECT_EQ(value, 10.0);
  EXPECT_GE(TZ4_GetValue(h, "W4.n2", &value), 0);
  EXPECT_EQ(value, 5.0);
  EXPECT_LT(TZ4_GetValue(h, "W4.n4", &value), 0);
  TZ4_Close(h);
}

}  // namespace
