#include "devices/registry.h"
#include "devices/delay_line.h"

#include <gtest/gtest.h>

#include <cmath>

#include "devc_archive.h"

namespace tz4 {
namespace {

using devc_test::LoadCmps;
using devc_test::LoadOne;
using devc_test::StoreCmps;

// ------------------------------------------------------------ CDelay store

TEST(DelayStore, EmptyStoreReadsZero) {
  CDelay store;
  double a = 7, b = 7;
  store.Read(1.0, a, b);
  EXPECT_EQ(a, 0.0);
  EXPECT_EQ(b, 0.0);
}

TEST(DelayStore, InterpolatesAndHoldsBothEnds) {
  CDelay store;
  ASSERT_TRUE(store.Append(1.0, 10.0, -1.0));
  ASSERT_TRUE(store.Append(2.0, 20.0, -2.0));
  ASSERT_TRUE(store.Append(4.0, 0.0, 2.0));
  double a = 0, b = 0;
  store.Read(0.5, a, b);  // before the oldest: the oldest
  EXPECT_EQ(a, 10.0);
  EXPECT_EQ(b, -1.0);
  store.Read(1.5, a, b);
  EXPECT_DOUBLE_EQ(a, 15.0);
  EXPECT_DOUBLE_EQ(b, -1.5);
  store.Read(2.0, a, b);  // exactly on a record
  EXPECT_DOUBLE_EQ(a, 20.0);
  EXPECT_DOUBLE_EQ(b, -2.0);
  store.Read(3.0, a, b);
  EXPECT_DOUBLE_EQ(a, 10.0);
  EXPECT_DOUBLE_EQ(b, 0.0);
  store.Read(9.0, a, b);  // past the newest: the newest
  EXPECT_EQ(a, 0.0);
  EXPECT_EQ(b, 2.0);
  EXPECT_EQ(store.ReadIndex, 2);
}

TEST(DelayStore, ReadingAcrossBlocksLeavesNoGapAndReleasesBlocks) {
  CDelay store;
  const int n = 3 * CDelay::kBlockRecords + 100;
  for (int i = 0; i < n; i++) ASSERT_TRUE(store.Append(i, 2.0 * i, -i));
  EXPECT_EQ(store.Count, n);
  EXPECT_EQ(store.Blocks.size(), 4u);
  double a = 0, b = 0;
  for (int i = 0; i + 1 < n; i += 7) {
    const double t = i + 0.25;
    store.Read(t, a, b);
    ASSERT_DOUBLE_EQ(a, 2.0 * t) << t;
    ASSERT_DOUBLE_EQ(b, -t) << t;
  }
  // Blocks behind the read position are gone; one is kept as the spare.
  EXPECT_LT(store.Count, n);
  EXPECT_EQ(store.Blocks.size(), 1u);
  EXPECT_NE(store.Spare, nullptr);
  store.Read(n - 1.0, a, b);
  EXPECT_DOUBLE_EQ(a, 2.0 * (n - 1));

  // New records continue behind the kept ones, reusing the spare block.
  const int32_t kept = store.Count;
  for (int i = n; i < n + CDelay::kBlockRecords; i++) ASSERT_TRUE(store.Append(i, 2.0 * i, -i));
  EXPECT_EQ(store.Count, kept + CDelay::kBlockRecords);
  EXPECT_EQ(store.Spare, nullptr);
  store.Read(n + 10.5, a, b);
  EXPECT_DOUBLE_EQ(a, 2.0 * (n + 10.5));
}

TEST(DelayStore, ClearStartsAfresh) {
  CDelay store;
  for (int i = 0; i < 10; i++) ASSERT_TRUE(store.Append(i, i, i));
  store.Clear();
  EXPECT_EQ(store.Count, 0);
  EXPECT_EQ(store.ReadIndex, 0);
  EXPECT_TRUE(store.Blocks.empty());
  double a = 1, b = 1;
  store.Read(3.0, a, b);
  EXPECT_EQ(a, 0.0);
  ASSERT_TRUE(store.Append(5.0, 1.0, 2.0));
  store.Read(0.0, a, b);
  EXPECT_EQ(a, 1.0);
  EXPECT_EQ(b, 2.0);
}

// ------------------------------------------------------------- archive

const char* const kDelayCircuit =
    "<Cmps>"
    "<Cmp type=\"X_Delay\" id=\"1\" name=\"D1\" file_name=\"\" view=\"0\" node0=\"1\" node1=\"2\" "
    "model=\"Delay\" t=\"1e-3\" ic=\"2.5\" />"
    "<Cmp type=\"X_Line\" id=\"2\" name=\"T1\" file_name=\"\" view=\"0\" node0=\"1\" node1=\"0\" "
    "node2=\"3\" node3=\"0\" model=\"Lossy\" t_str=\"%3dlen%2fv\" t=\"2e-6\" z=\"75\" r=\"100e-3\" "
    "g=\"0\" rf=\"10\" gf=\"inf\" vic=\"\" iic=\"1e-3\" />"
    "<Cmp type=\"X_Line\" id=\"3\" name=\"T2\" file_name=\"\" view=\"0\" node0=\"3\" node1=\"0\" "
    "node2=\"4\" node3=\"0\" model=\"Line\" t=\"1e-6\" z=\"50\" r=\"0\" g=\"0\" rf=\"1\" gf=\"2\" "
    "vic=\"5\" iic=\"\" />"
    "</Cmps>";

TEST(DelayLineArchive, CircuitLoadsAndStoresUnchanged) {
  devc_test::CmpList list = LoadCmps(kDelayCircuit);
  ASSERT_EQ(list.size(), 3u);
  EXPECT_EQ(StoreCmps(list), kDelayCircuit);

  auto& delay = static_cast<CElemDelay&>(*list[0]);
  EXPECT_DOUBLE_EQ(delay.T0.Value, 1e-3);
  EXPECT_EQ(delay.IcText, "2.5");

  auto& lossy = static_cast<CElemLine&>(*list[1]);
  EXPECT_EQ(lossy.ModelId(), MODEL_X_LOSSY);
  EXPECT_EQ(lossy.T0.Text, "=len/v");
  EXPECT_DOUBLE_EQ(lossy.Z0.Value, 75.0);
  EXPECT_DOUBLE_EQ(lossy.R.Value, 0.1);
  EXPECT_DOUBLE_EQ(lossy.Fr.Value, 10.0);
  EXPECT_TRUE(std::isinf(lossy.Fg.Value));
  EXPECT_EQ(lossy.IIC, "1e-3");
}

TEST(DelayLineArchive, AbsentAttributesKeepTheDefaults) {
  auto delay = LoadOne("<Cmp type=\"X_Delay\" name=\"D1\" node0=\"1\" node1=\"2\" model=\"Delay\" />");
  ASSERT_NE(delay, nullptr);
  EXPECT_DOUBLE_EQ(static_cast<CElemDelay&>(*delay).T0.Value, 0.0);
  EXPECT_TRUE(static_cast<CElemDelay&>(*delay).IcText.empty());

  auto line = LoadOne("<Cmp type=\"X_Line\" name=\"T1\" node0=\"1\" node1=\"0\" node2=\"2\" node3=\"0\" "
                      "model=\"Line\" />");
  ASSERT_NE(line, nullptr);
  auto& l = static_cast<CElemLine&>(*line);
  EXPECT_DOUBLE_EQ(l.T0.Value, 1e-06);
  EXPECT_DOUBLE_EQ(l.Z0.Value, 50.0);
  EXPECT_DOUBLE_EQ(l.R.Value, 0.0);
  EXPECT_DOUBLE_EQ(l.G.Value, 0.0);
  EXPECT_DOUBLE_EQ(l.Fr.Value, 1.0);
  EXPECT_TRUE(std::isinf(l.Fg.Value) && l.Fg.Value > 0);
  EXPECT_TRUE(l.VIC.empty());
  EXPECT_TRUE(l.IIC.empty());
}

TEST(DelayLineParams, EveryParameterIsReachableByName) {
  int seen = 0;
  for (const char* tag : {"X_Delay", "X_Line"}) {
    auto cmp = ComponentTypes().Create(tag);
    ASSERT_NE(cmp, nullptr) << tag;
    seen += devc_test::ExpectParamsReachable(*cmp);
  }
  EXPECT_EQ(seen, 2 + 4 + 8);

  auto line = ComponentTypes().Create("X_Line");
  ASSERT_TRUE(devc_test::SelectModel(*line, "Lossy"));
  EXPECT_EQ(devc_test::ParamNames(*line),
            (std::vector<std::string>{"t0", "z0", "r", "G", "fr", "fG", "VIC", "IIC"}));
  CParam vic;
  ASSERT_TRUE(line->FindParam("vic", vic));
  EXPECT_EQ(vic.Kind, PK_IC);
  EXPECT_EQ(line->GetExtraRows(), 2);
}

TEST(DelayLineInfo, InitialConditionTextAndTrace) {
  auto delay = LoadOne("<Cmp type=\"X_Delay\" name=\"D1\" node0=\"1\" node1=\"2\" model=\"Delay\" />");
  ASSERT_NE(delay, nullptr);
  std::string text;
  EXPECT_EQ(delay->GetICText(text), "D1.IC=\"\"");
  static_cast<CElemDelay&>(*delay).IcText = "3";
  EXPECT_EQ(delay->GetICText(text), "D1.IC=3");

  delay->firstRow = 4;
  int a = -5, b = -5, row = -5;
  double value = 1;
  EXPECT_TRUE(delay->GetTraceInfo(1, a, b, row, value));
  EXPECT_EQ(a, 0);
  EXPECT_EQ(b, 2);
  EXPECT_EQ(row, 4);
}

}  // namespace
}  // namespace tz4
