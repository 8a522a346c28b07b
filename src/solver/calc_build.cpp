// The run list: the components of the document's collection, and of the
// collections of its subcircuits, in one flat list with one node space.
#include <algorithm>

#include "components/cmp.h"
#include "components/cmps.h"
#include "components/subcir.h"
#include "solver/calc.h"

namespace tz4 {

int CCalc::AddComponents(CCmps& collection) {
  // The collection's nodes go above every node handed out so far.
  const int highest = collection.OffsetNodes(nodeBase);
  nodeBase = std::max(nodeBase, static_cast<int32_t>(highest));

  int result = 0;
  for (const auto& owned : collection.list) {
    CCmp* component = owned.get();
    if (!component->pins.empty() && std::all_of(component->pins.begin(), component->pins.end(),
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

// A subcircuit is replaced by its contents: the inner collection, made
// ready for the run, joins the run list with nodes above every node handed
// out so far, and each outer pin is joined to the inner label it names.
int CCalc::ExpandSubcircuit(CCmp& component) {
  const CCmps* outer = component.owner;
  if (outer == nullptr || outer->types == nullptr) {
    error = component.GetFullName() + ": subcircuit without a collection";
    return -2;
  }
  CSubCir& sub = component.SubCircuit();
  if (!sub.Open(component, settings.folder, *outer->types, true)) return -1;
  const int code = AddComponents(*sub.cmps);
  if (code != 0) return code;
  for (size_t i = 0; i < sub.labels.size() && i < component.pins.size(); ++i) {
    if (sub.labels[i].empty()) continue;
    CCmp* label = sub.cmps->Find(sub.labels[i]);
    if (label == nullptr || !label->IsLabel()) {
      ComponentError(&component, "Label \"" + sub.labels[i] + "\" not found");
      return -1;
    }
    merges.emplace_back(label->Pin(0), component.pins[i]);
  }
  return 0;
}

void CCalc::SaveIC() {
  for (CCmp* component : cmps)
    if (component->ModelId() != MODEL_SUBCIR) component->Stamp(*this, STAMP_SAVE_IC, lastTime);
  // A subcircuit keeps the state of its contents as commands for its next
  // start, each naming its target inside the subcircuit.
  for (CCmp* component : cmps)
    if (component->ModelId() == MODEL_SUBCIR && component->subCir != nullptr)
      component->subCir->ic = component->subCir->GetICText();
  icSaved = true;
}

}  // namespace tz4
