#include "solver/calc_simulation.h"

#include "components/cmp.h"
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

double CCalcSimulation::GetTraceValue(CCmp* component, int kind) {
  return component->GetTraceValue(calc_, kind);
}

double CCalcSimulation::Solution(int index) { return calc_.V(index); }

}  // namespace tz4
