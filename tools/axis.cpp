#include "tools/axis.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace tz4::cli {

namespace {

struct Prefix {
  int exponent;
  const char* text;
};
constexpr Prefix kPrefixes[] = {{-15, "f"}, {-12, "p"}, {-9, "n"},  {-6, "\xC2\xB5"}, {-3, "m"},
                                {0, ""},    {3, "k"},   {6, "M"},   {9, "G"},         {12, "T"}};

// Ticks never exceed this many, whatever the caller asks.
constexpr int kMaxTicks = 200;

}  // namespace

EngineeringScale ChooseScale(double magnitude) {
  magnitude = std::fabs(magnitude);
  if (!std::isfinite(magnitude) || magnitude == 0.0) return {};
  // floor of log1000, with a margin so that 1e-3 itself counts as milli.
  int exponent = static_cast<int>(std::floor(std::log10(magnitude) / 3.0 + 1e-9)) * 3;
  exponent = std::clamp(exponent, -15, 12);
  for (const Prefix& p : kPrefixes) {
    if (p.exponent == exponent) return {std::pow(10.0, exponent), p.text};
  }
  return {};
}

Ticks NiceTicks(double low, double high, int target, bool expand) {
  if (!std::isfinite(low) || !std::isfinite(high)) {
    low = 0.0;
    high = 1.0;
  }
  if (low > high) std::swap(low, high);
  if (low == high) {
    const double pad = low == 0.0 ? 1.0 : std::fabs(low) * 0.1;
    low -= pad;
    high += pad;
  }
  target = std::clamp(target, 2, kMaxTicks);
  const double rough = (high - low) / target;
  const double power = std::pow(10.0, std::floor(std::log10(rough)));
  const double mantissa = rough / power;
  const double nice = mantissa < 1.5 ? 1.0 : mantissa < 3.0 ? 2.0 : mantissa < 7.0 ? 5.0 : 10.0;
  Ticks ticks;
  ticks.step = nice * power;
  double kLow;
  double kHigh;
  if (expand) {
    kLow = std::floor(low / ticks.step + 1e-9);
    kHigh = std::ceil(high / ticks.step - 1e-9);
    ticks.low = kLow * ticks.step;
    ticks.high = kHigh * ticks.step;
  } else {
    kLow = std::ceil(low / ticks.step - 1e-9);
    kHigh = std::floor(high / ticks.step + 1e-9);
    ticks.low = low;
    ticks.high = high;
  }
  for (double k = kLow; k <= kHigh && ticks.values.size() < kMaxTicks + 1; k += 1.0) {
    ticks.values.push_back(k * ticks.step);
  }
  return ticks;
}

int TickDecimals(double step, const EngineeringScale& scale) {
  const double scaled = step / scale.factor;
  if (!(scaled > 0.0) || !std::isfinite(scaled)) return 0;
  return std::max(0, static_cast<int>(std::ceil(-std::log10(scaled) - 1e-9)));
}

std::string TickLabel(double value, const EngineeringScale& scale, int decimals) {
  double scaled = value / scale.factor;
  if (std::fabs(scaled) < 0.5 * std::pow(10.0, -decimals)) scaled = 0.0;  // no "-0"
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.*f", decimals, scaled);
  return buffer;
}

std::string EngineeringText(double value, int digits) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value > 0 ? "inf" : "-inf";
  char buffer[64];
  // Round to the digits first, so that 999.96 at 4 digits becomes "1 k", not
  // "1000 ".
  digits = std::max(1, digits);
  std::snprintf(buffer, sizeof buffer, "%.*e", digits - 1, value);
  value = std::strtod(buffer, nullptr);
  const EngineeringScale scale = ChooseScale(value);
  std::snprintf(buffer, sizeof buffer, "%.*g", digits, value / scale.factor);
  return std::string(buffer) + " " + scale.prefix;
}

}  // namespace tz4::cli
