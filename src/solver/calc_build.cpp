// The run list: the components of the document's collection, and of the
// collections of its subcircuits, in one flat list with one node space.
#include <algorithm>

#include "components/cmp.h"
#include "components/cmps.h"
#include "solver/calc.h"

namespace tz4 {

int CCalc::AddComponents(CCmps& collection) {
  // The collection's nodes go above every node handed out so far.
  const int highest = collection.OffsetNodes(nodeBase);
  nodeBase = std::max(nodeBase, static_cast<int32_t>(highest));

  int result = 0;
  for (const auto& owned : collection.list) {
    CCmp* component = owned.get();
    if (!component->pins.empty() &&
        std::all_of(component->pins.begin(), component->pins.end(),
                    [](int32_t pin) { return pin < 0; }))
      continue;  // connected to nothing: takes no part in the run
    component->owner = &collection;
    cmps.push_back(component);
    const int32_t model = component->ModelId();
    if (model != component->prevModelId) {
      component->pwl.Clear();
      component->Stamp(*this, STAMP_RESET, 0.0);
    }
    if (model == MODEL_SUBCIR) {
      const int expanded = ExpandSubcircuit(*component);
      if (expanded != 0) result = expanded;
      if (expanded == -2) break;
    }
    if (model == MODEL_TABLE && !component->pwl.Parse(component)) result = -1;
    const int code = component->Stamp(*this, STAMP_INIT, 0.0);
    if (code != 0) {
      result = code;
      if (code == -2) break;
    }
    component->prevModelId = model;
  }
  ResetHistory();
  return result;
}

// Flattening of subcircuits is not available yet: a run that contains one
// fails with a clear message instead of silently leaving the contents out.
int CCalc::ExpandSubcircuit(CCmp& component) {
  error = component.GetFullName() + ": subcircuits cannot be simulated yet";
  return -2;
}

void CCalc::SaveIC() {
  for (CCmp* component : cmps)
    if (component->ModelId() != MODEL_SUBCIR) component->Stamp(*this, STAMP_SAVE_IC, lastTime);
  icSaved = true;
}

}  // namespace tz4
