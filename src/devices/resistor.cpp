#include "devices/resistor.h"

#include <cstring>

#include "doc/xml_node.h"

namespace tz4 {

namespace {

constexpr int32_t kTraceAll = TRACE_V | TRACE_I | TRACE_P;

const ParamDef kRParams[] = {
    {PK_VALUE, "R", &BindMember<&CElemR::R>},
    {},
};
const ParamDef kPwlParams[] = {
    {PK_PWL, "pwl", &BindMember<&CCmp::pwl>},
    {},
};
const ParamDef kPwlIParams[] = {
    {PK_PWL, "pwl", &BindMember<&CElemR::pwlI>},
    {},
};
const ParamDef kFunctionParams[] = {
    {PK_FORMULA_TEXT, "Z(s)", &BindMember<&CElemR::Zs>},
    {},
};
const ParamDef kPotentiometerParams[] = {
    {PK_VALUE, "R", &BindMember<&CElemR::R>},
    {PK_VALUE, "Position", &BindMember<&CElemR::Position>},
    {},
};

// name, id, params, editHint, extraRows, traceMask, helpId, external.
const ModelInfo kResistorModels[] = {
    {"R", MODEL_R_R, kRParams, 0, 1, kTraceAll},
    {"PWL", MODEL_TABLE, kPwlParams, 0, 1, kTraceAll},
    {"PWL-I", MODEL_R_PWL_I, kPwlIParams, 0, 1, kTraceAll},
    {"Function", MODEL_R_FUNCTION, kFunctionParams, 0, 1, kTraceAll},
    {"SubCir", MODEL_SUBCIR, nullptr, 0, 0, TRACE_V | TRACE_P, 0, 1},
    {},
};
const ModelInfo kPotentiometerModels[] = {
    {"Potentiometer", MODEL_R_POTENTIOMETER, kPotentiometerParams, 0, 0, TRACE_V},
    {},
};
const ModelInfo kVcrModels[] = {
    {"PWL", MODEL_TABLE, kPwlParams, 0, 1, kTraceAll},
    {},
};
// The current sense of the control takes a second row.
const ModelInfo kCcrModels[] = {
    {"PWL", MODEL_TABLE, kPwlParams, 0, 2, kTraceAll},
    {},
};

bool IsTag(const CCmp& cmp, const char* tag) {
  return cmp.type != nullptr && cmp.type->tag != nullptr && std::strcmp(cmp.type->tag, tag) == 0;
}

}  // namespace

const ElemType kTypeR_R = {"R_R", 2, &MakeCmp<CElemR>, kResistorModels, 0, "Resistor"};
const ElemType kTypeR_Pot = {"R_Pot", 3, &MakeCmp<CElemR>, kPotentiometerModels, 0, "Potentiometer"};
const ElemType kTypeR_VCR = {"R_VCR", 4, &MakeCmp<CElemR>, kVcrModels, 0,
                             "Voltage controlled\nresistor"};
const ElemType kTypeR_CCR = {"R_CCR", 4, &MakeCmp<CElemR>, kCcrModels, 0,
                             "Current controlled\nresistor"};

CElemR::CElemR(const ElemType& elemType) : CCmp(elemType), Zs("1") {
  R.Value = 1.0;
  Position.Value = 0.0;
  // On the plain resistor the table lists resistances of the curve I(V); on
  // the controlled types its entries are resistances taken as they stand.
  if (IsTag(*this, "R_R")) {
    pwl.Curve = "I(V)";
    pwl.Reciprocal = true;
    pwlI.Curve = "V(I)";
  }
}

bool CElemR::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  if (IsTag(*this, "R_R")) {
    archive.ArchiveValue("r", R);
    archive.ArchiveEncodedString("fs", Zs);
    // The current-controlled table is read always and written when in use.
    if (!archive.storing || ModelId() == MODEL_R_PWL_I || pwlI.Changed) {
      archive.ArchiveString("pwli", pwlI.Text);
      archive.ArchiveEncodedString("pwlif", pwlI.FormulaText);
      archive.ArchiveInt("pwlim", pwlI.Mode);
    }
  } else if (IsTag(*this, "R_Pot")) {
    archive.ArchiveValue("r", R);
    archive.ArchiveValue("p", Position);
  }
  return true;
}

bool CElemR::CheckParams() { return ReportNotSimulated(this); }

int32_t CElemR::GetExtraRows() {
  switch (ModelId()) {
    case MODEL_R_R:
      // A short carries its current in a row of its own.
      return R.Value == 0 ? 1 : 0;
    case MODEL_R_POTENTIOMETER:
      if (R.Value == 0) return 2;
      return Position.Value <= 0 || Position.Value >= 1 ? 1 : 0;
    default:
      return CCmp::GetExtraRows();
  }
}

bool CElemR::GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) {
  CCmp::GetTraceInfo(kind, nodeA, nodeB, row, value);
  const int32_t model = ModelId();
  if (model == MODEL_R_R) value = R.Value;
  return model != MODEL_SUBCIR || kind == 0 || kind == 6;
}

}  // namespace tz4
