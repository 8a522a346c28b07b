// Capacitors, diodes and thyristors run through the C interface from real
// circuit files, checked against closed forms: RC charge and discharge,
// half-wave and bridge rectifiers with a smoothing capacitor (conduction
// interval and ripple), a zener clamp, and a thyristor fired by a gate
// pulse and released at its holding current.
#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "circuit_run.h"

namespace {

using namespace tz4_test;

std::string Sine(const std::string& name, int a, int b, double amplitude, double period) {
  return Element("V_V", name, "Sin", {a, b}, "v=\"10\"",
                 "<Signal u0=\"0\" u1=\"" + Number(amplitude) + "\" p=\"" + Number(period) + "\" d=\"0\" />");
}

using RectifierRun = CircuitRun;

// ------------------------------------------------------------------- RC

// The error on an exponential of amplitude a and time constant tau after
// time t: the trapezoid with step h gives about a (t/tau) (h/tau)^2 / 12,
// and the two backward Euler steps of kmin * h that start the run
// a (h'/tau)^2 / 2 each.
double TrapezoidBound(double a, double t, double tau, double h) {
  const double start = 0.01 * h / tau;
  return a * ((t / tau) * (h / tau) * (h / tau) / 12.0 + start * start) * 1.2 + 1e-12;
}

TEST_F(RectifierRun, RCChargeFollowsTheExponential) {
  const double tau = 1e-3, step = 2e-5;
  Open(Element("V_V", "V1", "V", {0, 1}, "v=\"10\"") +
           Element("R_R", "R1", "R", {1, 2}, "r=\"1000\"") +
           Element("C_C", "C1", "C", {0, 2}, "c=\"1e-6\" ic=\"0\""),
       step);
  const int vc = Trace("C1");
  const int ic = Trace("C1", true);
  ASSERT_EQ(TZ4_Simulate(h, 5e-3), 0) << Error();
  const auto v = Samples(vc);
  const auto i = Samples(ic);
  ASSERT_GE(v.size(), 200u);
  ASSERT_EQ(v.size(), i.size());
  double worst = 0;
  for (size_t k = 0; k < v.size(); k++) {
    const double expected = 10.0 * (1.0 - std::exp(-v[k].t / tau));
    ASSERT_NEAR(v[k].v, expected, TrapezoidBound(10.0, v[k].t, tau, step)) << v[k].t;
    worst = std::max(worst, std::fabs(v[k].v - expected));
    // The capacitor's current is the resistor's.
    ASSERT_NEAR(i[k].v, (10.0 - v[k].v) / 1000.0, 1e-12) << v[k].t;
  }
  EXPECT_EQ(v.front().t, 0.0);
  EXPECT_EQ(v.front().v, 0.0);
  EXPECT_GT(worst, 0.0);  // a real integration, not the closed form
}

TEST_F(RectifierRun, ChargedCapacitorDischargesFromItsInitialCondition) {
  const double tau = 2e-3, step = 2e-5;
  Open(Element("C_C", "C1", "C", {0, 1}, "c=\"2e-6\" ic=\"5\"") +
           Element("R_R", "R1", "R", {1, 0}, "r=\"1000\""),
       step);
  const int vc = Trace("C1");
  ASSERT_EQ(TZ4_Simulate(h, 6e-3), 0) << Error();
  const auto v = Samples(vc);
  ASSERT_GE(v.size(), 300u);
  EXPECT_EQ(v.front().v, 5.0);
  for (const Sample& s : v)
    ASSERT_NEAR(s.v, 5.0 * std::exp(-s.t / tau), TrapezoidBound(5.0, s.t, tau, step)) << s.t;

  // The voltage reached is saved as the next start.
  EXPECT_NEAR(std::stod(SavedIC("C1.IC")), v.back().v, 1e-9);
}

// --------------------------------------------------------------- rectifiers

// The capacitor voltage of an ideal rectifier: a sine of amplitude `a` and
// angular frequency `w` through `drop` volts of diodes into C parallel R,
// from an empty capacitor at t = 0. While the diodes conduct the capacitor
// follows the source less the drop; they let go when the current into C and
// R, C dv/dt + v/R, reaches zero after a crest, and the capacitor decays
// with RC until the source catches up again. Full wave rectifies both
// halves.
class IdealRectifier {
 public:
  IdealRectifier(double a, double w, double drop, double r, double c, bool fullWave, double until)
      : a_(a), w_(w), drop_(drop), r_(r), c_(c), tau_(r * c), full_(fullWave) {
    const double half = kPi / w_;       // a half period
    const double rise = 0.5 * half;     // zero crossing to crest
    double t = std::asin(drop_ / a_) / w_;  // the first conduction
    int crest = 0;
    while (t < until) {
      Interval in;
      in.on = t;
      const double peak = rise + crest * (full_ ? half : 2 * half);
      in.off = Root([this](double x) { return Current(x); }, peak, peak + rise);
      in.vOff = Source(in.off) - drop_;
      crest++;
      const double nextZero = peak + rise + (full_ ? 0.0 : half);
      const double nextPeak = nextZero + rise;
      intervals_.push_back(in);
      t = Root([this, in](double x) { return Source(x) - drop_ - in.vOff * std::exp(-(x - in.off) / tau_); },
               nextZero, nextPeak);
    }
  }

  // The voltage at t, and whether t lies within `near` of a switching time.
  double Voltage(double t, double near, bool& nearSwitch) const {
    nearSwitch = false;
    double v = 0.0;
    for (const Interval& in : intervals_) {
      if (std::fabs(t - in.on) < near || std::fabs(t - in.off) < near) nearSwitch = true;
      if (t >= in.on && t <= in.off) v = Source(t) - drop_;
      if (t > in.off) v = in.vOff * std::exp(-(t - in.off) / tau_);
    }
    return v;
  }
  bool Conducting(double t) const {
    for (const Interval& in : intervals_)
      if (t >= in.on && t <= in.off) return true;
    return false;
  }

  // The source as the diodes see it.
  double Source(double t) const {
    const double v = a_ * std::sin(w_ * t);
    return full_ ? std::fabs(v) : v;
  }

  struct Interval {
    double on, off, vOff;
  };
  const std::vector<Interval>& Intervals() const { return intervals_; }

 private:
  // What the diodes must deliver while they conduct.
  double Current(double t) const {
    const double slope = a_ * w_ * std::cos(w_ * t) * (full_ && std::sin(w_ * t) < 0 ? -1.0 : 1.0);
    return c_ * slope + (Source(t) - drop_) / r_;
  }
  // A sign change of f between lo and hi, by bisection.
  static double Root(const std::function<double(double)>& f, double lo, double hi) {
    const bool rising = f(lo) < 0;
    for (int i = 0; i < 200; i++) {
      const double mid = 0.5 * (lo + hi);
      if ((f(mid) < 0) == rising)
        lo = mid;
      else
        hi = mid;
    }
    return 0.5 * (lo + hi);
  }

  double a_, w_, drop_, r_, c_, tau_;
  bool full_;
  std::vector<Interval> intervals_;
};

// Every sample of the capacitor voltage against the ideal rectifier, for a
// run with maximum step `step`. The driver places a switching within about
// one step (the capacitor's trapezoidal current rings while the diodes hold
// its voltage, so the current's sign is known only step by step). Within a
// step of a switching the voltage may lag the source by its slope times the
// step; beyond, a switching placed late by up to a step leaves at most half
// the change of slope times the step squared.
struct Tolerance {
  double window, near, far;
};

Tolerance RectifierTolerance(double a, double w, double step) {
  return {step, a * w * step, 0.5 * a * w * w * step * step};
}

void ExpectRectified(const std::vector<Sample>& samples, const IdealRectifier& ideal, const Tolerance& tol) {
  int far = 0;
  for (const Sample& s : samples) {
    bool nearSwitch = false;
    const double expected = ideal.Voltage(s.t, tol.window, nearSwitch);
    ASSERT_NEAR(s.v, expected, nearSwitch ? tol.near : tol.far) << "t = " << s.t;
    far += nearSwitch ? 0 : 1;
  }
  EXPECT_GT(far, static_cast<int>(samples.size()) * 9 / 10);
}

// Where the simulated capacitor follows the source less the drop: the
// first and the last such sample between two times.
std::pair<double, double> SimulatedConduction(const std::vector<Sample>& v, const IdealRectifier& ideal,
                                              double drop, double from, double to) {
  double first = 1e99, last = -1e99;
  for (const Sample& s : v) {
    if (s.t < from || s.t > to || s.v <= 0.0) continue;
    if (std::fabs(s.v - (ideal.Source(s.t) - drop)) > 1e-9) continue;
    first = std::min(first, s.t);
    last = std::max(last, s.t);
  }
  return {first, last};
}

// Ripple of a whole period of the closed form: the crest less the voltage
// where conduction starts again.
double Ripple(const IdealRectifier& ideal, size_t k) {
  const auto& in = ideal.Intervals();
  bool ignored = false;
  return in[k].vOff - ideal.Voltage(in[k + 1].on, 0.0, ignored);
}

// The simulated ripple over the same span.
double SimulatedRipple(const std::vector<Sample>& v, double from, double to) {
  double high = -1e99, low = 1e99;
  for (const Sample& s : v) {
    if (s.t < from || s.t > to) continue;
    high = std::max(high, s.v);
    low = std::min(low, s.v);
  }
  return high - low;
}

TEST_F(RectifierRun, HalfWaveRectifierWithSmoothingCapacitor) {
  // 10 V at 1 kHz through a 0.7 V diode into 10 uF parallel 1 kOhm.
  const double period = 1e-3, w = 2 * kPi / period, step = 2e-6;
  Open(Sine("V1", 0, 1, 10.0, period) +
           Element("D_D", "D1", "Diode", {2, 1}, "vd=\"0.7\"") +
           Element("C_C", "C1", "C", {0, 2}, "c=\"10e-6\" ic=\"0\"") +
           Element("R_R", "R1", "R", {2, 0}, "r=\"1000\""),
       step);
  const int vc = Trace("C1");
  const int id = Trace("D1", true);
  ASSERT_EQ(TZ4_Simulate(h, 5e-3), 0) << Error();
  const IdealRectifier ideal(10.0, w, 0.7, 1000.0, 10e-6, false, 6e-3);
  const Tolerance tol = RectifierTolerance(10.0, w, step);
  const auto v = Samples(vc);
  ASSERT_GE(v.size(), 2500u);
  ExpectRectified(v, ideal, tol);

  // The diode never conducts backwards, and carries nothing while the
  // closed form blocks.
  for (const Sample& s : Samples(id)) {
    ASSERT_GE(s.v, 0.0) << s.t;
    bool nearSwitch = false;
    ideal.Voltage(s.t, tol.window, nearSwitch);
    if (!nearSwitch && !ideal.Conducting(s.t)) {
      ASSERT_EQ(s.v, 0.0) << s.t;
    }
  }

  // One conduction a period, of some 24 degrees, where the closed form has
  // it; and the ripple it leaves.
  const auto& in = ideal.Intervals();
  for (size_t k = 1; k < 5; k++) {
    const auto [first, last] = SimulatedConduction(v, ideal, 0.7, (k - 0.5) * period, (k + 0.5) * period);
    EXPECT_NEAR(first, in[k].on, 2 * step) << k;
    EXPECT_NEAR(last, in[k].off, 2 * step) << k;
  }
  const double angle = (in[3].off - in[3].on) * w * 180 / kPi;
  EXPECT_GT(angle, 20.0);
  EXPECT_LT(angle, 30.0);
  const double ripple = Ripple(ideal, 3);
  EXPECT_NEAR(ripple, 9.3 * (1 - std::exp(-(in[4].on - in[3].off) / 10e-3)), 1e-3);
  EXPECT_NEAR(SimulatedRipple(v, in[3].off - step, in[4].on + step), ripple, 2 * tol.far);
}

TEST_F(RectifierRun, BridgeRectifierChargesOnBothHalfWaves) {
  const double period = 1e-3, w = 2 * kPi / period, step = 2e-6;
  // The bridge's minus end leaks to ground through 1 Gohm, so that the
  // floating side keeps a reference while all arms block.
  Open(Sine("V1", 0, 1, 10.0, period) +
           Element("D_BR", "B1", "Diode", {3, 2, 1, 0}, "vd=\"0.7\"") +
           Element("C_C", "C1", "C", {3, 2}, "c=\"10e-6\" ic=\"0\"") +
           Element("R_R", "R1", "R", {2, 3}, "r=\"1000\"") +
           Element("R_R", "RX", "R", {3, 0}, "r=\"1e9\""),
       step);
  const int vc = Trace("C1");
  const int power = TZ4_AddPTrace(h, "B1");
  ASSERT_GE(power, 0) << Error();
  ASSERT_EQ(TZ4_Simulate(h, 5e-3), 0) << Error();
  const IdealRectifier ideal(10.0, w, 1.4, 1000.0, 10e-6, true, 6e-3);
  const Tolerance tol = RectifierTolerance(10.0, w, step);
  const auto v = Samples(vc);
  ASSERT_GE(v.size(), 2500u);
  ExpectRectified(v, ideal, tol);
  // Two charging pulses a period, at the crests of either sign.
  const auto& in = ideal.Intervals();
  EXPECT_NEAR(in[5].on - in[3].on, period, 1e-9);
  for (size_t k = 2; k < 9; k++) {
    const auto [first, last] = SimulatedConduction(v, ideal, 1.4, k * period / 2, (k + 1) * period / 2);
    EXPECT_NEAR(first, in[k].on, 2 * step) << k;
    EXPECT_NEAR(last, in[k].off, 2 * step) << k;
  }
  // Charged twice as often, the ripple is about half the half-wave's.
  const double ripple = Ripple(ideal, 6);
  EXPECT_NEAR(SimulatedRipple(v, in[6].off - step, in[7].on + step), ripple, 2 * tol.far);
  EXPECT_NEAR(ripple, 8.6 * (1 - std::exp(-(in[7].on - in[6].off) / 10e-3)), 1e-3);
  EXPECT_LT(ripple, 0.5);
  // The bridge dissipates the drops times its currents: next to nothing
  // while it blocks (the leak's nanoamperes), and never a negative amount
  // beyond the rounding of the point stored right after an event.
  int blocking = 0;
  for (const Sample& s : Samples(power)) {
    ASSERT_GE(s.v, -1e-6) << s.t;
    bool nearSwitch = false;
    ideal.Voltage(s.t, tol.window, nearSwitch);
    if (nearSwitch || ideal.Conducting(s.t)) continue;
    ASSERT_LT(s.v, 1e-7) << s.t;
    blocking++;
  }
  EXPECT_GT(blocking, 10);
}

TEST_F(RectifierRun, ZenerClampsBothHalfWaves) {
  const double period = 1e-3, w = 2 * kPi / period;
  Open(Sine("V1", 0, 1, 10.0, period) + Element("R_R", "R1", "R", {1, 2}, "r=\"1000\"") +
           Element("D_Z", "Z1", "Zener", {0, 2}, "v=\"5.1\" vd=\"0.6\""),
       1e-5);
  const int out = Trace("Z1");
  const int current = Trace("Z1", true);
  ASSERT_EQ(TZ4_Simulate(h, 2e-3), 0) << Error();
  auto clamped = [w](double t) { return std::clamp(10.0 * std::sin(w * t), -5.1, 0.6); };
  // The stored voltage keeps only the ends of its flat stretches.
  const auto v = Samples(out);
  ASSERT_GE(v.size(), 40u);
  int forward = 0, reverse = 0;
  for (const Sample& s : v) {
    ASSERT_NEAR(s.v, clamped(s.t), 1e-9) << s.t;
    forward += std::fabs(s.v - 0.6) < 1e-12 ? 1 : 0;
    reverse += std::fabs(s.v + 5.1) < 1e-12 ? 1 : 0;
  }
  EXPECT_GE(forward, 4);  // two flat stretches each way
  EXPECT_GE(reverse, 4);
  // The zener takes what the resistor does not pass on.
  const auto i = Samples(current);
  ASSERT_GE(i.size(), 150u);
  for (const Sample& s : i)
    ASSERT_NEAR(s.v, (10.0 * std::sin(w * s.t) - clamped(s.t)) / 1000.0, 1e-12) << s.t;
  // Each knee is found to within the smallest step, kmin times the step.
  for (double knee : {std::asin(0.06) / w, (kPi - std::asin(0.06)) / w, (kPi + std::asin(0.51)) / w,
                      (2 * kPi - std::asin(0.51)) / w}) {
    double nearest = 1.0;
    for (const Sample& s : v) nearest = std::min(nearest, std::fabs(s.t - knee));
    EXPECT_LT(nearest, 0.01 * 1e-5) << knee;
  }
}

TEST_F(RectifierRun, ThyristorFiresOnItsGateAndLetsGoAtTheHoldingCurrent) {
  // A 10 V, 1 kHz supply through 1 kOhm; a 20 us gate pulse at 45 degrees.
  // The thyristor conducts from the pulse until (v - 1 V) / 1 kOhm falls to
  // the 1 mA holding current, at v = 2 V, and blocks until the next pulse.
  const double period = 1e-3, w = 2 * kPi / period;
  Open(Sine("VA", 0, 1, 10.0, period) + Element("R_R", "RA", "R", {1, 2}, "r=\"1000\"") +
           Element("D_VCT", "T1", "Thyristor", {0, 2, 0, 3}, "vd=\"1\" thr=\"2\" hold=\"1e-3\"") +
           Element("V_V", "VG", "Pulse", {0, 3}, "v=\"10\"",
                   "<Signal u0=\"0\" u1=\"5\" p=\"1e-3\" w=\"2e-5\" r=\"1e-6\" f=\"1e-6\" "
                   "d=\"1.25e-4\" />"),
       1e-5);
  const int current = Trace("T1", true);
  const int voltage = Trace("T1");
  ASSERT_EQ(TZ4_Simulate(h, 2e-3), 0) << Error();
  const double fire = 1.25e-4 + 0.4e-6;  // the gate crosses 2 V on its rise
  const double release = (kPi - std::asin(0.2)) / w;
  auto conducting = [&](double t) {
    const double local = std::fmod(t, period);
    return local > fire && local < release;
  };
  auto near = [&](double t) {
    const double local = std::fmod(t, period);
    return std::fabs(local - fire) < 2e-6 || std::fabs(local - release) < 2e-6;
  };
  int on = 0, latched = 0, blocked = 0;

  for (const Sample& s : Samples(current)) {
    if (near(s.t)) continue;
    if (conducting(s.t)) {
      ASSERT_NEAR(s.v, (10.0 * std::sin(w * s.t) - 1.0) / 1000.0, 1e-12) << s.t;
      on++;
      if (std::fmod(s.t, period) > 1.25e-4 + 2.2e-5) latched++;  // the gate is gone
    } else {
      ASSERT_EQ(s.v, 0.0) << s.t;
      blocked++;
    }
  }
  EXPECT_GT(on, 2 * 20);
  EXPECT_GT(latched, 2 * 15);
  EXPECT_GE(blocked, 2);  // zero stretches keep only their ends
  // While it conducts the thyristor holds its drop; while it blocks it
  // takes the whole supply.
  for (const Sample& s : Samples(voltage)) {
    if (near(s.t)) continue;
    ASSERT_NEAR(s.v, conducting(s.t) ? 1.0 : 10.0 * std::sin(w * s.t), 1e-9) << s.t;
  }
  // The latch lets go at the holding current: the last conducting sample
  // of the first period carries just above it, the supply falling by some
  // 62 A/s there. The refused step that found it ends within two smallest
  // steps (kmin times the step) of it, and the step that crosses it takes
  // one more at least.
  double lastT = 0, lastI = 0, offT = 1.0;
  for (const Sample& s : Samples(current)) {
    if (s.t > period) break;
    if (s.v > 0) {
      lastT = s.t;
      lastI = s.v;
    } else if (lastT > 0 && offT > period) {
      offT = s.t;
    }
  }
  EXPECT_GT(lastI, 1e-3);
  EXPECT_LT(lastI, 1e-3 + 62.0 * 1e-6);
  EXPECT_LT(lastT, release);
  EXPECT_GT(offT, release);
  EXPECT_LT(offT, release + 3 * 0.01 * 1e-5);

  // Released, it starts blocked next time.
  EXPECT_EQ(SavedIC("T1.IC"), "Off");
}

}  // namespace
