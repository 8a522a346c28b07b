#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include "devices/registry.h"
#include "devices/code_block.h"
#include "devices/dll_block.h"
#include "devc_archive.h"

namespace tz4 {
namespace {

using devc_test::LoadCmps;
using devc_test::LoadOne;
using devc_test::StoreCmps;
using devc_test::StoreOne;

// The program text holds line feeds, quotes and "<": all of it goes through
// the encoded form. The hexadecimal library lives in the attachment.
const char* const kCodeCircuit =
    "<Cmps>"
    "<Cmp type=\"X_C\" id=\"1\" name=\"C1\" file_name=\"\" view=\"0\" node0=\"1\" node1=\"2\" node2=\"3\" "
    "node3=\"4\" node4=\"5\" node5=\"6\" node6=\"-1\" model=\"C\" "
    "c_code=\"double+k%3b%0avoid+main()%7bif(x1%3c0)y1%3d%22a%22%3b%7d\" ic=\"k%3d1%3bn%3d2\" "
    "file=\"\" />"
    "<Cmp type=\"X_DLL\" id=\"2\" name=\"D1\" file_name=\"\" view=\"0\" node0=\"1\" node1=\"7\" "
    "model=\"DLL\" dll=\"lib%2fuser.dll\" dll_init=\"start\" dll_code=\"step\" ic=\"a%3d1\">"
    "<Attachment>4D5A9000</Attachment></Cmp>"
    "</Cmps>";

TEST(CodeBlockArchive, CircuitLoadsAndStoresUnchanged) {
  devc_test::CmpList list = LoadCmps(kCodeCircuit);
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(StoreCmps(list), kCodeCircuit);

  auto& code = static_cast<CElemCode&>(*list[0]);
  EXPECT_EQ(code.pinCount, 7);
  EXPECT_EQ(code.Code, "double k;\nvoid main(){if(x1<0)y1=\"a\";}");
  EXPECT_EQ(code.IC, "k=1,n=2");  // the working form has commas

  auto& dll = static_cast<CElemDll&>(*list[1]);
  EXPECT_EQ(dll.Dll, "lib/user.dll");
  EXPECT_EQ(dll.Init, "start");
  EXPECT_EQ(dll.Main, "step");
  EXPECT_EQ(dll.IC, "a=1");
  EXPECT_EQ(dll.StoredText(), "4D5A9000");
}

TEST(CodeBlockArchive, AbsentAttributesKeepTheDefaults) {
  auto code = LoadOne("<Cmp type=\"X_C\" name=\"C1\" node0=\"1\" model=\"File\" />");
  ASSERT_NE(code, nullptr);
  auto& c = static_cast<CElemCode&>(*code);
  EXPECT_TRUE(c.Code.empty());
  EXPECT_TRUE(c.IC.empty());
  EXPECT_TRUE(c.FileName.empty());
  EXPECT_EQ(c.ClockState, -1);

  auto dll = LoadOne("<Cmp type=\"X_DLL\" name=\"D1\" model=\"DLL\" />");
  ASSERT_NE(dll, nullptr);
  auto& d = static_cast<CElemDll&>(*dll);
  EXPECT_TRUE(d.Dll.empty());
  EXPECT_EQ(d.Init, "dll_init");
  EXPECT_EQ(d.Main, "dll_main");
  EXPECT_STREQ(CElemDll::kExitName, "dll_exit");
  EXPECT_EQ(d.pinCount, 0);
}

TEST(CodeBlockArchive, InitialValuesUseSemicolonsInTheFile) {
  auto code = LoadOne("<Cmp type=\"X_C\" name=\"C1\" model=\"C\" ic=\"x%3d1.5%3by%3d2\" />");
  ASSERT_NE(code, nullptr);
  auto& c = static_cast<CElemCode&>(*code);
  EXPECT_EQ(c.IC, "x=1.5,y=2");
  c.IC = "a=1,b[0]=3";
  EXPECT_NE(StoreOne(c).find(" ic=\"a%3d1%3bb%5b0%5d%3d3\""), std::string::npos) << StoreOne(c);
  std::string text;
  EXPECT_EQ(c.GetICText(text), "C1.IC=a=1,b[0]=3");
  c.IC.clear();
  EXPECT_EQ(c.GetICText(text), "C1.IC=\"\"");
}

TEST(CodeBlockParams, EveryParameterIsReachableByName) {
  auto code = ComponentTypes().Create("X_C");
  auto dll = ComponentTypes().Create("X_DLL");
  ASSERT_NE(code, nullptr);
  ASSERT_NE(dll, nullptr);
  EXPECT_EQ(devc_test::ExpectParamsReachable(*code) + devc_test::ExpectParamsReachable(*dll), 2 + 2 + 4);

  ASSERT_TRUE(devc_test::SelectModel(*code, "C"));
  CParam param;
  ASSERT_TRUE(code->FindParam("code", param));
  EXPECT_EQ(param.Kind, PK_CODE);
  ASSERT_TRUE(devc_test::SelectModel(*code, "File"));
  ASSERT_TRUE(code->FindParam("FILE", param));
  EXPECT_EQ(param.Kind, PK_CODE_FILE);
  EXPECT_EQ(std::get<std::string*>(param.Value), &static_cast<CElemCode&>(*code).FileName);

  ASSERT_TRUE(devc_test::SelectModel(*dll, "DLL"));
  EXPECT_EQ(devc_test::ParamNames(*dll), (std::vector<std::string>{"DLL", "Init", "Main", "IC"}));
  ASSERT_TRUE(dll->FindParam("dll", param));
  EXPECT_EQ(param.Kind, PK_LIBRARY_FILE);
}

TEST(CodeBlockInfo, RowsFollowTheOutputs) {
  auto code = ComponentTypes().Create("X_C");
  auto& c = static_cast<CElemCode&>(*code);
  EXPECT_EQ(c.GetExtraRows(), 0);
  c.OutCount = 3;
  EXPECT_EQ(c.GetExtraRows(), 3);
  auto dll = ComponentTypes().Create("X_DLL");
  static_cast<CElemDll&>(*dll).OutCount = 2;
  EXPECT_EQ(dll->GetExtraRows(), 2);
}

TEST(CodeBlockInfo, TemporaryLibraryGoesWithTheBlock) {
  const std::string path = std::string(TZ4_BINARY_DIR) + "/devc_temp_library.dll";
  { std::ofstream(path) << "MZ"; }
  {
    auto dll = ComponentTypes().Create("X_DLL");
    static_cast<CElemDll&>(*dll).TempPath = path;
  }
  std::FILE* file = std::fopen(path.c_str(), "r");
  EXPECT_EQ(file, nullptr);
  if (file != nullptr) std::fclose(file);
}

}  // namespace
}  // namespace tz4
