#include "results/trace.h"

#include <cstddef>

#include "components/cmp.h"
#include "components/cmps.h"
#include "xml/xml_node.h"
#include "expr/context.h"
#include "expr/evaluate.h"
#include "expr/text.h"
#include "solver/calc.h"
#include "solver/calc_simulation.h"

namespace tz4 {

namespace {

// Element `index` of the solution; 0 outside it.
inline double At(const std::vector<double>& x, int index) {
  return index >= 0 && static_cast<std::size_t>(index) < x.size()
             ? x[static_cast<std::size_t>(index)]
             : 0.0;
}

}  // namespace

CTrace::CTrace() { vars.Add("t", VT_DOUBLE); }

void CTrace::Serialize(CXmlNode* element) {
  if (!element) return;
  element->ArchiveInt("type", type);
  element->ArchiveInt("id", id);
  element->ArchiveEncodedString("tracename", name);
  element->ArchiveEncodedString("expr", expr);
}

void CTrace::Bind(CCmps& components, CCmp* component) {
  if (type == TRACE_TYPE_FUNCTION) {
    // A text that is itself a path is read directly; FindValue gives the
    // address of a code block's variable, or of `value` holding a
    // parameter's number as it stands now.
    cmp = nullptr;
    source = nullptr;
    source = components.FindValue(TrimSpaces(expr), &value);
    return;
  }
  cmp = component;
  if (!component) {
    nodeA = -1;
    nodeB = -1;
    return;
  }
  // A variable answers with its value alone and writes no nodes; presetting
  // them to ground keeps such a trace from reading as unbound.
  nodeA = 0;
  nodeB = 0;
  row = 0;
  factor = 0.0;
  if (component->GetTraceInfo(type, nodeA, nodeB, row, factor)) cmp = nullptr;
}

double CTrace::Evaluate(CCalc& calc, CCmps& components, double t) {
  if (cmp) return CCalcSimulation(calc).GetTraceValue(cmp, type);

  if (type == TRACE_TYPE_FUNCTION) {
    if (source) {
      switch (source->Type) {
        case VT_COMPLEX:
        case VT_DOUBLE:
          return source->Dbl;
        case VT_INT64:
          return static_cast<double>(source->I64);
        case VT_INT:
          return static_cast<double>(source->I32);
        case VT_BOOL:
          return source->B ? 1.0 : 0.0;
        default:
          return 0.0;
      }
    }
    vars[0]->Values[0] = TValue::MakeDouble(t);
    CCalcSimulation simulation(calc);
    return EvaluateExpression(expr, &components, &vars, &simulation, nullptr, false);
  }

  if (nodeA == -1 || nodeB == -1) return 0.0;

  const std::vector<double>& x = calc.x;
  const double v = At(x, nodeB) - At(x, nodeA);
  switch (type) {
    case TRACE_TYPE_VOLTAGE:
      return v;
    case TRACE_TYPE_CURRENT:
      if (row > 0) return At(x, row);
      if (factor == 0.0) return 0.0;
      return v / factor;
    case TRACE_TYPE_POWER:
      if (row > 0) return v * At(x, row);
      // Without a row or a resistance the voltage itself is recorded.
      if (factor == 0.0) return v;
      return v * (v / factor);
    case TRACE_TYPE_VARIABLE:
      return factor;
    default:
      return 0.0;
  }
}

void CTrace::Sample(CCalc& calc, CCmps& components, double t) {
  const double result = Evaluate(calc, components, t);
  // Add fails only when not a single block of memory can be had; the run
  // goes on without this point.
  data.Add(t, result);
}

}  // namespace tz4
