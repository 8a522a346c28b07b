// The "info" and "set" commands and the dispatcher, run in this process on
// real circuit files.
#include <gtest/gtest.h>

#include "tool_test_support.h"
#include "tools/cli_errors.h"

namespace {

using tz4_tool_test::ReadText;
using tz4_tool_test::ScratchDir;
using tz4_tool_test::SourcePath;
using tz4_tool_test::Tool;
using namespace tz4::cli;

bool Contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

TEST(ToolDispatch, HelpVersionAndUnknownCommands) {
  auto r = Tool({"--help"});
  EXPECT_EQ(r.code, kExitOk);
  EXPECT_TRUE(Contains(r.out, "exit codes:"));
  r = Tool({});
  EXPECT_EQ(r.code, kExitUsage);
  r = Tool({"frobnicate"});
  EXPECT_EQ(r.code, kExitUsage);
  EXPECT_TRUE(Contains(r.err, "unknown command 'frobnicate'"));
  r = Tool({"help", "set"});
  EXPECT_EQ(r.code, kExitOk);
  EXPECT_TRUE(Contains(r.out, "usage: tz4 set"));
  r = Tool({"--version"});
  EXPECT_EQ(r.code, kExitOk);
  EXPECT_TRUE(Contains(r.out, "Version"));
}

TEST(ToolInfo, ListsComponentsParametersTracesAndSettings) {
  const auto r = Tool({"info", SourcePath("examples/rc_step.tz4")});
  ASSERT_EQ(r.code, kExitOk) << r.err;
  EXPECT_TRUE(Contains(r.out, "components (3)"));
  EXPECT_TRUE(Contains(r.out, "  R1  R_R (Resistor)  model R  nodes 2 1\n"));
  EXPECT_TRUE(Contains(r.out, "      R  value  1e+3\n"));
  EXPECT_TRUE(Contains(r.out, "  C1  C_C"));
  EXPECT_TRUE(Contains(r.out, "IC  ic     (none)"));
  EXPECT_TRUE(Contains(r.out, "model Pulse  nodes 0 1"));
  EXPECT_TRUE(Contains(r.out, "[Linear, Cos, Log]"));
  EXPECT_TRUE(Contains(r.out, "traces (3)\n  V(V1)  voltage\n  V(C1)  voltage\n  I(R1)  current\n"));
  EXPECT_TRUE(Contains(r.out, "  step     1e-6 s\n"));
  // Components come in collection order: C1, R1, V1.
  EXPECT_LT(r.out.find("  C1 "), r.out.find("  R1 "));
  EXPECT_LT(r.out.find("  R1 "), r.out.find("  V1 "));
}

TEST(ToolInfo, FileAndUsageErrors) {
  auto r = Tool({"info", "/nonexistent/x.tz4"});
  EXPECT_EQ(r.code, kExitFile);
  EXPECT_TRUE(Contains(r.err, "TZ4_Open: cannot open file /nonexistent/x.tz4")) << r.err;
  r = Tool({"info"});
  EXPECT_EQ(r.code, kExitUsage);
  r = Tool({"info", "a.tz4", "b.tz4"});
  EXPECT_EQ(r.code, kExitUsage);
  r = Tool({"info", "--help"});
  EXPECT_EQ(r.code, kExitOk);
  EXPECT_TRUE(Contains(r.out, "usage: tz4 info FILE"));
}

TEST(ToolSet, ChangesAndSavesToANewFile) {
  ScratchDir dir("set");
  const std::string source = SourcePath("examples/rc_step.tz4");
  const std::string before = ReadText(source);
  const std::string copy = dir.File("changed.tz4");
  auto r = Tool({"set", source, "R1.R=2k2", "C1.C=470n", "V1.Period=4m", "--output", copy});
  ASSERT_EQ(r.code, kExitOk) << r.err;
  EXPECT_TRUE(Contains(r.out, "R1.R = 2.2e+3\n"));
  EXPECT_TRUE(Contains(r.out, "C1.C = 470e-9\n"));
  EXPECT_TRUE(Contains(r.out, "saved " + copy));
  EXPECT_EQ(ReadText(source), before);
  r = Tool({"info", copy});
  ASSERT_EQ(r.code, kExitOk) << r.err;
  EXPECT_TRUE(Contains(r.out, "      R  value  2.2e+3\n"));
  EXPECT_TRUE(Contains(r.out, "Period  value   4e-3\n"));
}

TEST(ToolSet, InPlaceAndFormulas) {
  ScratchDir dir("set_in_place");
  const std::string file = dir.File("rc.tz4");
  tz4_tool_test::WriteText(file, ReadText(SourcePath("examples/rc_step.tz4")));
  auto r = Tool({"set", file, "C1.C==R1.R*1n", "--quiet"});
  ASSERT_EQ(r.code, kExitOk) << r.err;
  EXPECT_EQ(r.out, "");
  r = Tool({"info", file});
  EXPECT_TRUE(Contains(r.out, "      C   value  =R1.R*1n  (1e-6)\n")) << r.out;
}

TEST(ToolSet, ARefusedAssignmentSavesNothing) {
  ScratchDir dir("set_refused");
  const std::string file = dir.File("rc.tz4");
  const std::string original = ReadText(SourcePath("examples/rc_step.tz4"));
  tz4_tool_test::WriteText(file, original);
  auto r = Tool({"set", file, "R1.R=5k", "R9.R=1"});
  EXPECT_EQ(r.code, kExitLibrary);
  EXPECT_TRUE(Contains(r.err, "parameter R9.R not found")) << r.err;
  EXPECT_EQ(ReadText(file), original);
  r = Tool({"set", file, "R1.R=abc"});
  EXPECT_EQ(r.code, kExitLibrary);
  EXPECT_EQ(ReadText(file), original);
  r = Tool({"set", file, "R1.R=1k", "--output", dir.File("no/such/dir/x.tz4")});
  EXPECT_EQ(r.code, kExitFile);
  EXPECT_TRUE(Contains(r.err, "cannot save file")) << r.err;
  r = Tool({"set", file});
  EXPECT_EQ(r.code, kExitUsage);
  r = Tool({"set", file, "R1.R"});
  EXPECT_EQ(r.code, kExitUsage);
}

}  // namespace
