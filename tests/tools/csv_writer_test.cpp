#include "tools/csv_writer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <sstream>

namespace tz4::cli {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(CsvWriter, FullPrecisionRoundTrips) {
  for (double x : {0.1, 1.0 / 3.0, 2.2e-6, -1e300, 5e-324, 0.0}) {
    EXPECT_EQ(std::strtod(CsvNumber(x).c_str(), nullptr), x) << CsvNumber(x);
  }
  EXPECT_EQ(CsvNumber(0.1), "0.10000000000000001");
  EXPECT_EQ(CsvNumber(kNaN), "");
  EXPECT_EQ(CsvNumber(-0.0), "0");
  EXPECT_EQ(CsvNumber(std::numeric_limits<double>::infinity()), "inf");
}

TEST(CsvWriter, QuotesOnlyWhatNeedsIt) {
  EXPECT_EQ(CsvField("V(R1)"), "V(R1)");
  EXPECT_EQ(CsvField("max(V(R1),0)"), "\"max(V(R1),0)\"");
  EXPECT_EQ(CsvField("a\"b"), "\"a\"\"b\"");
  EXPECT_EQ(CsvField("a\nb"), "\"a\nb\"");
}

TEST(CsvWriter, HeaderRowsAndEmptyCells) {
  SeriesTable table;
  table.names = {"V(C1)", "f(a,b)"};
  table.time = {0.0, 0.5};
  table.columns = {{1.0, 2.5}, {kNaN, -3.0}};
  std::ostringstream out;
  WriteCsv(out, table);
  EXPECT_EQ(out.str(), "time,V(C1),\"f(a,b)\"\n0,1,\n0.5,2.5,-3\n");
}

TEST(CsvWriter, RefusesRaggedTables) {
  SeriesTable table;
  table.names = {"a"};
  table.time = {0.0, 1.0};
  table.columns = {{1.0}};
  std::ostringstream out;
  EXPECT_THROW(WriteCsv(out, table), std::invalid_argument);
  table.columns = {};
  EXPECT_THROW(WriteCsv(out, table), std::invalid_argument);
}

TEST(Series, SharedTimesAreCopiedOthersInterpolated) {
  const Series a{"a", {0, 1, 2, 3}, {0, 10, 20, 30}};
  const Series b{"b", {0, 1, 2, 3}, {5, 6, 7, 8}};
  const Series late{"late", {1.5, 2.5}, {100, 200}};
  const SeriesTable table = AlignSeries({late, a, b});
  EXPECT_EQ(table.time, a.t);
  EXPECT_EQ(table.names, (std::vector<std::string>{"late", "a", "b"}));
  EXPECT_EQ(table.columns[1], a.v);
  EXPECT_EQ(table.columns[2], b.v);
  EXPECT_TRUE(std::isnan(table.columns[0][0]));
  EXPECT_TRUE(std::isnan(table.columns[0][1]));
  EXPECT_DOUBLE_EQ(table.columns[0][2], 150.0);
  EXPECT_TRUE(std::isnan(table.columns[0][3]));
  EXPECT_TRUE(AlignSeries({}).time.empty());
}

TEST(Series, InterpolationAtAJumpTakesTheLaterSample) {
  const Series jump{"j", {0, 1, 1, 2}, {0, 0, 5, 5}};
  EXPECT_DOUBLE_EQ(InterpolateAt(jump, 0.5), 0.0);
  EXPECT_DOUBLE_EQ(InterpolateAt(jump, 1.0), 5.0);
  EXPECT_DOUBLE_EQ(InterpolateAt(jump, 2.0), 5.0);
  EXPECT_TRUE(std::isnan(InterpolateAt(jump, 2.1)));
  EXPECT_TRUE(std::isnan(InterpolateAt(Series{}, 0.0)));
}

}  // namespace
}  // namespace tz4::cli
