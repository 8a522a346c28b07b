#include "devices/meter_blocks.h"

#include <cmath>
#include <cstring>

#include "expr/numtext.h"
#include "solver/calc.h"
#include "xml/xml_node.h"

namespace tz4 {

namespace {

// Bit 5 of a trace mask marks a meter, which takes no part in the power sum
// of a subcircuit; bit 4 an output that delivers power, as a source does.
constexpr int32_t kMeterBit = 32;
constexpr int32_t kOutputMask = TRACE_V | TRACE_I | TRACE_P | 16;
constexpr int32_t kSubCirMask = TRACE_V | TRACE_P;

const ParamDef kCouplerParams[] = {
    {PK_VALUE, "z0", &BindMember<&CElemDC::Z0>},
    {PK_VALUE, "CF", &BindMember<&CElemDC::Cf>},
    {},
};
const ParamDef kSampleHoldParams[] = {
    {PK_VALUE, "IC", &BindMember<&CElemSH::Ic>},
    {},
};

// --- model tables: name, id, params, editHint, extraRows, traceMask ---

const ModelInfo kAmperemeterModels[] = {
    {.name = "Amperemeter",
     .id = MODEL_A_AMPEREMETER,
     .extraRows = 1,
     .traceMask = TRACE_I | kMeterBit},
    {},
};
const ModelInfo kVoltmeterModels[] = {
    {.name = "Voltmeter", .id = MODEL_A_VOLTMETER, .traceMask = TRACE_V | kMeterBit},
    {},
};
const ModelInfo kWattmeterModels[] = {
    {.name = "Wattmeter",
     .id = MODEL_A_WATTMETER,
     .extraRows = 1,
     .traceMask = TRACE_P | kMeterBit},
    {},
};
const ModelInfo kCouplerModels[] = {
    {.name = "Coupler",
     .id = MODEL_X_COUPLER,
     .params = kCouplerParams,
     .extraRows = 3,
     .traceMask = TRACE_V | TRACE_I | TRACE_P},
    {},
};
const ModelInfo kSampleHoldModels[] = {
    {.name = "SH",
     .id = MODEL_X_SH,
     .params = kSampleHoldParams,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {.name = "SubCir", .id = MODEL_SUBCIR, .traceMask = kSubCirMask, .external = 1},
    {},
};
// A block shows no trace itself; its power is that of its contents.
const ModelInfo kBlockModels[] = {
    {.name = "SubCir", .id = MODEL_SUBCIR, .traceMask = TRACE_P, .external = 1},
    {},
};

}  // namespace

const ElemType kTypeA_A = {.tag = "A_A",
                           .pinCount = 2,
                           .factory = &MakeCmp<CElemA>,
                           .models = kAmperemeterModels,
                           .description = "Amperemeter"};
const ElemType kTypeV_VM = {.tag = "V_VM",
                            .pinCount = 2,
                            .factory = &MakeCmp<CElemA>,
                            .models = kVoltmeterModels,
                            .description = "Voltmeter"};
const ElemType kTypeW_WM = {.tag = "W_WM",
                            .pinCount = 3,
                            .factory = &MakeCmp<CElemA>,
                            .models = kWattmeterModels,
                            .description = "Wattmeter"};
const ElemType kTypeX_DC = {.tag = "X_DC",
                            .pinCount = 4,
                            .factory = &MakeCmp<CElemDC>,
                            .models = kCouplerModels,
                            .description = "Directional coupler"};
const ElemType kTypeX_SH = {.tag = "X_SH",
                            .pinCount = 3,
                            .factory = &MakeCmp<CElemSH>,
                            .models = kSampleHoldModels,
                            .description = "Sample/hold"};
const ElemType kTypeX_B2 = {.tag = "X_B2",
                            .pinCount = 2,
                            .factory = &MakeCmp<CElemX>,
                            .models = kBlockModels,
                            .description = "Block-2"};
const ElemType kTypeX_B3 = {.tag = "X_B3",
                            .pinCount = 3,
                            .factory = &MakeCmp<CElemX>,
                            .models = kBlockModels,
                            .description = "Block-3"};
const ElemType kTypeX_B4 = {.tag = "X_B4",
                            .pinCount = 4,
                            .factory = &MakeCmp<CElemX>,
                            .models = kBlockModels,
                            .description = "Block-4"};
const ElemType kTypeX_B6 = {.tag = "X_B6",
                            .pinCount = 6,
                            .factory = &MakeCmp<CElemX>,
                            .models = kBlockModels,
                            .description = "Block-6"};
const ElemType kTypeX_B8 = {.tag = "X_B8",
                            .pinCount = 8,
                            .factory = &MakeCmp<CElemX>,
                            .models = kBlockModels,
                            .description = "Block-8"};
const ElemType kTypeX_CUSTOM = {.tag = "X_CUSTOM",
                                .pinCount = 0,
                                .factory = &MakeCmp<CElemX>,
                                .models = kBlockModels,
                                .description = "Custom block"};
const ElemType kTypeX_TZ4 = {.tag = "X_TZ4",
                             .pinCount = 0,
                             .factory = &MakeCmp<CElemX>,
                             .models = kBlockModels,
                             .description = "TZ4 circuit"};

// ---------------------------------------------------------------- CElemA

CElemA::CElemA(const ElemType& elemType) : CCmp(elemType) {}

// A meter has only the attributes of the base.
bool CElemA::Serialize(CXmlNode& archive, bool customFlag) {
  return SerializeBase(archive, customFlag);
}

// Each meter allows exactly the trace it names; none has parameters.
bool CElemA::CheckParams() { return true; }

// The ammeter is a wire with its current as the row's unknown; the
// wattmeter's current path runs from its third pin to the common; the
// voltmeter has no effect on the circuit.
int CElemA::Stamp(CCalc& calc, int phase, double /*t*/) {
  if (phase != STAMP_MATRIX || calc.pass != 0) return 0;
  if (IsType("A_A")) calc.StampVSource(Pin(0), Pin(1), firstRow, 0.0);
  if (IsType("W_WM")) calc.StampVSource(Pin(2), Pin(1), firstRow, 0.0);
  return 0;
}

bool CElemA::GetTraceInfo(int /*kind*/, int& nodeA, int& nodeB, int& row, double& value) {
  const int first = !pins.empty() ? pins[0] : -1;
  const int second = pins.size() > 1 ? pins[1] : -1;
  value = 0.0;
  if (IsType("A_A")) {
    nodeA = second >= 0 ? 0 : -1;
    nodeB = second;
    row = firstRow;
  } else if (IsType("V_VM")) {
    // V(+) - V(-).
    nodeA = second;
    nodeB = first;
    row = 0;
  } else {
    nodeA = first;
    nodeB = second;
    row = firstRow;
  }
  return true;
}

// --------------------------------------------------------------- CElemDC

CElemDC::CElemDC(const ElemType& elemType) : CCmp(elemType) { Z0.Value = 50.0; }

bool CElemDC::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  archive.ArchiveValue("z", Z0);
  archive.ArchiveValue("cf", Cf);
  return true;
}

bool CElemDC::CheckParams() {
  bool ok = true;
  if (!CheckValid(this, Z0, "z0"))
    ok = false;
  else if (Z0.Value < 0)
    ok = ComponentError(this, "z0 < 0");
  else if (std::isinf(Z0.Value))
    ok = ComponentError(this, "z0 = infinite");
  return CheckFinite(this, Cf, "CF") && ok;
}

// The main path is a wire whose current I (from in to out) is -x[r]; the
// forward output gives the wave travelling from in to out, k (V + z0 I) / 2,
// the reverse output the one coming back, k (V - z0 I) / 2, with k the
// coupling factor of "CF" decibels.
int CElemDC::Stamp(CCalc& calc, int phase, double /*t*/) {
  if (phase != STAMP_MATRIX || calc.pass != 0) return 0;
  const int in = Pin(0), out = Pin(1), forward = Pin(2), reverse = Pin(3), r = firstRow;
  const double k = std::pow(10.0, Cf.Value / -20.0), z0 = Z0.Value;
  calc.StampVSource(in, out, r, 0.0);
  const int rows[2] = {r + 1, r + 2};
  const int nodes[2] = {forward, reverse};
  const double signs[2] = {1.0, -1.0};
  for (int n = 0; n < 2; ++n) {
    calc.AddCoupling(nodes[n], rows[n], 1.0);
    calc.SetCoupling(rows[n], nodes[n], 1.0);
    calc.AddCoupling(rows[n], in, -k / 2);
    calc.AddCoupling(rows[n], r, signs[n] * k / 2 * z0);
  }
  return 0;
}

// The output from ground, with the current of the main path.
bool CElemDC::GetTraceInfo(int /*kind*/, int& nodeA, int& nodeB, int& row, double& value) {
  nodeA = pins.size() > 1 ? 0 : -1;
  nodeB = pins.size() > 1 ? pins[1] : -1;
  row = firstRow;
  value = 0.0;
  return true;
}

// --------------------------------------------------------------- CElemSH

CElemSH::CElemSH(const ElemType& elemType) : CCmp(elemType) {}

bool CElemSH::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  archive.ArchiveValue("ic", Ic);
  return true;
}

std::string& CElemSH::GetICText(std::string& out) {
  out.clear();
  if (ModelId() != MODEL_X_SH) return out;
  out = GetFullName() + ".IC=" + FormatNumber(Ic.Value);
  return out;
}

bool CElemSH::CheckParams() { return ModelId() != MODEL_X_SH || CheckFinite(this, Ic, "ic"); }

int CElemSH::Stamp(CCalc& calc, int phase, double /*t*/) {
  if (ModelId() != MODEL_X_SH) return 0;
  switch (phase) {
    case STAMP_INIT:
      if (prevModelId != MODEL_X_SH) {
        Held = Ic.Value;
        state = -1;
      }
      return 0;
    case STAMP_MATRIX: {
      if (calc.pass != 0) return 0;
      const int out = Pin(1), r = firstRow;
      if (out == 0) {
        calc.error = GetFullName() + " : grounded output";
        return -1;
      }
      calc.AddCoupling(out, r, 1.0);
      calc.SetCoupling(r, out, -1.0);
      const bool tracking = (view & 2) != 0 && state == 1;
      if (tracking)
        calc.AddCoupling(r, Pin(0), 1.0);
      else
        calc.SetConstant(r, Held);
      return 0;
    }
    case STAMP_SAVE_IC:
      Ic.Value = Held;
      Ic.Text.clear();
      return 0;
    default:
      return 0;
  }
}

// The clock is read once at each time point; the first level is taken
// without an edge. A rising level samples; in track mode the input is also
// taken when the clock falls, so the output holds it from then on.
bool CElemSH::PostStep(CCalc& calc, bool apply, double /*t*/, bool& changed) {
  changed = false;
  if (ModelId() != MODEL_X_SH) return true;
  const int32_t level = (calc.V(Pin(kClockPin)) > calc.thr ? 1 : 0) ^ (view & 1);
  if (state < 0) state = level;
  if (level == state) return true;
  changed = true;
  if (!apply) return true;
  if (level == 1 || (view & 2) != 0) Held = calc.V(Pin(0));
  state = level;
  return true;
}

// The clock is a logic input.
int CElemSH::IsMatrixPin(int pin) { return pin == kClockPin && ModelId() == MODEL_X_SH ? 0 : 1; }

// The output drives its node from ground through the extra row.
bool CElemSH::GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) {
  nodeA = pins.size() > 1 ? 0 : -1;
  nodeB = pins.size() > 1 ? pins[1] : -1;
  row = firstRow;
  value = 0.0;
  if (ModelId() == MODEL_SUBCIR) return kind == 0 || kind == 6;
  return true;
}

// ---------------------------------------------------------------- CElemX

CElemX::CElemX(const ElemType& elemType) : CCmp(elemType) {}

// A block has only the attributes of the base; what it holds is in the
// "SubCir" part that the base archives.
bool CElemX::Serialize(CXmlNode& archive, bool customFlag) {
  return SerializeBase(archive, customFlag);
}

void CElemX::LoadCustom() {
  const bool circuit = IsType("X_TZ4");
  if (!circuit && !IsType("X_CUSTOM")) return;
  CCustomElemType& shape = CreateCustomType();
  if (!circuit) return;
  shape.width = 2;
  shape.height = 3;
  shape.leftCount = 7;
  shape.rightCount = 7;
  shape.inNames = "x1,x2,x3";
  shape.outNames = "y1,y2,y3";
}

bool CElemX::GetTraceInfo(int /*kind*/, int& nodeA, int& nodeB, int& row, double& value) {
  nodeA = -1;
  nodeB = -1;
  row = 0;
  value = 0.0;
  return false;
}

}  // namespace tz4
