#include "devices/switch.h"

#include <cstring>

#include "devices/logic_generator.h"
#include "xml/xml_node.h"

namespace tz4 {

namespace {

const char* const kSlopeNames[] = {"Linear", "Cos", "Log", nullptr};

// --- controlled switches: voltage and current control ---

const ParamDef kAnalogSwitchParams[] = {
    {PK_VALUE, "Threshold", &BindMember<&CElemCS::Threshold>},
    {PK_VALUE, "Hysteresis", &BindMember<&CElemCS::Hysteresis>},
    {PK_ON_OFF, "Active", &BindMember<&CElemCS::Active>},
    {PK_ON_OFF, "IC", &BindMember<&CElemCS::IC>},
    {},
};
const ParamDef kAnalogPulseParams[] = {
    {PK_VALUE, "Width", &BindMember<&CElemCS::Width>},
    {PK_VALUE, "Threshold", &BindMember<&CElemCS::Threshold>},
    {PK_ON_OFF, "Active", &BindMember<&CElemCS::Active>},
    {},
};
const ParamDef kAnalogStepsParams[] = {
    {PK_VALUE, "Threshold", &BindMember<&CElemCS::Threshold>},
    {PK_VALUE, "Hysteresis", &BindMember<&CElemCS::Hysteresis>},
    {PK_VALUE, "Roff", &BindMember<&CElemCS::Roff>},
    {PK_VALUE, "Ron", &BindMember<&CElemCS::Ron>},
    {PK_ENUM, "Slope", &BindMember<&CElemCS::Slope>},
    {PK_VALUE, "Ramp", &BindMember<&CElemCS::Width>},
    {PK_VALUE, "Steps", &BindMember<&CElemCS::Steps>},
    {PK_ON_OFF, "IC", &BindMember<&CElemCS::IC>},
    {},
};

// --- controlled switches: logic control, where the threshold is the
// solver's logic threshold ---

const ParamDef kLogicSwitchParams[] = {
    {PK_ON_OFF, "Active", &BindMember<&CElemCS::Active>},
    {PK_ON_OFF, "IC", &BindMember<&CElemCS::IC>},
    {},
};
const ParamDef kLogicPulseParams[] = {
    {PK_VALUE, "Width", &BindMember<&CElemCS::Width>},
    {PK_ON_OFF, "Active", &BindMember<&CElemCS::Active>},
    {},
};
const ParamDef kLogicStepsParams[] = {
    {PK_VALUE, "Roff", &BindMember<&CElemCS::Roff>},
    {PK_VALUE, "Ron", &BindMember<&CElemCS::Ron>},
    {PK_ENUM, "Slope", &BindMember<&CElemCS::Slope>},
    {PK_VALUE, "Ramp", &BindMember<&CElemCS::Width>},
    {PK_VALUE, "Steps", &BindMember<&CElemCS::Steps>},
    {PK_ON_OFF, "IC", &BindMember<&CElemCS::IC>},
    {},
};

// SPST types trace V, I and P; SPDT types none (their subcircuit P only).
#define TZ4_CS_MODELS(table, switchParams, pulseParams, stepsParams, rows, mask, subMask) \
  const ModelInfo table[] = {                                                             \
      {.name = "Switch",                                                                  \
       .id = MODEL_SW_SWITCH,                                                             \
       .params = switchParams,                                                            \
       .extraRows = rows,                                                                 \
       .traceMask = mask},                                                                \
      {.name = "Pulse",                                                                   \
       .id = MODEL_SW_PULSE,                                                              \
       .params = pulseParams,                                                             \
       .extraRows = rows,                                                                 \
       .traceMask = mask},                                                                \
      {.name = "Steps",                                                                   \
       .id = MODEL_SW_STEP,                                                               \
       .params = stepsParams,                                                             \
       .extraRows = rows,                                                                 \
       .traceMask = mask},                                                                \
      {.name = "SubCir", .id = MODEL_SUBCIR, .traceMask = subMask, .external = 1},        \
      {},                                                                                 \
  };

TZ4_CS_MODELS(kVcsModels, kAnalogSwitchParams, kAnalogPulseParams, kAnalogStepsParams, 1, 7, 5)
TZ4_CS_MODELS(kCcsModels, kAnalogSwitchParams, kAnalogPulseParams, kAnalogStepsParams, 2, 7, 5)
TZ4_CS_MODELS(kLcsModels, kLogicSwitchParams, kLogicPulseParams, kLogicStepsParams, 1, 7, 5)
TZ4_CS_MODELS(kVcs3Models, kAnalogSwitchParams, kAnalogPulseParams, kAnalogStepsParams, 2, 0, 4)
TZ4_CS_MODELS(kCcs3Models, kAnalogSwitchParams, kAnalogPulseParams, kAnalogStepsParams, 3, 0, 4)
TZ4_CS_MODELS(kLcs3Models, kLogicSwitchParams, kLogicPulseParams, kLogicStepsParams, 2, 0, 4)
#undef TZ4_CS_MODELS

// --- time-steered switches ---

template <auto Field>
ParamTarget BindField(CCmp& cmp) {
  return BindSignalField<&CElemS::Signal, Field>(cmp);
}

const ParamDef kTimedSwitchParams[] = {
    {PK_ON_OFF, "Switch", &BindMember<&CElemS::Active>},
    {},
};
const ParamDef kTimedPulseParams[] = {
    {PK_VALUE, "Period", &BindField<&CSignal::Period>},
    {PK_VALUE, "Width", &BindField<&CSignal::Width>},
    {PK_VALUE, "Delay", &BindField<&CSignal::Delay>},
    {PK_ON_OFF, "Active", &BindMember<&CElemS::Active>},
    {},
};
const ParamDef kTimedStepParams[] = {
    {PK_VALUE, "Delay", &BindField<&CSignal::Delay>},
    {PK_ON_OFF, "Active", &BindMember<&CElemS::Active>},
    {},
};
const ParamDef kTimedListParams[] = {
    {PK_SWITCH_LIST, "List", &BindField<&CSignal::PwlText>},
    {PK_YES_NO, "Cycle", &BindField<&CSignal::Cycle>},
    {PK_VALUE, "Delay", &BindField<&CSignal::Delay>},
    {},
};
const ParamDef kTimedFileParams[] = {
    {PK_DATA_FILE, "File", &BindField<&CSignal::FileName>},
    {PK_YES_NO, "Cycle", &BindField<&CSignal::Cycle>},
    {PK_VALUE, "Delay", &BindField<&CSignal::Delay>},
    {},
};

#define TZ4_S_MODELS(table, rows, mask, subMask)                                   \
  const ModelInfo table[] = {                                                      \
      {.name = "Switch",                                                           \
       .id = MODEL_SW_SWITCH,                                                      \
       .params = kTimedSwitchParams,                                               \
       .extraRows = rows,                                                          \
       .traceMask = mask},                                                         \
      {.name = "Pulse",                                                            \
       .id = MODEL_SW_PULSE,                                                       \
       .params = kTimedPulseParams,                                                \
       .extraRows = rows,                                                          \
       .traceMask = mask},                                                         \
      {.name = "Step",                                                             \
       .id = MODEL_SW_STEP,                                                        \
       .params = kTimedStepParams,                                                 \
       .extraRows = rows,                                                          \
       .traceMask = mask},                                                         \
      {.name = "List",                                                             \
       .id = MODEL_SW_LIST,                                                        \
       .params = kTimedListParams,                                                 \
       .extraRows = rows,                                                          \
       .traceMask = mask},                                                         \
      {.name = "File",                                                             \
       .id = MODEL_SW_FILE,                                                        \
       .params = kTimedFileParams,                                                 \
       .extraRows = rows,                                                          \
       .traceMask = mask},                                                         \
      {.name = "SubCir", .id = MODEL_SUBCIR, .traceMask = subMask, .external = 1}, \
      {},                                                                          \
  };

TZ4_S_MODELS(kSModels, 1, 7, 5)
TZ4_S_MODELS(kS3Models, 2, 0, 4)
#undef TZ4_S_MODELS

const char* OnOff(int32_t flag) { return flag != 0 ? "on" : "off"; }

}  // namespace

const ElemType kTypeS_VCS = {.tag = "S_VCS",
                             .pinCount = 4,
                             .factory = &MakeCmp<CElemCS>,
                             .models = kVcsModels,
                             .description = "Voltage controlled\nswitch"};
const ElemType kTypeS_CCS = {.tag = "S_CCS",
                             .pinCount = 4,
                             .factory = &MakeCmp<CElemCS>,
                             .models = kCcsModels,
                             .description = "Current controlled\nswitch"};
const ElemType kTypeS_LCS = {.tag = "S_LCS",
                             .pinCount = 3,
                             .factory = &MakeCmp<CElemCS>,
                             .models = kLcsModels,
                             .description = "Logic controlled\nswitch"};
const ElemType kTypeS_VCS3 = {.tag = "S_VCS3",
                              .pinCount = 5,
                              .factory = &MakeCmp<CElemCS>,
                              .models = kVcs3Models,
                              .description = "SPDT voltage\ncontrolled switch"};
const ElemType kTypeS_CCS3 = {.tag = "S_CCS3",
                              .pinCount = 5,
                              .factory = &MakeCmp<CElemCS>,
                              .models = kCcs3Models,
                              .description = "SPDT current\ncontrolled switch"};
const ElemType kTypeS_LCS3 = {.tag = "S_LCS3",
                              .pinCount = 4,
                              .factory = &MakeCmp<CElemCS>,
                              .models = kLcs3Models,
                              .description = "SPDT logic\ncontrolled switch"};
const ElemType kTypeS_S = {.tag = "S_S",
                           .pinCount = 2,
                           .factory = &MakeCmp<CElemS>,
                           .models = kSModels,
                           .description = "Switch"};
const ElemType kTypeS_S3 = {.tag = "S_S3",
                            .pinCount = 3,
                            .factory = &MakeCmp<CElemS>,
                            .models = kS3Models,
                            .description = "SPDT switch"};

// ---------------------------------------------------------------- CElemCS

CElemCS::CElemCS(const ElemType& elemType)
    : CCmp(elemType),
      Threshold(5.0),
      Hysteresis(0.0),
      Width(0.1),
      Roff(1000.0),
      Ron(1.0),
      Steps(10.0),
      Slope{0, kSlopeNames} {}

bool CElemCS::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  archive.ArchiveInt("a", Active);
  archive.ArchiveValue("thr", Threshold);
  archive.ArchiveValue("hyst", Hysteresis);
  archive.ArchiveInt("ic", IC);
  archive.ArchiveValue("width", Width);
  archive.ArchiveValue("roff", Roff);
  archive.ArchiveValue("ron", Ron);
  archive.ArchiveValue("steps", Steps);
  archive.ArchiveInt("slope", Slope.Index);
  return true;
}

std::string& CElemCS::GetICText(std::string& out) {
  out.clear();
  const int32_t model = ModelId();
  if (model == MODEL_SW_SWITCH || model == MODEL_SW_STEP) out = GetFullName() + ".IC=" + OnOff(IC);
  return out;
}


// Only the control of the single-contact logic switch is a logic pin; the
// control of the SPDT logic switch stays a matrix pin.
int CElemCS::IsMatrixPin(int pin) { return pin == 2 && IsType("S_LCS") ? 0 : 1; }

bool CElemCS::GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) {
  CCmp::GetTraceInfo(kind, nodeA, nodeB, row, value);
  return ModelId() != MODEL_SUBCIR || kind == 0 || kind == 6;
}

// ----------------------------------------------------------------- CElemS

CElemS::CElemS(const ElemType& elemType) : CCmp(elemType) {}

bool CElemS::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  ArchiveLogicSignal(archive, Active, Signal);
  return true;
}

std::string& CElemS::GetICText(std::string& out) { return SignalDelayICText(*this, Signal, out); }


bool CElemS::GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) {
  CCmp::GetTraceInfo(kind, nodeA, nodeB, row, value);
  return ModelId() != MODEL_SUBCIR || kind == 0 || kind == 6;
}

}  // namespace tz4
