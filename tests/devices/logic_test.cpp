// Logic elements and the logic generator: type tables, parameters, the file
// element and the descriptive overrides.
#include <gtest/gtest.h>

#include <string>

#include "device_b_support.h"
#include "devices/logic.h"
#include "devices/logic_generator.h"

namespace tz4 {
namespace {

using devtest::ExpectParams;
using devtest::ExpectType;
using devtest::Load;
using devtest::SelectModel;
using devtest::Store;

const std::vector<devtest::ModelRow> kLogicModels = {
    {"Logic", 41, 0, 1}, {"Delay", 23, 0, 1}, {"Delay2", 58, 0, 1}};

TEST(LogicTypes, Tables) {
  ExpectType("Y_1", 2, "Logic-1", kLogicModels);
  ExpectType("Y_2", 3, "Logic-2", kLogicModels);
  ExpectType("Y_3", 4, "Logic-3", kLogicModels);
  ExpectType("Y_CUSTOM", 0, "Custom logic", kLogicModels);
  ExpectType("Y_FF", 4, "D flip-flop", kLogicModels);
  ExpectType("Y_RS", 6, "SR trigger", kLogicModels);
  ExpectType("Y_JK", 7, "JK trigger", kLogicModels);
  ExpectType("Y_ST", 2, "Schmitt trigger", kLogicModels);
  ExpectType("Y_LG", 1, "Logic generator",
             {{"V", 13, 0, 1}, {"Pulse", 2, 0, 1}, {"Step", 3, 0, 1}, {"List", 8, 0, 1}, {"File", 6, 0, 1}});
}

TEST(LogicParams, GatesAndFlipFlop) {
  for (const char* tag : {"Y_1", "Y_2", "Y_3", "Y_CUSTOM", "Y_FF"}) {
    auto cmp = devtest::CreateAs<CElemLog>(tag);
    ASSERT_NE(cmp, nullptr);
    ExpectParams(*cmp, "Logic", {{"IC", PK_HIGH_LOW}});
    ExpectParams(*cmp, "Delay", {{"Delay", PK_VALUE}, {"IC", PK_HIGH_LOW}});
    ExpectParams(*cmp, "Delay2", {{"Up", PK_VALUE}, {"Down", PK_VALUE}, {"IC", PK_HIGH_LOW}});
  }
}

TEST(LogicParams, TriggersAndSchmitt) {
  for (const char* tag : {"Y_RS", "Y_JK"}) {
    auto cmp = devtest::CreateAs<CElemLog>(tag);
    ASSERT_NE(cmp, nullptr);
    ExpectParams(*cmp, "Logic", {{"Dominance", PK_ENUM}, {"IC", PK_HIGH_LOW}});
    ExpectParams(*cmp, "Delay", {{"Delay", PK_VALUE}, {"Dominance", PK_ENUM}, {"IC", PK_HIGH_LOW}});
    ExpectParams(*cmp, "Delay2",
                 {{"Up", PK_VALUE}, {"Down", PK_VALUE}, {"Dominance", PK_ENUM}, {"IC", PK_HIGH_LOW}});
  }
  auto st = devtest::CreateAs<CElemLog>("Y_ST");
  ASSERT_NE(st, nullptr);
  ExpectParams(*st, "Logic", {{"Hysteresis", PK_VALUE}, {"IC", PK_HIGH_LOW}});
  ExpectParams(*st, "Delay", {{"Hysteresis", PK_VALUE}, {"Delay", PK_VALUE}, {"IC", PK_HIGH_LOW}});
  ExpectParams(*st, "Delay2",
               {{"Hysteresis", PK_VALUE}, {"Up", PK_VALUE}, {"Down", PK_VALUE}, {"IC", PK_HIGH_LOW}});
}

TEST(LogicParams, UpIsTheDelayMember) {
  auto cmp = devtest::CreateAs<CElemLog>("Y_JK");
  CParam p;
  ASSERT_TRUE(SelectModel(*cmp, "Delay2"));
  ASSERT_TRUE(cmp->FindParam("up", p));
  EXPECT_EQ(std::get<CFormula*>(p.Value), &cmp->Delay);
  ASSERT_TRUE(cmp->FindParam("dominance", p));
  EXPECT_EQ(std::get<CEnumValue*>(p.Value), &cmp->Dominance);
  EXPECT_STREQ(cmp->Dominance.Names[2], "Reset");
  EXPECT_EQ(cmp->Dominance.Names[3], nullptr);
}

TEST(LogicParams, GeneratorTables) {
  auto cmp = devtest::CreateAs<CElemLG>("Y_LG");
  ASSERT_NE(cmp, nullptr);
  ExpectParams(*cmp, "V", {{"Out", PK_HIGH_LOW}});
  ExpectParams(*cmp, "Pulse",
               {{"Period", PK_VALUE}, {"Width", PK_VALUE}, {"Delay", PK_VALUE}, {"Active", PK_HIGH_LOW}});
  ExpectParams(*cmp, "Step", {{"Delay", PK_VALUE}, {"Active", PK_HIGH_LOW}});
  ExpectParams(*cmp, "List", {{"List", PK_LOGIC_LIST}, {"Cycle", PK_YES_NO}, {"Delay", PK_VALUE}});
  ExpectParams(*cmp, "File", {{"File", PK_DATA_FILE}, {"Cycle", PK_YES_NO}, {"Delay", PK_VALUE}});
  CParam p;
  ASSERT_TRUE(cmp->FindParam("cycle", p));
  EXPECT_EQ(std::get<int32_t*>(p.Value), &cmp->Signal.Cycle);
  ASSERT_TRUE(cmp->FindParam("file", p));
  EXPECT_EQ(std::get<std::string*>(p.Value), &cmp->Signal.FileName);
  ASSERT_TRUE(SelectModel(*cmp, "V"));
  ASSERT_TRUE(cmp->FindParam("out", p));
  EXPECT_EQ(std::get<int32_t*>(p.Value), &cmp->Active);
}

TEST(LogicFile, DefaultsAndTypeSpecificAttributes) {
  auto gate = Load<CElemLog>("Y_2", "<Cmp type=\"Y_2\" name=\"G1\" model=\"Logic\" />");
  ASSERT_NE(gate, nullptr);
  EXPECT_EQ(gate->Ic, 0);
  EXPECT_EQ(gate->Delay.Value, 0.0);
  EXPECT_EQ(gate->Down.Value, 0.0);
  EXPECT_EQ(gate->Hysteresis.Value, 0.1);
  EXPECT_EQ(gate->Dominance.Index, 0);
  EXPECT_EQ(gate->TimeQ, -999.0);
  EXPECT_EQ(gate->LastClock, -1);
  // Hysteresis belongs to the Schmitt trigger, dominance to the triggers.
  EXPECT_EQ(Store(*gate),
            "<Cmp type=\"Y_2\" id=\"0\" name=\"G1\" file_name=\"\" view=\"0\" node0=\"0\" node1=\"0\" "
            "node2=\"0\" model=\"Logic\" ic=\"0\" delay=\"0\" down=\"0\" />");
  auto st = Load<CElemLog>("Y_ST", "<Cmp type=\"Y_ST\" name=\"G2\" model=\"Logic\" />");
  EXPECT_EQ(Store(*st),
            "<Cmp type=\"Y_ST\" id=\"0\" name=\"G2\" file_name=\"\" view=\"0\" node0=\"0\" node1=\"0\" "
            "model=\"Logic\" ic=\"0\" delay=\"0\" down=\"0\" hyst=\"100e-3\" />");
}

TEST(LogicFile, CircuitRoundTrip) {
  devtest::ExpectCircuitRoundTrip(
      "<Cmps>"
      "<Cmp type=\"Y_JK\" id=\"6\" name=\"FF1\" file_name=\"\" view=\"6\" node0=\"1\" node1=\"2\" "
      "node2=\"3\" node3=\"4\" node4=\"5\" node5=\"6\" node6=\"7\" model=\"Delay2\" ic=\"1\" "
      "delay=\"10e-9\" down_str=\"%3dTd\" down=\"20e-9\" dominance=\"2\" />"
      "<Cmp type=\"Y_LG\" id=\"3\" name=\"LG2\" file_name=\"\" view=\"0\" node0=\"2\" model=\"Pulse\" "
      "a=\"0\" p_str=\"%3dT\" p=\"1e-3\" w=\"250e-6\" d=\"inf\" list=\"0%2c1%2c1e-3%2c0\" "
      "file=\"C%3a%5cdata%5cbits.txt\" c=\"1\" />"
      "<Cmp type=\"Y_ST\" id=\"2\" name=\"ST1\" file_name=\"\" view=\"1\" node0=\"1\" node1=\"2\" "
      "model=\"Delay\" ic=\"0\" delay=\"1e-6\" down=\"0\" hyst=\"500e-3\" />"
      "<Cmp type=\"Y_2\" id=\"1\" name=\"Y1\" file_name=\"\" view=\"5\" node0=\"3\" node1=\"4\" "
      "node2=\"1\" model=\"Logic\" ic=\"0\" delay=\"0\" down=\"0\" />"
      "</Cmps>");
}

TEST(LogicFile, CustomLogicTakesItsPinsFromTheElement) {
  auto cmp = Load<CElemLog>(
      "Y_CUSTOM",
      "<Cmp type=\"Y_CUSTOM\" name=\"C1\" node0=\"1\" node1=\"2\" node2=\"3\" node3=\"4\" node4=\"5\" "
      "model=\"Logic\" />");
  EXPECT_EQ(cmp->pinCount, 5);
  EXPECT_EQ(cmp->OutputPin(), 4);
  int a = -1, b = 0, row = -1;
  double value = 1;
  EXPECT_TRUE(cmp->GetTraceInfo(0, a, b, row, value));
  EXPECT_EQ(b, 5);
}

TEST(LogicFile, GeneratorKeepsItsSignalOnTheElement) {
  auto cmp = Load<CElemLG>("Y_LG", "<Cmp type=\"Y_LG\" name=\"LG1\" model=\"V\" />");
  ASSERT_NE(cmp, nullptr);
  EXPECT_EQ(cmp->Active, 1);
  EXPECT_EQ(Store(*cmp),
            "<Cmp type=\"Y_LG\" id=\"0\" name=\"LG1\" file_name=\"\" view=\"0\" node0=\"0\" model=\"V\" "
            "a=\"1\" p=\"1\" w=\"500e-3\" d=\"0\" list=\"0%2c0\" file=\"\" c=\"0\" />");
}

TEST(LogicBehaviour, EveryLogicPinStaysOutOfTheMatrix) {
  for (const char* tag : {"Y_1", "Y_FF", "Y_JK", "Y_ST", "Y_LG"}) {
    auto cmp = devtest::Create(tag);
    for (int pin = 0; pin < cmp->pinCount; pin++) EXPECT_EQ(cmp->IsMatrixPin(pin), 0) << tag << pin;
  }
}

TEST(LogicBehaviour, TraceReadsTheOutputPin) {
  struct Case {
    const char* tag;
    int outputNode;
  };
  for (const Case& c : {Case{"Y_1", 2}, Case{"Y_3", 4}, Case{"Y_FF", 3}, Case{"Y_RS", 3}, Case{"Y_JK", 3},
                        Case{"Y_ST", 2}}) {
    auto cmp = devtest::Create(c.tag);
    for (int pin = 0; pin < cmp->pinCount; pin++) cmp->pins[pin] = pin + 1;
    ASSERT_TRUE(SelectModel(*cmp, "Logic"));
    cmp->firstRow = 5;
    int a = -1, b = 0, row = -1;
    double value = 1;
    EXPECT_TRUE(cmp->GetTraceInfo(0, a, b, row, value)) << c.tag;
    EXPECT_EQ(a, 0) << c.tag;
    EXPECT_EQ(b, c.outputNode) << c.tag;
    EXPECT_EQ(row, 0) << c.tag;
  }
  auto lg = Load<CElemLG>("Y_LG", "<Cmp type=\"Y_LG\" name=\"LG1\" node0=\"7\" model=\"Step\" />");
  int a = -1, b = 0, row = -1;
  double value = 1;
  EXPECT_TRUE(lg->GetTraceInfo(2, a, b, row, value));
  EXPECT_EQ(a, 0);
  EXPECT_EQ(b, 7);
  EXPECT_EQ(row, 0);
}

TEST(LogicBehaviour, InitialConditionText) {
  auto gate = Load<CElemLog>("Y_FF", "<Cmp type=\"Y_FF\" name=\"D1\" model=\"Delay\" ic=\"1\" />");
  std::string text;
  EXPECT_EQ(gate->GetICText(text), "D1.IC=high");
  gate->Ic = 0;
  EXPECT_EQ(gate->GetICText(text), "D1.IC=low");

  auto lg = Load<CElemLG>("Y_LG", "<Cmp type=\"Y_LG\" name=\"LG1\" model=\"List\" d=\"0.25\" />");
  EXPECT_EQ(lg->GetICText(text), "LG1.Delay=250e-3");
  ASSERT_TRUE(SelectModel(*lg, "V"));
  EXPECT_EQ(lg->GetICText(text), "");
}

}  // namespace
}  // namespace tz4
