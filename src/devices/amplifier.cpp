#include "devices/amplifier.h"

#include <cstring>
#include <limits>

#include "xml/xml_node.h"
#include "expr/numtext.h"
#include "expr/value.h"

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
    {PK_VALUE, "K", &BindMember<&CElemO::K>},
    {PK_VALUE, "f1", &BindMember<&CElemO::F1>},
    {PK_VALUE, "Vhi", &BindMember<&CElemO::Vhi>},
    {PK_VALUE, "Vlo", &BindMember<&CElemO::Vlo>},
    {PK_VALUE, "IC", &BindMember<&CElemO::OpAmpIc>},
    {},
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
    {"Linear", MODEL_O_LINEAR, kLinearParams, 0, 1, kTraceAll},
    {"OpAmp", MODEL_O_OPAMP, kOpAmpParams, 0, 1, kTraceAll},
    {"Comparator", MODEL_O_COMPARATOR, kComparatorParams, 0, 1, kTraceAll},
    {"Function", MODEL_O_FUNCTION, kFunctionParams, 0, 1, kTraceAll},
    {"PWL", MODEL_O_PWL, kPwlParams, 0, 1, kTraceAll},
    {"SubCir", MODEL_SUBCIR, nullptr, 0, 0, TRACE_V | TRACE_P, 0, 1},
    {},
};
// The summing amplifier has no comparator.
const ModelInfo kSummingModels[] = {
    {"Linear", MODEL_O_LINEAR, kLinearParams, 0, 1, kTraceAll},
    {"OpAmp", MODEL_O_OPAMP, kOpAmpParams, 0, 1, kTraceAll},
    {"Function", MODEL_O_FUNCTION, kFunctionParams, 0, 1, kTraceAll},
    {"PWL", MODEL_O_PWL, kPwlParams, 0, 1, kTraceAll},
    {"SubCir", MODEL_SUBCIR, nullptr, 0, 0, TRACE_V | TRACE_P, 0, 1},
    {},
};
const ModelInfo kVoltageGainModels[] = {
    {"PWL", MODEL_O_PWL, kPwlParams, 0, 1, kTraceAll},
    {},
};
// The current-controlled amplifier measures its control in a second row.
const ModelInfo kCurrentGainModels[] = {
    {"PWL", MODEL_O_PWL, kPwlParams, 0, 2, kTraceAll},
    {},
};

}  // namespace

const ElemType kTypeO_O = {"O_O", 2, &MakeCmp<CElemO>, kSingleModels, 0, "Amplifier"};
const ElemType kTypeO_OD = {"O_OD", 3, &MakeCmp<CElemO>, kSingleModels, 0,
                            "Differential\namplifier"};
const ElemType kTypeO_OS = {"O_OS", 3, &MakeCmp<CElemO>, kSummingModels, 0,
                            "Summing\namplifier"};
const ElemType kTypeO_VCG = {"O_VCG", 4, &MakeCmp<CElemO>, kVoltageGainModels, 0,
                             "Voltage controlled\namplifier"};
const ElemType kTypeO_CCG = {"O_CCG", 4, &MakeCmp<CElemO>, kCurrentGainModels, 0,
                             "Current controlled\namplifier"};

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
      out = n + ".IC=" +
            (FunctionIc.Text.empty() ? FormatNumber(FunctionIc.Value) : FunctionIc.Text);
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

bool CElemO::CheckParams() { return ReportNotSimulated(this); }

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
