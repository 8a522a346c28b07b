#include "devices/diode.h"

#include <cstring>

#include "doc/xml_node.h"
#include "expr/numtext.h"

namespace tz4 {

const char* const kZenerICNames[] = {"Minus", "Off", "Plus", nullptr};

namespace {

constexpr int32_t kTraceAll = TRACE_V | TRACE_I | TRACE_P;

const ParamDef kDiodeParams[] = {
    {PK_VALUE, "Vd", &BindMember<&CElemD::Vd>},
    {PK_ON_OFF, "IC", &BindMember<&CElemD::IC>},
    {},
};
const ParamDef kStorageParams[] = {
    {PK_VALUE, "Vd", &BindMember<&CElemD::Vd>},
    {PK_VALUE, "t", &BindMember<&CElemD::t>},
    {PK_ON_OFF, "IC", &BindMember<&CElemD::IC>},
    {PK_VALUE, "ICQ", &BindMember<&CElemD::ICQ>},
    {},
};
const ParamDef kSoftParams[] = {
    {PK_VALUE, "Vd", &BindMember<&CElemD::Vd>},
    {PK_VALUE, "t", &BindMember<&CElemD::t>},
    {PK_VALUE, "ts", &BindMember<&CElemD::ts>},
    {PK_ON_OFF, "IC", &BindMember<&CElemD::IC>},
    {PK_VALUE, "ICQ", &BindMember<&CElemD::ICQ>},
    {},
};
const ParamDef kPwlParams[] = {
    {PK_PWL, "pwl", &BindMember<&CCmp::pwl>},
    {},
};
const ParamDef kZenerParams[] = {
    {PK_VALUE, "V", &BindMember<&CElemD::V>},
    {PK_VALUE, "Vd", &BindMember<&CElemD::Vd>},
    {PK_ENUM, "IC", &BindMember<&CElemD::ICz>},
    {},
};
const ParamDef kSymmetricZenerParams[] = {
    {PK_VALUE, "V", &BindMember<&CElemD::V>},
    {PK_ENUM, "IC", &BindMember<&CElemD::ICz>},
    {},
};
const ParamDef kThyristorParams[] = {
    {PK_VALUE, "Vd", &BindMember<&CElemD::Vd>},
    {PK_VALUE, "Ihold", &BindMember<&CElemD::Ihold>},
    {PK_VALUE, "Threshold", &BindMember<&CElemD::Threshold>},
    {PK_ON_OFF, "IC", &BindMember<&CElemD::IC>},
    {},
};
// The logic-controlled thyristor compares with the logic threshold of the
// settings and has no threshold of its own.
const ParamDef kLogicThyristorParams[] = {
    {PK_VALUE, "Vd", &BindMember<&CElemD::Vd>},
    {PK_VALUE, "Ihold", &BindMember<&CElemD::Ihold>},
    {PK_ON_OFF, "IC", &BindMember<&CElemD::IC>},
    {},
};
const ParamDef kBridgeParams[] = {
    {PK_VALUE, "Vd", &BindMember<&CElemD::Vd>},
    {},
};

// name, id, params, editHint, extraRows, traceMask, helpId, external.
constexpr ModelInfo kSubCir = {"SubCir", MODEL_SUBCIR, nullptr, 0, 0, TRACE_V | TRACE_P, 0, 1};

const ModelInfo kDiodeModels[] = {
    {"Diode", MODEL_D_DIODE, kDiodeParams, 0, 1, kTraceAll},
    {"Storage", MODEL_D_STORAGE, kStorageParams, 0, 2, kTraceAll},
    {"Soft", MODEL_D_SOFT, kSoftParams, 0, 2, kTraceAll},
    {"PWL", MODEL_TABLE, kPwlParams, 0, 1, kTraceAll},
    kSubCir,
    {},
};
const ModelInfo kZenerModels[] = {
    {"Zener", MODEL_D_DIODE, kZenerParams, 0, 1, kTraceAll},
    {"PWL", MODEL_TABLE, kPwlParams, 0, 1, kTraceAll},
    kSubCir,
    {},
};
const ModelInfo kSymmetricZenerModels[] = {
    {"Zener", MODEL_D_DIODE, kSymmetricZenerParams, 0, 1, kTraceAll},
    {"PWL", MODEL_TABLE, kPwlParams, 0, 1, kTraceAll},
    kSubCir,
    {},
};
const ModelInfo kVctModels[] = {
    {"Thyristor", MODEL_D_DIODE, kThyristorParams, 0, 1, kTraceAll},
    kSubCir,
    {},
};
// The current sense of the gate takes a second row.
const ModelInfo kCctModels[] = {
    {"Thyristor", MODEL_D_DIODE, kThyristorParams, 0, 2, kTraceAll},
    kSubCir,
    {},
};
const ModelInfo kLctModels[] = {
    {"Thyristor", MODEL_D_DIODE, kLogicThyristorParams, 0, 1, kTraceAll},
    kSubCir,
    {},
};
// One row for each of the four arms.
const ModelInfo kBridgeModels[] = {
    {"Diode", MODEL_D_DIODE, kBridgeParams, 0, 4, TRACE_P},
    {},
};

bool IsTag(const CCmp& cmp, const char* tag) {
  return cmp.type != nullptr && cmp.type->tag != nullptr && std::strcmp(cmp.type->tag, tag) == 0;
}

bool IsThyristor(const CCmp& cmp) {
  return IsTag(cmp, "D_VCT") || IsTag(cmp, "D_CCT") || IsTag(cmp, "D_LCT");
}

bool IsZener(const CCmp& cmp) { return IsTag(cmp, "D_Z") || IsTag(cmp, "D_ZS"); }

}  // namespace

const ElemType kTypeD_D = {"D_D", 2, &MakeCmp<CElemD>, kDiodeModels, 0, "Diode"};
const ElemType kTypeD_Z = {"D_Z", 2, &MakeCmp<CElemD>, kZenerModels, 0, "Zener"};
const ElemType kTypeD_ZS = {"D_ZS", 2, &MakeCmp<CElemD>, kSymmetricZenerModels, 0,
                            "Bidirectional\nzener"};
const ElemType kTypeD_BR = {"D_BR", 4, &MakeCmp<CElemD>, kBridgeModels, 0, "Bridge\nrectifier"};
const ElemType kTypeD_LCT = {"D_LCT", 3, &MakeCmp<CElemD>, kLctModels, 0,
                             "Logic controlled\nthyristor"};
const ElemType kTypeD_VCT = {"D_VCT", 4, &MakeCmp<CElemD>, kVctModels, 0,
                             "Voltage controlled\nthyristor"};
const ElemType kTypeD_CCT = {"D_CCT", 4, &MakeCmp<CElemD>, kCctModels, 0,
                             "Current controlled\nthyristor"};

CElemD::CElemD(const ElemType& elemType) : CCmp(elemType) {
  V.Value = 8.0;
  Threshold.Value = 5.0;
  Ihold.Value = 1.0;
  // The table lists resistances of the curve I(V).
  pwl.Curve = "I(V)";
  pwl.Reciprocal = true;
}

bool CElemD::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  if (IsTag(*this, "D_D")) {
    archive.ArchiveValue("vd", Vd);
    archive.ArchiveValue("t", t);
    archive.ArchiveValue("ts", ts);
    archive.ArchiveInt("ic", IC);
    archive.ArchiveValue("icq", ICQ);
    // A stored charge is never negative.
    if (ICQ.Value <= 0) ICQ.Value = 0.0;
  } else if (IsThyristor(*this)) {
    archive.ArchiveValue("vd", Vd);
    archive.ArchiveValue("thr", Threshold);
    archive.ArchiveValue("hold", Ihold);
    archive.ArchiveInt("ic", IC);
  } else if (IsTag(*this, "D_Z")) {
    archive.ArchiveValue("v", V);
    archive.ArchiveValue("vd", Vd);
    archive.ArchiveInt("ic", ICz.Index);
  } else if (IsTag(*this, "D_ZS")) {
    archive.ArchiveValue("v", V);
    archive.ArchiveInt("ic", ICz.Index);
  } else if (IsTag(*this, "D_BR")) {
    archive.ArchiveValue("vd", Vd);
  }
  return true;
}

std::string& CElemD::GetICText(std::string& out) {
  out.clear();
  const int32_t model = ModelId();
  const std::string fullName = GetFullName();
  const char* onOff = IC != 0 ? "on" : "off";
  if (model == MODEL_D_STORAGE || model == MODEL_D_SOFT) {
    out = fullName + ".IC=" + onOff + ";" + fullName + ".ICQ=" + FormatNumber(ICQ.Value, 12);
  } else if (model != MODEL_D_DIODE) {
    // Tables and subcircuits have no initial condition of their own.
  } else if (IsZener(*this)) {
    static const char* const kNames[] = {"minus", "off", "plus"};
    const int index = ICz.Index >= 0 && ICz.Index <= 2 ? ICz.Index : 1;
    out = fullName + ".IC=" + kNames[index];
  } else {
    out = fullName + ".IC=" + onOff;
  }
  return out;
}

bool CElemD::CheckParams() { return ReportNotSimulated(this); }

bool CElemD::GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) {
  CCmp::GetTraceInfo(kind, nodeA, nodeB, row, value);
  if (IsTag(*this, "D_BR")) return false;
  return ModelId() != MODEL_SUBCIR || kind == 0 || kind == 6;
}

}  // namespace tz4
