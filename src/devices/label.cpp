#include "devices/label.h"

#include "xml/xml_node.h"
#include "expr/numtext.h"

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
    {"Label", MODEL_LABEL, kPlainParams, 0, 0, kPlainMask},
    {"V", MODEL_LABEL_V, kVoltageParams, 0, 1, kSourceMask},
    {"Pulse", SIGNAL_PULSE, LabelSignal::Pulse, 0, 1, kSourceMask},
    {"Step", SIGNAL_STEP, LabelSignal::Step, 0, 1, kSourceMask},
    {"Sin", SIGNAL_SIN, LabelSignal::Sin, 0, 1, kSourceMask},
    {"PWL", SIGNAL_PWL, LabelSignal::Pwl, 0, 1, kSourceMask},
    {"Function", SIGNAL_FUNCTION, LabelSignal::Function, 0, 1, kSourceMask},
    {"File", SIGNAL_FILE, LabelSignal::File, 0, 1, kSourceMask, 0, 1},
    {"Trace", SIGNAL_TRACE, LabelSignal::Trace, 0, 1, kSourceMask},
    {"SubCir", MODEL_SUBCIR, nullptr, 0, 0, kSubCirMask, 0, 1},
    {},
};
// One nameless row, so that an element without "model" loads.
const ModelInfo kVariableModels[] = {
    {"", MODEL_VARIABLE, kVariableParams, 0, 0, 0},
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

const ElemType kTypeLabel = {"label", 1, &MakeCmp<CLabel>, kLabelModels, 0, "Label"};
const ElemType kTypeVariable = {"var", 0, &MakeCmp<CVariable>, kVariableModels, 0, "Variable"};

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
bool CVariable::GetTraceInfo(int /*kind*/, int& /*nodeA*/, int& /*nodeB*/, int& /*row*/, double& value) {
  value = Value.Value;
  return true;
}

}  // namespace tz4
