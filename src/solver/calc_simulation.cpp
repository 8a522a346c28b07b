#include "solver/calc_simulation.h"

#include "base/raise.h"
#include "components/cmp.h"
#include "components/cmps.h"
#include "components/subcir.h"
#include "solver/calc.h"

namespace tz4 {

int CCalcSimulation::TraceMask(CCmp* component) {
  const ModelInfo* model = component != nullptr ? component->GetModel() : nullptr;
  return model != nullptr ? model->traceMask : 0;
}

std::string CCalcSimulation::ComponentName(CCmp* component) {
  return component != nullptr ? component->GetFullName() : std::string();
}

bool CCalcSimulation::GetTraceInfo(CCmp* component, int kind, int& nodeA, int& nodeB, int& row,
                                   double& resistance) {
  return component->GetTraceInfo(kind, nodeA, nodeB, row, resistance);
}

namespace {

constexpr int32_t kMeterMask = 32;   // meters take no part in a sum of powers
constexpr int32_t kSourceMask = 16;  // sources deliver what the others take

double ComponentValue(CCalc& calc, CCmp& component, int kind);

// What the contents of a subcircuit take together: the sum over its inner
// components of the quantity of `kind`.
double SubcircuitValue(CCalc& calc, CSubCir& sub, int kind) {
  double sum = 0.0;
  if (sub.cmps == nullptr) return sum;
  for (const auto& owned : sub.cmps->list) {
    CCmp& inner = *owned;
    const ModelInfo* model = inner.GetModel();
    const int32_t mask = model != nullptr ? model->traceMask : 0;
    if (mask & kMeterMask) continue;
    if ((mask & (1 << kind)) == 0) Raise("P trace not supported by " + inner.GetFullName());
    double term = 0.0;
    int a = -1, b = -1, row = 0;
    double value = 0.0;
    if (inner.GetTraceInfo(kind, a, b, row, value)) {
      if (a != -1 && b != -1) {
        const double v = calc.V(b) - calc.V(a);
        if (row >= 1)
          term = v * calc.V(row);
        else if (value != 0.0)
          term = v * (v / value);
      }
    } else {
      term = ComponentValue(calc, inner, kind);
    }
    if ((mask & TRACE_P) && (mask & kSourceMask)) term = -term;
    sum += term;
  }
  return sum;
}

double ComponentValue(CCalc& calc, CCmp& component, int kind) {
  if (component.ModelId() == MODEL_SUBCIR && component.subCir != nullptr)
    return SubcircuitValue(calc, *component.subCir, kind);
  return component.GetTraceValue(calc, kind);
}

}  // namespace

double CCalcSimulation::GetTraceValue(CCmp* component, int kind) {
  return ComponentValue(calc_, *component, kind);
}

double CCalcSimulation::Solution(int index) { return calc_.V(index); }

}  // namespace tz4
