#include "devices/label.h"

#include "expr/numtext.h"
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

bool IsSignalModel(int32_t id) {
  switch (id) {
    case SIGNAL_PULSE:
    case SIGNAL_STEP:
    case SIGNAL_SIN:
    case SIGNAL_FUNCTION:
    case SIGNAL_FILE:
    case SIGNAL_PWL:
    case SIGNAL_TRACE:
      return true;
    default:
      return false;
  }
}

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
  out.clear();
  const int32_t model = ModelId();
  if (IsSignalModel(model) && model != SIGNAL_FUNCTION)
    out = GetFullName() + ".Delay=" + FormatNumber(Signal.Delay.Value);
  return out;
}

bool CLabel::CheckParams() {
  switch (ModelId()) {
    case MODEL_LABEL:
      if (R.Invalid) return ComponentError(this, "R : formula error");
      // A label without an initial voltage only names its node.
      if (ICText.empty()) return true;
      return ReportNotSimulated(this);
    case MODEL_SUBCIR:
      return true;
    default:
      return ReportNotSimulated(this);
  }
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
