// Controlled and time-steered switches: type tables, parameters, the file
// element, and the descriptive overrides.
#include <gtest/gtest.h>

#include <string>

#include "base/last_error.h"
#include "device_b_support.h"
#include "devices/switch.h"

namespace tz4 {
namespace {

using devtest::ExpectParams;
using devtest::ExpectType;
using devtest::Load;
using devtest::SelectModel;
using devtest::Store;

TEST(SwitchTypes, ControlledSwitchTables) {
  ExpectType("S_VCS", 4, "Voltage controlled\nswitch",
             {{"Switch", 14, 1, 7}, {"Pulse", 2, 1, 7}, {"Steps", 3, 1, 7}, {"SubCir", 7, 0, 5}});
  ExpectType("S_CCS", 4, "Current controlled\nswitch",
             {{"Switch", 14, 2, 7}, {"Pulse", 2, 2, 7}, {"Steps", 3, 2, 7}, {"SubCir", 7, 0, 5}});
  ExpectType("S_LCS", 3, "Logic controlled\nswitch",
             {{"Switch", 14, 1, 7}, {"Pulse", 2, 1, 7}, {"Steps", 3, 1, 7}, {"SubCir", 7, 0, 5}});
  ExpectType("S_VCS3", 5, "SPDT voltage\ncontrolled switch",
             {{"Switch", 14, 2, 0}, {"Pulse", 2, 2, 0}, {"Steps", 3, 2, 0}, {"SubCir", 7, 0, 4}});
  ExpectType("S_CCS3", 5, "SPDT current\ncontrolled switch",
             {{"Switch", 14, 3, 0}, {"Pulse", 2, 3, 0}, {"Steps", 3, 3, 0}, {"SubCir", 7, 0, 4}});
  ExpectType("S_LCS3", 4, "SPDT logic\ncontrolled switch",
             {{"Switch", 14, 2, 0}, {"Pulse", 2, 2, 0}, {"Steps", 3, 2, 0}, {"SubCir", 7, 0, 4}});
}

TEST(SwitchTypes, TimedSwitchTables) {
  ExpectType("S_S", 2, "Switch",
             {{"Switch", 14, 1, 7},
              {"Pulse", 2, 1, 7},
              {"Step", 3, 1, 7},
              {"List", 8, 1, 7},
              {"File", 6, 1, 7},
              {"SubCir", 7, 0, 5}});
  ExpectType("S_S3", 3, "SPDT switch",
             {{"Switch", 14, 2, 0},
              {"Pulse", 2, 2, 0},
              {"Step", 3, 2, 0},
              {"List", 8, 2, 0},
              {"File", 6, 2, 0},
              {"SubCir", 7, 0, 4}});
}

TEST(SwitchParams, VoltageAndCurrentControlledTables) {
  for (const char* tag : {"S_VCS", "S_CCS", "S_VCS3", "S_CCS3"}) {
    auto cmp = devtest::CreateAs<CElemCS>(tag);
    ASSERT_NE(cmp, nullptr);
    ExpectParams(*cmp, "Switch",
                 {{"Threshold", PK_VALUE}, {"Hysteresis", PK_VALUE}, {"Active", PK_ON_OFF}, {"IC", PK_ON_OFF}});
    ExpectParams(*cmp, "Pulse", {{"Width", PK_VALUE}, {"Threshold", PK_VALUE}, {"Active", PK_ON_OFF}});
    ExpectParams(*cmp, "Steps",
                 {{"Threshold", PK_VALUE},
                  {"Hysteresis", PK_VALUE},
                  {"Roff", PK_VALUE},
                  {"Ron", PK_VALUE},
                  {"Slope", PK_ENUM},
                  {"Ramp", PK_VALUE},
                  {"Steps", PK_VALUE},
                  {"IC", PK_ON_OFF}});
    ExpectParams(*cmp, "SubCir", {});
  }
}

TEST(SwitchParams, LogicControlledTablesHaveNoThreshold) {
  for (const char* tag : {"S_LCS", "S_LCS3"}) {
    auto cmp = devtest::CreateAs<CElemCS>(tag);
    ASSERT_NE(cmp, nullptr);
    ExpectParams(*cmp, "Switch", {{"Active", PK_ON_OFF}, {"IC", PK_ON_OFF}});
    ExpectParams(*cmp, "Pulse", {{"Width", PK_VALUE}, {"Active", PK_ON_OFF}});
    ExpectParams(*cmp, "Steps",
                 {{"Roff", PK_VALUE},
                  {"Ron", PK_VALUE},
                  {"Slope", PK_ENUM},
                  {"Ramp", PK_VALUE},
                  {"Steps", PK_VALUE},
                  {"IC", PK_ON_OFF}});
  }
}

TEST(SwitchParams, TimedSwitchTables) {
  for (const char* tag : {"S_S", "S_S3"}) {
    auto cmp = devtest::CreateAs<CElemS>(tag);
    ASSERT_NE(cmp, nullptr);
    ExpectParams(*cmp, "Switch", {{"Switch", PK_ON_OFF}});
    ExpectParams(*cmp, "Pulse",
                 {{"Period", PK_VALUE}, {"Width", PK_VALUE}, {"Delay", PK_VALUE}, {"Active", PK_ON_OFF}});
    ExpectParams(*cmp, "Step", {{"Delay", PK_VALUE}, {"Active", PK_ON_OFF}});
    ExpectParams(*cmp, "List", {{"List", PK_SWITCH_LIST}, {"Cycle", PK_YES_NO}, {"Delay", PK_VALUE}});
    ExpectParams(*cmp, "File", {{"File", PK_DATA_FILE}, {"Cycle", PK_YES_NO}, {"Delay", PK_VALUE}});
  }
}

TEST(SwitchParams, SharedMembersAreBoundWhereTheirNamesSay) {
  auto cs = devtest::CreateAs<CElemCS>("S_VCS");
  ASSERT_TRUE(SelectModel(*cs, "Steps"));
  CParam p;
  ASSERT_TRUE(cs->FindParam("ramp", p));
  EXPECT_EQ(std::get<CFormula*>(p.Value), &cs->Width);  // "Ramp" is the pulse width member
  ASSERT_TRUE(cs->FindParam("slope", p));
  EXPECT_EQ(std::get<CEnumValue*>(p.Value), &cs->Slope);
  EXPECT_STREQ(cs->Slope.Names[2], "Log");
  EXPECT_EQ(cs->Slope.Names[3], nullptr);

  auto s = devtest::CreateAs<CElemS>("S_S");
  ASSERT_TRUE(SelectModel(*s, "Switch"));
  ASSERT_TRUE(s->FindParam("Switch", p));
  EXPECT_EQ(std::get<int32_t*>(p.Value), &s->Active);
  ASSERT_TRUE(SelectModel(*s, "List"));
  ASSERT_TRUE(s->FindParam("List", p));
  EXPECT_EQ(std::get<std::string*>(p.Value), &s->Signal.PwlText);
  ASSERT_TRUE(SelectModel(*s, "Pulse"));
  ASSERT_TRUE(s->FindParam("period", p));
  EXPECT_EQ(std::get<CFormula*>(p.Value), &s->Signal.Period);
}

TEST(SwitchFile, ControlledSwitchDefaultsWhenAttributesAreAbsent) {
  auto cmp = Load<CElemCS>("S_VCS", "<Cmp type=\"S_VCS\" name=\"S1\" model=\"Steps\" />");
  ASSERT_NE(cmp, nullptr);
  EXPECT_EQ(cmp->Active, 1);
  EXPECT_EQ(cmp->Threshold.Value, 5.0);
  EXPECT_EQ(cmp->Hysteresis.Value, 0.0);
  EXPECT_EQ(cmp->IC, 0);
  EXPECT_EQ(cmp->Width.Value, 0.1);
  EXPECT_EQ(cmp->Roff.Value, 1000.0);
  EXPECT_EQ(cmp->Ron.Value, 1.0);
  EXPECT_EQ(cmp->Steps.Value, 10.0);
  EXPECT_EQ(cmp->Slope.Index, 0);
  EXPECT_EQ(Store(*cmp),
            "<Cmp type=\"S_VCS\" id=\"0\" name=\"S1\" file_name=\"\" view=\"0\" node0=\"0\" node1=\"0\" "
            "node2=\"0\" node3=\"0\" model=\"Steps\" a=\"1\" thr=\"5\" hyst=\"0\" ic=\"0\" width=\"100e-3\" "
            "roff=\"1e+3\" ron=\"1\" steps=\"10\" slope=\"0\" />");
}

TEST(SwitchFile, CircuitRoundTrip) {
  // The list model of the timed switch also carries the base's table.
  devtest::ExpectCircuitRoundTrip(
      "<Cmps>"
      "<Cmp type=\"S_LCS\" id=\"1\" name=\"S1\" file_name=\"\" view=\"0\" node0=\"1\" node1=\"2\" "
      "node2=\"3\" model=\"Switch\" a=\"1\" thr=\"5\" hyst=\"0\" ic=\"0\" width=\"100e-3\" roff=\"1e+3\" "
      "ron=\"1\" steps=\"10\" slope=\"0\" />"
      "<Cmp type=\"S_S3\" id=\"9\" name=\"S9\" file_name=\"\" view=\"0\" node0=\"1\" node1=\"0\" "
      "node2=\"2\" model=\"List\" pwl=\"1.0\" pwlf=\"\" pwlm=\"0\" a=\"0\" p=\"2e-3\" w=\"1e-3\" "
      "d_str=\"%3dT0\" d=\"10e-6\" list=\"0+1+1m+0\" file=\"data+file.txt\" c=\"1\" />"
      "<Cmp type=\"S_CCS3\" id=\"4\" name=\"SW+2\" file_name=\"\" view=\"1\" node0=\"1\" node1=\"2\" "
      "node2=\"3\" node3=\"0\" node4=\"-1\" model=\"Pulse\" a=\"0\" thr_str=\"%3dVt*2\" thr=\"2.5\" "
      "hyst=\"200e-3\" ic=\"1\" width=\"1e-6\" roff=\"inf\" ron=\"0\" steps=\"3\" slope=\"2\" />"
      "</Cmps>");
}

TEST(SwitchFile, TimedSwitchKeepsItsSignalOnTheElement) {
  auto cmp = Load<CElemS>("S_S", "<Cmp type=\"S_S\" name=\"S1\" model=\"Pulse\" />");
  ASSERT_NE(cmp, nullptr);
  EXPECT_EQ(cmp->Active, 1);
  EXPECT_EQ(cmp->Signal.Period.Value, 1.0);
  EXPECT_EQ(cmp->Signal.Width.Value, 0.5);
  EXPECT_EQ(cmp->Signal.Delay.Value, 0.0);
  EXPECT_EQ(cmp->Signal.PwlText, "0,0");
  EXPECT_EQ(cmp->Signal.Cycle, 0);
  const std::string stored = Store(*cmp);
  EXPECT_EQ(stored,
            "<Cmp type=\"S_S\" id=\"0\" name=\"S1\" file_name=\"\" view=\"0\" node0=\"0\" node1=\"0\" "
            "model=\"Pulse\" a=\"1\" p=\"1\" w=\"500e-3\" d=\"0\" list=\"0%2c0\" file=\"\" c=\"0\" />");
  EXPECT_EQ(stored.find("Signal"), std::string::npos);
}

TEST(SwitchFile, TimedSwitchTextsAreEncoded) {
  auto cmp = Load<CElemS>(
      "S_S", "<Cmp type=\"S_S\" name=\"S1\" model=\"File\" list=\"0+1+1m+0\" file=\"data+file.txt\" />");
  EXPECT_EQ(cmp->Signal.PwlText, "0 1 1m 0");
  EXPECT_EQ(cmp->Signal.FileName, "data file.txt");
}

TEST(SwitchFile, UnknownModelIsReported) {
  SetLastError("");
  bool ok = true;
  auto cmp = Load<CElemCS>("S_VCS", "<Cmp type=\"S_VCS\" name=\"S3\" model=\"switch\" />", &ok);
  EXPECT_FALSE(ok);
  EXPECT_EQ(LastError(), "Model 'switch' not found for S3");
}

TEST(SwitchBehaviour, OnlyTheSingleLogicSwitchHasALogicControlPin) {
  auto lcs = devtest::CreateAs<CElemCS>("S_LCS");
  EXPECT_EQ(lcs->IsMatrixPin(0), 1);
  EXPECT_EQ(lcs->IsMatrixPin(1), 1);
  EXPECT_EQ(lcs->IsMatrixPin(2), 0);
  auto lcs3 = devtest::CreateAs<CElemCS>("S_LCS3");
  for (int pin = 0; pin < 4; pin++) EXPECT_EQ(lcs3->IsMatrixPin(pin), 1);
  auto vcs = devtest::CreateAs<CElemCS>("S_VCS");
  EXPECT_EQ(vcs->IsMatrixPin(2), 1);
}

TEST(SwitchBehaviour, InitialConditionText) {
  auto cmp = Load<CElemCS>("S_VCS", "<Cmp type=\"S_VCS\" name=\"S1\" model=\"Switch\" ic=\"1\" />");
  cmp->path = "X1";
  std::string text;
  EXPECT_EQ(cmp->GetICText(text), "X1.S1.IC=on");
  cmp->IC = 0;
  ASSERT_TRUE(SelectModel(*cmp, "Steps"));
  EXPECT_EQ(cmp->GetICText(text), "X1.S1.IC=off");
  ASSERT_TRUE(SelectModel(*cmp, "Pulse"));
  EXPECT_EQ(cmp->GetICText(text), "");

  auto timed = Load<CElemS>("S_S", "<Cmp type=\"S_S\" name=\"T1\" model=\"Step\" d=\"0.0015\" />");
  EXPECT_EQ(timed->GetICText(text), "T1.Delay=1.5e-3");
  ASSERT_TRUE(SelectModel(*timed, "Switch"));
  EXPECT_EQ(timed->GetICText(text), "");
}

TEST(SwitchBehaviour, TraceInfoAndSubcircuitKinds) {
  auto cmp = Load<CElemCS>("S_CCS",
                           "<Cmp type=\"S_CCS\" name=\"S1\" node0=\"4\" node1=\"5\" model=\"Switch\" />");
  cmp->firstRow = 9;
  int a = 0, b = 0, row = 0;
  double value = 1;
  EXPECT_TRUE(cmp->GetTraceInfo(1, a, b, row, value));
  EXPECT_EQ(a, 4);
  EXPECT_EQ(b, 5);
  EXPECT_EQ(row, 9);
  EXPECT_EQ(value, 0.0);
  ASSERT_TRUE(SelectModel(*cmp, "SubCir"));
  EXPECT_TRUE(cmp->GetTraceInfo(0, a, b, row, value));
  EXPECT_TRUE(cmp->GetTraceInfo(6, a, b, row, value));
  EXPECT_FALSE(cmp->GetTraceInfo(1, a, b, row, value));
  EXPECT_FALSE(cmp->GetTraceInfo(2, a, b, row, value));

  auto timed = devtest::CreateAs<CElemS>("S_S3");
  ASSERT_TRUE(SelectModel(*timed, "SubCir"));
  EXPECT_FALSE(timed->GetTraceInfo(2, a, b, row, value));
  ASSERT_TRUE(SelectModel(*timed, "List"));
  EXPECT_TRUE(timed->GetTraceInfo(2, a, b, row, value));
}

}  // namespace
}  // namespace tz4
