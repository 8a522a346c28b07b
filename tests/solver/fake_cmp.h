// Test-only components for the solver tests: a component whose solver
// behaviour is given by lambdas, with a model table of its own.
#pragma once
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "components/cmp.h"
#include "calc_internals.h"
#include "components/elem_type.h"
#include "solver/calc.h"

namespace tz4::solvertest {

inline const ModelInfo kFakeModels[] = {
    {"Fake", 90, nullptr, 0, 0, 0, 0, 0},
    {"Other", 91, nullptr, 0, 0, 0, 0, 0},
    {"SubCir", MODEL_SUBCIR, nullptr, 0, 0, 0, 0, 0},
    {nullptr, 0, nullptr, 0, 0, 0, 0, 0},
};

inline const ElemType kFakeType{"Z_FAKE", 0, nullptr, kFakeModels, 0, "solver test component"};

class FakeCmp : public CCmp {
 public:
  FakeCmp(std::string componentName, std::vector<int32_t> nodes, int32_t rows = 0)
      : CCmp(kFakeType), extraRows(rows) {
    name = std::move(componentName);
    SetPinCount(static_cast<int>(nodes.size()));
    pins = std::move(nodes);
    modelIndex = 0;
  }

  int32_t GetExtraRows() override { return extraRows; }
  int IsMatrixPin(int pin) override {
    for (int logic : logicPins)
      if (logic == pin) return 0;
    return 1;
  }
  int Stamp(CCalc& calc, int phase, double t) override {
    phases.push_back(phase);
    return onStamp ? onStamp(calc, phase, t) : 0;
  }
  bool CheckSwitching(CCalc& calc, bool apply) override {
    ++checks;
    return onCheck ? onCheck(calc, apply) : false;
  }
  bool GetStateRange(int& low, int& high) override {
    low = lowState;
    high = highState;
    return hasRange;
  }
  void NextEvent(CCalc& calc, double t, double& nextTime, double& maxStep) override {
    if (onEvent) onEvent(calc, t, nextTime, maxStep);
  }

  int Count(int phase) const {
    int n = 0;
    for (int p : phases)
      if (p == phase) ++n;
    return n;
  }

  int32_t extraRows = 0;
  std::vector<int> logicPins;
  std::vector<int> phases;
  int checks = 0;
  bool hasRange = false;
  int lowState = 0, highState = 0;
  std::function<int(CCalc&, int, double)> onStamp;
  std::function<bool(CCalc&, bool)> onCheck;
  std::function<void(CCalc&, double, double&, double&)> onEvent;
};

// A small circuit built from fake components straight into a run list.
class Circuit {
 public:
  Circuit() = default;

  FakeCmp& Add(const std::string& name, std::vector<int32_t> nodes, int32_t rows = 0) {
    parts.push_back(std::make_unique<FakeCmp>(name, std::move(nodes), rows));
    calc.cmps.push_back(parts.back().get());
    return *parts.back();
  }

  // Numbers the nodes and allocates; the test asserts on the result.
  bool Build() {
    calc.NumberNodes();
    return calc.AllocateSystem();
  }

  FakeCmp& Resistor(const std::string& name, int32_t a, int32_t b, double R) {
    FakeCmp& r = Add(name, {a, b});
    r.onStamp = [&r, R](CCalc& calc, int phase, double) {
      if (phase == STAMP_MATRIX && calc.pass == 0) calc.StampConductance(r.pins[0], r.pins[1], R);
      return 0;
    };
    return r;
  }

  // V(b) - V(a) = v, constant.
  FakeCmp& Source(const std::string& name, int32_t a, int32_t b, double v) {
    FakeCmp& src = Add(name, {a, b}, 1);
    src.onStamp = [&src, v](CCalc& calc, int phase, double) {
      if (phase == STAMP_MATRIX && calc.pass == 0)
        calc.StampVSource(src.pins[0], src.pins[1], src.firstRow, v);
      return 0;
    };
    return src;
  }

  // A source whose value follows a time function through the varying term.
  FakeCmp& VaryingSource(const std::string& name, int32_t a, int32_t b,
                         std::function<double(double)> v) {
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

  // A capacitor: in the dynamic form its row is the current i = C dV/dt;
  // in the state form a source of its voltage `v0` with the next order in B.
  FakeCmp& Capacitor(const std::string& name, int32_t a, int32_t b, double C, double v0) {
    FakeCmp& cap = Add(name, {a, b}, 1);
    cap.onStamp = [&cap, C, v0](CCalc& calc, int phase, double) {
      if (phase != STAMP_MATRIX || calc.pass != 0) return 0;
      const int pa = cap.pins[0], pb = cap.pins[1], r = cap.firstRow;
      const size_t row = static_cast<size_t>(r);
      if (calc.stampMode == 0) {
        calc.StampVSource(pa, pb, r, cap.forceIC ? 0.0 : v0);
        Raw(calc).B[row][r] = -1.0 / C;
      } else {
        calc.StampISource(pa, pb, r, 0.0);
        Raw(calc).B[row][pa] += C;
        Raw(calc).B[row][pb] -= C;
      }
      return 0;
    };
    return cap;
  }

  // An ideal diode from a to b (conducting when V(b) - V(a) > 0), state 0
  // off and 1 on.
  FakeCmp& Diode(const std::string& name, int32_t a, int32_t b, int32_t initial = 0) {
    FakeCmp& d = Add(name, {a, b}, 1);
    d.state = initial;
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

  CCalc calc;
  std::vector<std::unique_ptr<FakeCmp>> parts;
};

}  // namespace tz4::solvertest
