#include "devices/capacitor.h"

#include <cmath>
#include <cstring>
#include <exception>

#include "expr/numtext.h"
#include "solver/calc.h"
#include "xml/xml_node.h"

namespace tz4 {

namespace {

constexpr int32_t kTraceAll = TRACE_V | TRACE_I | TRACE_P;

const ParamDef kCParams[] = {
    {PK_VALUE, "C", &BindMember<&CElemC::C>},
    {PK_IC, "IC", &BindMember<&CElemC::ICText>},
    {},
};
const ParamDef kPwlParams[] = {
    {PK_PWL, "pwl", &BindMember<&CCmp::pwl>},
    {PK_IC, "IC", &BindMember<&CElemC::ICText>},
    {},
};
const ParamDef kFunctionParams[] = {
    {PK_FORMULA_TEXT, "Z(s)", &BindMember<&CElemC::Zs>},
    {},
};

const ModelInfo kCapacitorModels[] = {
    {.name = "C", .id = MODEL_C_C, .params = kCParams, .extraRows = 1, .traceMask = kTraceAll},
    {.name = "PWL",
     .id = MODEL_TABLE,
     .params = kPwlParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    {.name = "Function",
     .id = MODEL_C_FUNCTION,
     .params = kFunctionParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    {.name = "SubCir", .id = MODEL_SUBCIR, .traceMask = TRACE_V | TRACE_P, .external = 1},
    {},
};
const ModelInfo kVccModels[] = {
    {.name = "PWL",
     .id = MODEL_TABLE,
     .params = kPwlParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    {},
};
// The current sense of the control takes a second row.
const ModelInfo kCccModels[] = {
    {.name = "PWL",
     .id = MODEL_TABLE,
     .params = kPwlParams,
     .extraRows = 2,
     .traceMask = kTraceAll},
    {},
};

}  // namespace

const ElemType kTypeC_C = {.tag = "C_C",
                           .pinCount = 2,
                           .factory = &MakeCmp<CElemC>,
                           .models = kCapacitorModels,
                           .description = "Capacitor"};
const ElemType kTypeC_VCC = {.tag = "C_VCC",
                             .pinCount = 4,
                             .factory = &MakeCmp<CElemC>,
                             .models = kVccModels,
                             .description = "Voltage controlled\ncapacitor"};
const ElemType kTypeC_CCC = {.tag = "C_CCC",
                             .pinCount = 4,
                             .factory = &MakeCmp<CElemC>,
                             .models = kCccModels,
                             .description = "Current controlled\ncapacitor"};

CElemC::CElemC(const ElemType& elemType) : CCmp(elemType), Zs("1/s") {
  C.Value = 1.0;
  // The plain capacitor's table is a charge curve; the controlled types list
  // capacitances as they stand.
  if (IsType("C_C")) pwl.Curve = "Q(V)";
}

bool CElemC::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  if (IsType("C_C")) {
    archive.ArchiveValue("c", C);
    archive.ArchiveString("ic", ICText);
    archive.ArchiveEncodedString("fs", Zs);
  } else {
    archive.ArchiveString("ic", ICText);
  }
  return true;
}

std::string& CElemC::GetICText(std::string& out) {
  out.clear();
  const int32_t model = ModelId();
  if (model == MODEL_C_C || model == MODEL_TABLE)
    out = GetFullName() + ".IC=" + (ICText.empty() ? std::string("\"\"") : ICText);
  return out;
}

bool CElemC::CheckParams() {
  switch (ModelId()) {
    case MODEL_SUBCIR:
      return ReportNotSimulated(this);
    case MODEL_C_C:
      if (C.Invalid) return ComponentError(this, "C : formula error");
      return true;
    default:
      return true;
  }
}

double CElemC::Capacitance() const {
  if (ModelId() != MODEL_TABLE) return C.Value;
  const int index = pwl.Index();
  if (index < 0 || static_cast<size_t>(index) >= pwl.Slope.size()) return 0.0;
  return pwl.Slope[static_cast<size_t>(index)];
}

int CElemC::Stamp(CCalc& calc, int phase, double /*t*/) {
  const int32_t model = ModelId();
  if (model == MODEL_SUBCIR) return 0;
  const int a = Pin(0);
  const int b = Pin(1);
  const int r = firstRow;
  switch (phase) {
    case STAMP_INIT: {
      // Only a fresh start reads the initial condition; a rebuild in the
      // middle of a run keeps the voltage reached so far.
      if (prevModelId != 0) return 0;
      HasValue = false;
      if (ICText.empty()) return 0;
      try {
        Voltage = TextToDouble(ICText);
      } catch (const std::exception&) {
        calc.error = GetFullName() + " : IC : formula error";
        return -1;
      }
      HasValue = true;
      return 0;
    }
    case STAMP_ACCEPT:
      Voltage = calc.V(b) - calc.V(a);
      HasValue = true;
      return 0;
    case STAMP_IC_ADJUST: {
      // A marked row: the rest of the circuit fixes this voltage, which the
      // next round of the search takes as known.
      if (calc.RowMark(r) == 0) return 0;
      const double v = calc.V(b) - calc.V(a);
      const bool changed = !HasValue || v != Voltage;
      Voltage = v;
      HasValue = true;
      return changed ? 1 : 0;
    }
    case STAMP_MATRIX: {
      if (calc.pass != 0) return 0;
      // The current-controlled type senses its control current with a
      // 0 V source on its second row.
      if (IsType("C_CCC")) calc.StampVSource(Pin(2), Pin(3), r + 1, 0.0);
      if (model == MODEL_C_FUNCTION) {
        // "Z(s)" has no part in a transient run: a resistance of 1.
        calc.AddCoupling(a, r, 1.0);
        calc.AddCoupling(b, r, -1.0);
        calc.AddCoupling(r, a, 1.0);
        calc.AddCoupling(r, b, -1.0);
        calc.SetCoupling(r, r, 1.0);
        calc.SetDerivative(r, r, 0.0);
        return 0;
      }
      const double cap = Capacitance();
      if (calc.stampMode == 0) {
        if ((!HasValue || ignoreIC) && !forceIC) {
          calc.StampISource(a, b, r, 0.0);  // no known voltage: open
          return 0;
        }
        if (!calc.StampVSource(a, b, r, HasValue ? Voltage : 0.0)) {
          calc.error = GetFullName() + " : short circuit";
          return -1;
        }
        if (cap != 0.0) calc.SetDerivative(r, r, -1.0 / cap);
        return 0;
      }
      if (std::isinf(cap)) {
        calc.StampVSource(a, b, r, Voltage);
        return 0;
      }
      calc.StampISource(a, b, r, 0.0);
      calc.AddDerivative(r, a, cap);
      calc.AddDerivative(r, b, -cap);
      return 0;
    }
    case STAMP_SAVE_IC:
      ICText = HasValue ? FormatNumber(Voltage, 12) : std::string();
      return 0;
    default:
      return 0;
  }
}

bool CElemC::PostStep(CCalc& calc, bool apply, double /*t*/, bool& changed) {
  changed = false;
  if (ModelId() != MODEL_TABLE || pwl.Count == 0) return true;
  const double v = calc.V(Pin(1)) - calc.V(Pin(0));
  // The plain capacitor's curve follows its own voltage.
  if (IsType("C_C")) {
    changed = pwl.FindSegment(v, apply);
    return true;
  }
  const double control = IsType("C_VCC") ? calc.V(Pin(3)) - calc.V(Pin(2)) : calc.V(firstRow + 1);
  if (!apply) {
    changed = pwl.FindSegment(control, false);
    return true;
  }
  const double oldCap = Capacitance();
  changed = pwl.FindSegment(control, true);
  const double newCap = Capacitance();
  if (changed && newCap != 0.0) {
    // The charge is kept across the change of capacitance: the voltage
    // jumps, and the system is built again from that voltage.
    Voltage = v * oldCap / newCap;
    HasValue = true;
    calc.rebuild = true;
  }
  return true;
}

bool CElemC::GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) {
  CCmp::GetTraceInfo(kind, nodeA, nodeB, row, value);
  return ModelId() != MODEL_SUBCIR || kind == 0 || kind == 6;
}

}  // namespace tz4
