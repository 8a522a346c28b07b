#include "tools/cli_args.h"

#include <gtest/gtest.h>

#include <functional>

#include "tools/cli_errors.h"

namespace tz4::cli {
namespace {

const std::vector<OptionInfo> kOptions = {
    {"help"}, {"time", true}, {"set", true, true}, {"csv", true}, {"quiet"}};

int UsageCode(const std::function<void()>& f) {
  try {
    f();
  } catch (const CliError& e) {
    return e.code;
  }
  return -1;
}

TEST(CliArgs, SeparateAndInlineValuesRepeatsAndPositionals) {
  const ParsedArgs a = ParseArgs({"a.tz4", "--time", "5m", "--set=R1.R=2k", "--set", "C1.C=1u", "-", "--quiet"},
                                 kOptions);
  EXPECT_EQ(a.positionals, (std::vector<std::string>{"a.tz4", "-"}));
  EXPECT_EQ(a.Value("time"), "5m");
  EXPECT_EQ(a.Values("set"), (std::vector<std::string>{"R1.R=2k", "C1.C=1u"}));
  EXPECT_TRUE(a.Has("quiet"));
  EXPECT_FALSE(a.Has("csv"));
  EXPECT_EQ(a.Value("csv", "none"), "none");
}

TEST(CliArgs, DoubleDashEndsOptionsAndDashHIsHelp) {
  const ParsedArgs a = ParseArgs({"-h", "--", "--time", "x"}, kOptions);
  EXPECT_TRUE(a.Has("help"));
  EXPECT_FALSE(a.Has("time"));
  EXPECT_EQ(a.positionals, (std::vector<std::string>{"--time", "x"}));
}

TEST(CliArgs, MistakesAreUsageErrors) {
  EXPECT_EQ(UsageCode([] { ParseArgs({"--bogus"}, kOptions); }), kExitUsage);
  EXPECT_EQ(UsageCode([] { ParseArgs({"-x"}, kOptions); }), kExitUsage);
  EXPECT_EQ(UsageCode([] { ParseArgs({"--time"}, kOptions); }), kExitUsage);
  EXPECT_EQ(UsageCode([] { ParseArgs({"--time", "1", "--time", "2"}, kOptions); }), kExitUsage);
  EXPECT_EQ(UsageCode([] { ParseArgs({"--quiet=yes"}, kOptions); }), kExitUsage);
  try {
    ParseArgs({"--time"}, kOptions);
  } catch (const CliError& e) {
    EXPECT_STREQ(e.what(), "option --time needs a value");
  }
}

TEST(CliArgs, AssignmentSplitsAtFirstEqualsAndKeepsFormulas) {
  Assignment a = ParseAssignment(" R1.R =2k2");
  EXPECT_EQ(a.path, "R1.R");
  EXPECT_EQ(a.value, "2k2");
  a = ParseAssignment("R2.R==R1.R*2");
  EXPECT_EQ(a.path, "R2.R");
  EXPECT_EQ(a.value, "=R1.R*2");
  a = ParseAssignment("C1.IC=");
  EXPECT_EQ(a.value, "");
  EXPECT_EQ(UsageCode([] { ParseAssignment("R1.R"); }), kExitUsage);
  EXPECT_EQ(UsageCode([] { ParseAssignment(" =5"); }), kExitUsage);
}

TEST(CliArgs, DurationsTakeEngineeringSuffixes) {
  EXPECT_DOUBLE_EQ(ParseDuration("time", "5m"), 5e-3);
  EXPECT_DOUBLE_EQ(ParseDuration("time", "20u"), 20e-6);
  EXPECT_DOUBLE_EQ(ParseDuration("time", "2ms"), 2e-3);
  EXPECT_DOUBLE_EQ(ParseDuration("time", "1.5e-3"), 1.5e-3);
  EXPECT_DOUBLE_EQ(ParseDuration("time", "1k5"), 1500.0);
  EXPECT_EQ(UsageCode([] { ParseDuration("time", "0"); }), kExitUsage);
  EXPECT_EQ(UsageCode([] { ParseDuration("time", "-1m"); }), kExitUsage);
  EXPECT_EQ(UsageCode([] { ParseDuration("time", "inf"); }), kExitUsage);
  EXPECT_EQ(UsageCode([] { ParseDuration("time", "abc"); }), kExitUsage);
  EXPECT_EQ(UsageCode([] { ParseDuration("step", ""); }), kExitUsage);
}

TEST(CliArgs, CountsAreWholeNonNegativeNumbers) {
  EXPECT_EQ(ParseCount("timeout", "0"), 0);
  EXPECT_EQ(ParseCount("timeout", " 12 "), 12);
  EXPECT_EQ(UsageCode([] { ParseCount("timeout", "-1"); }), kExitUsage);
  EXPECT_EQ(UsageCode([] { ParseCount("timeout", "1.5"); }), kExitUsage);
  EXPECT_EQ(UsageCode([] { ParseCount("timeout", "99999999999"); }), kExitUsage);
}

}  // namespace
}  // namespace tz4::cli
