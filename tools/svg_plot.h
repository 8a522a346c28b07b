// A line chart of time series as a self-contained SVG document: a frame
// with grid lines at round values, axes in engineering units ("time (ms)"),
// one colour per series and a legend beside the plot; voltages, currents
// and powers each get their own panel over a shared time axis. Values that are not
// finite break a line. Series much longer than the plot is wide are thinned
// to the first, lowest, highest and last sample of each pixel column, which
// draws the same picture.
#pragma once
#include <limits>
#include <string>
#include <vector>

#include "tools/series.h"

namespace tz4::cli {

// What a series measures: the title of its value axis and its unit.
struct Quantity {
  std::string label = "value";
  std::string unit;  // "V", "A", "W", or empty

  bool operator==(const Quantity&) const = default;
};

struct PlotOptions {
  int width = 960;   // pixels of the whole picture
  int height = 540;
  std::string title;
  std::string xLabel = "time";
  std::string xUnit = "s";
  // One per series, or empty for "value" throughout. Series of different
  // quantities go into separate panels, stacked over one time axis in the
  // order in which the quantities first appear.
  std::vector<Quantity> quantities;
  // Ends of the time axis; NaN takes them from the data.
  double xMin = std::numeric_limits<double>::quiet_NaN();
  double xMax = std::numeric_limits<double>::quiet_NaN();
};

// The colour of the i-th series ("#1f77b4", ...), repeating after ten.
std::string SeriesColour(size_t index);

// Text with "&", "<", ">" and quotes escaped for XML.
std::string XmlEscape(const std::string& text);

std::string RenderSvg(const std::vector<Series>& series, const PlotOptions& options);

}  // namespace tz4::cli
