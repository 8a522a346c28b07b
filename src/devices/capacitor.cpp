#include "devices/capacitor.h"

#include <cstring>

#include "doc/xml_node.h"

namespace tz4 {

namespace {

constexpr int32_t kTraceAll = TRACE_V | TRACE_I | TRACE_P;

const ParamDef kCParams[] = {
    {PK_VALUE, "C", &BindMember<&CElemC::C>},
    {PK_IC, "IC", &BindMember<&CElemC::ICText>},
    {},
};
const ParamDef kPwlParams[] = {
    {PK_PWL, "pwl", &BindMember<&CCmp::pwl>},
    {PK_IC, "IC", &BindMember<&CElemC::ICText>},
    {},
};
const ParamDef kFunctionParams[] = {
    {PK_FORMULA_TEXT, "Z(s)", &BindMember<&CElemC::Zs>},
    {},
};

// name, id, params, editHint, extraRows, traceMask, helpId, external.
const ModelInfo kCapacitorModels[] = {
    {"C", MODEL_C_C, kCParams, 0, 1, kTraceAll},
    {"PWL", MODEL_TABLE, kPwlParams, 0, 1, kTraceAll},
    {"Function", MODEL_C_FUNCTION, kFunctionParams, 0, 1, kTraceAll},
    {"SubCir", MODEL_SUBCIR, nullptr, 0, 0, TRACE_V | TRACE_P, 0, 1},
    {},
};
const ModelInfo kVccModels[] = {
    {"PWL", MODEL_TABLE, kPwlParams, 0, 1, kTraceAll},
    {},
};
// The current sense of the control takes a second row.
const ModelInfo kCccModels[] = {
    {"PWL", MODEL_TABLE, kPwlParams, 0, 2, kTraceAll},
    {},
};

bool IsTag(const CCmp& cmp, const char* tag) {
  return cmp.type != nullptr && cmp.type->tag != nullptr && std::strcmp(cmp.type->tag, tag) == 0;
}

}  // namespace

const ElemType kTypeC_C = {"C_C", 2, &MakeCmp<CElemC>, kCapacitorModels, 0, "Capacitor"};
const ElemType kTypeC_VCC = {"C_VCC", 4, &MakeCmp<CElemC>, kVccModels, 0,
                             "Voltage controlled\ncapacitor"};
const ElemType kTypeC_CCC = {"C_CCC", 4, &MakeCmp<CElemC>, kCccModels, 0,
                             "Current controlled\ncapacitor"};

CElemC::CElemC(const ElemType& elemType) : CCmp(elemType), Zs("1/s") {
  C.Value = 1.0;
  // The plain capacitor's table is a charge curve; the controlled types list
  // capacitances as they stand.
  if (IsTag(*this, "C_C")) pwl.Curve = "Q(V)";
}

bool CElemC::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  if (IsTag(*this, "C_C")) {
    archive.ArchiveValue("c", C);
    archive.ArchiveString("ic", ICText);
    archive.ArchiveEncodedString("fs", Zs);
  } else {
    archive.ArchiveString("ic", ICText);
  }
  return true;
}

std::string& CElemC::GetICText(std::string& out) {
  out.clear();
  const int32_t model = ModelId();
  if (model == MODEL_C_C || model == MODEL_TABLE)
    out = GetFullName() + ".IC=" + (ICText.empty() ? std::string("\"\"") : ICText);
  return out;
}

bool CElemC::CheckParams() { return ReportNotSimulated(this); }

bool CElemC::GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) {
  CCmp::GetTraceInfo(kind, nodeA, nodeB, row, value);
  return ModelId() != MODEL_SUBCIR || kind == 0 || kind == 6;
}

}  // namespace tz4
