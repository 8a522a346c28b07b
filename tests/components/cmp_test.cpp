// The component base: file element, model lookup, parameter binding,
// reporting, and the global type list.
#include <gtest/gtest.h>

#include <string>
#include <variant>
#include <vector>

#include "devices/registry.h"
#include "base/last_error.h"
#include "components/cmp.h"
#include "components/elem_type.h"
#include "xml/xml_node.h"
#include "test_cmp.h"

namespace tz4 {
namespace {

using testing::CTestCmp;
using testing::kTestCustomType;
using testing::kTestType;
using testing::MakeTestCmp;

// Loads a component of the test type from the text of its element.
std::unique_ptr<CTestCmp> LoadCmp(const std::string& element, bool* result = nullptr,
                                  const ElemType& type = kTestType) {
  CXmlNode node("Cmp");
  EXPECT_EQ(node.LoadFromText(element), 0);
  auto cmp = std::make_unique<CTestCmp>(type);
  bool ok = cmp->Serialize(node, false);
  if (result != nullptr) *result = ok;
  return cmp;
}

std::string StoreCmp(CCmp& cmp) {
  CXmlNode node("Cmp");
  EXPECT_TRUE(cmp.Serialize(node, false));
  return node.WriteInline();
}

TEST(CmpBase, FindParamBindsThisComponent) {
  auto a = MakeTestCmp("A");
  auto b = MakeTestCmp("B");
  CParam pa, pb;
  ASSERT_TRUE(a->FindParam("r", pa));
  ASSERT_TRUE(b->FindParam("R", pb));
  EXPECT_STREQ(pa.Name, "R");
  EXPECT_EQ(std::get<CFormula*>(pa.Value), &a->R);
  EXPECT_EQ(std::get<CFormula*>(pb.Value), &b->R);
  ASSERT_TRUE(a->FindParam("", pa));  // empty name: the first row
  EXPECT_STREQ(pa.Name, "R");
  ASSERT_TRUE(a->FindParam("MODE", pa));
  EXPECT_EQ(std::get<CEnumValue*>(pa.Value), &a->Mode);
  EXPECT_FALSE(a->FindParam("nonsense", pa));
  EXPECT_EQ(a->FindParamIndex("ic"), 2);
  EXPECT_EQ(a->FindParamIndex("nonsense"), -1);
  auto plain = MakeTestCmp("P", "Plain");  // model without a table
  EXPECT_FALSE(plain->FindParam("", pa));
  EXPECT_TRUE(plain->BindParams().empty());
  CTestCmp unresolved(kTestType);
  EXPECT_TRUE(unresolved.BindParams().empty());
}

TEST(CmpSerialize, LoadsCommonPart) {
  bool ok = false;
  auto cmp = LoadCmp(
      "<Cmp type=\"T_TEST\" id=\"12\" name=\"R+1\" file_name=\"a%2fb\" view=\"3\" group=\"g\" "
      "node0=\"4\" node1=\"-1\" model=\"Linear\" r=\"2.5\" />",
      &ok);
  EXPECT_TRUE(ok);
  EXPECT_EQ(cmp->id, 12);
  EXPECT_EQ(cmp->name, "R 1");
  EXPECT_EQ(cmp->fileName, "a/b");
  EXPECT_EQ(cmp->view, 3);
  EXPECT_EQ(cmp->group, "g");
  EXPECT_EQ(cmp->pins, (std::vector<int32_t>{4, -1}));
  EXPECT_EQ(cmp->modelIndex, 0);
  EXPECT_DOUBLE_EQ(cmp->R.Value, 2.5);
}

TEST(CmpSerialize, UnknownModelEndsTheLoad) {
  SetLastError("");
  bool ok = true;
  auto cmp = LoadCmp("<Cmp name=\"R1\" node0=\"1\" model=\"linear\" r=\"5\" />", &ok);
  EXPECT_FALSE(ok);
  EXPECT_EQ(LastError(), "Model 'linear' not found for R1");
  EXPECT_EQ(cmp->modelIndex, -1);
  EXPECT_EQ(cmp->pins[0], 1);         // read before the model
  EXPECT_DOUBLE_EQ(cmp->R.Value, 1.0);  // not read
}

// A subcircuit part writes a label for every pin.
TEST(CmpSerialize, UnreadChildrenRoundTrip) {
  const std::string element =
      "<Cmp type=\"T_TEST\" id=\"1\" name=\"X1\" file_name=\"\" view=\"0\" node0=\"1\" node1=\"2\" "
      "model=\"SubCir\" r=\"1\" k=\"2\" ic=\"\">"
      "<Custom w=\"2\" h=\"3\"><Ins><In name=\"a\" /></Ins></Custom>"
      "<SubCir file=\"inner\" label1=\"A\" label2=\"\" cmd=\"R1.R=5\" ic=\"\" />"
      "<Attachment><TZ4><Doc><Cmps /></Doc></TZ4></Attachment>"
      "</Cmp>";
  auto cmp = LoadCmp(element);
  EXPECT_EQ(cmp->attachment, "<TZ4><Doc><Cmps /></Doc></TZ4>");
  EXPECT_EQ(StoreCmp(*cmp), element);
}

TEST(CmpSerialize, AttachmentTextIsEncoded) {
  auto cmp = MakeTestCmp("R1");
  cmp->attachment = "note <1>";
  const std::string stored = StoreCmp(*cmp);
  EXPECT_NE(stored.find("<Attachment>note+%3c1%3e</Attachment>"), std::string::npos);
  CXmlNode node("Cmp");
  ASSERT_EQ(node.LoadFromText(stored), 0);
  CTestCmp back(kTestType);
  ASSERT_TRUE(back.Serialize(node, false));
  EXPECT_EQ(back.attachment, "note <1>");
}

// The tags of the global type list, in their fixed order.
const char* const kOrder[] = {
    "R_R", "R_Pot", "R_VCR", "R_CCR", "C_C", "C_VCC", "C_CCC", "L_L", "L_VCL", "L_CCL", "L_CL",
    "L_CUSTOM", "D_D", "D_Z", "D_ZS", "D_BR", "D_LCT", "D_VCT", "D_CCT", "V_V", "V_VCVS", "V_CCVS",
    "V_VM", "I_I", "I_VCCS", "I_CCCS", "S_S", "S_LCS", "S_VCS", "S_CCS", "S_S3", "S_LCS3", "S_VCS3",
    "S_CCS3", "A_A", "O_O", "O_OD", "O_OS", "O_VCG", "O_CCG", "T_TNPN", "T_TPNP", "T_NFET", "T_PFET",
    "X_Delay", "F_1", "F_2", "F_CUSTOM", "W_W", "W_T2", "W_T3", "W_CUSTOM", "W_WM", "Y_1", "Y_2",
    "Y_3", "Y_CUSTOM", "Y_FUNCTION", "Y_BUS", "Y_FF", "Y_RS", "Y_JK", "Y_ST", "Y_LG", "X_Line",
    "X_SH", "X_DC", "X_B2", "X_B3", "X_B4", "X_B6", "X_B8", "X_CUSTOM", "X_TZ4", "X_C", "X_DLL"};

}  // namespace
}  // namespace tz4
