// CTrace: one quantity that a run records, with its samples.
//
// A trace is a voltage, current or power of a component, a variable, or a
// function of other values. It is named by the component it measures (its
// file "id") or by its function text, bound to a place in the solution at the
// start of each run, and sampled at every stored time point. All lookups by
// name happen in Bind, so that Sample does no text work, apart from a
// function trace that is a real expression, which is evaluated anew each time.
#pragma once
#include <cstdint>
#include <string>

#include "expr/lists.h"
#include "expr/value.h"
#include "results/data.h"

namespace tz4 {

class CCalc;
class CCmp;
class CCmps;
class CXmlNode;

// The kinds of trace; the number is attribute "type" in the file and the
// kind passed to CCmp::GetTraceInfo and CCmp::GetTraceValue.
enum TraceType : int32_t {
  TRACE_TYPE_VOLTAGE = 0,
  TRACE_TYPE_CURRENT = 1,
  TRACE_TYPE_POWER = 2,
  TRACE_TYPE_VARIABLE = 3,
  TRACE_TYPE_FUNCTION = 4,
};

class CTrace {
 public:
  // Unbound: the two nodes at -1, so that a sample records 0. `vars` holds
  // the one local variable "t" of a function trace.
  CTrace();
  ~CTrace() = default;
  CTrace(const CTrace&) = delete;
  CTrace& operator=(const CTrace&) = delete;

  // Both directions of one "Trace" element: "type", "id", then "tracename"
  // and "expr" percent-encoded. A null element does nothing.
  void Serialize(CXmlNode* element);

  // The display name: `name`, or `expr` when `name` is empty.
  const std::string& GetName() const { return name.empty() ? expr : name; }

  // Binds the trace for a run.
  // - A function trace looks its trimmed text up as a direct path
  //   ("X1.Var", "R1.R") in `components`; a hit is read at each sample
  //   through `source`, a miss is evaluated as an expression at each sample.
  // - Any other trace with a component asks CCmp::GetTraceInfo (both nodes
  //   preset to 0, so that a variable, which writes none, records its value):
  //   true binds nodes, row and factor and drops the component; false keeps
  //   the component, whose GetTraceValue then gives each sample.
  // - With no component the trace is unbound and records 0.
  // A failing lookup (an invalid formula behind a path) is raised.
  void Bind(CCmps& components, CCmp* component);

  // Works out the present value from the solution of `calc` and appends it
  // at time t. A function trace that is an expression is evaluated with
  // `components` for names and the running simulation for V(), I() and P();
  // its failures are raised, as are those of a component's GetTraceValue.
  void Sample(CCalc& calc, CCmps& components, double t);

  // The value a sample would record now, without storing it.
  double Evaluate(CCalc& calc, CCmps& components, double t);

  int32_t handle = -1;        // the host's number; -1 until one is asked for
  TValue value;               // a value fixed at binding (a parameter's number)
  TValue* source = nullptr;   // where a function trace reads directly, or null
  int32_t type = -1;          // TraceType; "type" in the file
  int32_t id = -1;            // CCmp::id of the component; "id" in the file
  std::string name;           // "tracename" in the file
  std::string expr;           // "expr" in the file
  CCmp* cmp = nullptr;        // set when only the component can give the value
  // The component the host named when adding the trace; it is what a trace
  // with id 0 measures, since components without an "id" all share 0.
  CCmp* named = nullptr;
  int32_t nodeB = -1;         // solution index of the positive end
  int32_t nodeA = -1;         // solution index of the negative end
  int32_t row = 0;            // solution index of a current; none when not above 0
  double factor = 0.0;        // resistance for a current from a voltage, or a fixed value
  CData data;                 // the samples
  CVarList vars;              // the local variables of a function trace: "t"
};

}  // namespace tz4
