// Recorded time series as the tool handles them: a name and samples, and
// the table that puts several series on one time column.
#pragma once
#include <string>
#include <vector>

namespace tz4::cli {

struct Series {
  std::string name;
  std::vector<double> t;  // sample times, not decreasing (a jump repeats a time)
  std::vector<double> v;  // one value per time
};

// Several series on one time column. A cell without data is NaN.
struct SeriesTable {
  std::vector<std::string> names;
  std::vector<double> time;
  std::vector<std::vector<double>> columns;  // one per name, each time.size() long
};

// Puts the series on the time column of the longest one. Series recorded on
// the same times (the usual case: all traces of one run) are copied as they
// are; any other is interpolated linearly, and is NaN outside its own time
// span. With no series the table is empty.
SeriesTable AlignSeries(const std::vector<Series>& series);

// Linear interpolation of a series at time x: NaN outside [t.front(),
// t.back()] or for an empty series; at a repeated time the later sample.
double InterpolateAt(const Series& series, double x);

}  // namespace tz4::cli
