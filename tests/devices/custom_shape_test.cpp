// The shapes of the custom types: what each class gives a "Custom" element
// that leaves things out, and what the component takes from its shape.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "devices/code_block.h"
#include "devc_archive.h"
#include "devices/function_block.h"
#include "devices/inductor.h"
#include "devices/transformer.h"

namespace tz4 {
namespace {

using devc_test::LoadOne;
using devc_test::StoreOne;

// One element of `tag` with two pins and a bare "Custom" child.
std::unique_ptr<CCmp> LoadBare(const std::string& tag, const std::string& model) {
  return LoadOne("<Cmp type=\"" + tag + "\" name=\"U1\" node0=\"1\" node1=\"2\" model=\"" + model +
                 "\"><Custom /></Cmp>");
}

TEST(CustomShape, ABareElementKeepsWhatTheClassGivesBesidesCountsAndLists) {
  struct Case {
    const char* tag;
    const char* model;
    int width, height;
    const char* inNames;
    const char* outNames;
  };
  // Counts and positions left out of an element are 0; the name lists are
  // those of the element on the types that write them, the class defaults
  // on the others.
  const Case cases[] = {
      {"L_CUSTOM", "L", 1, 2, "", ""},          {"W_CUSTOM", "Transformer", 1, 2, "", ""},
      {"Y_CUSTOM", "Logic", 2, 3, "", ""},      {"F_CUSTOM", "Function", 2, 3, "", ""},
      {"Y_FUNCTION", "Function", 2, 3, "", ""}, {"Y_BUS", "Linear", 2, 3, "2,1,0", ""},
      {"X_CUSTOM", "SubCir", 1, 1, "", ""},     {"X_TZ4", "SubCir", 2, 3, "", ""},
      {"X_C", "C", 1, 1, "", ""},               {"X_DLL", "DLL", 1, 1, "x1,x2,x3", "y1,y2,y3"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.tag);
    auto cmp = LoadBare(c.tag, c.model);
    ASSERT_NE(cmp, nullptr);
    ASSERT_NE(cmp->customType, nullptr);
    const CCustomElemType& shape = *cmp->customType;
    EXPECT_EQ(shape.width, c.width);
    EXPECT_EQ(shape.height, c.height);
    EXPECT_EQ(shape.leftCount, 0);
    EXPECT_EQ(shape.rightCount, 0);
    EXPECT_EQ(shape.inNames, c.inNames);
    EXPECT_EQ(shape.outNames, c.outNames);
    EXPECT_STREQ(cmp->type->tag, c.tag);
    EXPECT_EQ(cmp->type, &shape.elemType);
    EXPECT_EQ(cmp->pinCount, 2);
  }
}

TEST(CustomShape, ClassesWithoutAShapeKeepTheElementAsRead) {
  const std::string element =
      "<Cmp type=\"X_B2\" id=\"0\" name=\"X1\" file_name=\"\" view=\"0\" node0=\"1\" node1=\"2\" "
      "model=\"SubCir\"><Custom l=\"9\" q=\"1\"><Odd /></Custom>"
      "<SubCir file=\"f\" label1=\"A\" label2=\"B\" cmd=\"\" ic=\"\" /></Cmp>";
  auto cmp = LoadOne(element);
  ASSERT_NE(cmp, nullptr);
  EXPECT_EQ(cmp->customType, nullptr);
  EXPECT_EQ(StoreOne(*cmp), element);
}

TEST(CustomShape, FunctionBlocksTakeTheirFormulaAndVariablesFromTheShape) {
  auto block = LoadOne(
      "<Cmp type=\"F_CUSTOM\" name=\"F1\" node0=\"1\" node1=\"2\" node2=\"3\" model=\"Function\">"
      "<Custom d=\"true\"><Ins><In name=\"u\" /><In name=\"v\" /></Ins></Custom></Cmp>");
  ASSERT_NE(block, nullptr);
  auto& f = static_cast<CElemF&>(*block);
  EXPECT_EQ(f.Func, "x1");  // the class's formula: the element has no "func"
  EXPECT_EQ(f.Clocked, 1);
  ASSERT_EQ(f.Variables.Count(), 3);
  EXPECT_EQ(f.Variables[0]->Name, "t");
  EXPECT_EQ(f.Variables[1]->Name, "u");
  EXPECT_EQ(f.Variables[2]->Name, "v");

  auto logic = LoadOne(
      "<Cmp type=\"Y_FUNCTION\" name=\"F2\" node0=\"1\" node1=\"2\" model=\"Function\" func=\"a\">"
      "<Custom /></Cmp>");
  ASSERT_NE(logic, nullptr);
  EXPECT_EQ(static_cast<CElemF&>(*logic).Func, "a");

  auto code = LoadOne(
      "<Cmp type=\"X_C\" name=\"C1\" node0=\"1\" node1=\"2\" model=\"C\"><Custom d=\"true\" /></Cmp>");
  ASSERT_NE(code, nullptr);
  EXPECT_TRUE(static_cast<CElemCode&>(*code).Clocked);
}

TEST(CustomShape, WindingsFollowThePinsWithOrWithoutAShape) {
  for (const char* custom : {"", "<Custom l=\"2\" r=\"2\" />"}) {
    SCOPED_TRACE(custom);
    auto cmp = LoadOne(std::string("<Cmp type=\"W_CUSTOM\" name=\"W1\" node0=\"1\" node1=\"0\" node2=\"2\" "
                                   "node3=\"0\" model=\"Transformer\" n1=\"3\" n2_str=\"%3dk\" n2=\"4\">") +
                       custom + "</Cmp>");
    ASSERT_NE(cmp, nullptr);
    auto& w = static_cast<CElemW&>(*cmp);
    ASSERT_EQ(w.WindingCount, 2);
    EXPECT_EQ(w.CustomTurns[0].Value, 3.0);
    EXPECT_EQ(w.CustomTurns[1].Text, "=k");
    EXPECT_NE(StoreOne(w).find("n1=\"3\" n2_str=\"%3dk\" n2=\"4\""), std::string::npos);
  }
}

TEST(CustomShape, OlderNamesAreKept) {
  const std::string element =
      "<Cmp type=\"X_TZ4\" id=\"0\" name=\"X1\" file_name=\"\" view=\"0\" node0=\"1\" model=\"SubCir\">"
      "<Custom w=\"2\" h=\"3\" l=\"1\" l1=\"2\" b=\"0\" t=\"0\" d=\"false\" n=\"in1;out1\">"
      "<Ins /><Outs /><Vars /></Custom>"
      "<SubCir file=\"\" label1=\"\" cmd=\"\" ic=\"\" /></Cmp>";
  auto cmp = LoadOne(element);
  ASSERT_NE(cmp, nullptr);
  EXPECT_EQ(cmp->customType->olderNames, "in1;out1");
  // The shape is written in its fixed order, the older form at the end.
  EXPECT_EQ(StoreOne(*cmp), element);
}

}  // namespace
}  // namespace tz4
