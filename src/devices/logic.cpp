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
    {.name = "Logic", .id = MODEL_LOG_LOGIC, .params = kGateLogicParams, .traceMask = TRACE_V},
    {.name = "Delay", .id = MODEL_LOG_DELAY, .params = kGateDelayParams, .traceMask = TRACE_V},
    {.name = "Delay2", .id = MODEL_LOG_DELAY2, .params = kGateDelay2Params, .traceMask = TRACE_V},
    {},
};
const ModelInfo kTriggerModels[] = {
    {.name = "Logic", .id = MODEL_LOG_LOGIC, .params = kTriggerLogicParams, .traceMask = TRACE_V},
    {.name = "Delay", .id = MODEL_LOG_DELAY, .params = kTriggerDelayParams, .traceMask = TRACE_V},
    {.name = "Delay2",
     .id = MODEL_LOG_DELAY2,
     .params = kTriggerDelay2Params,
     .traceMask = TRACE_V},
    {},
};
const ModelInfo kSchmittModels[] = {
    {.name = "Logic", .id = MODEL_LOG_LOGIC, .params = kSchmittLogicParams, .traceMask = TRACE_V},
    {.name = "Delay", .id = MODEL_LOG_DELAY, .params = kSchmittDelayParams, .traceMask = TRACE_V},
    {.name = "Delay2",
     .id = MODEL_LOG_DELAY2,
     .params = kSchmittDelay2Params,
     .traceMask = TRACE_V},
    {},
};

bool IsTrigger(const CCmp& cmp) { return cmp.IsType("Y_RS") || cmp.IsType("Y_JK"); }

}  // namespace

const ElemType kTypeY_1 = {.tag = "Y_1",
                           .pinCount = 2,
                           .factory = &MakeCmp<CElemLog>,
                           .models = kGateModels,
                           .description = "Logic-1"};
const ElemType kTypeY_2 = {.tag = "Y_2",
                           .pinCount = 3,
                           .factory = &MakeCmp<CElemLog>,
                           .models = kGateModels,
                           .description = "Logic-2"};
const ElemType kTypeY_3 = {.tag = "Y_3",
                           .pinCount = 4,
                           .factory = &MakeCmp<CElemLog>,
                           .models = kGateModels,
                           .description = "Logic-3"};
const ElemType kTypeY_CUSTOM = {.tag = "Y_CUSTOM",
                                .pinCount = 0,
                                .factory = &MakeCmp<CElemLog>,
                                .models = kGateModels,
                                .description = "Custom logic"};
const ElemType kTypeY_FF = {.tag = "Y_FF",
                            .pinCount = 4,
                            .factory = &MakeCmp<CElemLog>,
                            .models = kGateModels,
                            .description = "D flip-flop"};
const ElemType kTypeY_RS = {.tag = "Y_RS",
                            .pinCount = 6,
                            .factory = &MakeCmp<CElemLog>,
                            .models = kTriggerModels,
                            .description = "SR trigger"};
const ElemType kTypeY_JK = {.tag = "Y_JK",
                            .pinCount = 7,
                            .factory = &MakeCmp<CElemLog>,
                            .models = kTriggerModels,
                            .description = "JK trigger"};
const ElemType kTypeY_ST = {.tag = "Y_ST",
                            .pinCount = 2,
                            .factory = &MakeCmp<CElemLog>,
                            .models = kSchmittModels,
                            .description = "Schmitt trigger"};

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
