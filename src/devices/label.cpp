#include "devices/label.h"

#include <cmath>
#include <exception>

#include "devices/signal_drive.h"
#include "expr/numtext.h"
#include "solver/calc.h"
#include "xml/xml_node.h"

namespace tz4 {

namespace {

using LabelSignal = SignalSourceTables<&CLabel::Signal, false>;

// Bit 4 of a trace mask marks a source, bit 5 a meter.
constexpr int32_t kSourceMask = TRACE_V | TRACE_I | TRACE_P | 16;
constexpr int32_t kPlainMask = TRACE_V | 32;
constexpr int32_t kSubCirMask = TRACE_V | TRACE_P;

const ParamDef kPlainParams[] = {
    {PK_IC, "VIC", &BindMember<&CLabel::ICText>},
    {PK_VALUE, "R", &BindMember<&CLabel::R>},
    {},
};
const ParamDef kVoltageParams[] = {
    {PK_VALUE, "V", &BindMember<&CLabel::V>},
    {},
};
const ParamDef kVariableParams[] = {
    {PK_VALUE, "Value", &BindMember<&CVariable::Value>},
    {},
};

// --- model tables: name, id, params, editHint, extraRows, traceMask ---

// The "V" row stands at CLabel::kInputModelIndex.
const ModelInfo kLabelModels[] = {
    {.name = "Label", .id = MODEL_LABEL, .params = kPlainParams, .traceMask = kPlainMask},
    {.name = "V",
     .id = MODEL_LABEL_V,
     .params = kVoltageParams,
     .extraRows = 1,
     .traceMask = kSourceMask},
    {.name = "Pulse",
     .id = SIGNAL_PULSE,
     .params = LabelSignal::Pulse,
     .extraRows = 1,
     .traceMask = kSourceMask},
    {.name = "Step",
     .id = SIGNAL_STEP,
     .params = LabelSignal::Step,
     .extraRows = 1,
     .traceMask = kSourceMask},
    {.name = "Sin",
     .id = SIGNAL_SIN,
     .params = LabelSignal::Sin,
     .extraRows = 1,
     .traceMask = kSourceMask},
    {.name = "PWL",
     .id = SIGNAL_PWL,
     .params = LabelSignal::Pwl,
     .extraRows = 1,
     .traceMask = kSourceMask},
    {.name = "Function",
     .id = SIGNAL_FUNCTION,
     .params = LabelSignal::Function,
     .extraRows = 1,
     .traceMask = kSourceMask},
    {.name = "File",
     .id = SIGNAL_FILE,
     .params = LabelSignal::File,
     .extraRows = 1,
     .traceMask = kSourceMask,
     .external = 1},
    {.name = "Trace",
     .id = SIGNAL_TRACE,
     .params = LabelSignal::Trace,
     .extraRows = 1,
     .traceMask = kSourceMask},
    {.name = "SubCir", .id = MODEL_SUBCIR, .traceMask = kSubCirMask, .external = 1},
    {},
};
// One nameless row, so that an element without "model" loads.
const ModelInfo kVariableModels[] = {
    {.name = "", .id = MODEL_VARIABLE, .params = kVariableParams},
    {},
};

}  // namespace

const ElemType kTypeLabel = {.tag = "label",
                             .pinCount = 1,
                             .factory = &MakeCmp<CLabel>,
                             .models = kLabelModels,
                             .description = "Label"};
const ElemType kTypeVariable = {.tag = "var",
                                .pinCount = 0,
                                .factory = &MakeCmp<CVariable>,
                                .models = kVariableModels,
                                .description = "Variable"};

std::unique_ptr<CCmp> CreateLabel() { return std::make_unique<CLabel>(kTypeLabel); }
std::unique_ptr<CCmp> CreateVariable() { return std::make_unique<CVariable>(kTypeVariable); }

// ---------------------------------------------------------------- CLabel

CLabel::CLabel(const ElemType& elemType) : CCmp(elemType) { V.Value = 10.0; }

bool CLabel::HasSignalModel() const { return IsSignalModel(ModelId()); }

bool CLabel::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  archive.ArchiveEncodedString("ic", ICText);
  archive.ArchiveValue("r", R);
  archive.ArchiveValue("v", V);
  // A signal that was read or used is kept even while another model is in
  // use, so that switching models loses nothing.
  if (!archive.storing || HasSignalModel() || Signal.Loaded) Signal.Serialize(archive);
  return true;
}

std::string& CLabel::GetICText(std::string& out) {
  out = SignalICText(*this, Signal, ModelId());
  return out;
}

bool CLabel::CheckParams() {
  const int32_t model = ModelId();
  if (model == MODEL_LABEL) return !R.Invalid || ComponentError(this, "R : formula error");
  if (model == MODEL_LABEL_V) {
    // Both checks run: a failed formula keeps its last value, which may be
    // infinite as well.
    bool ok = true;
    if (V.Invalid) ok = ComponentError(this, "V : formula error");
    if (std::isinf(V.Value)) ok = ComponentError(this, "V = infinite");
    return ok;
  }
  if (HasTimeOrigin(model)) return Signal.CheckParams(model, this, "V");
  return true;
}

int CLabel::Stamp(CCalc& calc, int phase, double t) {
  const int32_t model = ModelId();
  const bool signal = IsSignalModel(model);
  const int n = Pin(0), r = firstRow;
  switch (phase) {
    case STAMP_INIT:
      icDone = false;
      if (!ReadInitialVoltage(calc)) return -1;
      return signal ? StartSignal(*this, Signal, model, calc, t) : 0;
    case STAMP_RESET:
      Signal.ClearPoints();
      return 0;
    case STAMP_MATRIX:
      if (model == MODEL_LABEL) {
        StampInitialVoltage(calc, t);
      } else if ((signal || model == MODEL_LABEL_V) && calc.pass == 0) {
        // The node is driven from ground; the level enters through s(t).
        calc.StampOutVoltage(0, n, r, 0.0);
        calc.MarkRow(r);
      }
      return 0;
    case STAMP_SOURCE:
      if (model == MODEL_LABEL_V) {
        calc.SetSource(r, -V.Value);
        return 0;
      }
      return signal ? SignalToRow(*this, Signal, calc, r, t) : 0;
    case STAMP_SAVE_IC:
      // A saved state carries the solution, not the request.
      if (model == MODEL_LABEL) ICText.clear();
      ShiftSignalOrigin(Signal, model, calc, t);
      return 0;
    default:
      return 0;
  }
}

// "VIC" in the state form at the start: with R = 0 the node's row becomes
// V(n) = VIC; with a finite R the node is pulled towards VIC through R; an
// infinite R does nothing.
bool CLabel::ReadInitialVoltage(CCalc& calc) {
  hasInitialVoltage = false;
  if (ModelId() != MODEL_LABEL || ICText.empty()) return true;
  try {
    initialVoltage = TextToDouble(ICText);
  } catch (const std::exception&) {
    calc.error = GetFullName() + " : VIC : formula error";
    return false;
  }
  hasInitialVoltage = true;
  return true;
}

void CLabel::StampInitialVoltage(CCalc& calc, double t) {
  const int n = Pin(0);
  if (t > 0.0 || calc.pass != 1 || calc.stampMode != 0 || icDone || !hasInitialVoltage ||
      ICText.empty() || n >= calc.dim)
    return;
  if (std::isinf(R.Value)) return;
  const double level = initialVoltage;
  if (R.Value == 0.0) {
    calc.ClearRow(n);
    calc.AddCoupling(n, n, -1.0);
    calc.AddConstant(n, level);
  } else {
    calc.AddCoupling(n, n, -1.0 / R.Value);
    calc.AddConstant(n, level / R.Value);
  }
}

void CLabel::NextEvent(CCalc& /*calc*/, double t, double& nextTime, double& maxStep) {
  SignalNextEvent(Signal, ModelId(), t, nextTime, maxStep);
}

// A plain label does not make its node a matrix node.
int CLabel::IsMatrixPin(int /*pin*/) { return ModelId() == MODEL_LABEL ? 0 : 1; }

// The node from ground; the value is left as it came.
bool CLabel::GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& /*value*/) {
  nodeA = !pins.empty() ? 0 : -1;
  nodeB = !pins.empty() ? pins[0] : -1;
  row = firstRow;
  if (ModelId() == MODEL_SUBCIR) return kind == 0 || kind == 6;
  return true;
}

// ------------------------------------------------------------- CVariable

CVariable::CVariable(const ElemType& elemType) : CCmp(elemType) {}

bool CVariable::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  archive.ArchiveValue("val", Value);
  return true;
}

bool CVariable::CheckParams() {
  if (Value.Invalid) return ComponentError(this, "formula error");
  return true;
}

// A variable has no nodes: it gives its value.
bool CVariable::GetTraceInfo(int /*kind*/, int& /*nodeA*/, int& /*nodeB*/, int& /*row*/,
                             double& value) {
  value = Value.Value;
  return true;
}

}  // namespace tz4
