#include "tools/svg_plot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sstream>

#include "tools/axis.h"

namespace tz4::cli {

namespace {

constexpr const char* kPalette[] = {"#1f77b4", "#d62728", "#2ca02c", "#ff7f0e", "#9467bd",
                                    "#8c564b", "#e377c2", "#7f7f7f", "#bcbd22", "#17becf"};
constexpr size_t kPaletteSize = sizeof kPalette / sizeof kPalette[0];

constexpr double kCharWidth = 7.0;     // rough width of one character at the legend's size
constexpr size_t kLegendChars = 40;    // longer names are shortened in the legend
constexpr const char* kFont = "font-family=\"DejaVu Sans, Arial, Helvetica, sans-serif\"";

std::string Num(double x) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.2f", x);
  return buffer;
}

// Counts UTF-8 characters, for width estimates.
size_t CharCount(const std::string& text) {
  size_t n = 0;
  for (unsigned char c : text) n += (c & 0xC0) != 0x80;
  return n;
}

std::string Shorten(const std::string& text, size_t maxChars) {
  if (CharCount(text) <= maxChars) return text;
  std::string out;
  size_t n = 0;
  for (unsigned char c : text) {
    if ((c & 0xC0) != 0x80 && ++n > maxChars - 1) break;
    out += static_cast<char>(c);
  }
  return out + "\xE2\x80\xA6";  // ellipsis
}

struct Range {
  double low = std::numeric_limits<double>::infinity();
  double high = -std::numeric_limits<double>::infinity();
  void Add(double x) {
    if (!std::isfinite(x)) return;
    low = std::min(low, x);
    high = std::max(high, x);
  }
  bool Empty() const { return low > high; }
};

std::string AxisTitle(const std::string& label, const EngineeringScale& scale, const std::string& unit) {
  const std::string units = scale.prefix + unit;
  return units.empty() ? label : label + " (" + units + ")";
}

// The indices of the samples to draw: all of them for a short series,
// otherwise per pixel column the first, lowest, highest and last finite
// sample, in their order, plus every non-finite one (they break the line).
std::vector<size_t> SamplesToDraw(const Series& s, double x0, double xScale, double plotWidth) {
  const size_t n = std::min(s.t.size(), s.v.size());
  std::vector<size_t> keep;
  if (n <= static_cast<size_t>(plotWidth * 4.0)) {
    keep.resize(n);
    for (size_t i = 0; i < n; ++i) keep[i] = i;
    return keep;
  }
  size_t i = 0;
  while (i < n) {
    if (!std::isfinite(s.v[i]) || !std::isfinite(s.t[i])) {
      keep.push_back(i++);
      continue;
    }
    const long column = std::lround(std::floor((s.t[i] - x0) * xScale));
    size_t first = i;
    size_t last = i;
    size_t lowest = i;
    size_t highest = i;
    for (++i; i < n && std::isfinite(s.v[i]) && std::isfinite(s.t[i]) &&
              std::lround(std::floor((s.t[i] - x0) * xScale)) == column;
         ++i) {
      last = i;
      if (s.v[i] < s.v[lowest]) lowest = i;
      if (s.v[i] > s.v[highest]) highest = i;
    }
    size_t picks[] = {first, lowest, highest, last};
    std::sort(std::begin(picks), std::end(picks));
    for (size_t k = 0; k < 4; ++k) {
      if (k == 0 || picks[k] != picks[k - 1]) keep.push_back(picks[k]);
    }
  }
  return keep;
}

}  // namespace

std::string SeriesColour(size_t index) { return kPalette[index % kPaletteSize]; }

std::string XmlEscape(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      case '\'': out += "&apos;"; break;
      default: out += c;
    }
  }
  return out;
}

std::string RenderSvg(const std::vector<Series>& series, const PlotOptions& options) {
  const double width = std::max(options.width, 200);
  const double height = std::max(options.height, 150);

  // Panels: one per quantity, in order of first appearance.
  std::vector<Quantity> panelQuantity;
  std::vector<size_t> panelOf(series.size(), 0);
  for (size_t k = 0; k < series.size(); ++k) {
    const Quantity q = k < options.quantities.size() ? options.quantities[k] : Quantity{};
    const auto it = std::find(panelQuantity.begin(), panelQuantity.end(), q);
    panelOf[k] = static_cast<size_t>(it - panelQuantity.begin());
    if (it == panelQuantity.end()) panelQuantity.push_back(q);
  }
  if (panelQuantity.empty()) panelQuantity.push_back(options.quantities.empty() ? Quantity{} : options.quantities[0]);
  const size_t panels = panelQuantity.size();

  // Data ranges: time over everything, values per panel.
  Range xRange;
  std::vector<Range> yRange(panels);
  for (size_t k = 0; k < series.size(); ++k) {
    const Series& s = series[k];
    const size_t n = std::min(s.t.size(), s.v.size());
    for (size_t i = 0; i < n; ++i) {
      if (!std::isfinite(s.v[i]) || !std::isfinite(s.t[i])) continue;
      xRange.Add(s.t[i]);
      yRange[panelOf[k]].Add(s.v[i]);
    }
  }
  double xLow = std::isnan(options.xMin) ? (xRange.Empty() ? 0.0 : xRange.low) : options.xMin;
  double xHigh = std::isnan(options.xMax) ? (xRange.Empty() ? 1.0 : xRange.high) : options.xMax;
  if (!(xHigh > xLow)) xHigh = xLow + (xLow == 0.0 ? 1.0 : std::fabs(xLow));
  const Ticks xTicks = NiceTicks(xLow, xHigh, 8, false);
  const EngineeringScale xUnits = ChooseScale(std::max(std::fabs(xLow), std::fabs(xHigh)));
  const int xDecimals = TickDecimals(xTicks.step, xUnits);

  struct Panel {
    Ticks ticks;
    EngineeringScale units;
    int decimals = 0;
    double top = 0.0;
    double height = 0.0;
    bool noData = true;
  };
  std::vector<Panel> panel(panels);
  const int yTarget = panels == 1 ? 6 : panels == 2 ? 4 : 3;
  size_t longestYLabel = 0;
  for (size_t p = 0; p < panels; ++p) {
    Panel& P = panel[p];
    P.noData = yRange[p].Empty();
    if (P.noData) {
      P.ticks = NiceTicks(0.0, 1.0, yTarget, true);
    } else {
      // The ends stand a little off the data, so that no curve runs along
      // the frame; the ticks stay on round values inside.
      double low = yRange[p].low;
      double high = yRange[p].high;
      if (low == high) {
        const double pad = low == 0.0 ? 1.0 : std::fabs(low) * 0.1;
        low -= pad;
        high += pad;
      }
      const double margin = (high - low) * 0.04;
      P.ticks = NiceTicks(low - margin, high + margin, yTarget, false);
    }
    P.units = ChooseScale(std::max(std::fabs(P.ticks.low), std::fabs(P.ticks.high)));
    P.decimals = TickDecimals(P.ticks.step, P.units);
    for (double v : P.ticks.values) longestYLabel = std::max(longestYLabel, TickLabel(v, P.units, P.decimals).size());
  }

  // Layout: title on top, value labels left, legend right, time labels below.
  size_t longestName = 0;
  for (const Series& s : series) longestName = std::max(longestName, CharCount(Shorten(s.name, kLegendChars)));
  const double legendWidth = series.empty() ? 0.0 : 44.0 + kCharWidth * static_cast<double>(longestName);
  const double left = 34.0 + kCharWidth * static_cast<double>(longestYLabel) + 8.0;
  const double right = width - 16.0 - legendWidth;
  const double top = options.title.empty() ? 20.0 : 44.0;
  const double bottom = height - 52.0;
  const double plotW = std::max(right - left, 40.0);
  constexpr double kGap = 16.0;
  const double panelH = std::max((bottom - top - kGap * static_cast<double>(panels - 1)) / static_cast<double>(panels), 30.0);
  for (size_t p = 0; p < panels; ++p) {
    panel[p].top = top + static_cast<double>(p) * (panelH + kGap);
    panel[p].height = panelH;
  }
  const double plotBottom = panel.back().top + panelH;

  const double xScale = plotW / (xTicks.high - xTicks.low);
  auto X = [&](double t) { return left + (t - xTicks.low) * xScale; };
  auto Y = [&](const Panel& P, double v) {
    return P.top + P.height - (v - P.ticks.low) * (P.height / (P.ticks.high - P.ticks.low));
  };

  std::ostringstream svg;
  svg << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << width << "\" height=\"" << height
      << "\" viewBox=\"0 0 " << width << ' ' << height << "\">\n"
      << "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n<defs>";
  for (size_t p = 0; p < panels; ++p) {
    svg << "<clipPath id=\"panel" << p << "\"><rect x=\"" << Num(left) << "\" y=\"" << Num(panel[p].top)
        << "\" width=\"" << Num(plotW) << "\" height=\"" << Num(panelH) << "\"/></clipPath>";
  }
  svg << "</defs>\n";
  if (!options.title.empty()) {
    svg << "<text x=\"" << Num(width / 2) << "\" y=\"26\" text-anchor=\"middle\" font-size=\"16\" " << kFont
        << ">" << XmlEscape(options.title) << "</text>\n";
  }

  for (size_t p = 0; p < panels; ++p) {
    const Panel& P = panel[p];
    // Grid.
    svg << "<g stroke=\"#e0e0e0\" stroke-width=\"1\">\n";
    for (double t : xTicks.values) {
      svg << "<line x1=\"" << Num(X(t)) << "\" y1=\"" << Num(P.top) << "\" x2=\"" << Num(X(t)) << "\" y2=\""
          << Num(P.top + P.height) << "\"/>\n";
    }
    for (double v : P.ticks.values) {
      svg << "<line x1=\"" << Num(left) << "\" y1=\"" << Num(Y(P, v)) << "\" x2=\"" << Num(left + plotW)
          << "\" y2=\"" << Num(Y(P, v)) << "\"/>\n";
    }
    svg << "</g>\n";
    // Value labels and the axis title.
    svg << "<g font-size=\"12\" fill=\"#333\" " << kFont << ">\n";
    for (double v : P.ticks.values) {
      svg << "<text x=\"" << Num(left - 6) << "\" y=\"" << Num(Y(P, v) + 4) << "\" text-anchor=\"end\">"
          << TickLabel(v, P.units, P.decimals) << "</text>\n";
    }
    svg << "<text transform=\"translate(16 " << Num(P.top + P.height / 2)
        << ") rotate(-90)\" text-anchor=\"middle\" font-size=\"13\">"
        << XmlEscape(AxisTitle(panelQuantity[p].label, P.units, panelQuantity[p].unit)) << "</text>\n";
    svg << "</g>\n";
    // Curves.
    svg << "<g clip-path=\"url(#panel" << p << ")\" fill=\"none\" stroke-width=\"1.6\" stroke-linejoin=\"round\">\n";
    for (size_t k = 0; k < series.size(); ++k) {
      if (panelOf[k] != p) continue;
      const Series& s = series[k];
      std::string d;
      bool penDown = false;
      for (size_t i : SamplesToDraw(s, xTicks.low, xScale, plotW)) {
        if (!std::isfinite(s.v[i]) || !std::isfinite(s.t[i])) {
          penDown = false;
          continue;
        }
        d += penDown ? 'L' : 'M';
        d += Num(X(s.t[i]));
        d += ',';
        d += Num(std::clamp(Y(P, s.v[i]), -1e6, 1e6));
        penDown = true;
      }
      if (!d.empty()) svg << "<path stroke=\"" << SeriesColour(k) << "\" d=\"" << d << "\"/>\n";
    }
    svg << "</g>\n";
    if (P.noData) {
      svg << "<text x=\"" << Num(left + plotW / 2) << "\" y=\"" << Num(P.top + P.height / 2)
          << "\" text-anchor=\"middle\" font-size=\"14\" fill=\"#999\" " << kFont << ">no data</text>\n";
    }
    svg << "<rect x=\"" << Num(left) << "\" y=\"" << Num(P.top) << "\" width=\"" << Num(plotW) << "\" height=\""
        << Num(P.height) << "\" fill=\"none\" stroke=\"#444\" stroke-width=\"1\"/>\n";
  }

  // Time labels under the lowest panel.
  svg << "<g font-size=\"12\" fill=\"#333\" " << kFont << ">\n";
  for (double t : xTicks.values) {
    svg << "<text x=\"" << Num(X(t)) << "\" y=\"" << Num(plotBottom + 17) << "\" text-anchor=\"middle\">"
        << TickLabel(t, xUnits, xDecimals) << "</text>\n";
  }
  svg << "<text x=\"" << Num(left + plotW / 2) << "\" y=\"" << Num(height - 12)
      << "\" text-anchor=\"middle\" font-size=\"13\">" << XmlEscape(AxisTitle(options.xLabel, xUnits, options.xUnit))
      << "</text>\n</g>\n";

  // Legend: each entry beside its panel.
  if (!series.empty()) {
    const double lx = right + 16.0;
    std::vector<int> entries(panels, 0);
    svg << "<g font-size=\"12\" fill=\"#222\" " << kFont << ">\n";
    for (size_t k = 0; k < series.size(); ++k) {
      const double ly = panel[panelOf[k]].top + 10.0 + 20.0 * entries[panelOf[k]]++;
      svg << "<line x1=\"" << Num(lx) << "\" y1=\"" << Num(ly) << "\" x2=\"" << Num(lx + 24) << "\" y2=\""
          << Num(ly) << "\" stroke=\"" << SeriesColour(k) << "\" stroke-width=\"3\"/>\n"
          << "<text x=\"" << Num(lx + 30) << "\" y=\"" << Num(ly + 4) << "\">"
          << XmlEscape(Shorten(series[k].name, kLegendChars)) << "</text>\n";
    }
    svg << "</g>\n";
  }
  svg << "</svg>\n";
  return svg.str();
}

}  // namespace tz4::cli
