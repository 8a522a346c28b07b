#include "devices/source.h"

#include <cmath>
#include <string>

#include "devices/signal_drive.h"
#include "expr/numtext.h"
#include "solver/calc.h"
#include "xml/xml_node.h"

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

// Voltage and current sources share their models; the tables differ only
// in the names of the levels.
#define TZ4_SOURCE_ROW(model, modelId, table) \
  { .name = model, .id = modelId, .params = table, .extraRows = 1, .traceMask = kTraceSource }
#define TZ4_SOURCE_MODELS(constant, constantParams, tables)                                        \
  {                                                                                                \
    TZ4_SOURCE_ROW(constant, MODEL_V_CONSTANT, constantParams),                                    \
        TZ4_SOURCE_ROW("Pulse", SIGNAL_PULSE, tables::Pulse),                                      \
        TZ4_SOURCE_ROW("Step", SIGNAL_STEP, tables::Step),                                         \
        TZ4_SOURCE_ROW("Sin", SIGNAL_SIN, tables::Sin),                                            \
        TZ4_SOURCE_ROW("PWL", SIGNAL_PWL, tables::Pwl),                                            \
        TZ4_SOURCE_ROW("Function", SIGNAL_FUNCTION, tables::Function),                             \
        {.name = "File",                                                                           \
         .id = SIGNAL_FILE,                                                                        \
         .params = tables::File,                                                                   \
         .extraRows = 1,                                                                           \
         .traceMask = kTraceSource,                                                                \
         .external = 1},                                                                           \
        TZ4_SOURCE_ROW("Trace", SIGNAL_TRACE, tables::Trace),                                      \
        {.name = "SubCir", .id = MODEL_SUBCIR, .traceMask = TRACE_V | TRACE_P, .external = 1}, {}, \
  }

const ModelInfo kVoltageModels[] = TZ4_SOURCE_MODELS("V", kVoltageParams, VoltageTables);
const ModelInfo kCurrentModels[] = TZ4_SOURCE_MODELS("I", kCurrentParams, CurrentTables);
#undef TZ4_SOURCE_MODELS
#undef TZ4_SOURCE_ROW

bool IsCurrentSource(const CCmp& cmp) {
  return cmp.type != nullptr && cmp.type->tag != nullptr && cmp.type->tag[0] == 'I';
}

}  // namespace

const ElemType kTypeV_V = {.tag = "V_V",
                           .pinCount = 2,
                           .factory = &MakeCmp<CElemV>,
                           .models = kVoltageModels,
                           .description = "Voltage source"};
const ElemType kTypeI_I = {.tag = "I_I",
                           .pinCount = 2,
                           .factory = &MakeCmp<CElemV>,
                           .models = kCurrentModels,
                           .description = "Current source"};

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
  out = SignalICText(*this, Signal, ModelId());
  return out;
}

bool CElemV::CheckParams() {
  const int32_t model = ModelId();
  const std::string letter = IsCurrentSource(*this) ? "I" : "V";
  if (model == MODEL_V_CONSTANT) {
    // Both checks run: a formula that failed keeps its last value, and that
    // may be infinite as well.
    bool ok = true;
    if (Value.Invalid) ok = ComponentError(this, letter + " : formula error");
    if (std::isinf(Value.Value)) ok = ComponentError(this, letter + " = infinite");
    return ok;
  }
  if (model == MODEL_SUBCIR) return ReportNotSimulated(this);
  if (HasTimeOrigin(model)) return Signal.CheckParams(model, this, letter);
  return true;
}

bool CElemV::GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) {
  CCmp::GetTraceInfo(kind, nodeA, nodeB, row, value);
  return ModelId() != MODEL_SUBCIR || kind == 0 || kind == 6;
}

int CElemV::Stamp(CCalc& calc, int phase, double t) {
  const int32_t model = ModelId();
  const bool constant = model == MODEL_V_CONSTANT;
  const bool signal = IsSignalModel(model);
  const int r = firstRow;
  switch (phase) {
    case STAMP_INIT:
      return signal ? StartSignal(*this, Signal, model, calc, t) : 0;
    case STAMP_RESET:
      Signal.ClearPoints();
      return 0;
    case STAMP_MATRIX:
      if (calc.pass != 0 || (!constant && !signal) || pins.size() < 2) return 0;
      if (IsCurrentSource(*this))
        calc.StampOutCurrent(pins[0], pins[1], r, 0.0);
      else
        calc.StampOutVoltage(pins[0], pins[1], r, 0.0);
      // The value comes in through s(t) alone.
      calc.MarkRow(r);
      return 0;
    case STAMP_SOURCE:
      if (constant) {
        calc.SetSource(r, -Value.Value);
        return 0;
      }
      return signal ? SignalToRow(*this, Signal, calc, r, t) : 0;
    case STAMP_SAVE_IC:
      ShiftSignalOrigin(Signal, model, calc, t);
      return 0;
    default:
      return 0;
  }
}

void CElemV::NextEvent(CCalc& /*calc*/, double t, double& nextTime, double& maxStep) {
  SignalNextEvent(Signal, ModelId(), t, nextTime, maxStep);
}

}  // namespace tz4
