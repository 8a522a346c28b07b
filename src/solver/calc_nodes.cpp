// Node numbering of a run: unify the nodes joined by subcircuit pins, then
// give the matrix nodes, the extra rows and the logic nodes their places in
// the solution vector.
#include <algorithm>

#include "components/cmp.h"
#include "solver/calc.h"

namespace tz4 {

void CCalc::ClearRunList() {
  cmps.clear();
  nodeBase = 0;
}

// Pairs are worked in order, and each pair sees the rewriting of the
// earlier ones; the smaller number survives.
void CCalc::MergeNodes() {
  for (size_t n = 0; n < merges.size(); ++n) {
    const int32_t p = merges[n].first, q = merges[n].second;
    if (p == q) continue;
    const int32_t hi = std::max(p, q), lo = std::min(p, q);
    for (size_t later = n + 1; later < merges.size(); ++later) {
      if (merges[later].first == hi) merges[later].first = lo;
      if (merges[later].second == hi) merges[later].second = lo;
    }
    for (CCmp* component : cmps)
      for (int32_t& pin : component->pins)
        if (pin == hi) pin = lo;
  }
  merges.clear();
}

void CCalc::NumberNodes() {
  struct Node {
    int32_t old;
    int32_t renumbered;
    uint32_t flags;  // bit 0: some pin needs the node in the matrix
  };
  std::vector<Node> nodes;  // ascending by old number
  int32_t rows = 0;
  for (CCmp* component : cmps) {
    rows += std::max(component->GetExtraRows(), 0);
    for (size_t pin = 0; pin < component->pins.size(); ++pin) {
      const int32_t p = component->pins[pin];
      if (p == 0) continue;
      const uint32_t flag = component->IsMatrixPin(static_cast<int>(pin)) ? 1u : 0u;
      auto at = std::lower_bound(nodes.begin(), nodes.end(), p,
                                 [](const Node& node, int32_t value) { return node.old < value; });
      if (at != nodes.end() && at->old == p)
        at->flags |= flag;
      else
        nodes.insert(at, Node{p, 0, flag});
    }
  }
  int32_t matrixNodes = 0;
  for (const Node& node : nodes)
    if (node.flags & 1u) ++matrixNodes;
  int32_t nextMatrix = 1;
  int32_t nextLogic = matrixNodes + rows + 1;
  for (Node& node : nodes) node.renumbered = (node.flags & 1u) ? nextMatrix++ : nextLogic++;

  int32_t nextRow = matrixNodes + 1;
  for (CCmp* component : cmps) {
    const int32_t count = component->GetExtraRows();
    component->firstRow = count > 0 ? nextRow : 0;
    if (count > 0) nextRow += count;
    for (int32_t& pin : component->pins) {
      auto at = std::lower_bound(nodes.begin(), nodes.end(), pin,
                                 [](const Node& node, int32_t value) { return node.old < value; });
      if (at != nodes.end() && at->old == pin) pin = at->renumbered;
    }
  }
  dim = matrixNodes + rows + 1;
  total = dim + static_cast<int32_t>(nodes.size()) - matrixNodes;
}

}  // namespace tz4
