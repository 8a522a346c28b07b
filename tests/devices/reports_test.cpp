// What each family reports about itself from its file element, before any
// run: the initial-condition text that TZ4_SaveIC writes, the nodes and row
// that a trace reads, and which pins stay logic pins. One row per case.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "components/cmp.h"
#include "devices/registry.h"
#include "xml/xml_node.h"

namespace tz4 {
namespace {

std::unique_ptr<CCmp> LoadElement(const std::string& text) {
  CXmlNode node("Cmp");
  EXPECT_EQ(node.LoadFromText(text), 0) << text;
  std::unique_ptr<CCmp> cmp = ComponentTypes().Create(node.GetAttribute("type", ""));
  EXPECT_NE(cmp, nullptr) << text;
  if (cmp != nullptr) {
    EXPECT_TRUE(cmp->Serialize(node, false)) << text;
  }
  return cmp;
}

bool SelectModel(CCmp& cmp, const std::string& model) {
  for (int i = 0; cmp.models[i].name != nullptr; i++)
    if (model == cmp.models[i].name) return (cmp.modelIndex = i), true;
  return false;
}

std::string Element(const char* type, const char* model, const char* extra = "") {
  return std::string("<Cmp type=\"") + type +
         "\" name=\"U1\" node0=\"1\" node1=\"2\" node2=\"3\" "
         "node3=\"4\" node4=\"5\" model=\"" +
         model + "\" " + extra + " />";
}

TEST(FamilyReports, InitialConditionTexts) {
  const struct {
    std::string element;
    const char* text;
  } cases[] = {
      {Element("O_O", "Linear"), "U1.IC=\"\""},
      {Element("O_O", "Linear", "ic=\"2.5\""), "U1.IC=2.5"},
      {Element("O_O", "Comparator"), "U1.IC=low"},
      {Element("O_O", "PWL"), ""},
      {Element("T_TNPN", "Transistor", "ic=\"1e-3\""), "U1.IC=1e-3;U1.ICBE=off;U1.ICBC=off"},
      {Element("T_TNPN", "Switch"), "U1.IC=off"},
      {Element("T_TNPN", "SubCir"), ""},
      {Element("T_NFET", "FET-D", "fetd_ic=\"4\" fet_ic=\"2\""), "U1.IC=Diode"},
      {Element("T_NFET", "FET", "fetd_ic=\"4\" fet_ic=\"2\""), "U1.IC=Plus"},
      {Element("F_1", "Int", "func_ic=\"1.5\""), "U1.IC=1.5"},
      {Element("Y_FUNCTION", "Function"), "U1.IC=low"},
      {Element("X_SH", "SH", "ic=\"0.5\""), "U1.IC=500e-3"},
      {Element("Y_FF", "Delay", "ic=\"1\""), "U1.IC=high"},
      {Element("Y_LG", "List", "d=\"0.25\""), "U1.Delay=250e-3"},
      {Element("Y_LG", "V"), ""},
      {Element("S_VCS", "Switch", "ic=\"1\""), "U1.IC=on"},
      {Element("S_VCS", "Steps"), "U1.IC=off"},
      {Element("S_VCS", "Pulse"), ""},
      {Element("S_S", "Step", "d=\"0.0015\""), "U1.Delay=1.5e-3"},
      {Element("S_S", "Switch"), ""},
      {Element("V_VCVS", "Function"), "U1.IC=0"},
  };
  for (const auto& c : cases) {
    auto cmp = LoadElement(c.element);
    ASSERT_NE(cmp, nullptr);
    std::string text;
    EXPECT_EQ(cmp->GetICText(text), c.text) << c.element;
  }
}

TEST(FamilyReports, TraceNodesAndRows) {
  const struct {
    std::string element;
    int kind;
    bool result;
    int nodeA, nodeB, row;  // -9: left as it came
  } cases[] = {
      {Element("O_OD", "Linear"), 2, true, 0, 2, 11},
      {Element("O_OD", "SubCir"), 0, true, -9, -9, -9},
      {Element("O_OD", "SubCir"), 1, false, -9, -9, -9},
      {Element("T_TNPN", "Linear"), 1, true, 2, 3, 11},
      {Element("T_TNPN", "Linear"), 2, false, -9, -9, -9},
      {Element("T_TNPN", "Transistor"), 1, false, -9, -9, -9},
      {Element("T_PFET", "FET"), 2, true, -9, -9, -9},
      {Element("F_2", "Mul"), 2, true, 0, 3, 11},
      {Element("F_2", "SubCir"), 1, false, -9, -9, -9},
      {Element("A_A", "Amperemeter"), 1, true, 0, 2, 11},
      {Element("V_VM", "Voltmeter"), 0, true, 2, 1, 0},
      {Element("W_WM", "Wattmeter"), 1, true, 1, 2, 11},
      {Element("X_DC", "Coupler"), 1, true, 0, 2, 11},
      {Element("X_SH", "SH"), 1, true, 0, 2, 11},
      {Element("X_SH", "SubCir"), 2, false, -9, -9, -9},
      {Element("X_B2", "SubCir"), 1, false, -1, -1, 0},
      {Element("Y_1", "Logic"), 0, true, 0, 2, 0},
      {Element("Y_FF", "Logic"), 0, true, 0, 3, 0},
      {Element("Y_LG", "Step"), 2, true, 0, 1, 0},
      {Element("S_CCS", "Switch"), 1, true, 1, 2, 11},
      {Element("S_CCS", "SubCir"), 6, true, -9, -9, -9},
      {Element("S_CCS", "SubCir"), 2, false, -9, -9, -9},
      {Element("S_S3", "List"), 2, true, -9, -9, -9},
  };
  for (const auto& c : cases) {
    auto cmp = LoadElement(c.element);
    ASSERT_NE(cmp, nullptr);
    cmp->firstRow = 11;
    int a = -9, b = -9, row = -9;
    double value = 3;
    EXPECT_EQ(cmp->GetTraceInfo(c.kind, a, b, row, value), c.result) << c.element << c.kind;
    if (c.nodeA != -9) {
      EXPECT_EQ(a, c.nodeA) << c.element;
    }
    if (c.nodeB != -9) {
      EXPECT_EQ(b, c.nodeB) << c.element;
    }
    if (c.row != -9) {
      EXPECT_EQ(row, c.row) << c.element;
    }
  }
}

// Logic pins stay out of the matrix: they are numbered behind it.
TEST(FamilyReports, LogicPins) {
  const struct {
    const char* tag;
    const char* model;
    const char* matrixPins;  // one digit per pin
  } cases[] = {
      {"Y_1", "Logic", "000"},    {"Y_FF", "Logic", "0000"},    {"Y_LG", "Step", "0"},
      {"S_LCS", "Switch", "110"}, {"S_LCS3", "Switch", "1111"}, {"S_VCS", "Switch", "1111"},
      {"X_SH", "SH", "110"},      {"X_SH", "SubCir", "111"},
  };
  for (const auto& c : cases) {
    auto cmp = ComponentTypes().Create(c.tag);
    ASSERT_NE(cmp, nullptr);
    ASSERT_TRUE(SelectModel(*cmp, c.model)) << c.tag << c.model;
    for (int pin = 0; c.matrixPins[pin] != 0; pin++)
      EXPECT_EQ(cmp->IsMatrixPin(pin), c.matrixPins[pin] - '0') << c.tag << " pin " << pin;
  }
}

}  // namespace
}  // namespace tz4
