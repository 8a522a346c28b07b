// Helpers for the evaluator tests: a context with a few named values and a
// simulation with a small solution vector.
#pragma once
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "expr/context.h"
#include "expr/evaluate.h"
#include "expr/formula.h"
#include "expr/numtext.h"
#include "base/raise.h"
#include "expr/text.h"
#include "expr/value.h"

namespace tz4 {
namespace testing_expr {

// Stands in for a component: only its address matters to the evaluator.
struct FakeComponent {
  std::string name;
  int mask = 7;
  bool info = true;
  int nodeA = 1, nodeB = 2, row = 0;
  double resistance = 0;
  double ownValue = 0;
};

class FakeContext : public CEvalContext {
 public:
  std::map<std::string, double> values;        // "R1.R" -> 100
  std::map<std::string, CFormula*> formulas;   // "R1.R" -> formula
  std::map<std::string, TVariable*> arrays;    // "C1.buf" -> variable
  std::map<std::string, FakeComponent*> components;
  double high = 5, low = 0, threshold = 2.5;

  double LogicHigh() const override { return high; }
  double LogicLow() const override { return low; }
  double LogicThreshold() const override { return threshold; }
  bool FindValue(const std::string& path, TValue& out) override {
    for (auto& [k, v] : values)
      if (SameText(k, path)) {
        out = TValue::MakeDouble(v);
        return true;
      }
    return false;
  }
  TVariable* FindArray(const std::string& path) override {
    auto it = arrays.find(path);
    return it == arrays.end() ? nullptr : it->second;
  }
  CFormula* FindFormula(const std::string& path) override {
    for (auto& [k, v] : formulas)
      if (SameText(k, path)) return v;
    return nullptr;
  }
  CCmp* FindComponent(const std::string& name) override {
    for (auto& [k, v] : components)
      if (SameText(k, name)) return reinterpret_cast<CCmp*>(v);
    return nullptr;
  }
};

class FakeSimulation : public CEvalSimulation {
 public:
  std::vector<double> x{0.0, 1.0, 4.0, 0.5};
  static FakeComponent* Of(CCmp* c) { return reinterpret_cast<FakeComponent*>(c); }
  int TraceMask(CCmp* c) override { return Of(c)->mask; }
  std::string ComponentName(CCmp* c) override { return Of(c)->name; }
  bool GetTraceInfo(CCmp* c, int, int& a, int& b, int& row, double& r) override {
    a = Of(c)->nodeA;
    b = Of(c)->nodeB;
    row = Of(c)->row;
    r = Of(c)->resistance;
    return Of(c)->info;
  }
  double GetTraceValue(CCmp* c, int kind) override { return Of(c)->ownValue * (kind + 1); }
  double Solution(int i) override {
    return i >= 0 && i < static_cast<int>(x.size()) ? x[static_cast<size_t>(i)] : 0.0;
  }
};

inline TValue Eval(const std::string& text, CEvalContext* context = nullptr,
                   CVarList* vars = nullptr, CEvalSimulation* sim = nullptr,
                   bool integer = false) {
  TValue v;
  EvaluateExpression(text, context, vars, sim, &v, integer);
  return v;
}

inline std::string EvalError(const std::string& text, CEvalContext* context = nullptr,
                             CVarList* vars = nullptr, CEvalSimulation* sim = nullptr,
                             bool integer = false) {
  try {
    Eval(text, context, vars, sim, integer);
  } catch (const RaisedError& e) {
    return e.Text();
  }
  return "<no error>";
}

// ParseNumber on its own, and the text of its failure ("<no error>" if none).
inline TValue Parse(const std::string& text, bool allowPrefix = false) {
  TValue v;
  ParseNumber(text, v, allowPrefix);
  return v;
}

inline std::string ParseError(const std::string& text, bool allowPrefix = false) {
  try {
    Parse(text, allowPrefix);
  } catch (const RaisedError& e) {
    return e.Text();
  }
  return "<no error>";
}

inline double D(const std::string& text) { return EvaluateExpression(text, nullptr, nullptr, nullptr, nullptr, false); }

// Table checks: each case is traced by its text.
struct ValueCase {
  std::string text;
  double value;
  double tolerance = 0;  // 0: equal within a few units in the last place
};

struct TypedCase {
  std::string text;
  int type;
  double value;  // the result converted to a double
};

struct ErrorCase {
  std::string text;
  std::string error;
};

inline void ExpectValues(const std::vector<ValueCase>& cases) {
  for (const ValueCase& c : cases) {
    SCOPED_TRACE(c.text.substr(0, 60));
    double got = 0;
    try {
      got = D(c.text);
    } catch (const RaisedError& e) {
      ADD_FAILURE() << e.Text();
      continue;
    }
    if (c.tolerance > 0) {
      EXPECT_NEAR(got, c.value, c.tolerance);
    } else {
      EXPECT_DOUBLE_EQ(got, c.value);
    }
  }
}

inline void ExpectTyped(const std::vector<TypedCase>& cases, CVarList* vars = nullptr, bool integer = false) {
  for (const TypedCase& c : cases) {
    SCOPED_TRACE(c.text);
    TValue v;
    try {
      v = Eval(c.text, nullptr, vars, nullptr, integer);
    } catch (const RaisedError& e) {
      ADD_FAILURE() << e.Text();
      continue;
    }
    EXPECT_EQ(v.Type, c.type);
    ConvertValue(v, VT_DOUBLE);
    EXPECT_EQ(v.Dbl, c.value);
  }
}

inline void ExpectErrors(const std::vector<ErrorCase>& cases, CEvalContext* context = nullptr,
                         CVarList* vars = nullptr, CEvalSimulation* sim = nullptr, bool integer = false) {
  for (const ErrorCase& c : cases) {
    SCOPED_TRACE(c.text.substr(0, 60));
    EXPECT_EQ(EvalError(c.text, context, vars, sim, integer), c.error);
  }
}

}  // namespace testing_expr
}  // namespace tz4
