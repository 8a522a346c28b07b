#include "tools/svg_plot.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <regex>
#include <set>

#include "tools/axis.h"

namespace tz4::cli {
namespace {

size_t Count(const std::string& text, const std::string& what) {
  size_t n = 0;
  for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
  return n;
}

// The "d" attributes of the curves, in order.
std::vector<std::string> Paths(const std::string& svg) {
  std::vector<std::string> out;
  const std::regex path("<path stroke=\"[^\"]*\" d=\"([^\"]*)\"");
  for (auto it = std::sregex_iterator(svg.begin(), svg.end(), path); it != std::sregex_iterator(); ++it) {
    out.push_back((*it)[1]);
  }
  return out;
}

// The y pixel of every point of a path.
std::vector<double> PathYs(const std::string& d) {
  std::vector<double> ys;
  const std::regex point("[ML]([-0-9.]+),([-0-9.]+)");
  for (auto it = std::sregex_iterator(d.begin(), d.end(), point); it != std::sregex_iterator(); ++it) {
    ys.push_back(std::stod((*it)[2]));
  }
  return ys;
}

TEST(Axis, EngineeringScales) {
  EXPECT_EQ(ChooseScale(5e-3).prefix, "m");
  EXPECT_EQ(ChooseScale(1e-3).prefix, "m");
  EXPECT_EQ(ChooseScale(999e-6).prefix, "\xC2\xB5");
  EXPECT_EQ(ChooseScale(12.0).prefix, "");
  EXPECT_EQ(ChooseScale(-2.2e3).prefix, "k");
  EXPECT_EQ(ChooseScale(1e-30).prefix, "f");
  EXPECT_DOUBLE_EQ(ChooseScale(0.0).factor, 1.0);
  EXPECT_EQ(EngineeringText(0.0047), "4.7 m");
  EXPECT_EQ(EngineeringText(999.96), "1 k");
  EXPECT_EQ(EngineeringText(100.0), "100 ");
}

TEST(Axis, NiceTicksCoverTheRange) {
  Ticks t = NiceTicks(0.0, 5e-3, 5, false);
  EXPECT_DOUBLE_EQ(t.step, 1e-3);
  ASSERT_EQ(t.values.size(), 6u);
  EXPECT_DOUBLE_EQ(t.values.back(), 5e-3);
  EXPECT_EQ(TickLabel(t.values[3], ChooseScale(5e-3), TickDecimals(t.step, ChooseScale(5e-3))), "3");

  t = NiceTicks(-0.37, 9.2, 6, true);
  EXPECT_DOUBLE_EQ(t.step, 2.0);
  EXPECT_DOUBLE_EQ(t.low, -2.0);
  EXPECT_DOUBLE_EQ(t.high, 10.0);

  // A constant gets an axis around it.
  t = NiceTicks(3.0, 3.0, 6, true);
  EXPECT_LT(t.low, 3.0);
  EXPECT_GT(t.high, 3.0);
  t = NiceTicks(0.0, 0.0, 6, true);
  EXPECT_LT(t.low, 0.0);
  EXPECT_GT(t.high, 0.0);
}

TEST(Axis, LabelsHaveTheDecimalsTheStepNeeds) {
  const EngineeringScale milli = ChooseScale(2e-3);
  EXPECT_EQ(TickDecimals(2e-4, milli), 1);
  EXPECT_EQ(TickLabel(1.2e-3, milli, 1), "1.2");
  EXPECT_EQ(TickLabel(-1e-19, milli, 1), "0.0");
  EXPECT_EQ(TickDecimals(50.0, ChooseScale(400.0)), 0);
  EXPECT_EQ(TickDecimals(0.05, ChooseScale(0.4)), 0);  // 50 m
}

TEST(SvgPlot, OneColouredCurveAndLegendEntryPerSeries) {
  std::vector<Series> series = {{"V(C1)", {0, 1e-3, 2e-3}, {0, 6.3, 8.6}},
                                {"I(R1)", {0, 1e-3, 2e-3}, {10e-3, 3.7e-3, 1.4e-3}},
                                {"a<b & \"c\"", {0, 2e-3}, {1, 1}}};
  PlotOptions options;
  options.title = "rc_step";
  const std::string svg = RenderSvg(series, options);
  EXPECT_EQ(svg.rfind("<?xml", 0), 0u);
  EXPECT_EQ(Count(svg, "<svg"), 1u);
  EXPECT_EQ(Count(svg, "</svg>"), 1u);
  EXPECT_EQ(Count(svg, "<g"), Count(svg, "</g>"));
  EXPECT_EQ(Paths(svg).size(), 3u);
  std::set<std::string> colours = {SeriesColour(0), SeriesColour(1), SeriesColour(2)};
  EXPECT_EQ(colours.size(), 3u);
  for (const auto& c : colours) EXPECT_GE(Count(svg, "\"" + c + "\""), 2u) << c;  // curve and legend
  EXPECT_NE(svg.find(">V(C1)</text>"), std::string::npos);
  EXPECT_NE(svg.find("a&lt;b &amp; &quot;c&quot;"), std::string::npos);
  EXPECT_EQ(svg.find("a<b"), std::string::npos);
  EXPECT_NE(svg.find(">time (ms)</text>"), std::string::npos);
  EXPECT_NE(svg.find(">rc_step</text>"), std::string::npos);
}

TEST(SvgPlot, UnitsOnTheValueAxis) {
  PlotOptions options;
  options.quantities = {{"voltage", "V"}};
  const std::string svg = RenderSvg({{"V(C1)", {0, 1}, {0, 0.004}}}, options);
  EXPECT_NE(svg.find(">voltage (mV)</text>"), std::string::npos);
  EXPECT_NE(svg.find(">time (s)</text>"), std::string::npos);
  EXPECT_EQ(Count(svg, "<clipPath"), 1u);
}

TEST(SvgPlot, EachQuantityGetsItsOwnPanel) {
  PlotOptions options;
  options.quantities = {{"voltage", "V"}, {"current", "A"}, {"voltage", "V"}};
  const std::string svg = RenderSvg({{"V(V1)", {0, 1e-3}, {0, 10}},
                                     {"I(R1)", {0, 1e-3}, {0, 0.01}},
                                     {"V(C1)", {0, 1e-3}, {0, 6.3}}},
                                    options);
  EXPECT_EQ(Count(svg, "<clipPath"), 2u);
  EXPECT_NE(svg.find(">voltage (V)</text>"), std::string::npos);
  EXPECT_NE(svg.find(">current (mA)</text>"), std::string::npos);
  // The current's curve is drawn in the second panel, the voltages in the first.
  EXPECT_LT(svg.find(SeriesColour(2)), svg.find("url(#panel1)"));
  EXPECT_GT(svg.find("stroke=\"" + SeriesColour(1) + "\" d="), svg.find("url(#panel1)"));
  // One row of time labels: "1.0" (ms) appears once.
  EXPECT_EQ(Count(svg, ">1.0</text>"), 1u);
}

TEST(SvgPlot, HigherValuesAreDrawnHigher) {
  const std::string svg = RenderSvg({{"up", {0, 1, 2}, {0, 1, 2}}}, PlotOptions{});
  const std::vector<double> ys = PathYs(Paths(svg).at(0));
  ASSERT_EQ(ys.size(), 3u);
  EXPECT_GT(ys[0], ys[1]);
  EXPECT_GT(ys[1], ys[2]);
}

TEST(SvgPlot, NotFiniteValuesBreakTheLine) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const std::string svg = RenderSvg({{"gap", {0, 1, 2, 3, 4}, {0, 1, nan, 3, 4}}}, PlotOptions{});
  const std::string d = Paths(svg).at(0);
  EXPECT_EQ(Count(d, "M"), 2u);
  EXPECT_EQ(Count(d, "L"), 2u);
}

TEST(SvgPlot, LongSeriesAreThinnedButKeepTheirExtremes) {
  Series s{"spiky", {}, {}};
  const int n = 200000;
  for (int i = 0; i < n; ++i) {
    s.t.push_back(i * 1e-6);
    s.v.push_back(i == 123457 ? 50.0 : i == 77777 ? -20.0 : std::sin(i * 1e-3));
  }
  const std::string svg = RenderSvg({s}, PlotOptions{});
  const std::vector<double> ys = PathYs(Paths(svg).at(0));
  EXPECT_LT(ys.size(), 5000u);
  EXPECT_GT(ys.size(), 500u);
  // The spike up is the lowest pixel, the spike down the highest: both kept.
  const auto [low, high] = std::minmax_element(ys.begin(), ys.end());
  Series tip{"tip", {0, 0.2}, {50.0, -20.0}};
  const std::vector<double> tipYs = PathYs(Paths(RenderSvg({s, tip}, PlotOptions{})).at(1));
  EXPECT_DOUBLE_EQ(*low, tipYs[0]);
  EXPECT_DOUBLE_EQ(*high, tipYs[1]);
}

TEST(SvgPlot, NoDataStillMakesAChart) {
  const std::string svg = RenderSvg({{"empty", {}, {}}}, PlotOptions{});
  EXPECT_NE(svg.find(">no data</text>"), std::string::npos);
  EXPECT_TRUE(Paths(svg).empty());
  EXPECT_NE(RenderSvg({}, PlotOptions{}).find("</svg>"), std::string::npos);
}

}  // namespace
}  // namespace tz4::cli
