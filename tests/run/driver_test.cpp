// The transient driver on documents built from test components: start-up,
// the three run modes, event landing, halving at a state change, the fixed
// step, failures and their texts, restarts after changes in the middle of a
// run, and the initial conditions.
#include "run/driver.h"
#include "../solver/calc_internals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "base/last_error.h"
#include "doc/doc.h"
#include "../solver/fake_cmp.h"
#include "results/trace.h"
#include "solver/calc.h"

namespace tz4 {
namespace {

using solvertest::FakeCmp;

const ModelInfo kTracedModels[] = {
    {"Fake", 90, nullptr, 0, 0, TRACE_V | TRACE_I | TRACE_P, 0, 0},
    {nullptr, 0, nullptr, 0, 0, 0, 0, 0},
};

// A test component that can also fail its check and observe PostStep.
class Part : public FakeCmp {
 public:
  using FakeCmp::FakeCmp;
  bool CheckParams() override { return checkError.empty() || ComponentError(this, checkError); }
  bool PostStep(CCalc& calc, bool apply, double t, bool& changed) override {
    changed = false;
    return onPostStep ? onPostStep(calc, apply, t, changed) : true;
  }
  double value = 0.0;
  std::string checkError;
  std::function<bool(CCalc&, bool, double, bool&)> onPostStep;
};

bool Near(double a, double b, double rel = 1e-9) {
  return std::fabs(a - b) <= rel * std::max(std::fabs(a), std::fabs(b)) + 1e-18;
}

// A document whose collection holds test components.
class Bench {
 public:
  Bench() {
    doc.settings.step = 1e-3;
    SetLastError("");
  }

  Part& Add(const std::string& name, std::vector<int32_t> nodes, int32_t rows = 0) {
    auto part = std::make_unique<Part>(name, std::move(nodes), rows);
    part->models = kTracedModels;
    part->modelIndex = 0;
    Part& ref = *part;
    doc.cmps.Add(std::move(part));
    return ref;
  }

  Part& Resistor(const std::string& name, int32_t a, int32_t b, double R) {
    Part& r = Add(name, {a, b});
    r.value = R;
    r.onStamp = [&r](CCalc& calc, int phase, double) {
      if (phase == STAMP_MATRIX && calc.pass == 0)
        calc.StampConductance(r.pins[0], r.pins[1], r.value);
      return 0;
    };
    return r;
  }

  // V(b) - V(a) = v(t), fed through the varying term; `corners` are the
  // times it reports as events.
  Part& Source(const std::string& name, int32_t a, int32_t b, std::function<double(double)> v,
               std::vector<double> corners = {}) {
    Part& src = Add(name, {a, b}, 1);
    src.onStamp = [&src, v](CCalc& calc, int phase, double t) {
      const int r = src.firstRow;
      if (phase == STAMP_MATRIX && calc.pass == 0) {
        calc.StampVSource(src.pins[0], src.pins[1], r, 0.0);
        Raw(calc).rowMark[static_cast<size_t>(r)] = 1;
      }
      if (phase == STAMP_SOURCE) Raw(calc).s[static_cast<size_t>(r)] = -v(t);
      return 0;
    };
    src.onEvent = [corners](CCalc&, double t, double& nextTime, double&) {
      for (double c : corners) {
        if (c > t && !Near(c, t, 1e-12)) {
          nextTime = c;
          return;
        }
      }
    };
    return src;
  }

  // An ideal diode conducting when V(b) - V(a) > 0.
  Part& Diode(const std::string& name, int32_t a, int32_t b) {
    Part& d = Add(name, {a, b}, 1);
    d.hasRange = true;
    d.lowState = 0;
    d.highState = 1;
    d.onStamp = [&d](CCalc& calc, int phase, double) {
      if (phase == STAMP_MATRIX && calc.pass == 0)
        calc.StampClamp(d.pins[0], d.pins[1], d.firstRow, d.state == 1, 0.0);
      return 0;
    };
    d.onCheck = [&d](CCalc& calc, bool apply) {
      return calc.CheckClamp(apply, d.state, d.pins[0], d.pins[1], d.firstRow, 0.0,
                             std::numeric_limits<double>::infinity(), false);
    };
    return d;
  }

  // A voltage trace of a component; returns the trace.
  CTrace& Trace(const std::string& name) {
    CTrace* trace = doc.AddTrace(TRACE_TYPE_VOLTAGE, name.c_str());
    EXPECT_NE(trace, nullptr) << LastError();
    doc.changeFlags |= CHANGE_TRACES;
    return *trace;
  }

  static std::vector<CData::Sample> Samples(const CTrace& trace) {
    std::vector<CData::Sample> out;
    for (int i = 0; i < trace.data.Count(); ++i) {
      CData::Sample s{};
      trace.data.GetAt(i, &s.t, &s.v);
      out.push_back(s);
    }
    return out;
  }

  static bool HasSampleAt(const CTrace& trace, double t) {
    for (const auto& s : Samples(trace))
      if (Near(s.t, t)) return true;
    return false;
  }

  // A divider: source of v(t) into R1 (1 k) and R2 (1 k); the trace is on R2.
  CTrace& Divider(std::function<double(double)> v, std::vector<double> corners = {}) {
    Source("V1", 0, 1, std::move(v), std::move(corners));
    Resistor("R1", 1, 2, 1000.0);
    Resistor("R2", 0, 2, 1000.0);
    return Trace("R2");
  }

  CDoc doc;
};

// ---- start-up and the run modes ----

TEST(DriverRun, EventSequenceThenSteadyStepsOnTheKeptFactorisation) {
  Bench bench;
  CTrace& out = bench.Divider([](double t) { return 1.0 + t; });
  Part& r1 = *static_cast<Part*>(bench.doc.cmps.Find("R1"));
  ASSERT_TRUE(StartRun(bench.doc));
  ASSERT_TRUE(RunDocument(bench.doc, 3e-3, RUN_INTERVAL)) << LastError();
  // Crossing the start with two short Euler steps of kmin * step, then the
  // full step.
  const double expected[] = {0.0, 1e-5, 2e-5, 1.02e-3, 2.02e-3, 3.02e-3};
  auto s = Bench::Samples(out);
  ASSERT_EQ(s.size(), std::size(expected));
  for (size_t i = 0; i < s.size(); ++i) {
    EXPECT_NEAR(s[i].t, expected[i], 1e-15) << i;
    EXPECT_NEAR(s[i].v, (1.0 + s[i].t) / 2, 1e-9) << i;
  }
  EXPECT_EQ(bench.doc.drive.stepKind, STEP_STEADY);

  // Steady steps stamp the sources and nothing else.
  const int matrices = r1.Count(STAMP_MATRIX);
  ASSERT_TRUE(RunDocument(bench.doc, 50e-3, RUN_INTERVAL));
  EXPECT_EQ(r1.Count(STAMP_MATRIX), matrices);
  s = Bench::Samples(out);
  EXPECT_NEAR(s.back().t, 53.02e-3, 1e-12);
  EXPECT_NEAR(s.back().v, (1.0 + s.back().t) / 2, 1e-9);
}

// ---- events, halving and the fixed step ----

TEST(DriverEvents, StepsLandOnKnownEventsAndShortStepsAreRaised) {
  Bench bench;
  const double corner = 3.5e-3;
  // The second corner lies 50 ns behind the point where the crossing of the
  // first one ends: the step to it is raised to a tenth of the smallest step.
  const double late = corner + 2e-5 + 5e-8;
  // A ramp that jumps by 1 at the first corner and by 2 more at the second.
  auto v = [=](double t) { return t + (t < corner ? 0.0 : (t < late ? 1.0 : 3.0)); };
  CTrace& out = bench.Divider(v, {corner, late});
  ASSERT_TRUE(StartRun(bench.doc));
  ASSERT_TRUE(RunDocument(bench.doc, 6e-3, RUN_INTERVAL)) << LastError();
  EXPECT_TRUE(Bench::HasSampleAt(out, corner));
  EXPECT_TRUE(Bench::HasSampleAt(out, corner + 1e-5));  // Euler crossing
  EXPECT_TRUE(Bench::HasSampleAt(out, corner + 2e-5));
  EXPECT_FALSE(Bench::HasSampleAt(out, late));
  EXPECT_TRUE(Bench::HasSampleAt(out, corner + 2e-5 + 1e-6));
  for (const auto& s : Bench::Samples(out)) {
    if (!Near(s.t, corner)) {
      EXPECT_NEAR(s.v, v(s.t) / 2, 1e-12) << s.t;
    }
  }
}

TEST(DriverEvents, HalvingBracketsAStateChangeWithinTheSmallestStep) {
  Bench bench;
  const double on = 2.5e-3;
  bench.Source("V1", 0, 1, [=](double t) { return t - on; });
  Part& d = bench.Diode("D1", 2, 1);
  bench.Resistor("R1", 0, 2, 1000.0);
  CTrace& out = bench.Trace("R1");
  ASSERT_TRUE(StartRun(bench.doc));
  ASSERT_TRUE(RunDocument(bench.doc, 5e-3, RUN_INTERVAL)) << LastError();
  EXPECT_EQ(d.state, 1);
  const double hMin = 1e-5;
  double lastOff = -1, firstOn = 1;
  for (const auto& s : Bench::Samples(out)) {
    if (s.t <= on) {
      EXPECT_EQ(s.v, 0.0) << s.t;
      lastOff = std::max(lastOff, s.t);
    } else {
      EXPECT_NEAR(s.v, s.t - on, 1e-9) << s.t;
      firstOn = std::min(firstOn, s.t);
    }
  }
  // The halving brackets the change between the last accepted point and
  // the end of the last refused step, less than two smallest steps apart,
  // and the crossing goes to that end.
  EXPECT_GT(lastOff, on - 2 * hMin);
  EXPECT_LT(firstOn, on + 2 * hMin);
  EXPECT_LT(firstOn - lastOff, 2 * hMin);
  EXPECT_GE(firstOn - lastOff, hMin);
}

TEST(DriverEvents, FixedStepNeitherLandsNorHalves) {
  Bench bench;
  bench.doc.settings.nsr = true;
  const double on = 2.5e-3;
  bench.Source("V1", 0, 1, [=](double t) { return t - on; }, {3.5e-3});
  bench.Diode("D1", 2, 1);
  bench.Resistor("R1", 0, 2, 1000.0);
  CTrace& out = bench.Trace("V1");  // a ramp: no flat stretch merges points
  ASSERT_TRUE(StartRun(bench.doc));
  ASSERT_TRUE(RunDocument(bench.doc, 8e-3, RUN_EXACT)) << LastError();
  const auto s = Bench::Samples(out);
  ASSERT_GE(s.size(), 8u);
  for (size_t i = 1; i < s.size(); ++i) EXPECT_NEAR(s[i].t - s[i - 1].t, 1e-3, 1e-12) << i;
  EXPECT_NEAR(bench.doc.time, 8e-3, 1e-12);
}

// ---- failures ----

TEST(DriverFailure, ReportsTheTimeAndTheSolverTextOnceAndEndsTheRun) {
  Bench bench;
  CTrace& out = bench.Divider([](double t) { return 1.0 + t; });
  Part& bad = bench.Add("Z1", {2, 0});
  bad.onStamp = [](CCalc& calc, int phase, double t) {
    if (phase == STAMP_SOURCE && t > 4.5e-3) {
      calc.error = "Z1: broken";
      return -1;
    }
    return 0;
  };
  ASSERT_TRUE(StartRun(bench.doc));
  SetLastError("X: ");
  EXPECT_FALSE(RunDocument(bench.doc, 10e-3, RUN_INTERVAL));
  EXPECT_EQ(LastError(), "X: Transient error at t=4.02e-3 : Z1: broken");
  EXPECT_FALSE(bench.doc.running);
  EXPECT_EQ(bench.doc.targetTime, 10e-3);
  const int kept = out.data.Count();
  EXPECT_GT(kept, 2);

  // The next call starts again from 0.
  bad.onStamp = nullptr;
  ASSERT_TRUE(RunDocument(bench.doc, 1e-3, RUN_INTERVAL)) << LastError();
  EXPECT_TRUE(bench.doc.running);
  EXPECT_EQ(bench.doc.targetTime, 1e-3);
  double t = -1, v = 0;
  out.data.GetAt(0, &t, &v);
  EXPECT_EQ(t, 0.0);
  EXPECT_NEAR(bench.doc.time, 1.02e-3, 1e-15);
}

TEST(DriverFailure, AFailureOutsideTheReportEndsWithTheComponentsWordsOrTheUnknownText) {
  Bench bench;
  bench.Divider([](double) { return 1.0; });
  Part& r2 = *static_cast<Part*>(bench.doc.cmps.Find("R2"));
  ASSERT_TRUE(StartRun(bench.doc));
  ASSERT_TRUE(RunDocument(bench.doc, 2e-3, RUN_INTERVAL));
  r2.checkError = "R < 0";
  bench.doc.changeFlags |= CHANGE_PARAMS;
  SetLastError("X: ");
  EXPECT_FALSE(RunDocument(bench.doc, 2e-3, RUN_INTERVAL));
  EXPECT_EQ(LastError(), "X: R2 : R < 0; unknown transient error");
  EXPECT_FALSE(bench.doc.running);

  // At the start, the components' words stand alone.
  SetLastError("X: ");
  EXPECT_FALSE(StartRun(bench.doc));
  EXPECT_EQ(LastError(), "X: R2 : R < 0; ");
  EXPECT_FALSE(bench.doc.running);
}

TEST(DriverFailure, NoConsistentStateAtTheStart) {
  Bench bench;
  bench.Divider([](double) { return 1.0; });
  Part& toggle = bench.Add("T1", {2});
  toggle.hasRange = true;
  toggle.highState = 1;
  toggle.onCheck = [&toggle](CCalc&, bool apply) {
    if (apply) toggle.state = 1 - toggle.state;
    return true;
  };
  SetLastError("X: ");
  EXPECT_FALSE(StartRun(bench.doc));
  EXPECT_EQ(LastError(), "X: Transient error at t=0 : No solution");
  EXPECT_FALSE(bench.doc.running);
}

TEST(DriverFailure, TimeOutOfTheSolveAtTheStart) {
  Bench bench;
  bench.doc.settings.timeout = 1;
  bench.Divider([](double) { return 1.0; });
  Part& endless = bench.Add("E1", {2});
  endless.onCheck = [&endless](CCalc& calc, bool apply) {
    if (apply) ++endless.state;
    // Past 25 rounds, the run has been going on for ten seconds.
    if (endless.state == 25) calc.runClock = ProcessMillis() - 10000u;
    return true;
  };
  SetLastError("X: ");
  EXPECT_FALSE(StartRun(bench.doc));
  EXPECT_EQ(LastError(), "X: Calc IC time-out :  switching triggered by E1");
  EXPECT_FALSE(bench.doc.running);
}

// ---- changes in the middle of a run ----

// ---- reset and old data ----

// ---- initial conditions ----

}  // namespace
}  // namespace tz4
