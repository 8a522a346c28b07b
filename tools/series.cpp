#include "tools/series.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tz4::cli {

double InterpolateAt(const Series& series, double x) {
  const auto& t = series.t;
  const size_t n = std::min(t.size(), series.v.size());
  if (n == 0 || std::isnan(x) || x < t.front() || x > t[n - 1]) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  // First sample strictly after x; the one before it is at or below x.
  const auto after = std::upper_bound(t.begin(), t.begin() + static_cast<long>(n), x);
  const size_t i = static_cast<size_t>(after - t.begin()) - 1;
  if (i + 1 >= n || t[i] == x) return series.v[i];
  const double span = t[i + 1] - t[i];
  const double k = (x - t[i]) / span;
  return series.v[i] + k * (series.v[i + 1] - series.v[i]);
}

SeriesTable AlignSeries(const std::vector<Series>& series) {
  SeriesTable table;
  if (series.empty()) return table;
  size_t longest = 0;
  for (size_t i = 1; i < series.size(); ++i) {
    if (series[i].t.size() > series[longest].t.size()) longest = i;
  }
  table.time = series[longest].t;
  for (const Series& s : series) {
    table.names.push_back(s.name);
    if (s.t == table.time && s.v.size() == s.t.size()) {
      table.columns.push_back(s.v);
      continue;
    }
    std::vector<double> column;
    column.reserve(table.time.size());
    for (double x : table.time) column.push_back(InterpolateAt(s, x));
    table.columns.push_back(std::move(column));
  }
  return table;
}

}  // namespace tz4::cli
