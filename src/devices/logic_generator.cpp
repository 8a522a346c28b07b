#include "devices/logic_generator.h"

#include "devices/signal_drive.h"
#include "expr/numtext.h"
#include "solver/calc.h"
#include "xml/xml_node.h"

namespace tz4 {

namespace {

template <auto Field>
ParamTarget BindField(CCmp& cmp) {
  return BindSignalField<&CElemLG::Signal, Field>(cmp);
}

const ParamDef kLevelParams[] = {
    {PK_HIGH_LOW, "Out", &BindMember<&CElemLG::Active>},
    {},
};
const ParamDef kPulseParams[] = {
    {PK_VALUE, "Period", &BindField<&CSignal::Period>},
    {PK_VALUE, "Width", &BindField<&CSignal::Width>},
    {PK_VALUE, "Delay", &BindField<&CSignal::Delay>},
    {PK_HIGH_LOW, "Active", &BindMember<&CElemLG::Active>},
    {},
};
const ParamDef kStepParams[] = {
    {PK_VALUE, "Delay", &BindField<&CSignal::Delay>},
    {PK_HIGH_LOW, "Active", &BindMember<&CElemLG::Active>},
    {},
};
const ParamDef kListParams[] = {
    {PK_LOGIC_LIST, "List", &BindField<&CSignal::PwlText>},
    {PK_YES_NO, "Cycle", &BindField<&CSignal::Cycle>},
    {PK_VALUE, "Delay", &BindField<&CSignal::Delay>},
    {},
};
const ParamDef kFileParams[] = {
    {PK_DATA_FILE, "File", &BindField<&CSignal::FileName>},
    {PK_YES_NO, "Cycle", &BindField<&CSignal::Cycle>},
    {PK_VALUE, "Delay", &BindField<&CSignal::Delay>},
    {},
};

// name, id, params, editHint, extraRows, traceMask: a voltage trace of the
// output, no row.
const ModelInfo kModels[] = {
    {.name = "V", .id = MODEL_LG_V, .params = kLevelParams, .traceMask = TRACE_V},
    {.name = "Pulse", .id = MODEL_LG_PULSE, .params = kPulseParams, .traceMask = TRACE_V},
    {.name = "Step", .id = MODEL_LG_STEP, .params = kStepParams, .traceMask = TRACE_V},
    {.name = "List", .id = MODEL_LG_LIST, .params = kListParams, .traceMask = TRACE_V},
    {.name = "File", .id = MODEL_LG_FILE, .params = kFileParams, .traceMask = TRACE_V},
    {},
};

}  // namespace

const ElemType kTypeY_LG = {.tag = "Y_LG",
                            .pinCount = 1,
                            .factory = &MakeCmp<CElemLG>,
                            .models = kModels,
                            .description = "Logic generator"};

bool IsTimedSignalModel(int32_t modelId) {
  return modelId == MODEL_LG_PULSE || modelId == MODEL_LG_STEP || modelId == MODEL_LG_FILE ||
         modelId == MODEL_LG_LIST;
}

void ArchiveLogicSignal(CXmlNode& archive, int32_t& active, CSignal& signal) {
  archive.ArchiveInt("a", active);
  archive.ArchiveValue("p", signal.Period);
  archive.ArchiveValue("w", signal.Width);
  archive.ArchiveValue("d", signal.Delay);
  archive.ArchiveEncodedString("list", signal.PwlText);
  archive.ArchiveEncodedString("file", signal.FileName);
  archive.ArchiveInt("c", signal.Cycle);
  if (!archive.storing) signal.Loaded = true;
}

std::string& SignalDelayICText(const CCmp& component, const CSignal& signal, std::string& out) {
  out.clear();
  if (IsTimedSignalModel(component.ModelId()))
    out = component.GetFullName() + ".Delay=" + FormatNumber(signal.Delay.Value);
  return out;
}

CElemLG::CElemLG(const ElemType& elemType) : CCmp(elemType) {}

bool CElemLG::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  ArchiveLogicSignal(archive, Active, Signal);
  return true;
}

std::string& CElemLG::GetICText(std::string& out) { return SignalDelayICText(*this, Signal, out); }

bool CheckLogicSignal(CCmp& owner, CSignal& signal) {
  const int32_t model = owner.ModelId();
  return !IsTimedSignalModel(model) || signal.CheckParams(model, &owner, "?");
}

int StampLogicSignal(CCmp& owner, CSignal& signal, CCalc& calc, int phase, double t) {
  const int32_t model = owner.ModelId();
  switch (phase) {
    case STAMP_INIT:
      return IsTimedSignalModel(model) ? StartSignal(owner, signal, model, calc, t) : 0;
    case STAMP_RESET:
      signal.ClearPoints();
      return 0;
    case STAMP_SAVE_IC:
      ShiftSignalOrigin(signal, model, calc, t);
      return 0;
    default:
      return 0;
  }
}

bool CElemLG::CheckParams() { return CheckLogicSignal(*this, Signal); }

int CElemLG::Stamp(CCalc& calc, int phase, double t) {
  if (phase != STAMP_MATRIX) return StampLogicSignal(*this, Signal, calc, phase, t);
  if (calc.pass != 1) return 0;
  const int32_t model = ModelId();
  int32_t level = Active;
  if (IsTimedSignalModel(model)) {
    level = Signal.IsHigh() ? 1 : 0;
    // A pulse or step with "Active" low idles high and pulses low.
    if ((model == MODEL_LG_PULSE || model == MODEL_LG_STEP) && Active == 0) level ^= 1;
  }
  if (level == 1 && Pin(0) == 0) {
    calc.error = GetFullName() + " : grounded output";
    return -1;
  }
  calc.StampLogicOutput(Pin(0), level);
  return 0;
}

void CElemLG::NextEvent(CCalc& /*calc*/, double t, double& nextTime, double& maxStep) {
  SignalNextEvent(Signal, ModelId(), t, nextTime, maxStep);
}

// The output against ground, with no branch row.
bool CElemLG::GetTraceInfo(int /*kind*/, int& nodeA, int& nodeB, int& row, double& value) {
  nodeA = 0;
  nodeB = pinCount > 0 ? pins[0] : 0;
  row = 0;
  value = 0.0;
  return true;
}

}  // namespace tz4
