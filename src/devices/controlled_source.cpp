#include "devices/controlled_source.h"

#include "expr/numtext.h"
#include "expr/value.h"
#include "xml/xml_node.h"

namespace tz4 {

namespace {

constexpr int32_t kTraceAll = TRACE_V | TRACE_I | TRACE_P;

const char* const kOscillatorTypeNames[] = {"Sin", "Square", "Triangle", "Sawtooth", nullptr};

// Tables shared by all four types.
const ParamDef kLinearParams[] = {
    {PK_VALUE, "K", &BindMember<&CElemVCVS::K>},
    {},
};
const ParamDef kFunctionParams[] = {
    {PK_FORMULA_TEXT, "F(x)", &BindMember<&CElemVCVS::Fx>},
    {PK_FORMULA_TEXT, "F(s)", &BindMember<&CElemVCVS::Fs>},
    {PK_VALUE, "IC", &BindMember<&CElemVCVS::Ic>},
    {},
};
const ParamDef kPwlParams[] = {
    {PK_PWL, "pwl", &BindMember<&CCmp::pwl>},
    {},
};

// The oscillator, pulse and modulator tables name their levels after the
// output ("V1", "I1") and their rate and range after the control ("dFdV",
// "dFdI", "Vmax", "Imax"): one set of three per type.
#define TZ4_SOURCE_TABLES(prefix, level1, level0, rate, max)       \
  const ParamDef prefix##OscillatorParams[] = {                    \
      {PK_VALUE, level1, &BindMember<&CElemVCVS::V1>},             \
      {PK_VALUE, level0, &BindMember<&CElemVCVS::V0>},             \
      {PK_VALUE, rate, &BindMember<&CElemVCVS::Rate>},             \
      {PK_VALUE, "Phase", &BindMember<&CElemVCVS::Phase>},         \
      {PK_ENUM, "Type", &BindMember<&CElemVCVS::Type>},            \
      {},                                                          \
  };                                                               \
  const ParamDef prefix##PulseParams[] = {                         \
      {PK_VALUE, "Width", &BindMember<&CElemVCVS::Width>},         \
      {PK_VALUE, "Threshold", &BindMember<&CElemVCVS::Threshold>}, \
      {PK_VALUE, level1, &BindMember<&CElemVCVS::V1>},             \
      {PK_VALUE, level0, &BindMember<&CElemVCVS::V0>},             \
      {},                                                          \
  };                                                               \
  const ParamDef prefix##PwmParams[] = {                           \
      {PK_VALUE, level1, &BindMember<&CElemVCVS::V1>},             \
      {PK_VALUE, level0, &BindMember<&CElemVCVS::V0>},             \
      {PK_VALUE, "F", &BindMember<&CElemVCVS::Rate>},              \
      {PK_VALUE, "Phase", &BindMember<&CElemVCVS::Phase>},         \
      {PK_VALUE, max, &BindMember<&CElemVCVS::Max>},               \
      {},                                                          \
  };

TZ4_SOURCE_TABLES(kVcvs, "V1", "V0", "dFdV", "Vmax")
TZ4_SOURCE_TABLES(kCcvs, "V1", "V0", "dFdI", "Imax")
TZ4_SOURCE_TABLES(kVccs, "I1", "I0", "dFdV", "Vmax")
TZ4_SOURCE_TABLES(kCccs, "I1", "I0", "dFdI", "Imax")
#undef TZ4_SOURCE_TABLES

// A current-controlled type reads its control in a second row.
#define TZ4_SOURCE_MODELS(prefix, oscillator, rows)                                    \
  const ModelInfo prefix##Models[] = {                                                 \
      {"Linear", MODEL_CS_LINEAR, kLinearParams, 0, rows, kTraceAll},                  \
      {"Function", MODEL_CS_FUNCTION, kFunctionParams, 0, rows, kTraceAll},            \
      {"PWL", MODEL_CS_PWL, kPwlParams, 0, rows, kTraceAll},                           \
      {oscillator, MODEL_CS_OSCILLATOR, prefix##OscillatorParams, 0, rows, kTraceAll}, \
      {"Pulse", MODEL_CS_PULSE, prefix##PulseParams, 0, rows, kTraceAll},              \
      {"PWM", MODEL_CS_PWM, prefix##PwmParams, 0, rows, kTraceAll},                    \
      {"SubCir", MODEL_SUBCIR, nullptr, 0, 0, TRACE_V | TRACE_P, 0, 1},                \
      {},                                                                              \
  };

TZ4_SOURCE_MODELS(kVcvs, "VCO", 1)
TZ4_SOURCE_MODELS(kCcvs, "CCO", 2)
TZ4_SOURCE_MODELS(kVccs, "VCO", 1)
TZ4_SOURCE_MODELS(kCccs, "CCO", 2)
#undef TZ4_SOURCE_MODELS

}  // namespace

const ElemType kTypeV_VCVS = {.tag = "V_VCVS",
                              .pinCount = 4,
                              .factory = &MakeCmp<CElemVCVS>,
                              .models = kVcvsModels,
                              .description = "Voltage controlled\nvoltage source"};
const ElemType kTypeV_CCVS = {.tag = "V_CCVS",
                              .pinCount = 4,
                              .factory = &MakeCmp<CElemVCVS>,
                              .models = kCcvsModels,
                              .description = "Current controlled\nvoltage source"};
const ElemType kTypeI_VCCS = {.tag = "I_VCCS",
                              .pinCount = 4,
                              .factory = &MakeCmp<CElemVCVS>,
                              .models = kVccsModels,
                              .description = "Voltage controlled\ncurrent source"};
const ElemType kTypeI_CCCS = {.tag = "I_CCCS",
                              .pinCount = 4,
                              .factory = &MakeCmp<CElemVCVS>,
                              .models = kCccsModels,
                              .description = "Current controlled\ncurrent source"};

CElemVCVS::CElemVCVS(const ElemType& elemType)
    : CCmp(elemType),
      K(1.0),
      Ic(0.0),
      V0(0.0),
      V1(10.0),
      Rate(1.0),
      Phase(0.0),
      Type{0, kOscillatorTypeNames},
      Threshold(5.0),
      Width(0.1),
      Max(1.0) {
  pwl.Curve = "V(V)";
  Variables.Add("t", VT_DOUBLE);
  Variables.Add("x", VT_DOUBLE);
}

bool CElemVCVS::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  archive.ArchiveValue("k", K);
  archive.ArchiveEncodedString("f", Fx);
  archive.ArchiveEncodedString("fs", Fs);
  archive.ArchiveValue("ic", Ic);
  archive.ArchiveValue("v0", V0);
  archive.ArchiveValue("v1", V1);
  archive.ArchiveValue("dfdv", Rate);
  archive.ArchiveValue("phase", Phase);
  archive.ArchiveInt("vcotype", Type.Index);
  archive.ArchiveValue("thr", Threshold);
  archive.ArchiveValue("width", Width);
  archive.ArchiveValue("max", Max);
  return true;
}

std::string& CElemVCVS::GetICText(std::string& out) {
  out.clear();
  if (ModelId() == MODEL_CS_FUNCTION) out = GetFullName() + ".IC=" + FormatNumber(Ic.Value);
  return out;
}

}  // namespace tz4
