#include "devices/registry.h"
#include "devices/function_block.h"

#include <gtest/gtest.h>

#include "base/last_error.h"
#include "devc_archive.h"

namespace tz4 {
namespace {

using devc_test::LoadCmps;
using devc_test::LoadOne;
using devc_test::StoreCmps;
using devc_test::StoreOne;

// Attributes are written in the order the writer uses, so that a loaded and
// stored circuit gives back the same text.
const char* const kFunctionCircuit =
    "<Cmps>"
    "<Cmp type=\"F_1\" id=\"1\" name=\"F1\" file_name=\"\" view=\"0\" node0=\"1\" node1=\"2\" "
    "model=\"Table\" func=\"x\" fs=\"1\" func_ic=\"0\" k=\"1\" res=\"1\" pow=\"1\" min=\"-10\" "
    "max=\"10\" table=\"0%2c0%2c1%2c2%2c3%2c5\" table_x=\"0\" table_y=\"0\" />"
    "<Cmp type=\"F_2\" id=\"2\" name=\"F2\" file_name=\"\" view=\"0\" node0=\"1\" node1=\"2\" "
    "node2=\"3\" model=\"Function\" func=\"x*y%2bsin(t)\" fs=\"1%2fs\" func_ic_str=\"%3dA.Value\" "
    "func_ic=\"2\" k=\"3\" res=\"1\" pow=\"1\" min=\"-10\" max=\"10\" table=\"0\" table_x=\"0%2c1\" "
    "table_y=\"0%2c1\" />"
    "<Cmp type=\"Y_BUS\" id=\"3\" name=\"B1\" file_name=\"\" view=\"1\" group=\"bus+a\" node0=\"4\" "
    "node1=\"5\" node2=\"6\" node3=\"7\" model=\"Linear\" format=\"1\" func=\"x\" fs=\"1\" "
    "func_ic=\"0\" k=\"1\" res=\"1\" pow=\"1\" min=\"-10\" max=\"10\" table=\"0\" table_x=\"0\" "
    "table_y=\"0\" />"
    "<Cmp type=\"Y_FUNCTION\" id=\"4\" name=\"L1\" file_name=\"\" view=\"0\" node0=\"4\" node1=\"5\" "
    "node2=\"8\" model=\"Function\" func=\"b1+%26+b2\" fs=\"1\" k=\"1\" res=\"1\" pow=\"1\" "
    "min=\"-10\" max=\"10\" table=\"0\" table_x=\"0\" table_y=\"0\" func_ic=\"1\" />"
    "</Cmps>";

TEST(FunctionBlockArchive, CircuitLoadsAndStoresUnchanged) {
  devc_test::CmpList list = LoadCmps(kFunctionCircuit);
  ASSERT_EQ(list.size(), 4u);
  EXPECT_EQ(StoreCmps(list), kFunctionCircuit);

  auto& f1 = static_cast<CElemF&>(*list[0]);
  EXPECT_EQ(f1.ModelId(), MODEL_F_TABLE);
  EXPECT_EQ(f1.Table, "0,0,1,2,3,5");

  auto& f2 = static_cast<CElemF&>(*list[1]);
  EXPECT_EQ(f2.Func, "x*y+sin(t)");
  EXPECT_EQ(f2.Fs, "1/s");
  EXPECT_EQ(f2.Ic.Text, "=A.Value");
  EXPECT_DOUBLE_EQ(f2.Ic.Value, 2.0);
  EXPECT_DOUBLE_EQ(f2.K.Value, 3.0);

  auto& bus = static_cast<CElemF&>(*list[2]);
  EXPECT_EQ(bus.pinCount, 4);
  EXPECT_EQ(bus.Format.Index, 1);
  EXPECT_EQ(bus.group, "bus a");

  auto& logic = static_cast<CElemF&>(*list[3]);
  EXPECT_EQ(logic.Func, "b1 & b2");
  EXPECT_EQ(logic.LogicIc, 1);
}

TEST(FunctionBlockArchive, AbsentAttributesKeepTheDefaults) {
  auto one = LoadOne("<Cmp type=\"F_1\" name=\"F1\" node0=\"1\" node1=\"2\" model=\"Abs\" />");
  ASSERT_NE(one, nullptr);
  auto& f = static_cast<CElemF&>(*one);
  EXPECT_EQ(f.Func, "x");
  EXPECT_EQ(f.Fs, "1");
  EXPECT_DOUBLE_EQ(f.Ic.Value, 0.0);
  EXPECT_DOUBLE_EQ(f.K.Value, 1.0);
  EXPECT_DOUBLE_EQ(f.Resolution.Value, 1.0);
  EXPECT_DOUBLE_EQ(f.Power.Value, 1.0);
  EXPECT_DOUBLE_EQ(f.Min.Value, -10.0);
  EXPECT_DOUBLE_EQ(f.Max.Value, 10.0);
  EXPECT_EQ(f.Table, "0,0");
  EXPECT_EQ(f.TableX, "0");
  EXPECT_EQ(f.TableY, "0");

  auto two = LoadOne("<Cmp type=\"F_2\" name=\"F2\" node0=\"1\" node1=\"2\" node2=\"3\" model=\"Sum\" />");
  ASSERT_NE(two, nullptr);
  EXPECT_EQ(static_cast<CElemF&>(*two).Table, "0");

  // Texts are stored encoded; plain commas in a file read as they stand.
  auto raw = LoadOne("<Cmp type=\"F_1\" name=\"F3\" node0=\"1\" node1=\"2\" model=\"Table\" table=\"0,0,1,1\" />");
  ASSERT_NE(raw, nullptr);
  EXPECT_EQ(static_cast<CElemF&>(*raw).Table, "0,0,1,1");
}

TEST(FunctionBlockArchive, OlderFormulaAttributeSwapsTheInputs) {
  auto two = LoadOne(
      "<Cmp type=\"F_2\" name=\"F2\" node0=\"1\" node1=\"2\" node2=\"3\" model=\"Function\" f=\"x-y\" />");
  ASSERT_NE(two, nullptr);
  auto& f = static_cast<CElemF&>(*two);
  EXPECT_EQ(f.Func, "x-y");
  EXPECT_EQ(f.pins, (std::vector<int32_t>{2, 1, 3}));
  const std::string stored = StoreOne(f);
  EXPECT_NE(stored.find(" func=\"x-y\""), std::string::npos) << stored;
  EXPECT_EQ(stored.find(" f=\""), std::string::npos) << stored;
  EXPECT_NE(stored.find("node0=\"2\" node1=\"1\" node2=\"3\""), std::string::npos) << stored;

  // With both attributes the newer one counts and nothing moves.
  auto both = LoadOne("<Cmp type=\"F_2\" name=\"F3\" node0=\"1\" node1=\"2\" node2=\"3\" "
                      "model=\"Function\" func=\"x/y\" f=\"old\" />");
  ASSERT_NE(both, nullptr);
  EXPECT_EQ(static_cast<CElemF&>(*both).Func, "x/y");
  EXPECT_EQ(both->pins, (std::vector<int32_t>{1, 2, 3}));

  // A one-input block has nothing to swap.
  auto one = LoadOne("<Cmp type=\"F_1\" name=\"F4\" node0=\"1\" node1=\"2\" model=\"Function\" f=\"2*x\" />");
  ASSERT_NE(one, nullptr);
  EXPECT_EQ(static_cast<CElemF&>(*one).Func, "2*x");
  EXPECT_EQ(one->pins, (std::vector<int32_t>{1, 2}));
}

TEST(FunctionBlockArchive, BusModelNameLoadsAsLinearAndUnknownModelFails) {
  auto bus = LoadOne("<Cmp type=\"Y_BUS\" name=\"B1\" node0=\"1\" node1=\"2\" model=\"Bus\" />");
  ASSERT_NE(bus, nullptr);
  EXPECT_EQ(bus->ModelId(), MODEL_F_LINEAR);

  CXmlNode node("Cmp");
  ASSERT_EQ(node.LoadFromText("<Cmp type=\"F_1\" name=\"F9\" node0=\"1\" node1=\"2\" model=\"mul\" />"), 0);
  auto f = ComponentTypes().Create("F_1");
  ASSERT_NE(f, nullptr);
  EXPECT_FALSE(f->Serialize(node, false));
  EXPECT_EQ(f->modelIndex, -1);
}

TEST(FunctionBlockParams, EveryParameterIsReachableByName) {
  int seen = 0;
  for (const char* tag : {"F_1", "F_2", "F_CUSTOM", "Y_FUNCTION", "Y_BUS"}) {
    auto cmp = ComponentTypes().Create(tag);
    ASSERT_NE(cmp, nullptr) << tag;
    seen += devc_test::ExpectParamsReachable(*cmp);
  }
  EXPECT_GT(seen, 40);
}

TEST(FunctionBlockParams, TablesFollowTheModel) {
  auto one = ComponentTypes().Create("F_1");
  auto two = ComponentTypes().Create("F_2");
  auto logic = ComponentTypes().Create("Y_FUNCTION");
  auto bus = ComponentTypes().Create("Y_BUS");
  using Names = std::vector<std::string>;
  ASSERT_TRUE(devc_test::SelectModel(*one, "Function"));
  EXPECT_EQ(devc_test::ParamNames(*one), (Names{"F(x)", "F(s)", "IC"}));
  ASSERT_TRUE(devc_test::SelectModel(*one, "Pwr"));
  EXPECT_EQ(devc_test::ParamNames(*one), (Names{"power", "K", "IC"}));
  ASSERT_TRUE(devc_test::SelectModel(*one, "Lim"));
  EXPECT_EQ(devc_test::ParamNames(*one), (Names{"Max", "Min", "IC"}));
  ASSERT_TRUE(devc_test::SelectModel(*one, "SubCir"));
  EXPECT_TRUE(one->BindParams().empty());
  ASSERT_TRUE(devc_test::SelectModel(*two, "Pwr"));
  EXPECT_EQ(devc_test::ParamNames(*two), (Names{"K", "IC"}));
  ASSERT_TRUE(devc_test::SelectModel(*two, "Table"));
  EXPECT_EQ(devc_test::ParamNames(*two), (Names{"X", "Y", "Table", "IC"}));
  ASSERT_TRUE(devc_test::SelectModel(*two, "GT"));
  EXPECT_EQ(devc_test::ParamNames(*two), (Names{"IC"}));
  ASSERT_TRUE(devc_test::SelectModel(*logic, "Function"));
  CParam ic;
  ASSERT_TRUE(logic->FindParam("ic", ic));
  EXPECT_EQ(ic.Kind, PK_HIGH_LOW);
  EXPECT_EQ(std::get<int32_t*>(ic.Value), &static_cast<CElemF&>(*logic).LogicIc);
  ASSERT_TRUE(devc_test::SelectModel(*bus, "Linear"));
  EXPECT_EQ(devc_test::ParamNames(*bus), (Names{"Format"}));
  EXPECT_FALSE(devc_test::SelectModel(*bus, "Bus"));
}

TEST(FunctionBlockInfo, TraceRunsFromGroundToTheOutput) {
  auto two = LoadOne("<Cmp type=\"F_2\" name=\"F2\" node0=\"1\" node1=\"2\" node2=\"3\" model=\"Mul\" />");
  ASSERT_NE(two, nullptr);
  two->firstRow = 7;
  int a = -5, b = -5, row = -5;
  double value = 9.0;
  EXPECT_TRUE(two->GetTraceInfo(2, a, b, row, value));
  EXPECT_EQ(a, 0);
  EXPECT_EQ(b, 3);
  EXPECT_EQ(row, 7);
  EXPECT_EQ(two->GetExtraRows(), 1);

  ASSERT_TRUE(devc_test::SelectModel(*two, "SubCir"));
  EXPECT_TRUE(two->GetTraceInfo(0, a, b, row, value));
  EXPECT_TRUE(two->GetTraceInfo(6, a, b, row, value));
  EXPECT_FALSE(two->GetTraceInfo(1, a, b, row, value));
  EXPECT_EQ(two->GetExtraRows(), 0);
}

TEST(FunctionBlockInfo, InitialConditionText) {
  auto one = LoadOne("<Cmp type=\"F_1\" name=\"F1\" node0=\"1\" node1=\"2\" model=\"Int\" func_ic=\"1.5\" />");
  ASSERT_NE(one, nullptr);
  std::string text;
  EXPECT_EQ(one->GetICText(text), "F1.IC=1.5");
  auto logic = LoadOne("<Cmp type=\"Y_FUNCTION\" name=\"L1\" node0=\"1\" node1=\"2\" model=\"Function\" />");
  ASSERT_NE(logic, nullptr);
  EXPECT_EQ(logic->GetICText(text), "L1.IC=low");
  static_cast<CElemF&>(*logic).LogicIc = 1;
  EXPECT_EQ(logic->GetICText(text), "L1.IC=high");
}

TEST(FunctionBlockInfo, RunsAreRefusedUntilSimulated) {
  auto one = LoadOne("<Cmp type=\"F_1\" name=\"F1\" node0=\"1\" node1=\"2\" model=\"Abs\" />");
  ASSERT_NE(one, nullptr);
  SetLastError("");
  EXPECT_FALSE(one->CheckParams());
  EXPECT_NE(LastError().find("F1 : "), std::string::npos) << LastError();
}

}  // namespace
}  // namespace tz4
