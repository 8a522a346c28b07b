#include "devices/source.h"

#include "doc/xml_node.h"
#include "expr/numtext.h"

namespace tz4 {

namespace {

// Sources and function outputs carry bit 4 of the trace mask.
constexpr int32_t kTraceSource = TRACE_V | TRACE_I | TRACE_P | 16;

const ParamDef kVoltageParams[] = {
    {PK_VALUE, "V", &BindMember<&CElemV::Value>},
    {},
};
const ParamDef kCurrentParams[] = {
    {PK_VALUE, "I", &BindMember<&CElemV::Value>},
    {},
};

using VoltageTables = SignalSourceTables<&CElemV::Signal, false>;
using CurrentTables = SignalSourceTables<&CElemV::Signal, true>;

// name, id, params, editHint, extraRows, traceMask, helpId, external.
// Voltage and current sources share their models; the tables differ only
// in the names of the levels.
#define TZ4_SOURCE_MODELS(constant, params, tables)                               \
  {                                                                               \
    {constant, MODEL_V_CONSTANT, params, 0, 1, kTraceSource},                    \
    {"Pulse", SIGNAL_PULSE, tables::Pulse, 0, 1, kTraceSource},                  \
    {"Step", SIGNAL_STEP, tables::Step, 0, 1, kTraceSource},                     \
    {"Sin", SIGNAL_SIN, tables::Sin, 0, 1, kTraceSource},                        \
    {"PWL", SIGNAL_PWL, tables::Pwl, 0, 1, kTraceSource},                        \
    {"Function", SIGNAL_FUNCTION, tables::Function, 0, 1, kTraceSource},         \
    {"File", SIGNAL_FILE, tables::File, 0, 1, kTraceSource, 0, 1},               \
    {"Trace", SIGNAL_TRACE, tables::Trace, 0, 1, kTraceSource},                  \
    {"SubCir", MODEL_SUBCIR, nullptr, 0, 0, TRACE_V | TRACE_P, 0, 1},            \
    {},                                                                           \
  }

const ModelInfo kVoltageModels[] = TZ4_SOURCE_MODELS("V", kVoltageParams, VoltageTables);
const ModelInfo kCurrentModels[] = TZ4_SOURCE_MODELS("I", kCurrentParams, CurrentTables);
#undef TZ4_SOURCE_MODELS

bool IsSignalModel(int32_t model) {
  switch (model) {
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

const ElemType kTypeV_V = {"V_V", 2, &MakeCmp<CElemV>, kVoltageModels, 0, "Voltage source"};
const ElemType kTypeI_I = {"I_I", 2, &MakeCmp<CElemV>, kCurrentModels, 0, "Current source"};

CElemV::CElemV(const ElemType& elemType) : CCmp(elemType) { Value.Value = 10.0; }

bool CElemV::HasSignalModel() const { return IsSignalModel(ModelId()); }

bool CElemV::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  archive.ArchiveValue("v", Value);
  // A signal that a file or a run has filled is kept even while the model
  // is the constant one.
  if (!archive.storing || HasSignalModel() || Signal.Loaded) Signal.Serialize(archive);
  return true;
}

std::string& CElemV::GetICText(std::string& out) {
  out.clear();
  const int32_t model = ModelId();
  if (IsSignalModel(model) && model != SIGNAL_FUNCTION)
    out = GetFullName() + ".Delay=" + FormatNumber(Signal.Delay.Value, 12);
  return out;
}

bool CElemV::CheckParams() { return ReportNotSimulated(this); }

}  // namespace tz4
