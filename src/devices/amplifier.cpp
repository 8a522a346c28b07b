#include "devices/amplifier.h"

#include <cstring>
#include <limits>

#include "expr/numtext.h"
#include "expr/value.h"
#include "xml/xml_node.h"

namespace tz4 {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr int32_t kTraceAll = TRACE_V | TRACE_I | TRACE_P;

const ParamDef kLinearParams[] = {
    {PK_VALUE, "K", &BindMember<&CElemO::K>},
    {PK_VALUE, "f1", &BindMember<&CElemO::F1>},
    {PK_IC, "IC", &BindMember<&CElemO::LinearIc>},
    {},
};
const ParamDef kOpAmpParams[] = {
    {PK_VALUE, "K", &BindMember<&CElemO::K>},        {PK_VALUE, "f1", &BindMember<&CElemO::F1>},
    {PK_VALUE, "Vhi", &BindMember<&CElemO::Vhi>},    {PK_VALUE, "Vlo", &BindMember<&CElemO::Vlo>},
    {PK_VALUE, "IC", &BindMember<&CElemO::OpAmpIc>}, {},
};
const ParamDef kComparatorParams[] = {
    {PK_VALUE, "Hysteresis", &BindMember<&CElemO::Hysteresis>},
    {PK_VALUE, "Vhi", &BindMember<&CElemO::Vhi>},
    {PK_VALUE, "Vlo", &BindMember<&CElemO::Vlo>},
    {PK_VALUE, "Delay", &BindMember<&CElemO::Delay>},
    {PK_HIGH_LOW, "IC", &BindMember<&CElemO::ComparatorIc>},
    {},
};
const ParamDef kFunctionParams[] = {
    {PK_FORMULA_TEXT, "F(x)", &BindMember<&CElemO::Fx>},
    {PK_FORMULA_TEXT, "F(s)", &BindMember<&CElemO::Fs>},
    {PK_VALUE, "IC", &BindMember<&CElemO::FunctionIc>},
    {},
};
const ParamDef kPwlParams[] = {
    {PK_PWL, "pwl", &BindMember<&CCmp::pwl>},
    {},
};

// name, id, params, editHint, extraRows, traceMask, helpId, external
const ModelInfo kSingleModels[] = {
    {.name = "Linear",
     .id = MODEL_O_LINEAR,
     .params = kLinearParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    {.name = "OpAmp",
     .id = MODEL_O_OPAMP,
     .params = kOpAmpParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    {.name = "Comparator",
     .id = MODEL_O_COMPARATOR,
     .params = kComparatorParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    {.name = "Function",
     .id = MODEL_O_FUNCTION,
     .params = kFunctionParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    {.name = "PWL",
     .id = MODEL_O_PWL,
     .params = kPwlParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    {.name = "SubCir", .id = MODEL_SUBCIR, .traceMask = TRACE_V | TRACE_P, .external = 1},
    {},
};
// The summing amplifier has no comparator.
const ModelInfo kSummingModels[] = {
    {.name = "Linear",
     .id = MODEL_O_LINEAR,
     .params = kLinearParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    {.name = "OpAmp",
     .id = MODEL_O_OPAMP,
     .params = kOpAmpParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    {.name = "Function",
     .id = MODEL_O_FUNCTION,
     .params = kFunctionParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    {.name = "PWL",
     .id = MODEL_O_PWL,
     .params = kPwlParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    {.name = "SubCir", .id = MODEL_SUBCIR, .traceMask = TRACE_V | TRACE_P, .external = 1},
    {},
};
const ModelInfo kVoltageGainModels[] = {
    {.name = "PWL",
     .id = MODEL_O_PWL,
     .params = kPwlParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    {},
};
// The current-controlled amplifier measures its control in a second row.
const ModelInfo kCurrentGainModels[] = {
    {.name = "PWL",
     .id = MODEL_O_PWL,
     .params = kPwlParams,
     .extraRows = 2,
     .traceMask = kTraceAll},
    {},
};

}  // namespace

const ElemType kTypeO_O = {.tag = "O_O",
                           .pinCount = 2,
                           .factory = &MakeCmp<CElemO>,
                           .models = kSingleModels,
                           .description = "Amplifier"};
const ElemType kTypeO_OD = {.tag = "O_OD",
                            .pinCount = 3,
                            .factory = &MakeCmp<CElemO>,
                            .models = kSingleModels,
                            .description = "Differential\namplifier"};
const ElemType kTypeO_OS = {.tag = "O_OS",
                            .pinCount = 3,
                            .factory = &MakeCmp<CElemO>,
                            .models = kSummingModels,
                            .description = "Summing\namplifier"};
const ElemType kTypeO_VCG = {.tag = "O_VCG",
                             .pinCount = 4,
                             .factory = &MakeCmp<CElemO>,
                             .models = kVoltageGainModels,
                             .description = "Voltage controlled\namplifier"};
const ElemType kTypeO_CCG = {.tag = "O_CCG",
                             .pinCount = 4,
                             .factory = &MakeCmp<CElemO>,
                             .models = kCurrentGainModels,
                             .description = "Current controlled\namplifier"};

CElemO::CElemO(const ElemType& elemType)
    : CCmp(elemType),
      K(IsType("O_OD") ? kInfinity : 1.0),
      F1(kInfinity),
      Vhi(15.0),
      Vlo(-15.0),
      Hysteresis(0.1),
      OpAmpIc(0.0),
      FunctionIc(0.0),
      Delay(0.0) {
  pwl.Curve = "V(V)";
  Variables.Add("t", VT_DOUBLE);
  Variables.Add("x", VT_DOUBLE);
}

bool CElemO::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  // The controlled-gain types keep only their table, which the base archives.
  if (IsType("O_VCG") || IsType("O_CCG")) return true;
  archive.ArchiveValue("k", K);
  archive.ArchiveValue("f1", F1);
  archive.ArchiveValue("hi", Vhi);
  archive.ArchiveValue("lo", Vlo);
  archive.ArchiveValue("hyst", Hysteresis);
  archive.ArchiveEncodedString("f", Fx);
  archive.ArchiveEncodedString("fs", Fs);
  archive.ArchiveEncodedString("ic", LinearIc);
  archive.ArchiveInt("comp_ic", ComparatorIc);
  archive.ArchiveValue("opamp_ic", OpAmpIc);
  archive.ArchiveValue("func_ic", FunctionIc);
  archive.ArchiveValue("delay", Delay);
  return true;
}

std::string& CElemO::GetICText(std::string& out) {
  out.clear();
  const std::string n = GetFullName();
  switch (ModelId()) {
    case MODEL_O_FUNCTION:
      out =
          n + ".IC=" + (FunctionIc.Text.empty() ? FormatNumber(FunctionIc.Value) : FunctionIc.Text);
      break;
    case MODEL_O_LINEAR:
      out = n + ".IC=" + (LinearIc.empty() ? std::string("\"\"") : LinearIc);
      break;
    case MODEL_O_OPAMP:
      out = n + ".IC=" + FormatNumber(OpAmpIc.Value);
      break;
    case MODEL_O_COMPARATOR:
      out = n + ".IC=" + (ComparatorIc != 0 ? "high" : "low");
      break;
    default:
      break;
  }
  return out;
}


// Every trace reads between ground and the output, with the output's row.
bool CElemO::GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) {
  nodeA = 0;
  nodeB = pinCount > 1 ? pins[1] : 0;
  row = firstRow;
  value = 0.0;
  if (ModelId() == MODEL_SUBCIR) return kind == 0 || kind == 6;
  return true;
}

}  // namespace tz4
