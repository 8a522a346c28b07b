// Switching resolution: solve with the present states, let every device
// compare the solution with its state, and solve again until none objects.
// The state vector of every round is kept; a repeat is a cycle between
// states at one instant, and a search over single-component changes tries to
// leave it.
#include <algorithm>
#include <cstring>
#include <new>
#include <string>

#include "components/cmp.h"
#include "solver/calc.h"

namespace tz4 {

namespace {

bool IsSubcircuit(const CCmp* component) { return component->ModelId() == MODEL_SUBCIR; }

}  // namespace

int CCalc::Calculate(double t, double h, bool euler, bool onlySwitchedFlag) {
  // The history is empty again on every way out, also when a device raises.
  struct HistoryRelease {
    int32_t& used;
    ~HistoryRelease() { used = 0; }
  } release{historyUsed};
  historyUsed = 0;
  error.clear();
  const size_t n = static_cast<size_t>(std::max(dim, 0));
  std::copy(x.begin(), x.begin() + static_cast<std::ptrdiff_t>(n), xPrev.begin());
  if (!PushHistory()) {
    error = "No enough memory";
    return -2;
  }
  for (CCmp* component : cmps)
    if (!IsSubcircuit(component)) component->switched = false;
  onlySwitched = onlySwitchedFlag;
  cause.clear();

  int result = 0;
  for (;;) {
    const int32_t limit = Timeout();
    if (limit > 0 &&
        ElapsedClock() > static_cast<double>(limit) * 1000.0) {
      error = "Calc IC time-out : " + (cause.empty() ? std::string("reason unknown") : cause);
      result = -99;
      break;
    }
    std::copy(xPrev.begin(), xPrev.begin() + static_cast<std::ptrdiff_t>(n), x.begin());
    if (!StepAlgebraic(t, h, euler)) {
      result = -10;
      break;
    }
    const int r = CheckCycle();
    if (r == 1) continue;
    if (r == -1) {
      std::copy(xPrev.begin(), xPrev.begin() + static_cast<std::ptrdiff_t>(n), x.begin());
      error = "No solution";
      result = -1;
      break;
    }
    if (r == -2) {
      error = "No enough memory";
      result = -2;
      break;
    }
    result = 0;
    for (int i = 1; i < dim; ++i) {
      if (rowMark[static_cast<size_t>(i)] == 255) {
        error = "Infinity at node " + std::to_string(i) + " : " + NamesAtRow(i);
        result = -3;
        break;
      }
    }
    break;
  }
  return result;
}

bool CCalc::CheckAll(bool apply) {
  bool result = false;
  for (CCmp* component : cmps) {
    if (IsSubcircuit(component) || !component->CheckSwitching(*this, apply)) continue;
    component->switched = true;
    if (cause.empty()) cause = " switching triggered by " + component->GetFullName();
    result = true;
    if (!apply || os) break;
  }
  return result;
}

void CCalc::ResetHistory() {
  history.clear();
  historyBlocks.clear();
  historyUsed = 0;
  historyCap = 0;
  historyWidth = cmps.size();
}

bool CCalc::PushHistory() {
  if (historyUsed == 0 && historyWidth != cmps.size()) ResetHistory();
  if (historyUsed == historyCap) {
    const size_t width = std::max<size_t>(historyWidth, 1);
    const size_t chunk = static_cast<size_t>(std::max(historyChunk, 1));
    std::unique_ptr<int32_t[]> block(new (std::nothrow) int32_t[width * chunk]);
    if (!block) return false;
    try {
      history.reserve(history.size() + chunk);
      historyBlocks.reserve(historyBlocks.size() + 1);
    } catch (const std::bad_alloc&) {
      return false;
    }
    for (size_t k = 0; k < chunk; ++k) history.push_back(block.get() + k * width);
    historyBlocks.push_back(std::move(block));
    historyCap += static_cast<int32_t>(chunk);
  }
  ++historyUsed;
  return true;
}

void CCalc::StatesToTop() {
  int32_t* top = history[static_cast<size_t>(historyUsed - 1)];
  for (size_t k = 0; k < cmps.size(); ++k) top[k] = cmps[k]->state;
}

int CCalc::CheckCycle() {
  if (historyUsed == 0 && !PushHistory()) return -2;
  StatesToTop();
  if (!CheckAll(true)) return 0;
  if (!PushHistory()) return -2;
  StatesToTop();

  const size_t bytes = cmps.size() * sizeof(int32_t);
  int32_t* top = history[static_cast<size_t>(historyUsed - 1)];
  auto repeatsEarlier = [&]() {
    for (int j = historyUsed - 2; j >= 0; --j)
      if (std::memcmp(top, history[static_cast<size_t>(j)], bytes) == 0) return true;
    return false;
  };
  if (!repeatsEarlier()) return 1;

  // A cycle: look for a state vector not visited yet, one component changed
  // at a time, starting from the most recent vectors.
  for (int j = historyUsed - 2; j >= 0; --j) {
    for (size_t k = 0; k < cmps.size(); ++k) {
      CCmp* component = cmps[k];
      if (IsSubcircuit(component)) continue;
      if (onlySwitched && !component->switched) continue;
      std::memcpy(top, history[static_cast<size_t>(j)], bytes);
      int lowState = 0, highState = 0;
      if (!component->GetStateRange(lowState, highState) || lowState > highState) continue;
      for (int v = lowState; v <= highState; ++v) {
        top[k] = v;
        if (repeatsEarlier()) continue;
        for (size_t m = 0; m < cmps.size(); ++m)
          if (!IsSubcircuit(cmps[m])) cmps[m]->state = top[m];
        return 1;
      }
    }
  }
  return -1;
}

std::vector<size_t> CCalc::ComponentsAtRow(int row) const {
  std::vector<size_t> found;
  for (size_t k = 0; k < cmps.size(); ++k) {
    CCmp* component = cmps[k];
    if (IsSubcircuit(component)) continue;
    bool at = std::find(component->pins.begin(), component->pins.end(), row) !=
              component->pins.end();
    if (!at && component->firstRow > 0)
      at = row >= component->firstRow && row < component->firstRow + component->GetExtraRows();
    if (at) found.push_back(k);
  }
  return found;
}

std::string CCalc::NamesAtRow(int row) const {
  std::string names;
  for (size_t k : ComponentsAtRow(row)) {
    if (!names.empty()) names += ", ";
    names += cmps[k]->GetFullName();
  }
  return names;
}

int CCalc::MarkNeighbours(size_t index) {
  if (index >= cmps.size()) return 0;
  int result = 0;
  const CCmp* component = cmps[index];
  for (int32_t node : component->pins) {
    if (node == 0) continue;
    for (size_t k = 0; k < cmps.size(); ++k) {
      CCmp* other = cmps[k];
      if (k == index || IsSubcircuit(other) || other->forceIC) continue;
      if (std::find(other->pins.begin(), other->pins.end(), node) == other->pins.end()) continue;
      other->forceIC = true;
      result = 99;
    }
  }
  return result;
}

}  // namespace tz4
