// The run behaviour of the inductors. Every shape is a set of windings, each
// with a row that holds its current: the plain path has one, "L_CL" two and
// "L_CUSTOM" one per pin pair. In the dynamic form each row is a short with
// the flux law in B; in the state form a winding with a known current is a
// source of that current (coupled windings keep their flux linkage), and a
// winding with no known current is a short.
#include <cmath>
#include <exception>

#include "devices/inductor.h"
#include "expr/numtext.h"
#include "solver/calc.h"

namespace tz4 {

bool CElemL::PlainPath() const {
  return IsTypeIn({"L_L", "L_VCL", "L_CCL"}) || (IsType("L_CUSTOM") && windingCount == 1);
}

double CElemL::PlainInductance() const {
  if (ModelId() != MODEL_TABLE) return L.Value;
  const int index = pwl.Index();
  if (index < 0 || static_cast<size_t>(index) >= pwl.Slope.size()) return 0.0;
  return pwl.Slope[static_cast<size_t>(index)];
}

std::vector<CElemL::Winding> CElemL::Windings() {
  std::vector<Winding> out;
  const int32_t model = ModelId();
  if (model == MODEL_SUBCIR || model == MODEL_L_FUNCTION) return out;
  const int32_t dots = customType != nullptr ? customType->leftDots : 0;
  auto ends = [&](Winding& w, int index) {
    w.a = Pin(static_cast<size_t>(2 * index));
    w.b = Pin(static_cast<size_t>(2 * index + 1));
    if ((dots >> index) & 1) std::swap(w.a, w.b);
  };
  if (PlainPath()) {
    Winding w;
    ends(w, 0);
    w.row = firstRow;
    w.inductance = PlainInductance();
    w.known = !(model == MODEL_L_L && w.inductance == 0.0);
    w.icText = &ICText;
    w.current = &Current;
    w.flag32 = &HasValue;
    out.push_back(w);
    return out;
  }
  if (IsType("L_CL")) {
    Winding first, second;
    ends(first, 0);
    ends(second, 1);
    first.row = firstRow;
    second.row = firstRow + 1;
    first.inductance = L.Value;
    second.inductance = L2.Value;
    first.icText = &ICText;
    second.icText = &IC2Text;
    first.current = &Current;
    second.current = &Current2;
    first.flag32 = &HasValue;
    second.flag32 = &HasValue2;
    first.known = first.inductance != 0.0;
    second.known = second.inductance != 0.0;
    out.push_back(first);
    out.push_back(second);
    return out;
  }
  for (int i = 0; i < windingCount; ++i) {
    Winding w;
    ends(w, i);
    w.row = firstRow + i;
    w.inductance = customValues[static_cast<size_t>(i)].Value;
    w.known = w.inductance != 0.0;
    w.icText = &customIC[static_cast<size_t>(i)];
    w.current = &customCurrent[static_cast<size_t>(i)];
    w.flag8 = &customHasValue[static_cast<size_t>(i)];
    out.push_back(w);
  }
  return out;
}

double CElemL::Mutual(const std::vector<Winding>& windings, size_t i, size_t j) const {
  if (i > j) std::swap(i, j);
  double k = K.Value;
  if (IsType("L_CUSTOM")) {
    // The "K" items follow the "L" items, pairs in the order (1,2), (1,3) ...
    const size_t n = windings.size();
    size_t index = n;
    for (size_t p = 0; p < i; ++p) index += n - 1 - p;
    index += j - i - 1;
    k = customValues[index].Value;
  }
  return std::sqrt(windings[i].inductance * windings[j].inductance) * k;
}

bool CElemL::CheckParams() {
  const int32_t model = ModelId();
  if (model == MODEL_SUBCIR || model == MODEL_L_FUNCTION) return true;
  if (PlainPath()) return model != MODEL_L_L || CheckValid(this, L, "L");
  auto checkInductance = [this](const CFormula& value, const std::string& name) {
    if (!CheckValid(this, value, name)) return false;
    return !std::isinf(value.Value) || ComponentError(this, name + " : infinite");
  };
  auto checkCoupling = [this](const CFormula& value, const std::string& name) {
    if (!CheckValid(this, value, name)) return false;
    if (value.Value < -1) return ComponentError(this, name + " < -1");
    return !(value.Value > 1) || ComponentError(this, name + " > 1");
  };
  bool ok = true;
  if (IsType("L_CL")) {
    ok &= checkInductance(L, "L1");
    ok &= checkInductance(L2, "L2");
    ok &= checkCoupling(K, "K");
    return ok;
  }
  for (const CustomParam& item : customParams) {
    if (item.Kind != PK_VALUE) continue;
    const CFormula& value = customValues[static_cast<size_t>(item.Index)];
    ok &= item.Name[0] == 'L' ? checkInductance(value, item.Name) : checkCoupling(value, item.Name);
  }
  return ok;
}

int CElemL::ReadInitialCurrents(CCalc& calc) {
  for (Winding& w : Windings()) {
    w.SetHasValue(false);
    if (w.icText->empty()) continue;
    try {
      *w.current = TextToDouble(*w.icText);
    } catch (const std::exception&) {
      calc.error = GetFullName() + " : IC : formula error";
      return -1;
    }
    w.SetHasValue(true);
  }
  return 0;
}

// A winding one of whose nodes the last solve left marked takes the current
// the rest of the circuit gives it; 1 when any winding took a new value.
int CElemL::AdjustInitialCurrents(const CCalc& calc) {
  int result = 0;
  for (Winding& w : Windings()) {
    if (calc.RowMark(w.a) == 0 && calc.RowMark(w.b) == 0) continue;
    const double i = calc.V(w.row);
    if (!w.HasValue() || i != *w.current) result = 1;
    *w.current = i;
    w.SetHasValue(w.known);
  }
  return result;
}

void CElemL::StampPlain(CCalc& calc, Winding& w) {
  const double s = w.inductance;
  if (calc.stampMode != 0) {
    if (std::isinf(s)) {
      calc.StampISource(w.a, w.b, w.row, *w.current);  // an infinite inductance holds its current
      return;
    }
    calc.StampVSource(w.a, w.b, w.row, 0.0);
    calc.SetDerivative(w.row, w.row, -s);
    return;
  }
  const bool free = (!w.HasValue() || ignoreIC) && !forceIC;
  if (free) {
    calc.StampVSource(w.a, w.b, w.row, 0.0);  // no known current: a short
    return;
  }
  if (forceIC && !w.HasValue()) *w.current = 0.0;
  calc.StampISource(w.a, w.b, w.row, *w.current);
  if (s != 0.0) {
    calc.SetDerivative(w.row, w.a, 1.0 / s);
    calc.SetDerivative(w.row, w.b, -1.0 / s);
  }
}

// Coupled windings. The dynamic form is symmetric in the mutual terms. In
// the state form a known winding keeps its flux linkage Li xi + sum Mij xj;
// during the search of initial conditions the mutual terms enter every
// known row alike, so that a set stores no energy it was not given.
void CElemL::StampCoupled(CCalc& calc, std::vector<Winding>& windings) {
  const size_t n = windings.size();
  if (calc.stampMode != 0) {
    for (size_t i = 0; i < n; ++i) {
      calc.StampVSource(windings[i].a, windings[i].b, windings[i].row, 0.0);
      calc.SetDerivative(windings[i].row, windings[i].row, -windings[i].inductance);
      for (size_t j = 0; j < n; ++j)
        if (j != i) calc.SetDerivative(windings[i].row, windings[j].row, -Mutual(windings, i, j));
    }
    return;
  }
  if (forceIC) {
    for (Winding& w : windings) {
      if (!w.HasValue()) *w.current = 0.0;
      w.SetHasValue(true);
    }
  }
  for (size_t i = 0; i < n; ++i) {
    Winding& w = windings[i];
    if ((!w.HasValue() || ignoreIC) && !forceIC) {
      calc.StampVSource(w.a, w.b, w.row, 0.0);
      continue;
    }
    calc.AddCoupling(w.a, w.row, 1.0);
    calc.AddCoupling(w.b, w.row, -1.0);
    calc.SetCoupling(w.row, w.row, w.inductance);
    calc.SetConstant(w.row, -*w.current * w.inductance);
    if (!calc.icPass) continue;
    for (size_t j = 0; j < n; ++j) {
      if (j == i) continue;
      const double m = Mutual(windings, i, j);
      calc.SetCoupling(w.row, windings[j].row, m);
      if (windings[j].HasValue()) calc.AddConstant(w.row, -m * *windings[j].current);
    }
    calc.SetDerivative(w.row, w.a, 1.0);
    calc.SetDerivative(w.row, w.b, -1.0);
  }
}

int CElemL::Stamp(CCalc& calc, int phase, double /*t*/) {
  const int32_t model = ModelId();
  if (model == MODEL_SUBCIR) return 0;
  switch (phase) {
    case STAMP_INIT:
      return prevModelId == 0 ? ReadInitialCurrents(calc) : 0;
    case STAMP_ACCEPT:
      for (Winding& w : Windings()) {
        *w.current = calc.V(w.row);
        w.SetHasValue(w.known);
      }
      return 0;
    case STAMP_IC_ADJUST:
      return AdjustInitialCurrents(calc);
    case STAMP_MATRIX: {
      if (calc.pass != 0) return 0;
      const int r = firstRow;
      if (IsType("L_CCL")) calc.StampVSource(Pin(2), Pin(3), r + 1, 0.0);
      if (model == MODEL_L_FUNCTION) {
        // "Z(s)" has no part in a transient run: a resistance of 1.
        calc.AddCoupling(Pin(0), r, 1.0);
        calc.AddCoupling(Pin(1), r, -1.0);
        calc.AddCoupling(r, Pin(0), 1.0);
        calc.AddCoupling(r, Pin(1), -1.0);
        calc.SetCoupling(r, r, 1.0);
        calc.SetDerivative(r, r, 0.0);
        return 0;
      }
      std::vector<Winding> windings = Windings();
      if (PlainPath() && !windings.empty())
        StampPlain(calc, windings.front());
      else
        StampCoupled(calc, windings);
      return 0;
    }
    case STAMP_SAVE_IC:
      for (Winding& w : Windings())
        *w.icText = w.HasValue() ? FormatNumber(*w.current, 12) : std::string();
      return 0;
    default:
      return 0;
  }
}

bool CElemL::PostStep(CCalc& calc, bool apply, double /*t*/, bool& changed) {
  changed = false;
  if (ModelId() != MODEL_TABLE || pwl.Count == 0) return true;
  const double own = calc.V(firstRow);
  if (IsType("L_L")) {
    changed = pwl.FindSegment(own, apply);
    return true;
  }
  const double control = IsType("L_VCL") ? calc.V(Pin(3)) - calc.V(Pin(2)) : calc.V(firstRow + 1);
  if (!apply) {
    changed = pwl.FindSegment(control, false);
    return true;
  }
  const double oldInductance = PlainInductance();
  changed = pwl.FindSegment(control, true);
  const double newInductance = PlainInductance();
  if (changed && newInductance != 0.0) {
    // The flux is kept across the change of inductance.
    Current = oldInductance * own / newInductance;
    HasValue = 1;
    calc.rebuild = true;
  }
  return true;
}

}  // namespace tz4
