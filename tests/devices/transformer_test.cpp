#include "devices/registry.h"
#include "devices/transformer.h"

#include <gtest/gtest.h>

#include "devc_archive.h"

namespace tz4 {
namespace {

using devc_test::LoadCmps;
using devc_test::LoadOne;
using devc_test::StoreCmps;
using devc_test::StoreOne;

const char* const kTransformerCircuit =
    "<Cmps>"
    "<Cmp type=\"W_W\" id=\"1\" name=\"W1\" file_name=\"\" view=\"0\" node0=\"1\" node1=\"0\" "
    "node2=\"5\" model=\"Winding\" w=\"20\" w1=\"1\" />"
    "<Cmp type=\"W_T2\" id=\"2\" name=\"T1\" file_name=\"\" view=\"0\" node0=\"1\" node1=\"0\" "
    "node2=\"2\" node3=\"0\" model=\"Transformer\" w=\"2\" w1_str=\"%3dN*2\" w1=\"10\" />"
    "<Cmp type=\"W_T3\" id=\"3\" name=\"T2\" file_name=\"\" view=\"0\" node0=\"1\" node1=\"0\" "
    "node2=\"2\" node3=\"3\" node4=\"4\" model=\"Transformer\" w=\"1\" w1=\"500e-3\" />"
    "</Cmps>";

TEST(TransformerArchive, CircuitLoadsAndStoresUnchanged) {
  devc_test::CmpList list = LoadCmps(kTransformerCircuit);
  ASSERT_EQ(list.size(), 3u);
  EXPECT_EQ(StoreCmps(list), kTransformerCircuit);
  auto& t2 = static_cast<CElemW&>(*list[1]);
  EXPECT_DOUBLE_EQ(t2.N1.Value, 2.0);
  EXPECT_EQ(t2.N2.Text, "=N*2");
  EXPECT_DOUBLE_EQ(t2.N2.Value, 10.0);
  EXPECT_EQ(list[2]->pinCount, 5);
}

TEST(TransformerArchive, AbsentTurnsAreOne) {
  auto t = LoadOne("<Cmp type=\"W_T2\" name=\"T1\" node0=\"1\" node1=\"0\" node2=\"2\" node3=\"0\" "
                   "model=\"Transformer\" />");
  ASSERT_NE(t, nullptr);
  EXPECT_DOUBLE_EQ(static_cast<CElemW&>(*t).N1.Value, 1.0);
  EXPECT_DOUBLE_EQ(static_cast<CElemW&>(*t).N2.Value, 1.0);
}

TEST(TransformerParams, FixedTypesShareTheTurns) {
  int seen = 0;
  for (const char* tag : {"W_W", "W_T2", "W_T3"}) {
    auto cmp = ComponentTypes().Create(tag);
    ASSERT_NE(cmp, nullptr) << tag;
    seen += devc_test::ExpectParamsReachable(*cmp);
  }
  EXPECT_EQ(seen, 1 + 2 + 2);

  auto w = ComponentTypes().Create("W_W");
  auto& winding = static_cast<CElemW&>(*w);
  ASSERT_TRUE(devc_test::SelectModel(winding, "Winding"));
  CParam n;
  ASSERT_TRUE(w->FindParam("N", n));
  EXPECT_EQ(std::get<CFormula*>(n.Value), &winding.N1);
  EXPECT_FALSE(w->FindParam("n2", n));
  EXPECT_EQ(w->GetExtraRows(), 1);

  auto t3 = ComponentTypes().Create("W_T3");
  ASSERT_TRUE(devc_test::SelectModel(*t3, "Transformer"));
  EXPECT_EQ(t3->GetExtraRows(), 4);
  ASSERT_TRUE(devc_test::SelectModel(*t3, "SubCir"));
  EXPECT_EQ(t3->GetExtraRows(), 0);
}

TEST(TransformerCustom, WindingsMakeTheirOwnTable) {
  auto cmp = ComponentTypes().Create("W_CUSTOM");
  ASSERT_NE(cmp, nullptr);
  auto& w = static_cast<CElemW&>(*cmp);
  ASSERT_TRUE(devc_test::SelectModel(w, "Transformer"));
  EXPECT_TRUE(w.BindParams().empty());
  EXPECT_EQ(w.GetExtraRows(), 1);

  w.SetWindingCount(3);
  EXPECT_EQ(devc_test::ParamNames(w), (std::vector<std::string>{"n1", "n2", "n3"}));
  EXPECT_EQ(w.GetExtraRows(), 4);
  EXPECT_EQ(devc_test::ExpectParamsReachable(w), 3);
  ASSERT_TRUE(devc_test::SelectModel(w, "Transformer"));
  for (const CFormula& turns : w.CustomTurns) EXPECT_DOUBLE_EQ(turns.Value, 1.0);

  // The same count keeps the values; another count starts again from 1.
  w.CustomTurns[1].Value = 7.0;
  w.SetWindingCount(3);
  EXPECT_DOUBLE_EQ(w.CustomTurns[1].Value, 7.0);
  w.SetWindingCount(2);
  EXPECT_EQ(devc_test::ParamNames(w), (std::vector<std::string>{"n1", "n2"}));
  EXPECT_DOUBLE_EQ(w.CustomTurns[1].Value, 1.0);
}

TEST(TransformerCustom, TurnsAreSavedUnderTheirNames) {
  auto cmp = ComponentTypes().Create("W_CUSTOM");
  auto& w = static_cast<CElemW&>(*cmp);
  ASSERT_TRUE(devc_test::SelectModel(w, "Transformer"));
  w.name = "TX";
  w.SetPinCount(4);
  w.SetWindingCount(2);
  w.CustomTurns[0].Value = 3.0;
  w.CustomTurns[1].Value = 4.0;
  w.CustomTurns[1].Text = "=N";
  const std::string stored = StoreOne(w);
  EXPECT_NE(stored.find(" w=\"1\" w1=\"1\" n1=\"3\" n2_str=\"%3dN\" n2=\"4\""), std::string::npos) << stored;

  // A component whose windings are known reads them back.
  auto other = ComponentTypes().Create("W_CUSTOM");
  auto& w2 = static_cast<CElemW&>(*other);
  w2.SetWindingCount(2);
  CXmlNode node("Cmp");
  ASSERT_EQ(node.LoadFromText(stored), 0);
  ASSERT_TRUE(w2.Serialize(node, false));
  EXPECT_DOUBLE_EQ(w2.CustomTurns[0].Value, 3.0);
  EXPECT_DOUBLE_EQ(w2.CustomTurns[1].Value, 4.0);
  EXPECT_EQ(w2.CustomTurns[1].Text, "=N");
  EXPECT_EQ(w2.pinCount, 4);
}

}  // namespace
}  // namespace tz4
