// A test bench for devices in the solver: components from circuit text
// through the component collection, with test resistors and sources around
// them, in one run list. Nodes are numbered 1, 2, ... without gaps, so that
// they keep their numbers.
#pragma once
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "devices/registry.h"
#include "../solver/calc_internals.h"
#include "../solver/fake_cmp.h"
#include "components/cmps.h"
#include "xml/xml_node.h"
#include "solver/calc.h"

namespace tz4::devtest {

using solvertest::FakeCmp;

class SolverBench {
 public:
  void Load(const std::string& elements) {
    CXmlNode root("Cmps");
    ASSERT_EQ(root.LoadFromText("<Cmps>" + elements + "</Cmps>"), 0);
    ASSERT_TRUE(cmps.Serialize(&root, ComponentTypes()));
    cmps.UpdateFormulas();
  }

  FakeCmp& Add(const std::string& name, std::vector<int32_t> nodes, int32_t rows) {
    auto part = std::make_unique<FakeCmp>(name, std::move(nodes), rows);
    FakeCmp& ref = *part;
    cmps.Add(std::move(part));
    return ref;
  }

  FakeCmp& Resistor(const std::string& name, int32_t a, int32_t b, double R) {
    FakeCmp& r = Add(name, {a, b}, 0);
    r.onStamp = [&r, R](CCalc& calc, int phase, double) {
      if (phase == STAMP_MATRIX && calc.pass == 0) calc.StampConductance(r.pins[0], r.pins[1], R);
      return 0;
    };
    return r;
  }

  // V(b) - V(a) = v(t), through the varying term.
  FakeCmp& Source(const std::string& name, int32_t a, int32_t b, std::function<double(double)> v) {
    FakeCmp& src = Add(name, {a, b}, 1);
    src.onStamp = [&src, v](CCalc& calc, int phase, double t) {
      const int r = src.firstRow;
      if (phase == STAMP_MATRIX && calc.pass == 0) {
        calc.StampVSource(src.pins[0], src.pins[1], r, 0.0);
        Raw(calc).rowMark[static_cast<size_t>(r)] = 1;
      }
      if (phase == STAMP_SOURCE) Raw(calc).s[static_cast<size_t>(r)] = -v(t);
      return 0;
    };
    return src;
  }
  FakeCmp& Source(const std::string& name, int32_t a, int32_t b, double v) {
    return Source(name, a, b, [v](double) { return v; });
  }
  // *level, read at every stamp.
  FakeCmp& Source(const std::string& name, int32_t a, int32_t b, const double* level) {
    return Source(name, a, b, [level](double) { return *level; });
  }

  bool Build() {
    if (calc.AddComponents(cmps) != 0) return false;
    calc.MergeNodes();
    calc.NumberNodes();
    return calc.AllocateSystem();
  }

  template <class T>
  T& Get(const std::string& name) {
    auto* cmp = dynamic_cast<T*>(cmps.Find(name));
    EXPECT_NE(cmp, nullptr) << name;
    return *cmp;
  }
  double X(int i) const { return calc.x[static_cast<size_t>(i)]; }
  double I(const CCmp& cmp, int extra = 0) const { return X(cmp.firstRow + extra); }

  // The operating point with the present states and sub-states.
  int Solve() { return calc.Calculate(0.0, 1e-6, false, false); }
  // One solve of the state form, as the run's start makes it.
  int Initial(double t = 0.0) { return calc.SolveInitial(t, false, true); }

  // The sub-states follow the solution, as after an accepted point; true
  // when any changed.
  bool Post() {
    bool any = false;
    for (const auto& cmp : cmps.list) {
      bool changed = false;
      EXPECT_TRUE(cmp->PostStep(calc, true, 0.0, changed));
      any = any || changed;
    }
    return any;
  }

  // n steps of backward Euler through the switching loop, accepting each.
  void EulerSteps(double& t, double h, int n) {
    for (int k = 0; k < n; k++) {
      ASSERT_EQ(calc.Calculate(t, h, true, false), 0) << calc.error;
      t += h;
      calc.AcceptAll();
    }
  }
  // One such step, then the sub-states.
  void Step(double& t, double h) {
    EulerSteps(t, h, 1);
    Post();
  }

  CCmps cmps;
  CCalc calc;
};

}  // namespace tz4::devtest
