#include "devices/resistor.h"

#include <cmath>
#include <cstring>

#include "solver/calc.h"
#include "xml/xml_node.h"

namespace tz4 {

namespace {

constexpr int32_t kTraceAll = TRACE_V | TRACE_I | TRACE_P;

const ParamDef kRParams[] = {
    {PK_VALUE, "R", &BindMember<&CElemR::R>},
    {},
};
const ParamDef kPwlParams[] = {
    {PK_PWL, "pwl", &BindMember<&CCmp::pwl>},
    {},
};
const ParamDef kPwlIParams[] = {
    {PK_PWL, "pwl", &BindMember<&CElemR::pwlI>},
    {},
};
const ParamDef kFunctionParams[] = {
    {PK_FORMULA_TEXT, "Z(s)", &BindMember<&CElemR::Zs>},
    {},
};
const ParamDef kPotentiometerParams[] = {
    {PK_VALUE, "R", &BindMember<&CElemR::R>},
    {PK_VALUE, "Position", &BindMember<&CElemR::Position>},
    {},
};

const ModelInfo kResistorModels[] = {
    {.name = "R", .id = MODEL_R_R, .params = kRParams, .extraRows = 1, .traceMask = kTraceAll},
    {.name = "PWL",
     .id = MODEL_TABLE,
     .params = kPwlParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    {.name = "PWL-I",
     .id = MODEL_R_PWL_I,
     .params = kPwlIParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    {.name = "Function",
     .id = MODEL_R_FUNCTION,
     .params = kFunctionParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    {.name = "SubCir", .id = MODEL_SUBCIR, .traceMask = TRACE_V | TRACE_P, .external = 1},
    {},
};
const ModelInfo kPotentiometerModels[] = {
    {.name = "Potentiometer",
     .id = MODEL_R_POTENTIOMETER,
     .params = kPotentiometerParams,
     .traceMask = TRACE_V},
    {},
};
const ModelInfo kVcrModels[] = {
    {.name = "PWL",
     .id = MODEL_TABLE,
     .params = kPwlParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    {},
};
// The current sense of the control takes a second row.
const ModelInfo kCcrModels[] = {
    {.name = "PWL",
     .id = MODEL_TABLE,
     .params = kPwlParams,
     .extraRows = 2,
     .traceMask = kTraceAll},
    {},
};

// Slope and intercept of a table's segment; false when the table holds no
// such segment (not parsed, or a state left over from another table).
bool SegmentLine(const CPWL& table, int32_t segment, double& slope, double& intercept) {
  const int32_t index = segment - table.FirstSegment;
  if (index < 0 || index >= table.Count || static_cast<size_t>(index) >= table.Slope.size())
    return false;
  slope = table.Slope[static_cast<size_t>(index)];
  const size_t i = static_cast<size_t>(index);
  intercept = i < table.Intercept.size() ? table.Intercept[i] : 0.0;
  return true;
}

bool SegmentInTable(const CPWL& table, int32_t segment) {
  return segment >= table.FirstSegment && segment <= table.LastSegment;
}

// A stamp that found no usable table segment fails the solve with the
// component's name in the solver's error text.
int TableFault(CCalc& calc, const CCmp& cmp) {
  calc.error = cmp.GetFullName() + ": no table segment";
  return -1;
}

}  // namespace

const ElemType kTypeR_R = {.tag = "R_R",
                           .pinCount = 2,
                           .factory = &MakeCmp<CElemR>,
                           .models = kResistorModels,
                           .description = "Resistor"};
const ElemType kTypeR_Pot = {.tag = "R_Pot",
                             .pinCount = 3,
                             .factory = &MakeCmp<CElemR>,
                             .models = kPotentiometerModels,
                             .description = "Potentiometer"};
const ElemType kTypeR_VCR = {.tag = "R_VCR",
                             .pinCount = 4,
                             .factory = &MakeCmp<CElemR>,
                             .models = kVcrModels,
                             .description = "Voltage controlled\nresistor"};
const ElemType kTypeR_CCR = {.tag = "R_CCR",
                             .pinCount = 4,
                             .factory = &MakeCmp<CElemR>,
                             .models = kCcrModels,
                             .description = "Current controlled\nresistor"};

CElemR::CElemR(const ElemType& elemType) : CCmp(elemType), Zs("1") {
  R.Value = 1.0;
  Position.Value = 0.0;
  // On the plain resistor the table lists resistances of the curve I(V); on
  // the controlled types its entries are resistances taken as they stand.
  if (IsType("R_R")) {
    pwl.Curve = "I(V)";
    pwl.Reciprocal = true;
    pwlI.Curve = "V(I)";
  }
}

bool CElemR::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  if (IsType("R_R")) {
    archive.ArchiveValue("r", R);
    archive.ArchiveEncodedString("fs", Zs);
    // The current-controlled table is read always and written when in use.
    if (!archive.storing || ModelId() == MODEL_R_PWL_I || pwlI.Changed) {
      archive.ArchiveString("pwli", pwlI.Text);
      archive.ArchiveEncodedString("pwlif", pwlI.FormulaText);
      archive.ArchiveInt("pwlim", pwlI.Mode);
    }
  } else if (IsType("R_Pot")) {
    archive.ArchiveValue("r", R);
    archive.ArchiveValue("p", Position);
  }
  return true;
}

bool CElemR::CheckParams() {
  switch (ModelId()) {
    case MODEL_R_R:
      return R.Invalid ? ComponentError(this, "R : formula error") : true;
    case MODEL_R_POTENTIOMETER: {
      // Every check runs, so that all faults are listed.
      bool ok = true;
      if (R.Invalid) ok = ComponentError(this, "R : formula error");
      if (Position.Invalid) ok = ComponentError(this, "Position : formula error");
      if (Position.Value < 0) ok = ComponentError(this, "Position < 0");
      if (Position.Value > 1) ok = ComponentError(this, "Position > 1");
      return ok;
    }
    case MODEL_SUBCIR:
      return ReportNotSimulated(this);
    default:
      return true;
  }
}

int32_t CElemR::GetExtraRows() {
  switch (ModelId()) {
    case MODEL_R_R:
      // A short carries its current in a row of its own.
      return R.Value == 0 ? 1 : 0;
    case MODEL_R_POTENTIOMETER:
      if (R.Value == 0) return 2;
      return Position.Value <= 0 || Position.Value >= 1 ? 1 : 0;
    default:
      return CCmp::GetExtraRows();
  }
}

bool CElemR::GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) {
  CCmp::GetTraceInfo(kind, nodeA, nodeB, row, value);
  const int32_t model = ModelId();
  if (model == MODEL_R_R) value = R.Value;
  return model != MODEL_SUBCIR || kind == 0 || kind == 6;
}

int CElemR::Stamp(CCalc& calc, int phase, double /*t*/) {
  const int32_t model = ModelId();
  switch (phase) {
    case STAMP_INIT:
      if (model != prevModelId) state = 0;
      if (model == MODEL_R_PWL_I) {
        if (prevModelId != MODEL_R_PWL_I) pwlI.Clear();
        if (!pwlI.Parse(this)) return -1;
        // A segment left over from an earlier text of the table.
        if (!SegmentInTable(pwlI, state)) state = 0;
      } else if (model == MODEL_TABLE && IsType("R_R")) {
        if (!SegmentInTable(pwl, state)) state = 0;
      }
      return 0;
    case STAMP_RESET:
      pwlI.Clear();
      return 0;
    case STAMP_MATRIX:
      break;
    default:
      return 0;
  }
  if (calc.pass != 0 || pins.size() < 2) return 0;

  const int a = pins[0];
  const int b = pins[1];
  const int r = firstRow;
  switch (model) {
    case MODEL_R_R:
      if (R.Value == 0) {
        calc.StampVSource(a, b, r, 0.0);
      } else if (!std::isinf(R.Value)) {
        calc.StampConductance(a, b, R.Value);
      }
      return 0;

    case MODEL_R_POTENTIOMETER: {
      if (pins.size() < 3) return 0;
      const int w = pins[2];
      const double total = R.Value;
      const double p = Position.Value;
      if (total == 0) {
        calc.StampVSource(a, w, r, 0.0);
        calc.StampVSource(w, b, r + 1, 0.0);
      } else if (p <= 0) {
        calc.StampVSource(a, w, r, 0.0);
        calc.StampConductance(w, b, total);
      } else if (p >= 1) {
        calc.StampConductance(a, w, total);
        calc.StampVSource(w, b, r, 0.0);
      } else {
        calc.StampConductance(a, w, total * p);
        calc.StampConductance(w, b, total * (1 - p));
      }
      return 0;
    }

    case MODEL_TABLE: {
      double slope = 0.0, intercept = 0.0;
      if (IsType("R_R")) {
        // x[r] = g * V + z: the current of the segment's line.
        pwl.Segment = state;
        if (!SegmentLine(pwl, state, slope, intercept)) return TableFault(calc, *this);
        calc.StampTransconductance(b, a, a, b, r, slope);
        calc.SetConstant(r, -intercept);
        return 0;
      }
      // The controlled types: a resistance taken from the present segment,
      // the current in row r.
      if (!SegmentLine(pwl, pwl.Segment, slope, intercept)) return TableFault(calc, *this);
      if (IsType("R_CCR")) {
        if (pins.size() < 4) return 0;
        // The control current is sensed by a short between the control pins.
        calc.StampVSource(pins[2], pins[3], r + 1, 0.0);
      }
      calc.StampResistor(a, b, r, slope);
      return 0;
    }

    case MODEL_R_PWL_I: {
      // V = slope * x[r] + z.
      double slope = 0.0, intercept = 0.0;
      pwlI.Segment = state;
      if (!SegmentLine(pwlI, state, slope, intercept)) return TableFault(calc, *this);
      calc.StampVSource(a, b, r, intercept);
      calc.SetCoupling(r, r, -slope);
      return 0;
    }

    case MODEL_R_FUNCTION:
      // "Z(s)" has no part in a transient run: the element is a resistance
      // of 1 written with its own current row.
      calc.AddCoupling(a, r, 1.0);
      calc.AddCoupling(b, r, -1.0);
      calc.AddCoupling(r, a, 1.0);
      calc.AddCoupling(r, b, -1.0);
      calc.SetCoupling(r, r, 1.0);
      calc.SetDerivative(r, r, 0.0);
      return 0;

    default:
      return 0;
  }
}

bool CElemR::GetStateRange(int& low, int& high) {
  if (!IsType("R_R")) return false;
  const CPWL* table = nullptr;
  switch (ModelId()) {
    case MODEL_TABLE:
      table = &pwl;
      break;
    case MODEL_R_PWL_I:
      table = &pwlI;
      break;
    default:
      return false;
  }
  low = table->FirstSegment;
  high = table->LastSegment;
  return low < high;
}

bool CElemR::CheckSwitching(CCalc& calc, bool apply) {
  if (!IsType("R_R") || pins.size() < 2) return false;
  bool changed = false;
  switch (ModelId()) {
    case MODEL_TABLE:
      pwl.Segment = state;
      changed = pwl.FindSegment(calc.V(pins[1]) - calc.V(pins[0]), apply);
      state = pwl.Segment;
      return changed;
    case MODEL_R_PWL_I:
      pwlI.Segment = state;
      changed = pwlI.FindSegment(calc.V(firstRow), apply);
      state = pwlI.Segment;
      return changed;
    default:
      return false;
  }
}

bool CElemR::PostStep(CCalc& calc, bool apply, double /*t*/, bool& changed) {
  changed = false;
  if (ModelId() != MODEL_TABLE || pins.size() < 4) return true;
  if (IsType("R_VCR"))
    changed = pwl.FindSegment(calc.V(pins[3]) - calc.V(pins[2]), apply);
  else if (IsType("R_CCR"))
    changed = pwl.FindSegment(calc.V(firstRow + 1), apply);
  return true;
}

}  // namespace tz4
