// What a formula can see outside its own text: the document's logic levels,
// the names of components, their parameters and code-block variables, and
// the running simulation for V, I and P. The document layer implements these
// interfaces; the evaluator only calls them.
#pragma once
#include <string>

#include "expr/value.h"

namespace tz4 {

class CCmp;
class CFormula;
struct TVariable;

// The document and the component collection in which names resolve.
class CEvalContext {
 public:
  virtual ~CEvalContext() = default;

  // Logic levels of the document: the constants "high" and "low" and the
  // threshold of islow() and ishigh().
  virtual double LogicHigh() const { return 5.0; }
  virtual double LogicLow() const { return 0.0; }
  virtual double LogicThreshold() const { return 2.5; }

  // A dotted path ("R1.R", "X1.R2.R", "\"A.B\".C", "Code1.n") as a value:
  // a parameter's number as VT_DOUBLE, or the value of a code block's
  // variable. False when the path names nothing. May raise (an invalid
  // parameter raises "Invalid value").
  virtual bool FindValue(const std::string& path, TValue& out) {
    (void)path;
    (void)out;
    return false;
  }

  // A code block's variable by dotted path (for "Code1.buf[2]"); null when
  // the path names none.
  virtual TVariable* FindArray(const std::string& path) {
    (void)path;
    return nullptr;
  }

  // The formula of a numeric (PK_VALUE) parameter by dotted path, or null.
  virtual CFormula* FindFormula(const std::string& path) {
    (void)path;
    return nullptr;
  }

  // A component by name or path, for the argument of V, I and P; null when
  // there is none.
  virtual CCmp* FindComponent(const std::string& name) {
    (void)name;
    return nullptr;
  }
};

// The running simulation as V(), I() and P() see it.
class CEvalSimulation {
 public:
  virtual ~CEvalSimulation() = default;

  // Bit 0: V, bit 1: I, bit 2: P trace allowed for the component's model.
  virtual int TraceMask(CCmp* component) = 0;
  // The component's full name, for messages.
  virtual std::string ComponentName(CCmp* component) = 0;
  // How a trace of the kind (0 V, 1 I, 2 P) is computed from the solution;
  // false when the component computes it itself (GetTraceValue).
  virtual bool GetTraceInfo(CCmp* component, int kind, int& nodeA, int& nodeB, int& row,
                            double& resistance) = 0;
  virtual double GetTraceValue(CCmp* component, int kind) = 0;
  // Element index of the solution vector x; 0 for an index outside it.
  virtual double Solution(int index) = 0;
};

}  // namespace tz4
