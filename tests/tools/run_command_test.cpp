// The "run" command in this process: trace selection, outputs and the exit
// codes of its failures.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <regex>

#include "csv_table.h"
#include "tool_test_support.h"
#include "tools/cli_errors.h"

namespace {

using tz4_tool_test::ParseCsv;
using tz4_tool_test::ReadText;
using tz4_tool_test::ScratchDir;
using tz4_tool_test::SourcePath;
using tz4_tool_test::Tool;
using namespace tz4::cli;

bool Contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

const std::string kRc = SourcePath("examples/rc_step.tz4");

// rc_step with its stored traces removed and a variable "k" added.
std::string VariantOfRcStep(const ScratchDir& dir) {
  std::string text = ReadText(kRc);
  text = std::regex_replace(text, std::regex("<Trace [^>]*/>\\s*"), "");
  text = std::regex_replace(text, std::regex("</Cmps>"), "  <Cmp type=\"var\" id=\"9\" name=\"k\" val=\"3\" />\n    </Cmps>");
  const std::string path = dir.File("variant.tz4");
  tz4_tool_test::WriteText(path, text);
  return path;
}

TEST(ToolRun, TracesNamedOnTheCommandLine) {
  ScratchDir dir("run_traces");
  const std::string csv = dir.File("out.csv");
  const auto r = Tool({"run", kRc, "--time", "2m", "--trace", "V(C1)", "--trace", "t*2", "--trace", "R1", "--trace",
                       "i(r1)", "--csv", csv});
  ASSERT_EQ(r.code, kExitOk) << r.err;
  EXPECT_TRUE(Contains(r.out, "simulated 2 ms: 4 traces, ")) << r.out;
  EXPECT_TRUE(Contains(r.out, "csv:  " + csv)) << r.out;
  const auto table = ParseCsv(ReadText(csv));
  EXPECT_EQ(table.header, (std::vector<std::string>{"time", "V(C1)", "t*2", "R1", "I(r1)"}));
  ASSERT_GT(table.Rows(), 100u);
  EXPECT_DOUBLE_EQ(table["time"].back(), 2e-3);
  for (size_t i = 0; i < table.Rows(); ++i) {
    EXPECT_DOUBLE_EQ(table["t*2"][i], 2.0 * table["time"][i]);
    EXPECT_EQ(table["R1"][i], 1000.0);  // a bare component name: its first parameter
    if (i > 0) {  // the step rises just after the first sample
      EXPECT_NEAR(table["I(r1)"][i], (10.0 - table["V(C1)"][i]) / 1000.0, 1e-12);
    }
  }
}

TEST(ToolRun, VariablesAndFilesWithoutStoredTraces) {
  ScratchDir dir("run_variable");
  const std::string file = VariantOfRcStep(dir);
  auto r = Tool({"run", file, "--time", "1m"});
  EXPECT_EQ(r.code, kExitUsage);
  EXPECT_TRUE(Contains(r.err, "the circuit stores no traces")) << r.err;
  r = Tool({"run", file, "--time", "1m", "--trace", "k", "--quiet"});
  ASSERT_EQ(r.code, kExitOk) << r.err;
  const auto table = ParseCsv(r.out);
  EXPECT_EQ(table.header, (std::vector<std::string>{"time", "k"}));
  ASSERT_GT(table.Rows(), 0u);
  EXPECT_EQ(table["k"].back(), 3.0);
}

TEST(ToolRun, CsvGoesToStandardOutputWithoutOutputFiles) {
  const auto r = Tool({"run", kRc, "--time", "1m"});
  ASSERT_EQ(r.code, kExitOk) << r.err;
  EXPECT_EQ(r.out.rfind("time,V(V1),V(C1),I(R1)\n0,", 0), 0u) << r.out.substr(0, 80);
  EXPECT_TRUE(Contains(r.err, "simulated 1 ms: 3 traces"));
  const auto table = ParseCsv(r.out);
  EXPECT_DOUBLE_EQ(table["time"].back(), 1e-3);
}

TEST(ToolRun, PlotIntoANewFolder) {
  ScratchDir dir("run_plot");
  const std::string svg = dir.File("charts/new/rc.svg");
  const auto r = Tool({"run", kRc, "--time", "3m", "--plot", svg, "--title", "RC & step"});
  ASSERT_EQ(r.code, kExitOk) << r.err;
  EXPECT_TRUE(Contains(r.out, "plot: " + svg));
  const std::string text = ReadText(svg);
  EXPECT_TRUE(Contains(text, ">RC &amp; step</text>"));
  EXPECT_TRUE(Contains(text, ">V(C1)</text>"));
  EXPECT_TRUE(Contains(text, ">voltage (V)</text>"));
  EXPECT_TRUE(Contains(text, ">current (mA)</text>"));
  EXPECT_TRUE(Contains(text, ">time (ms)</text>"));
  EXPECT_TRUE(Contains(text, "</svg>"));
}

TEST(ToolRun, StepAndSettingsChangeTheRun) {
  const auto fine = ParseCsv(Tool({"run", kRc, "--time", "2m", "--quiet"}).out);
  const auto coarse = ParseCsv(Tool({"run", kRc, "--time", "2m", "--step", "50u", "--quiet"}).out);
  ASSERT_GT(fine.Rows(), 0u);
  ASSERT_GT(coarse.Rows(), 0u);
  EXPECT_LT(coarse.Rows() * 10, fine.Rows());
  EXPECT_NEAR(coarse.At("V(C1)", 1e-3), 10.0 * (1.0 - std::exp(-1.0)), 0.01);
  const auto bigger = ParseCsv(Tool({"run", kRc, "--time", "2m", "--quiet", "--set", "C1.C=2u"}).out);
  EXPECT_NEAR(bigger.At("V(C1)", 2e-3), 10.0 * (1.0 - std::exp(-1.0)), 1e-3);
}

TEST(ToolRun, ExitCodes) {
  ScratchDir dir("run_errors");
  auto r = Tool({"run", kRc});
  EXPECT_EQ(r.code, kExitUsage);
  EXPECT_TRUE(Contains(r.err, "option --time is required"));
  EXPECT_EQ(Tool({"run", kRc, "--time", "abc"}).code, kExitUsage);
  EXPECT_EQ(Tool({"run", kRc, "--time", "1m", "--step", "0"}).code, kExitUsage);
  EXPECT_EQ(Tool({"run", kRc, "--time", "1m", "--trace", " "}).code, kExitUsage);
  EXPECT_EQ(Tool({"run", "--time", "1m"}).code, kExitUsage);
  EXPECT_EQ(Tool({"run", kRc, "--time", "1m", "--set", "R1.R"}).code, kExitUsage);

  r = Tool({"run", kRc, "--time", "1m", "--trace", "V(R9)"});
  EXPECT_EQ(r.code, kExitLibrary);
  EXPECT_TRUE(Contains(r.err, "TZ4_AddVTrace: component R9 not found")) << r.err;
  r = Tool({"run", kRc, "--time", "1m", "--set", "R9.R=1"});
  EXPECT_EQ(r.code, kExitLibrary);
  EXPECT_TRUE(Contains(r.err, "parameter R9.R not found")) << r.err;
  r = Tool({"run", kRc, "--time", "1m", "--trace", "nosuch*2"});
  EXPECT_EQ(r.code, kExitLibrary);
  EXPECT_TRUE(Contains(r.err, "Transient error at t=0")) << r.err;
  EXPECT_EQ(r.out, "");

  r = Tool({"run", dir.File("missing.tz4"), "--time", "1m"});
  EXPECT_EQ(r.code, kExitFile);
  EXPECT_TRUE(Contains(r.err, "cannot open file")) << r.err;
  tz4_tool_test::WriteText(dir.File("plain"), "x");
  r = Tool({"run", kRc, "--time", "1m", "--csv", dir.File("plain/out.csv")});
  EXPECT_EQ(r.code, kExitFile);
  EXPECT_TRUE(Contains(r.err, "cannot write")) << r.err;

  r = Tool({"run", "--help"});
  EXPECT_EQ(r.code, kExitOk);
  EXPECT_TRUE(Contains(r.out, "usage: tz4 run FILE --time T"));
}

}  // namespace
