#include "tools/progress.h"

#include <gtest/gtest.h>

namespace tz4::cli {
namespace {

TEST(Progress, LineShowsTheFraction) {
  EXPECT_EQ(ProgressLine(0.0, "", 10), "[..........]   0%");
  EXPECT_EQ(ProgressLine(0.42, "t = 2.1 ms", 10), "[####......]  42%  t = 2.1 ms");
  EXPECT_EQ(ProgressLine(1.0, "", 4), "[####] 100%");
  EXPECT_EQ(ProgressLine(7.0, "", 4), "[####] 100%");
  EXPECT_EQ(ProgressLine(-1.0, "", 4), "[....]   0%");
}

TEST(Progress, ADisabledBarWritesNothing) {
  std::FILE* sink = std::tmpfile();
  ASSERT_NE(sink, nullptr);
  {
    ProgressBar bar(false, sink);
    bar.Update(0.5, "x");
    bar.Finish();
  }
  EXPECT_EQ(std::ftell(sink), 0L);
  std::fclose(sink);
}

}  // namespace
}  // namespace tz4::cli
