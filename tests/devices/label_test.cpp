#include "devices/label.h"

#include <gtest/gtest.h>

#include "base/last_error.h"
#include "devc_archive.h"

namespace tz4 {
namespace {

using devc_test::LoadCmps;
using devc_test::LoadOne;
using devc_test::StoreCmps;
using devc_test::StoreOne;

const char* const kLabelCircuit =
    "<Cmps>"
    "<Cmp type=\"label\" id=\"1\" name=\"IN\" file_name=\"\" view=\"0\" node0=\"1\" model=\"Pulse\" "
    "ic=\"\" r=\"0\" v=\"10\"><Signal u0=\"0\" u1=\"5\" p=\"1e-3\" w=\"500e-6\" s=\"1\" r=\"1e-6\" "
    "f=\"1e-6\" d=\"0\" ph=\"0\" function=\"10\" file=\"\" pwl=\"0%2c0\" trace=\"\" c=\"0\" /></Cmp>"
    "<Cmp type=\"label\" id=\"2\" name=\"OUT\" file_name=\"\" view=\"0\" node0=\"2\" model=\"Label\" "
    "ic=\"1.5\" r=\"10\" v=\"10\" />"
    "<Cmp type=\"label\" id=\"3\" name=\"U\" file_name=\"\" view=\"0\" node0=\"3\" model=\"V\" ic=\"\" "
    "r=\"0\" v_str=\"%3dA.Value*2\" v=\"6\" />"
    "<Cmp type=\"var\" id=\"4\" name=\"A\" file_name=\"\" view=\"0\" model=\"\" val=\"3\" />"
    "</Cmps>";

TEST(LabelArchive, CircuitLoadsAndStoresUnchanged) {
  devc_test::CmpList list = LoadCmps(kLabelCircuit);
  ASSERT_EQ(list.size(), 4u);
  EXPECT_EQ(StoreCmps(list), kLabelCircuit);

  auto& in = static_cast<CLabel&>(*list[0]);
  EXPECT_TRUE(in.IsLabel());
  EXPECT_DOUBLE_EQ(in.Signal.U1.Value, 5.0);
  EXPECT_EQ(in.Signal.Slope.Index, 1);
  auto& out = static_cast<CLabel&>(*list[1]);
  EXPECT_EQ(out.ICText, "1.5");
  EXPECT_DOUBLE_EQ(out.R.Value, 10.0);
  auto& u = static_cast<CLabel&>(*list[2]);
  EXPECT_EQ(u.V.Text, "=A.Value*2");
  auto& a = static_cast<CVariable&>(*list[3]);
  EXPECT_TRUE(a.IsVariable());
  EXPECT_EQ(a.pinCount, 0);
  EXPECT_DOUBLE_EQ(a.Value.Value, 3.0);
}

TEST(LabelArchive, SignalIsWrittenOnlyWhenItMatters) {
  // A "V" label that never had a signal writes none.
  auto plain = LoadOne("<Cmp type=\"label\" name=\"U\" node0=\"3\" model=\"V\" />");
  ASSERT_NE(plain, nullptr);
  EXPECT_EQ(StoreOne(*plain).find("<Signal"), std::string::npos);
  EXPECT_DOUBLE_EQ(static_cast<CLabel&>(*plain).V.Value, 10.0);

  // A signal read from the file is kept after the model changes.
  auto read = LoadOne("<Cmp type=\"label\" name=\"U\" node0=\"3\" model=\"V\"><Signal u1=\"7\" /></Cmp>");
  ASSERT_NE(read, nullptr);
  EXPECT_NE(StoreOne(*read).find("<Signal u0=\"0\" u1=\"7\""), std::string::npos);

  // A timed model always writes its signal.
  auto sine = LoadOne("<Cmp type=\"label\" name=\"S\" node0=\"3\" model=\"Sin\" />");
  ASSERT_NE(sine, nullptr);
  EXPECT_NE(StoreOne(*sine).find("<Signal "), std::string::npos);
}

TEST(LabelArchive, VariableWithoutModelLoads) {
  auto var = LoadOne("<Cmp type=\"var\" name=\"B\" val_str=\"%3d1%2b1\" val=\"2\" />");
  ASSERT_NE(var, nullptr);
  EXPECT_EQ(var->modelIndex, 0);
  EXPECT_EQ(var->ModelId(), MODEL_VARIABLE);
  EXPECT_EQ(static_cast<CVariable&>(*var).Value.Text, "=1+1");
  EXPECT_EQ(var->type->description, std::string("Variable"));
}

TEST(LabelParams, EveryParameterIsReachableByName) {
  auto label = CreateLabel();
  auto var = CreateVariable();
  const int seen = devc_test::ExpectParamsReachable(*label) + devc_test::ExpectParamsReachable(*var);
  EXPECT_EQ(seen, 2 + 1 + 8 + 5 + 5 + 3 + 1 + 3 + 3 + 1);

  ASSERT_TRUE(devc_test::SelectModel(*label, "Pulse"));
  EXPECT_EQ(devc_test::ParamNames(*label), (std::vector<std::string>{"V1", "V0", "Period", "Width", "Slope",
                                                                      "Rise", "Fall", "Delay"}));
  CParam v1;
  ASSERT_TRUE(label->FindParam("v1", v1));
  EXPECT_EQ(std::get<CFormula*>(v1.Value), &static_cast<CLabel&>(*label).Signal.U1);

  // A host input selects the "V" row by its index.
  EXPECT_STREQ(label->models[CLabel::kInputModelIndex].name, "V");
  EXPECT_EQ(label->models[CLabel::kInputModelIndex].extraRows, 1);

  CParam value;
  ASSERT_TRUE(var->FindParam("VALUE", value));
  EXPECT_EQ(value.Kind, PK_VALUE);
  EXPECT_EQ(std::get<CFormula*>(value.Value), &static_cast<CVariable&>(*var).Value);
}

TEST(LabelInfo, PlainLabelStaysOutOfTheMatrix) {
  auto label = LoadOne("<Cmp type=\"label\" name=\"N\" node0=\"4\" model=\"Label\" />");
  ASSERT_NE(label, nullptr);
  EXPECT_EQ(label->IsMatrixPin(0), 0);
  EXPECT_EQ(label->GetExtraRows(), 0);
  ASSERT_TRUE(devc_test::SelectModel(*label, "V"));
  EXPECT_EQ(label->IsMatrixPin(0), 1);
  EXPECT_EQ(label->GetExtraRows(), 1);
}

TEST(LabelInfo, TraceAndInitialConditionText) {
  auto label = LoadOne("<Cmp type=\"label\" name=\"N\" node0=\"4\" model=\"Step\"><Signal d=\"2e-3\" /></Cmp>");
  ASSERT_NE(label, nullptr);
  label->firstRow = 6;
  int a = -1, b = -1, row = -1;
  double value = 42.0;
  EXPECT_TRUE(label->GetTraceInfo(1, a, b, row, value));
  EXPECT_EQ(a, 0);
  EXPECT_EQ(b, 4);
  EXPECT_EQ(row, 6);
  EXPECT_EQ(value, 42.0);  // left as it came

  std::string text;
  EXPECT_EQ(label->GetICText(text), "N.Delay=2e-3");
  ASSERT_TRUE(devc_test::SelectModel(*label, "Function"));
  EXPECT_EQ(label->GetICText(text), "");
  ASSERT_TRUE(devc_test::SelectModel(*label, "SubCir"));
  EXPECT_TRUE(label->GetTraceInfo(0, a, b, row, value));
  EXPECT_FALSE(label->GetTraceInfo(1, a, b, row, value));

  auto var = LoadOne("<Cmp type=\"var\" name=\"A\" val=\"3\" />");
  ASSERT_NE(var, nullptr);
  a = b = row = 17;
  EXPECT_TRUE(var->GetTraceInfo(3, a, b, row, value));
  EXPECT_EQ(value, 3.0);
  EXPECT_EQ(a, 17);
  EXPECT_EQ(b, 17);
}

TEST(LabelInfo, Checks) {
  auto var = LoadOne("<Cmp type=\"var\" name=\"A\" val=\"3\" />");
  ASSERT_NE(var, nullptr);
  SetLastError("");
  EXPECT_TRUE(var->CheckParams());
  static_cast<CVariable&>(*var).Value.Invalid = true;
  EXPECT_FALSE(var->CheckParams());
  EXPECT_NE(LastError().find("A : formula error"), std::string::npos) << LastError();

  // A label that only names its node has nothing to run.
  auto name = LoadOne("<Cmp type=\"label\" name=\"N\" node0=\"4\" model=\"Label\" />");
  ASSERT_NE(name, nullptr);
  SetLastError("");
  EXPECT_TRUE(name->CheckParams());
  static_cast<CLabel&>(*name).R.Invalid = true;
  EXPECT_FALSE(name->CheckParams());
  EXPECT_NE(LastError().find("N : R : formula error"), std::string::npos) << LastError();
}

}  // namespace
}  // namespace tz4
