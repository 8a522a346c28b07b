#include "devices/registry.h"
#include "devices/meter_blocks.h"

#include <gtest/gtest.h>

#include "base/last_error.h"
#include "devc_archive.h"

namespace tz4 {
namespace {

using devc_test::LoadCmps;
using devc_test::LoadOne;
using devc_test::StoreCmps;

// The blocks carry a subcircuit part, or the circuit itself as attachment;
// both belong to the base and must come through untouched.
const char* const kMeterCircuit =
    "<Cmps>"
    "<Cmp type=\"A_A\" id=\"1\" name=\"A1\" file_name=\"\" view=\"0\" node0=\"1\" node1=\"2\" "
    "model=\"Amperemeter\" />"
    "<Cmp type=\"V_VM\" id=\"2\" name=\"V1\" file_name=\"\" view=\"0\" node0=\"0\" node1=\"2\" "
    "model=\"Voltmeter\" />"
    "<Cmp type=\"W_WM\" id=\"3\" name=\"P1\" file_name=\"\" view=\"0\" node0=\"2\" node1=\"0\" "
    "node2=\"3\" model=\"Wattmeter\" />"
    "<Cmp type=\"X_DC\" id=\"4\" name=\"DC1\" file_name=\"\" view=\"0\" node0=\"3\" node1=\"4\" "
    "node2=\"5\" node3=\"6\" model=\"Coupler\" z=\"75\" cf_str=\"%3dc\" cf=\"20\" />"
    "<Cmp type=\"X_SH\" id=\"5\" name=\"SH1\" file_name=\"\" view=\"2\" node0=\"4\" node1=\"7\" "
    "node2=\"8\" model=\"SH\" ic=\"1.25\" />"
    "<Cmp type=\"X_B3\" id=\"6\" name=\"X1\" file_name=\"\" view=\"0\" node0=\"7\" node1=\"0\" "
    "node2=\"9\" model=\"SubCir\"><SubCir file=\"filter.tz4\" label1=\"IN\" label2=\"GND\" "
    "label3=\"OUT\" cmd=\"R1.R%3d2k\" ic=\"\" /></Cmp>"
    "<Cmp type=\"X_B2\" id=\"7\" name=\"X2\" file_name=\"\" view=\"0\" node0=\"9\" node1=\"0\" "
    "model=\"SubCir\"><SubCir file=\"\" label1=\"\" label2=\"\" cmd=\"\" ic=\"\" /><Attachment><TZ4><Doc><Cmps><Cmp type=\"R_R\" name=\"R1\" /></Cmps></Doc></TZ4>"
    "</Attachment></Cmp>"
    "</Cmps>";

TEST(MeterBlocksArchive, CircuitLoadsAndStoresUnchanged) {
  devc_test::CmpList list = LoadCmps(kMeterCircuit);
  ASSERT_EQ(list.size(), 7u);
  EXPECT_EQ(StoreCmps(list), kMeterCircuit);

  auto& dc = static_cast<CElemDC&>(*list[3]);
  EXPECT_DOUBLE_EQ(dc.Z0.Value, 75.0);
  EXPECT_EQ(dc.Cf.Text, "=c");
  EXPECT_DOUBLE_EQ(dc.Cf.Value, 20.0);
  auto& sh = static_cast<CElemSH&>(*list[4]);
  EXPECT_DOUBLE_EQ(sh.Ic.Value, 1.25);
  EXPECT_EQ(sh.view, 2);
  EXPECT_EQ(list[6]->attachment, "<TZ4><Doc><Cmps><Cmp type=\"R_R\" name=\"R1\" /></Cmps></Doc></TZ4>");
}

TEST(MeterBlocksArchive, AbsentAttributesKeepTheDefaults) {
  auto dc = LoadOne("<Cmp type=\"X_DC\" name=\"DC1\" node0=\"1\" node1=\"2\" node2=\"3\" node3=\"4\" "
                    "model=\"Coupler\" />");
  ASSERT_NE(dc, nullptr);
  EXPECT_DOUBLE_EQ(static_cast<CElemDC&>(*dc).Z0.Value, 50.0);
  EXPECT_DOUBLE_EQ(static_cast<CElemDC&>(*dc).Cf.Value, 0.0);
  auto sh = LoadOne("<Cmp type=\"X_SH\" name=\"SH1\" node0=\"1\" node1=\"2\" node2=\"3\" model=\"SH\" />");
  ASSERT_NE(sh, nullptr);
  EXPECT_DOUBLE_EQ(static_cast<CElemSH&>(*sh).Ic.Value, 0.0);
  EXPECT_EQ(sh->GetExtraRows(), 1);
}

TEST(MeterBlocksArchive, CustomBlocksTakeThePinsTheFileLists) {
  auto block = LoadOne("<Cmp type=\"X_TZ4\" name=\"X3\" node0=\"1\" node1=\"2\" node2=\"3\" node3=\"4\" "
                       "node4=\"0\" model=\"SubCir\" />");
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(block->pinCount, 5);
  EXPECT_EQ(block->pins, (std::vector<int32_t>{1, 2, 3, 4, 0}));
  auto custom = LoadOne("<Cmp type=\"X_CUSTOM\" name=\"X4\" node0=\"1\" model=\"SubCir\" />");
  ASSERT_NE(custom, nullptr);
  EXPECT_EQ(custom->pinCount, 1);
}

TEST(MeterBlocksParams, EveryParameterIsReachableByName) {
  int seen = 0;
  for (const char* tag : {"A_A", "V_VM", "W_WM", "X_DC", "X_SH", "X_B2", "X_B3", "X_B4", "X_B6", "X_B8",
                          "X_CUSTOM", "X_TZ4"}) {
    auto cmp = ComponentTypes().Create(tag);
    ASSERT_NE(cmp, nullptr) << tag;
    seen += devc_test::ExpectParamsReachable(*cmp);
  }
  EXPECT_EQ(seen, 2 + 1);
  auto dc = ComponentTypes().Create("X_DC");
  ASSERT_TRUE(devc_test::SelectModel(*dc, "Coupler"));
  EXPECT_EQ(devc_test::ParamNames(*dc), (std::vector<std::string>{"z0", "CF"}));
  EXPECT_EQ(dc->GetExtraRows(), 3);
}

TEST(MeterBlocksInfo, TracesReadTheRightNodesAndRows) {
  struct Case {
    const char* text;
    int nodeA, nodeB, row;
    bool result;
  };
  const Case cases[] = {
      {"<Cmp type=\"A_A\" name=\"A1\" node0=\"1\" node1=\"2\" model=\"Amperemeter\" />", 0, 2, 9, true},
      {"<Cmp type=\"V_VM\" name=\"V1\" node0=\"1\" node1=\"2\" model=\"Voltmeter\" />", 1, 2, 0, true},
      {"<Cmp type=\"W_WM\" name=\"P1\" node0=\"1\" node1=\"2\" node2=\"3\" model=\"Wattmeter\" />", 1, 2, 9,
       true},
      {"<Cmp type=\"X_DC\" name=\"D1\" node0=\"1\" node1=\"2\" node2=\"3\" node3=\"4\" model=\"Coupler\" />",
       0, 2, 9, true},
      {"<Cmp type=\"X_SH\" name=\"S1\" node0=\"1\" node1=\"2\" node2=\"3\" model=\"SH\" />", 0, 2, 9, true},
      {"<Cmp type=\"X_B2\" name=\"X1\" node0=\"1\" node1=\"2\" model=\"SubCir\" />", -1, -1, 0, false},
  };
  for (const Case& c : cases) {
    auto cmp = LoadOne(c.text);
    ASSERT_NE(cmp, nullptr) << c.text;
    cmp->firstRow = 9;
    int a = -9, b = -9, row = -9;
    double value = 3;
    EXPECT_EQ(cmp->GetTraceInfo(1, a, b, row, value), c.result) << c.text;
    EXPECT_EQ(a, c.nodeA) << c.text;
    EXPECT_EQ(b, c.nodeB) << c.text;
    EXPECT_EQ(row, c.row) << c.text;
  }

  // A voltmeter adds no row; a meter is marked as such in its trace mask.
  auto vm = ComponentTypes().Create("V_VM");
  ASSERT_TRUE(devc_test::SelectModel(*vm, "Voltmeter"));
  EXPECT_EQ(vm->GetExtraRows(), 0);
  EXPECT_NE(vm->GetModel()->traceMask & 32, 0);
  EXPECT_NE(vm->GetModel()->traceMask & TRACE_V, 0);
}

TEST(MeterBlocksInfo, SampleHoldClockIsALogicPin) {
  auto sh = LoadOne("<Cmp type=\"X_SH\" name=\"SH1\" node0=\"1\" node1=\"2\" node2=\"3\" model=\"SH\" "
                    "ic=\"0.5\" />");
  ASSERT_NE(sh, nullptr);
  EXPECT_EQ(sh->IsMatrixPin(0), 1);
  EXPECT_EQ(sh->IsMatrixPin(1), 1);
  EXPECT_EQ(sh->IsMatrixPin(2), 0);
  std::string text;
  EXPECT_EQ(sh->GetICText(text), "SH1.IC=500e-3");
  ASSERT_TRUE(devc_test::SelectModel(*sh, "SubCir"));
  EXPECT_EQ(sh->IsMatrixPin(2), 1);
  int a, b, row;
  double value;
  EXPECT_TRUE(sh->GetTraceInfo(6, a, b, row, value));
  EXPECT_FALSE(sh->GetTraceInfo(2, a, b, row, value));
}

TEST(MeterBlocksInfo, OnlyDevicesWithBehaviourAreRefused) {
  auto vm = LoadOne("<Cmp type=\"V_VM\" name=\"V1\" node0=\"1\" node1=\"2\" model=\"Voltmeter\" />");
  auto block = LoadOne("<Cmp type=\"X_B2\" name=\"X1\" node0=\"1\" node1=\"2\" model=\"SubCir\" />");
  auto am = LoadOne("<Cmp type=\"A_A\" name=\"A1\" node0=\"1\" node1=\"2\" model=\"Amperemeter\" />");
  ASSERT_NE(vm, nullptr);
  ASSERT_NE(block, nullptr);
  ASSERT_NE(am, nullptr);
  SetLastError("");
  EXPECT_TRUE(vm->CheckParams());
  EXPECT_TRUE(block->CheckParams());
  EXPECT_EQ(LastError(), "");
  EXPECT_FALSE(am->CheckParams());
  EXPECT_NE(LastError().find("A1 : "), std::string::npos);
}

}  // namespace
}  // namespace tz4
