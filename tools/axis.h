// Axis arithmetic for charts: tick positions at 1, 2 or 5 times a power of
// ten, and engineering prefixes, so that an axis from 0 to 5e-3 s reads
// "0 1 2 3 4 5" under the title "time (ms)".
#pragma once
#include <string>
#include <vector>

namespace tz4::cli {

// A power of 1000 and its SI prefix ("m", "µ", "k", ...; "" for 1).
struct EngineeringScale {
  double factor = 1.0;
  std::string prefix;
};

// The largest power of 1000 not above `magnitude`, between femto and tera;
// 1 for 0 or for a magnitude that is not finite.
EngineeringScale ChooseScale(double magnitude);

struct Ticks {
  double low = 0.0;   // axis ends
  double high = 1.0;
  double step = 1.0;  // distance between ticks
  std::vector<double> values;
};

// About `target` ticks over [low, high]. With `expand` the axis ends are
// moved out to the ticks around the data; otherwise the ends stay and the
// ticks lie inside. An empty or degenerate range (low >= high) is widened
// around its value first, so that a constant trace still gets an axis.
Ticks NiceTicks(double low, double high, int target, bool expand);

// The decimals that tick labels need at this step in this scale.
int TickDecimals(double step, const EngineeringScale& scale);

// A tick label: value / scale.factor with `decimals` places; values within
// rounding of 0 give "0".
std::string TickLabel(double value, const EngineeringScale& scale, int decimals);

// A number with an engineering prefix for text ("5 m", "2.2 k", "100 "),
// at up to `digits` significant digits with trailing zeros removed.
std::string EngineeringText(double value, int digits = 4);

}  // namespace tz4::cli
