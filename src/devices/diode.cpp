#include "devices/diode.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "expr/numtext.h"
#include "solver/calc.h"
#include "xml/xml_node.h"

namespace tz4 {

const char* const kZenerICNames[] = {"Minus", "Off", "Plus", nullptr};

namespace {

constexpr int32_t kTraceAll = TRACE_V | TRACE_I | TRACE_P;

const ParamDef kDiodeParams[] = {
    {PK_VALUE, "Vd", &BindMember<&CElemD::Vd>},
    {PK_ON_OFF, "IC", &BindMember<&CElemD::IC>},
    {},
};
const ParamDef kStorageParams[] = {
    {PK_VALUE, "Vd", &BindMember<&CElemD::Vd>},
    {PK_VALUE, "t", &BindMember<&CElemD::t>},
    {PK_ON_OFF, "IC", &BindMember<&CElemD::IC>},
    {PK_VALUE, "ICQ", &BindMember<&CElemD::ICQ>},
    {},
};
const ParamDef kSoftParams[] = {
    {PK_VALUE, "Vd", &BindMember<&CElemD::Vd>},   {PK_VALUE, "t", &BindMember<&CElemD::t>},
    {PK_VALUE, "ts", &BindMember<&CElemD::ts>},   {PK_ON_OFF, "IC", &BindMember<&CElemD::IC>},
    {PK_VALUE, "ICQ", &BindMember<&CElemD::ICQ>}, {},
};
const ParamDef kPwlParams[] = {
    {PK_PWL, "pwl", &BindMember<&CCmp::pwl>},
    {},
};
const ParamDef kZenerParams[] = {
    {PK_VALUE, "V", &BindMember<&CElemD::V>},
    {PK_VALUE, "Vd", &BindMember<&CElemD::Vd>},
    {PK_ENUM, "IC", &BindMember<&CElemD::ICz>},
    {},
};
const ParamDef kSymmetricZenerParams[] = {
    {PK_VALUE, "V", &BindMember<&CElemD::V>},
    {PK_ENUM, "IC", &BindMember<&CElemD::ICz>},
    {},
};
const ParamDef kThyristorParams[] = {
    {PK_VALUE, "Vd", &BindMember<&CElemD::Vd>},
    {PK_VALUE, "Ihold", &BindMember<&CElemD::Ihold>},
    {PK_VALUE, "Threshold", &BindMember<&CElemD::Threshold>},
    {PK_ON_OFF, "IC", &BindMember<&CElemD::IC>},
    {},
};
// The logic-controlled thyristor compares with the logic threshold of the
// settings and has no threshold of its own.
const ParamDef kLogicThyristorParams[] = {
    {PK_VALUE, "Vd", &BindMember<&CElemD::Vd>},
    {PK_VALUE, "Ihold", &BindMember<&CElemD::Ihold>},
    {PK_ON_OFF, "IC", &BindMember<&CElemD::IC>},
    {},
};
const ParamDef kBridgeParams[] = {
    {PK_VALUE, "Vd", &BindMember<&CElemD::Vd>},
    {},
};

constexpr ModelInfo kSubCir = {"SubCir", MODEL_SUBCIR, nullptr, 0, 0, TRACE_V | TRACE_P, 0, 1};

const ModelInfo kDiodeModels[] = {
    {.name = "Diode",
     .id = MODEL_D_DIODE,
     .params = kDiodeParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    {.name = "Storage",
     .id = MODEL_D_STORAGE,
     .params = kStorageParams,
     .extraRows = 2,
     .traceMask = kTraceAll},
    {.name = "Soft",
     .id = MODEL_D_SOFT,
     .params = kSoftParams,
     .extraRows = 2,
     .traceMask = kTraceAll},
    {.name = "PWL",
     .id = MODEL_TABLE,
     .params = kPwlParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    kSubCir,
    {},
};
const ModelInfo kZenerModels[] = {
    {.name = "Zener",
     .id = MODEL_D_DIODE,
     .params = kZenerParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    {.name = "PWL",
     .id = MODEL_TABLE,
     .params = kPwlParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    kSubCir,
    {},
};
const ModelInfo kSymmetricZenerModels[] = {
    {.name = "Zener",
     .id = MODEL_D_DIODE,
     .params = kSymmetricZenerParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    {.name = "PWL",
     .id = MODEL_TABLE,
     .params = kPwlParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    kSubCir,
    {},
};
const ModelInfo kVctModels[] = {
    {.name = "Thyristor",
     .id = MODEL_D_DIODE,
     .params = kThyristorParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    kSubCir,
    {},
};
// The current sense of the gate takes a second row.
const ModelInfo kCctModels[] = {
    {.name = "Thyristor",
     .id = MODEL_D_DIODE,
     .params = kThyristorParams,
     .extraRows = 2,
     .traceMask = kTraceAll},
    kSubCir,
    {},
};
const ModelInfo kLctModels[] = {
    {.name = "Thyristor",
     .id = MODEL_D_DIODE,
     .params = kLogicThyristorParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    kSubCir,
    {},
};
// One row for each of the four arms.
const ModelInfo kBridgeModels[] = {
    {.name = "Diode",
     .id = MODEL_D_DIODE,
     .params = kBridgeParams,
     .extraRows = 4,
     .traceMask = TRACE_P},
    {},
};

bool IsThyristor(const CCmp& cmp) {
  return cmp.IsType("D_VCT") || cmp.IsType("D_CCT") || cmp.IsType("D_LCT");
}

bool IsZener(const CCmp& cmp) { return cmp.IsType("D_Z") || cmp.IsType("D_ZS"); }

// Sub-states of a thyristor: blocked, gated, latched.
enum : int32_t { THYRISTOR_BLOCKED = 0, THYRISTOR_GATED = 1, THYRISTOR_LATCHED = 2 };

// The nodes and rows of one arm of the bridge, in the order of its four
// clamps: from a to the two middle terminals, from them to b.
struct BridgeArm {
  int a, b, row;
};

void BridgeArms(const CElemD& d, BridgeArm (&arms)[4]) {
  const int a = d.Pin(0), b = d.Pin(1), m1 = d.Pin(2), m2 = d.Pin(3), r = d.firstRow;
  arms[0] = {m1, a, r};
  arms[1] = {m2, a, r + 1};
  arms[2] = {b, m1, r + 2};
  arms[3] = {b, m2, r + 3};
}

// The state and sub-state at the start of a run, from the initial
// conditions. The on/off condition may hold any integer; every non-zero
// value means on.
void InitState(CElemD& d) {
  const int32_t model = d.ModelId();
  const bool on = d.IC != 0;
  if (model == MODEL_D_STORAGE || model == MODEL_D_SOFT) {
    d.state = on ? 1 : 0;
    d.phase = 0;
    d.recovery = 0.0;
    d.charge = d.t.Value > 0.0 && d.state != 0 ? d.ICQ.Value : 0.0;
    return;
  }
  if (model != MODEL_D_DIODE) return;
  if (d.IsType("D_D")) {
    d.state = on && !std::isinf(d.Vd.Value) ? 1 : 0;
  } else if (d.IsType("D_Z")) {
    d.state = std::clamp(d.ICz.Index - 1, -1, 1);
    if (std::isinf(d.Vd.Value) && d.state == 1) d.state = 0;
    if (std::isinf(d.V.Value) && d.state == -1) d.state = 0;
  } else if (d.IsType("D_ZS")) {
    d.state = std::isinf(d.V.Value) ? 0 : std::clamp(d.ICz.Index - 1, -1, 1);
  } else if (IsThyristor(d)) {
    d.state = on && !std::isinf(d.Vd.Value) ? 1 : 0;
    d.phase = d.state > 0 ? THYRISTOR_LATCHED : THYRISTOR_BLOCKED;
  } else if (d.IsType("D_BR")) {
    d.state = 0;
  }
}

void StampDiodeModel(CElemD& d, CCalc& calc) {
  const int a = d.Pin(0), b = d.Pin(1), r = d.firstRow, r1 = r + 1;
  const double vd = d.Vd.Value;
  if (d.IsType("D_D")) {
    calc.StampClamp(a, b, r, d.state != 0, vd);
  } else if (d.IsType("D_Z")) {
    calc.StampClamp(a, b, r, d.state != 0, d.state < 0 ? -d.V.Value : vd);
  } else if (d.IsType("D_ZS")) {
    calc.StampClamp(a, b, r, d.state != 0, d.state < 0 ? -d.V.Value : d.V.Value);
  } else if (IsThyristor(d)) {
    // The gate current of the current-controlled type flows through a 0 V
    // source on the second row.
    if (d.IsType("D_CCT")) calc.StampVSource(d.Pin(2), d.Pin(3), r1, 0.0);
    calc.StampClamp(a, b, r, d.phase != THYRISTOR_BLOCKED && d.state != 0, vd);
  } else if (d.IsType("D_BR")) {
    BridgeArm arms[4];
    BridgeArms(d, arms);
    for (int k = 0; k < 4; k++)
      calc.StampClamp(arms[k].a, arms[k].b, arms[k].row, ((d.state >> k) & 1) != 0, vd);
  }
}

// "Storage": the clamp, and on the second row the stored charge q with
// dq/dt = i - q/t. While the charge lasts the diode may conduct backwards,
// held at 0 V (state -1).
void StampStorage(CElemD& d, CCalc& calc) {
  const int a = d.Pin(0), b = d.Pin(1), r = d.firstRow, r1 = r + 1;
  calc.StampClamp(a, b, r, d.state != 0, d.state == -1 ? 0.0 : d.Vd.Value);
  const double tau = d.t.Value;
  if (calc.stampMode == 0) {
    calc.SetCoupling(r1, r1, 1.0);
    calc.SetConstant(r1, -d.charge);
  } else if (tau <= 0.0) {
    calc.SetCoupling(r1, r1, -1.0);
  } else {
    calc.SetCoupling(r1, r, 1.0);
    calc.SetDerivative(r1, r1, -1.0);
    if (!std::isinf(tau)) calc.SetCoupling(r1, r1, -1.0 / tau);
  }
}

// "Soft": while conducting with a charge, first a source of the forward drop
// whatever the current's sign (phase 0), then, once the reverse current
// would take the charge away faster than the recovery time allows, a
// current -q/ts that decays with the charge (phase 1).
void StampSoft(CElemD& d, CCalc& calc) {
  const int a = d.Pin(0), b = d.Pin(1), r = d.firstRow, r1 = r + 1;
  const double tau = d.t.Value;
  if (tau <= 0.0 || d.state == 0) {
    calc.StampClamp(a, b, r, d.state != 0, d.Vd.Value);
    calc.SetCoupling(r1, r1, -1.0);
    calc.SetConstant(r1, 0.0);
    return;
  }
  // Recovery needs a recovery time; without one (set to 0 during a run)
  // the drop holds until the charge is gone.
  if (d.phase == 0 || (d.phase == 1 && !(d.ts.Value > 0.0))) {
    calc.StampVSource(a, b, r, d.Vd.Value);
    if (calc.stampMode == 0) {
      calc.SetCoupling(r1, r1, 1.0);
      calc.SetConstant(r1, -d.charge);
    } else {
      calc.SetCoupling(r1, r, 1.0);
      calc.SetCoupling(r1, r1, -1.0 / tau);
      calc.SetDerivative(r1, r1, -1.0);
    }
  } else if (d.phase == 1) {
    const double ts = d.ts.Value;
    calc.StampTransconductance(b, a, r1, 0, r, 1.0 / ts);
    // A small constant drain, so that the charge reaches 0 in finite time.
    calc.SetConstant(r1, d.recovery);
    if (calc.stampMode == 0) {
      calc.SetCoupling(r1, r1, 1.0);
      calc.SetConstant(r1, -d.charge);
    } else {
      calc.SetCoupling(r1, r1, -1.0 / ts);
      calc.SetDerivative(r1, r1, -1.0);
    }
  }
}

void SaveState(CElemD& d) {
  const int32_t model = d.ModelId();
  if (model == MODEL_TABLE) return;  // a segment number is no start state
  if (d.IsType("D_BR")) {
    d.IC = d.state;
  } else if (IsThyristor(d)) {
    d.IC = d.state != 0 ? 1 : 0;  // a blocked thyristor is off
  } else if (d.IsType("D_D")) {
    d.IC = d.state != 0 ? 1 : 0;
  } else {
    d.ICz.Index = d.state + 1;
  }
  if (model == MODEL_D_STORAGE || model == MODEL_D_SOFT) {
    d.ICQ.Text.clear();
    d.ICQ.Invalid = false;
    d.ICQ.Value = d.charge > 0.0 ? d.charge : 0.0;
  }
}

}  // namespace

const ElemType kTypeD_D = {.tag = "D_D",
                           .pinCount = 2,
                           .factory = &MakeCmp<CElemD>,
                           .models = kDiodeModels,
                           .description = "Diode"};
const ElemType kTypeD_Z = {.tag = "D_Z",
                           .pinCount = 2,
                           .factory = &MakeCmp<CElemD>,
                           .models = kZenerModels,
                           .description = "Zener"};
const ElemType kTypeD_ZS = {.tag = "D_ZS",
                            .pinCount = 2,
                            .factory = &MakeCmp<CElemD>,
                            .models = kSymmetricZenerModels,
                            .description = "Bidirectional\nzener"};
const ElemType kTypeD_BR = {.tag = "D_BR",
                            .pinCount = 4,
                            .factory = &MakeCmp<CElemD>,
                            .models = kBridgeModels,
                            .description = "Bridge\nrectifier"};
const ElemType kTypeD_LCT = {.tag = "D_LCT",
                             .pinCount = 3,
                             .factory = &MakeCmp<CElemD>,
                             .models = kLctModels,
                             .description = "Logic controlled\nthyristor"};
const ElemType kTypeD_VCT = {.tag = "D_VCT",
                             .pinCount = 4,
                             .factory = &MakeCmp<CElemD>,
                             .models = kVctModels,
                             .description = "Voltage controlled\nthyristor"};
const ElemType kTypeD_CCT = {.tag = "D_CCT",
                             .pinCount = 4,
                             .factory = &MakeCmp<CElemD>,
                             .models = kCctModels,
                             .description = "Current controlled\nthyristor"};

CElemD::CElemD(const ElemType& elemType) : CCmp(elemType) {
  V.Value = 8.0;
  Threshold.Value = 5.0;
  Ihold.Value = 1.0;
  // The table lists resistances of the curve I(V).
  pwl.Curve = "I(V)";
  pwl.Reciprocal = true;
}

bool CElemD::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  if (IsType("D_D")) {
    archive.ArchiveValue("vd", Vd);
    archive.ArchiveValue("t", t);
    archive.ArchiveValue("ts", ts);
    archive.ArchiveInt("ic", IC);
    archive.ArchiveValue("icq", ICQ);
    // A stored charge is never negative.
    if (ICQ.Value <= 0) ICQ.Value = 0.0;
  } else if (IsThyristor(*this)) {
    archive.ArchiveValue("vd", Vd);
    archive.ArchiveValue("thr", Threshold);
    archive.ArchiveValue("hold", Ihold);
    archive.ArchiveInt("ic", IC);
  } else if (IsType("D_Z")) {
    archive.ArchiveValue("v", V);
    archive.ArchiveValue("vd", Vd);
    archive.ArchiveInt("ic", ICz.Index);
  } else if (IsType("D_ZS")) {
    archive.ArchiveValue("v", V);
    archive.ArchiveInt("ic", ICz.Index);
  } else if (IsType("D_BR")) {
    archive.ArchiveValue("vd", Vd);
  }
  return true;
}

std::string& CElemD::GetICText(std::string& out) {
  out.clear();
  const int32_t model = ModelId();
  const std::string fullName = GetFullName();
  const char* onOff = IC != 0 ? "on" : "off";
  if (model == MODEL_D_STORAGE || model == MODEL_D_SOFT) {
    out = fullName + ".IC=" + onOff + ";" + fullName + ".ICQ=" + FormatNumber(ICQ.Value, 12);
  } else if (model != MODEL_D_DIODE) {
    // Tables and subcircuits have no initial condition of their own.
  } else if (IsZener(*this)) {
    static const char* const kNames[] = {"minus", "off", "plus"};
    const int index = ICz.Index >= 0 && ICz.Index <= 2 ? ICz.Index : 1;
    out = fullName + ".IC=" + kNames[index];
  } else {
    out = fullName + ".IC=" + onOff;
  }
  return out;
}

bool CElemD::CheckParams() {
  const int32_t model = ModelId();
  if (model == MODEL_SUBCIR) return ReportNotSimulated(this);
  bool ok = true;
  auto fault = [this, &ok](const char* text) {
    ComponentError(this, text);
    ok = false;
  };
  const bool clamp = model == MODEL_D_DIODE || model == MODEL_D_STORAGE;
  if (clamp && (IsType("D_D") || IsType("D_Z") || IsThyristor(*this) || IsType("D_BR"))) {
    if (Vd.Invalid)
      fault("Vd : formula error");
    else if (Vd.Value < 0)
      fault("Vd < 0");
  }
  if (clamp && IsZener(*this)) {
    if (V.Invalid)
      fault("V : formula error");
    else if (V.Value < 0)
      fault("V < 0");
  }
  if (clamp && IsThyristor(*this)) {
    if (Ihold.Invalid)
      fault("Ihold : formula error");
    else if (Ihold.Value < 0)
      fault("Ihold < 0");
  }
  if (clamp && (IsType("D_VCT") || IsType("D_CCT"))) {
    if (Threshold.Invalid)
      fault("Threshold : formula error");
    else if (std::isinf(Threshold.Value))
      fault("Threshold = infinite");
  }
  if (model == MODEL_D_STORAGE || model == MODEL_D_SOFT) {
    if (t.Invalid)
      fault("t : formula error");
    else if (std::isinf(t.Value))
      fault("t = infinite");
    else if (t.Value < 0)
      fault("t < 0");
    if (ICQ.Invalid)
      fault("ICQ : formula error");
    else if (std::isinf(ICQ.Value))
      fault("ICQ = infinite");
    else if (ICQ.Value < 0)
      fault("ICQ < 0");
  }
  // The recovery time is reported as "tsr", the name it has in the
  // circuit editor's dialog, although its parameter is "ts".
  if (model == MODEL_D_SOFT) {
    if (ts.Invalid)
      fault("tsr : formula error");
    else if (std::isinf(ts.Value))
      fault("tsr = infinite");
    else if (ts.Value < 0)
      fault("tsr < 0");
  }
  return ok;
}

bool CElemD::GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) {
  CCmp::GetTraceInfo(kind, nodeA, nodeB, row, value);
  if (IsType("D_BR")) return false;
  return ModelId() != MODEL_SUBCIR || kind == 0 || kind == 6;
}

double CElemD::GetTraceValue(CCalc& calc, int kind) {
  // The bridge's power is the sum over its four arms of voltage times
  // current.
  if (!IsType("D_BR") || kind != 2) return 0.0;
  BridgeArm arms[4];
  BridgeArms(*this, arms);
  double power = 0.0;
  for (const BridgeArm& arm : arms) power += (calc.V(arm.b) - calc.V(arm.a)) * calc.V(arm.row);
  return power;
}

int CElemD::Stamp(CCalc& calc, int phaseOfStamp, double /*time*/) {
  const int32_t model = ModelId();
  if (model == MODEL_SUBCIR) return 0;
  switch (phaseOfStamp) {
    case STAMP_RESET:
      phase = 0;
      charge = 0.0;
      recovery = 0.0;
      return 0;
    case STAMP_INIT:
      if (model != prevModelId) InitState(*this);
      return 0;
    case STAMP_ACCEPT:
      // Only the charge-storing models have a charge row.
      if (model == MODEL_D_STORAGE || model == MODEL_D_SOFT) {
        charge = calc.V(firstRow + 1);
        if (!(charge > 0.0)) charge = 0.0;
      }
      return 0;
    case STAMP_MATRIX:
      if (calc.pass != 0) return 0;
      if (model == MODEL_TABLE) {
        if (pwl.Count == 0) return 0;
        pwl.Segment = state;
        const size_t index = static_cast<size_t>(std::clamp(pwl.Index(), 0, pwl.Count - 1));
        const int a = Pin(0), b = Pin(1);
        calc.StampTransconductance(b, a, a, b, firstRow, pwl.Slope[index]);
        calc.SetConstant(firstRow, -pwl.Intercept[index]);
      } else if (model == MODEL_D_DIODE) {
        StampDiodeModel(*this, calc);
      } else if (model == MODEL_D_STORAGE) {
        StampStorage(*this, calc);
      } else if (model == MODEL_D_SOFT) {
        StampSoft(*this, calc);
      }
      return 0;
    case STAMP_SAVE_IC:
      SaveState(*this);
      return 0;
    default:
      return 0;
  }
}

bool CElemD::GetStateRange(int& low, int& high) {
  const int32_t model = ModelId();
  if (model == MODEL_TABLE) {
    low = pwl.FirstSegment;
    high = pwl.LastSegment;
  } else if (model == MODEL_D_STORAGE) {
    low = t.Value > 0.0 && phase > 0 ? -1 : 0;
    high = 1;
  } else if (model == MODEL_D_SOFT) {
    // A conducting soft diode leaves its state only through its charge.
    if (state != 0) return false;
    low = 0;
    high = 1;
  } else if (model == MODEL_D_DIODE) {
    if (IsType("D_BR")) {
      low = 0;
      high = 15;
    } else if (IsThyristor(*this)) {
      // Only a gated or latched thyristor may be tried on.
      low = 0;
      high = phase != THYRISTOR_BLOCKED ? 1 : 0;
    } else if (IsZener(*this)) {
      low = -1;
      high = 1;
    } else {
      low = 0;
      high = 1;
    }
  } else {
    return false;
  }
  return low < high;
}

bool CElemD::CheckSwitching(CCalc& calc, bool apply) {
  const int32_t model = ModelId();
  const int a = Pin(0), b = Pin(1), r = firstRow;
  const double vd = Vd.Value;
  if (model == MODEL_TABLE) {
    if (pwl.Count == 0) return false;
    pwl.Segment = state;
    const bool result = pwl.FindSegment(calc.V(b) - calc.V(a), apply);
    state = pwl.Segment;
    return result;
  }
  if (model == MODEL_D_STORAGE) return calc.CheckClamp(apply, state, a, b, r, vd, 0.0, phase != 0);
  if (model == MODEL_D_SOFT) {
    if (state != 0 && t.Value > 0.0) return false;
    phase = 0;
    return calc.CheckClamp(apply, state, a, b, r, vd, 0.0, false);
  }
  if (model != MODEL_D_DIODE) return false;
  if (IsThyristor(*this)) {
    if (phase == THYRISTOR_BLOCKED) return false;
    const bool clamp = calc.CheckClamp(apply, state, a, b, r, vd, 0.0, false);
    if (phase != THYRISTOR_LATCHED) return clamp;
    // Latched: the clamp's own answer is dropped; the latch lets go when
    // the current falls to the holding current or the voltage reverses.
    // A released thyristor blocks, and its state says so: the switching
    // loop knows a change only by the states, and would take an unchanged
    // vector for a repeat.
    if (calc.V(r) <= Ihold.Value || calc.V(b) - calc.V(a) < 0.0) {
      if (apply) {
        phase = THYRISTOR_BLOCKED;
        state = 0;
      }
      return true;
    }
    return false;
  }
  if (IsType("D_D")) return calc.CheckClamp(apply, state, a, b, r, vd, 0.0, false);
  if (IsType("D_Z")) return calc.CheckClamp(apply, state, a, b, r, vd, -V.Value, true);
  if (IsType("D_ZS")) return calc.CheckClamp(apply, state, a, b, r, V.Value, -V.Value, true);
  if (IsType("D_BR")) {
    BridgeArm arms[4];
    BridgeArms(*this, arms);
    bool result = false;
    int32_t bits = 0;
    for (int k = 0; k < 4; k++) {
      int32_t bit = (state >> k) & 1;
      if (calc.CheckClamp(apply, bit, arms[k].a, arms[k].b, arms[k].row, vd, 0.0, false))
        result = true;
      bits |= (bit != 0 ? 1 : 0) << k;
    }
    state = bits;
    return result;
  }
  return false;
}

bool CElemD::PostStep(CCalc& calc, bool apply, double /*time*/, bool& changed) {
  changed = false;
  const int32_t model = ModelId();
  const int r = firstRow, r1 = r + 1;
  if (model == MODEL_D_DIODE && IsThyristor(*this)) {
    double u = 0.0;
    if (IsType("D_VCT"))
      u = calc.V(Pin(3)) - calc.V(Pin(2)) - Threshold.Value;
    else if (IsType("D_CCT"))
      u = calc.V(r1) - Threshold.Value;
    else
      u = calc.V(Pin(2)) - calc.thr;
    if (phase == THYRISTOR_GATED) {
      // The gate lets go: the thyristor stays latched if enough current
      // flows, and blocks, off, if not.
      if (u <= 0.0) {
        changed = true;
        if (apply) {
          phase = calc.V(r) > Ihold.Value ? THYRISTOR_LATCHED : THYRISTOR_BLOCKED;
          if (phase == THYRISTOR_BLOCKED) state = 0;
        }
      }
    } else if (u > 0.0) {
      changed = true;
      if (apply) phase = THYRISTOR_GATED;
    }
    return true;
  }
  if (model == MODEL_D_STORAGE) {
    if (!(t.Value > 0.0)) return true;
    const double q = calc.V(r1);
    if (phase == 0) {
      if (q > 0.0) {
        changed = true;
        if (apply) phase = 1;
      }
    } else if (phase == 1 && q < 0.0) {
      changed = true;
      if (apply) {
        phase = 0;
        if (state == -1) state = 0;
      }
    }
    return true;
  }
  if (model == MODEL_D_SOFT) {
    if (state == 0 || !(t.Value > 0.0)) return true;
    const double q = calc.V(r1);
    const double i = calc.V(r);
    if (q <= 0.0) {
      changed = true;
      if (apply) state = 0;
    } else if (phase == 0) {
      if (-(i * ts.Value) >= q) {
        changed = true;
        if (apply) {
          phase = 1;
          recovery = i * 0.01;
        }
      }
    } else if (phase == 1) {
      if (calc.V(Pin(1)) - calc.V(Pin(0)) >= Vd.Value) {
        changed = true;
        if (apply) phase = 0;
      }
    }
    return true;
  }
  return true;
}

}  // namespace tz4
