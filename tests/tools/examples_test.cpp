// Each example circuit, simulated by the built program (build dir/tz4) as a
// user would run it, with a physical figure checked in its CSV output.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "csv_table.h"
#include "tool_test_support.h"

namespace {

using tz4_tool_test::CsvColumns;
using tz4_tool_test::ScratchDir;

constexpr double kPi = 3.14159265358979;

// Runs "tz4 run examples/NAME.tz4 --time T [extra...]" and reads its CSV.
CsvColumns RunExample(const std::string& name, const std::string& time,
                      const std::vector<std::string>& extra = {}) {
  ScratchDir dir("example");
  const std::string csv = dir.File(name + ".csv");
  std::vector<std::string> words = {
      "run",    tz4_tool_test::SourcePath("examples/" + name + ".tz4"),
      "--time", time,
      "--csv",  csv,
      "--quiet"};
  words.insert(words.end(), extra.begin(), extra.end());
  const auto outcome = tz4_tool_test::Program(words, dir.File("stderr.txt"));
  EXPECT_EQ(outcome.code, 0) << name << ": " << outcome.err;
  return tz4_tool_test::ParseCsv(tz4_tool_test::ReadText(csv));
}

// Time at which column `name` first reaches `level`, interpolated.
double FirstCrossing(const CsvColumns& table, const std::string& name, double level) {
  const auto& t = table["time"];
  const auto& v = table[name];
  for (size_t i = 1; i < t.size(); ++i) {
    if (v[i - 1] < level && v[i] >= level)
      return t[i - 1] + (level - v[i - 1]) / (v[i] - v[i - 1]) * (t[i] - t[i - 1]);
  }
  return NAN;
}

// Largest and smallest value of a column over [from, to].
std::pair<double, double> Extremes(const CsvColumns& table, const std::string& name, double from,
                                   double to) {
  double low = INFINITY;
  double high = -INFINITY;
  for (size_t i = 0; i < table.Rows(); ++i) {
    if (table["time"][i] < from || table["time"][i] > to) continue;
    low = std::min(low, table[name][i]);
    high = std::max(high, table[name][i]);
  }
  return {low, high};
}

// Mean of a column over [from, to] by the trapezoid rule on its samples.
double Mean(const CsvColumns& table, const std::string& name, double from, double to) {
  const auto& t = table["time"];
  const auto& v = table[name];
  double sum = 0.0;
  for (size_t i = 1; i < t.size(); ++i) {
    if (t[i - 1] < from || t[i] > to) continue;
    sum += (t[i] - t[i - 1]) * (v[i] + v[i - 1]) / 2.0;
  }
  return sum / (to - from);
}

TEST(Examples, RcStepFollowsItsTimeConstant) {
  const CsvColumns rc = RunExample("rc_step", "10m");
  ASSERT_GT(rc.Rows(), 100u);
  EXPECT_EQ(rc.header, (std::vector<std::string>{"time", "V(V1)", "V(C1)", "I(R1)"}));
  // 10 V step into 1 kOhm and 1 uF: 63.2 % after tau = 1 ms.
  EXPECT_NEAR(FirstCrossing(rc, "V(C1)", 10.0 * (1.0 - std::exp(-1.0))), 1e-3, 1e-6);
  EXPECT_NEAR(rc.At("V(C1)", 5e-3), 10.0 * (1.0 - std::exp(-5.0)), 1e-3);
  EXPECT_NEAR(rc.At("I(R1)", 1e-7), 10e-3, 1e-5);
  // After the falling edge at 5 ms it discharges with the same constant.
  EXPECT_NEAR(rc.At("V(C1)", 6e-3), rc.At("V(C1)", 5e-3) * std::exp(-1.0), 1e-3);
  EXPECT_NEAR(rc.At("I(R1)", 6e-3), -rc.At("V(C1)", 6e-3) / 1e3, 1e-9);

  // Twice the resistance, twice the time constant.
  const CsvColumns slow = RunExample("rc_step", "10m", {"--set", "R1.R=2k"});
  EXPECT_NEAR(FirstCrossing(slow, "V(C1)", 10.0 * (1.0 - std::exp(-1.0))), 2e-3, 2e-6);
}

TEST(Examples, DividerScalesThePwlSourceByItsRatio) {
  const CsvColumns d = RunExample("divider_pwl", "8m");
  ASSERT_GT(d.Rows(), 10u);
  EXPECT_NEAR(d.At("V(V1)", 2e-3), 10.0, 1e-9);
  EXPECT_NEAR(d.At("V(V1)", 4.5e-3), -5.0, 1e-9);
  EXPECT_NEAR(d.At("V(V1)", 7e-3), 0.0, 1e-9);
  size_t checked = 0;
  for (size_t i = 0; i < d.Rows(); ++i) {
    const double v = d["V(V1)"][i];
    // 5 kOhm of 15 kOhm: one third; the source current is V / 15 kOhm.
    EXPECT_NEAR(d["V(R2)"][i], v / 3.0, 1e-9) << "t = " << d["time"][i];
    EXPECT_NEAR(d["I(R1)"][i], v / 15e3, 1e-12) << "t = " << d["time"][i];
    checked += std::fabs(v) > 1.0;
  }
  EXPECT_GT(checked, 10u);
}

TEST(Examples, HalfWaveRectifierPeakDecayAndRipple) {
  const CsvColumns h = RunExample("halfwave_rectifier", "60m");
  ASSERT_GT(h.Rows(), 100u);
  // The capacitor charges to the crest less the 0.7 V diode drop (and a few
  // millivolts across the 1 Ohm source resistance).
  const auto [low, high] = Extremes(h, "V(C1)", 40e-3, 60e-3);
  EXPECT_NEAR(high, 9.3, 0.03);
  // Between crests it discharges into 1 kOhm with tau = R C = 100 ms.
  const double tau = (41e-3 - 27e-3) / std::log(h.At("V(C1)", 27e-3) / h.At("V(C1)", 41e-3));
  EXPECT_NEAR(tau, 0.1, 0.001);
  // Ripple: the crest decays for most of a 20 ms period, 9.3 (1 - e^-0.18).
  EXPECT_NEAR(high - low, 1.53, 0.1);
  // The diode only conducts forward, and never in the negative half-wave.
  for (size_t i = 0; i < h.Rows(); ++i) {
    EXPECT_GE(h["I(D1)"][i], -1e-12) << "t = " << h["time"][i];
    if (h["V(V1)"][i] < 0.0) {
      EXPECT_EQ(h["I(D1)"][i], 0.0) << "t = " << h["time"][i];
    }
  }
}

TEST(Examples, BridgeRectifierPeakAndTwoPulsesPerPeriod) {
  const CsvColumns b = RunExample("bridge_rectifier", "60m");
  ASSERT_GT(b.Rows(), 100u);
  // Two diodes conduct in series: crest less 1.4 V.
  const auto [low, high] = Extremes(b, "V(C1)", 40e-3, 60e-3);
  EXPECT_NEAR(high, 8.6, 0.03);
  EXPECT_GT(high - low, 0.4);
  EXPECT_LT(high - low, 1.0);
  // Full-wave: the capacitor is topped up every 10 ms, by line current of
  // both signs.
  std::vector<double> minima;
  const auto& v = b["V(C1)"];
  for (size_t i = 1; i + 1 < b.Rows(); ++i) {
    if (b["time"][i] > 12e-3 && v[i] < v[i - 1] && v[i] <= v[i + 1]) minima.push_back(b["time"][i]);
  }
  ASSERT_GE(minima.size(), 4u);
  for (size_t i = 1; i < minima.size(); ++i) EXPECT_NEAR(minima[i] - minima[i - 1], 10e-3, 0.2e-3);
  const auto [iLow, iHigh] = Extremes(b, "I(Rs)", 20e-3, 60e-3);
  EXPECT_GT(iHigh, 0.05);
  EXPECT_LT(iLow, -0.05);
}

TEST(Examples, ZenerClampsAboveItsKneeAndDividesBelow) {
  const CsvColumns z = RunExample("zener_regulator", "20m");
  ASSERT_GT(z.Rows(), 100u);
  size_t below = 0;
  size_t above = 0;
  for (size_t i = 0; i < z.Rows(); ++i) {
    const double vin = z["V(V1)"][i];
    const double t = z["time"][i];
    if (vin < 6.1) {  // knee: 5.1 V * 1220 / 1000 = 6.22 V in
      EXPECT_NEAR(z["V(Rload)"][i], vin * 1000.0 / 1220.0, 1e-9) << "t = " << t;
      EXPECT_NEAR(z["I(DZ1)"][i], 0.0, 1e-12) << "t = " << t;
      ++below;
    } else if (vin > 6.4) {
      EXPECT_NEAR(z["V(Rload)"][i], 5.1, 1e-9) << "t = " << t;
      // The zener takes what the load does not: (Vin - 5.1) / 220 - 5.1 / 1000,
      // flowing against its forward direction.
      EXPECT_NEAR(z["I(DZ1)"][i], -((vin - 5.1) / 220.0 - 5.1 / 1000.0), 1e-9) << "t = " << t;
      ++above;
    }
  }
  EXPECT_GT(below, 20u);
  EXPECT_GT(above, 20u);
}

// Mean load voltage of the phase controller firing at angle alpha: the sine
// less the 1 V drop, from alpha to where the current falls to the 10 mA
// holding current, (20 sin - 1) / 100 = 0.01, that is sin = 0.1.
double PhaseControlMean(double alpha) {
  const double off = kPi - std::asin(0.1);
  return (20.0 * (std::cos(alpha) - std::cos(off)) - (off - alpha)) / (2.0 * kPi);
}

TEST(Examples, ThyristorConductsFromTheFiringAngleToTheZeroCrossing) {
  const CsvColumns th = RunExample("thyristor_phase", "40m");
  ASSERT_GT(th.Rows(), 100u);
  for (size_t i = 0; i < th.Rows(); ++i) {
    const double t = th["time"][i];
    const double phase = std::fmod(t, 20e-3);
    if (phase > 0.1e-3 && phase < 4.9e-3) {
      EXPECT_EQ(th["V(Rload)"][i], 0.0) << "t = " << t;  // not yet fired
    }
    if (phase > 5.1e-3 && phase < 9.0e-3) {
      EXPECT_NEAR(th["V(Rload)"][i], th["V(V1)"][i] - 1.0, 1e-9) << "t = " << t;  // on, 1 V drop
    }
    if (phase > 10.1e-3 && phase < 19.9e-3) {
      EXPECT_EQ(th["V(Rload)"][i], 0.0) << "t = " << t;  // reverse
    }
  }
  EXPECT_NEAR(Mean(th, "V(Rload)", 20e-3, 40e-3), PhaseControlMean(kPi / 2), 0.01);

  // Firing at 45 degrees instead of 90 delivers more.
  const CsvColumns early = RunExample("thyristor_phase", "40m", {"--set", "Vg.Delay=2.5m"});
  EXPECT_NEAR(Mean(early, "V(Rload)", 20e-3, 40e-3), PhaseControlMean(kPi / 4), 0.01);
}

// 12 V chopped at 100 kHz and 50 % into 100 uH, 100 uF and 5 Ohm: the mean
// output settles at D Vin less the diode's share (1 - D) Vd = 5.65 V; the
// inductor current ripples by (Vin - Vout) D T / L = 0.3175 A around 1.13 A.
TEST(Examples, BuckConverterSettlesAtItsIdealOutput) {
  const CsvColumns b = RunExample("buck_converter", "20m");
  ASSERT_GT(b.Rows(), 1000u);
  EXPECT_NEAR(Mean(b, "V(C1)", 15e-3, 20e-3), 0.5 * 12.0 - 0.5 * 0.7, 5e-3);
  const auto [low, high] = Extremes(b, "I(L1)", 15e-3, 20e-3);
  EXPECT_NEAR(high - low, (12.0 - 5.65) * 0.5 * 10e-6 / 100e-6, 5e-3);
  EXPECT_NEAR((high + low) / 2.0, 5.65 / 5.0, 5e-3);
}

// A two-bit ripple counter: after the n-th rising clock edge (every 1 ms
// from 0.25 ms) the flip-flops hold n mod 4, each 1 us after its clock.
TEST(Examples, LogicCounterCountsClockEdges) {
  const CsvColumns c = RunExample("logic_counter", "10m");
  for (int n = 0; n < 10; ++n) {
    const double t = 0.9e-3 + n * 1e-3;  // between two edges
    const int count = (n + 1) % 4;
    EXPECT_EQ(c.At("V(FF1)", t), (count & 1) * 5.0) << n;
    EXPECT_EQ(c.At("V(FF2)", t), ((count >> 1) & 1) * 5.0) << n;
  }
}

// A 10 V step into 10 Ohm, 1 mH and 1 uF in series: the capacitor rings at
// wd = sqrt(1 / LC - a^2) with a = R / 2L, overshooting by 10 exp(-a pi / wd)
// at t = pi / wd, each peak exp(-a 2 pi / wd) of the one before.
TEST(Examples, RlcRingsAtItsDampedFrequency) {
  const CsvColumns c = RunExample("rlc_ring", "2m");
  const double a = 10.0 / (2.0 * 1e-3), wd = std::sqrt(1.0 / (1e-3 * 1e-6) - a * a);
  std::vector<std::pair<double, double>> peaks;
  const auto& t = c["time"];
  const auto& v = c["V(C1)"];
  for (size_t i = 1; i + 1 < t.size(); ++i)
    if (v[i] > v[i - 1] && v[i] >= v[i + 1]) peaks.push_back({t[i], v[i]});
  ASSERT_GE(peaks.size(), 3u);
  EXPECT_NEAR(peaks[0].first, kPi / wd, 2e-6);
  EXPECT_NEAR(peaks[0].second - 10.0, 10.0 * std::exp(-a * kPi / wd), 2e-3);
  EXPECT_NEAR((peaks[1].second - 10.0) / (peaks[0].second - 10.0), std::exp(-a * 2 * kPi / wd),
              2e-3);
  EXPECT_NEAR(c.At("V(C1)", 2e-3), 10.0, 0.01);
}

// A 1 V, 50 Hz sine clipped at +-0.5 V by a table, then integrated with
// K = 100: over a positive half wave the clipped sine holds
// (2 - sqrt(3) + pi / 3) / w, and a whole period brings the integral back.
TEST(Examples, SignalChainClipsAndIntegrates) {
  const CsvColumns s = RunExample("signal_chain", "40m");
  const auto [low, high] = Extremes(s, "V(Clip)", 0, 40e-3);
  EXPECT_NEAR(high, 0.5, 1e-9);
  EXPECT_NEAR(low, -0.5, 1e-9);
  const double w = 2 * kPi * 50;
  const auto [bottom, top] = Extremes(s, "V(Integral)", 0, 40e-3);
  EXPECT_NEAR(top, 100 * (2 - std::sqrt(3.0) + kPi / 3) / w, 2e-3);
  EXPECT_NEAR(bottom, 0.0, 2e-3);
  EXPECT_NEAR(s.At("V(Integral)", 20e-3), 0.0, 2e-3);
}

// One RC section file used twice as a subcircuit, its commands setting
// 1 kOhm and 1 uF in F1, 2 kOhm and 2 uF in F2: time constants 1 ms and 4 ms.
TEST(Examples, SubcircuitFiltersTakeTheirCommands) {
  const CsvColumns f = RunExample("subcircuit_filters", "20m");
  EXPECT_NEAR(FirstCrossing(f, "V(F1.C1)", 10.0 * (1.0 - std::exp(-1.0))), 1e-3, 1e-5);
  EXPECT_NEAR(FirstCrossing(f, "V(F2.C1)", 10.0 * (1.0 - std::exp(-1.0))), 4e-3, 4e-5);
}

// A 1 V pulse from 50 Ohm into a 1 us, 50 Ohm line with an open far end:
// the line takes half the step, the far end doubles it to 1 V after 1 us,
// and the reflection brings the input to 1 V after 2 us.
TEST(Examples, TransmissionLineDelaysAndReflects) {
  const CsvColumns l = RunExample("transmission_line", "10u");
  EXPECT_NEAR(FirstCrossing(l, "V(IN)", 0.25), 0.5e-6, 2e-8);
  EXPECT_NEAR(FirstCrossing(l, "V(FAR)", 0.5), 1.5e-6, 2e-8);
  EXPECT_NEAR(FirstCrossing(l, "V(IN)", 0.75), 2.5e-6, 2e-8);
  EXPECT_NEAR(Extremes(l, "V(FAR)", 0, 10e-6).second, 1.0, 1e-9);
}

}  // namespace
