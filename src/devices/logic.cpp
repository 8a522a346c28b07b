#include "devices/logic.h"

#include <cstring>

#include "xml/xml_node.h"

namespace tz4 {

namespace {

const char* const kDominanceNames[] = {"None", "Set", "Reset", nullptr};

// Gates and the D flip-flop.
const ParamDef kGateLogicParams[] = {
    {PK_HIGH_LOW, "IC", &BindMember<&CElemLog::Ic>},
    {},
};
const ParamDef kGateDelayParams[] = {
    {PK_VALUE, "Delay", &BindMember<&CElemLog::Delay>},
    {PK_HIGH_LOW, "IC", &BindMember<&CElemLog::Ic>},
    {},
};
const ParamDef kGateDelay2Params[] = {
    {PK_VALUE, "Up", &BindMember<&CElemLog::Delay>},
    {PK_VALUE, "Down", &BindMember<&CElemLog::Down>},
    {PK_HIGH_LOW, "IC", &BindMember<&CElemLog::Ic>},
    {},
};
// Set/reset triggers.
const ParamDef kTriggerLogicParams[] = {
    {PK_ENUM, "Dominance", &BindMember<&CElemLog::Dominance>},
    {PK_HIGH_LOW, "IC", &BindMember<&CElemLog::Ic>},
    {},
};
const ParamDef kTriggerDelayParams[] = {
    {PK_VALUE, "Delay", &BindMember<&CElemLog::Delay>},
    {PK_ENUM, "Dominance", &BindMember<&CElemLog::Dominance>},
    {PK_HIGH_LOW, "IC", &BindMember<&CElemLog::Ic>},
    {},
};
const ParamDef kTriggerDelay2Params[] = {
    {PK_VALUE, "Up", &BindMember<&CElemLog::Delay>},
    {PK_VALUE, "Down", &BindMember<&CElemLog::Down>},
    {PK_ENUM, "Dominance", &BindMember<&CElemLog::Dominance>},
    {PK_HIGH_LOW, "IC", &BindMember<&CElemLog::Ic>},
    {},
};
// Schmitt trigger.
const ParamDef kSchmittLogicParams[] = {
    {PK_VALUE, "Hysteresis", &BindMember<&CElemLog::Hysteresis>},
    {PK_HIGH_LOW, "IC", &BindMember<&CElemLog::Ic>},
    {},
};
const ParamDef kSchmittDelayParams[] = {
    {PK_VALUE, "Hysteresis", &BindMember<&CElemLog::Hysteresis>},
    {PK_VALUE, "Delay", &BindMember<&CElemLog::Delay>},
    {PK_HIGH_LOW, "IC", &BindMember<&CElemLog::Ic>},
    {},
};
const ParamDef kSchmittDelay2Params[] = {
    {PK_VALUE, "Hysteresis", &BindMember<&CElemLog::Hysteresis>},
    {PK_VALUE, "Up", &BindMember<&CElemLog::Delay>},
    {PK_VALUE, "Down", &BindMember<&CElemLog::Down>},
    {PK_HIGH_LOW, "IC", &BindMember<&CElemLog::Ic>},
    {},
};

// name, id, params, editHint, extraRows, traceMask. A logic output has a
// voltage trace only: there is no branch row to carry a current.
const ModelInfo kGateModels[] = {
    {"Logic", MODEL_LOG_LOGIC, kGateLogicParams, 0, 0, TRACE_V},
    {"Delay", MODEL_LOG_DELAY, kGateDelayParams, 0, 0, TRACE_V},
    {"Delay2", MODEL_LOG_DELAY2, kGateDelay2Params, 0, 0, TRACE_V},
    {},
};
const ModelInfo kTriggerModels[] = {
    {"Logic", MODEL_LOG_LOGIC, kTriggerLogicParams, 0, 0, TRACE_V},
    {"Delay", MODEL_LOG_DELAY, kTriggerDelayParams, 0, 0, TRACE_V},
    {"Delay2", MODEL_LOG_DELAY2, kTriggerDelay2Params, 0, 0, TRACE_V},
    {},
};
const ModelInfo kSchmittModels[] = {
    {"Logic", MODEL_LOG_LOGIC, kSchmittLogicParams, 0, 0, TRACE_V},
    {"Delay", MODEL_LOG_DELAY, kSchmittDelayParams, 0, 0, TRACE_V},
    {"Delay2", MODEL_LOG_DELAY2, kSchmittDelay2Params, 0, 0, TRACE_V},
    {},
};

bool IsTrigger(const CCmp& cmp) { return cmp.IsType("Y_RS") || cmp.IsType("Y_JK"); }

}  // namespace

const ElemType kTypeY_1 = {"Y_1", 2, &MakeCmp<CElemLog>, kGateModels, 0, "Logic-1"};
const ElemType kTypeY_2 = {"Y_2", 3, &MakeCmp<CElemLog>, kGateModels, 0, "Logic-2"};
const ElemType kTypeY_3 = {"Y_3", 4, &MakeCmp<CElemLog>, kGateModels, 0, "Logic-3"};
const ElemType kTypeY_CUSTOM = {"Y_CUSTOM", 0, &MakeCmp<CElemLog>, kGateModels, 0,
                                "Custom logic"};
const ElemType kTypeY_FF = {"Y_FF", 4, &MakeCmp<CElemLog>, kGateModels, 0, "D flip-flop"};
const ElemType kTypeY_RS = {"Y_RS", 6, &MakeCmp<CElemLog>, kTriggerModels, 0, "SR trigger"};
const ElemType kTypeY_JK = {"Y_JK", 7, &MakeCmp<CElemLog>, kTriggerModels, 0, "JK trigger"};
const ElemType kTypeY_ST = {"Y_ST", 2, &MakeCmp<CElemLog>, kSchmittModels, 0,
                            "Schmitt trigger"};

CElemLog::CElemLog(const ElemType& elemType)
    : CCmp(elemType), Delay(0.0), Down(0.0), Hysteresis(0.1), Dominance{0, kDominanceNames} {}

bool CElemLog::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  archive.ArchiveInt("ic", Ic);
  archive.ArchiveValue("delay", Delay);
  archive.ArchiveValue("down", Down);
  if (IsType("Y_ST")) archive.ArchiveValue("hyst", Hysteresis);
  if (IsTrigger(*this)) archive.ArchiveInt("dominance", Dominance.Index);
  return true;
}

void CElemLog::LoadCustom() {
  if (!IsType("Y_CUSTOM")) return;
  CCustomElemType& shape = CreateCustomType();
  shape.width = 2;
  shape.height = 3;
  shape.leftCount = 7;
}

std::string& CElemLog::GetICText(std::string& out) {
  out = GetFullName() + ".IC=" + (Ic == 1 ? "high" : "low");
  return out;
}

bool CElemLog::CheckParams() { return ReportNotSimulated(this); }

// Logic pins are written, not solved: a node that only logic pins touch
// stays outside the matrix.
int CElemLog::IsMatrixPin(int /*pin*/) { return 0; }

int CElemLog::OutputPin() const {
  if (IsType("Y_FF") || IsTrigger(*this)) return 2;
  if (IsType("Y_ST")) return 1;
  return pinCount - 1;
}

// The output's voltage against ground; no branch row.
bool CElemLog::GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) {
  (void)kind;
  const int out = OutputPin();
  nodeA = 0;
  nodeB = out >= 0 && out < pinCount ? pins[static_cast<size_t>(out)] : 0;
  row = 0;
  value = 0.0;
  return ModelId() != MODEL_SUBCIR;
}

}  // namespace tz4
