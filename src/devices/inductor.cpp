#include "devices/inductor.h"

#include <cstring>

#include "xml/xml_node.h"

namespace tz4 {

namespace {

constexpr int32_t kTraceAll = TRACE_V | TRACE_I | TRACE_P;

const ParamDef kLParams[] = {
    {PK_VALUE, "L", &BindMember<&CElemL::L>},
    {PK_IC, "IC", &BindMember<&CElemL::ICText>},
    {},
};
const ParamDef kPwlParams[] = {
    {PK_PWL, "pwl", &BindMember<&CCmp::pwl>},
    {PK_IC, "IC", &BindMember<&CElemL::ICText>},
    {},
};
const ParamDef kFunctionParams[] = {
    {PK_FORMULA_TEXT, "Z(s)", &BindMember<&CElemL::Zs>},
    {},
};
const ParamDef kCoupledParams[] = {
    {PK_VALUE, "L1", &BindMember<&CElemL::L>},     {PK_VALUE, "L2", &BindMember<&CElemL::L2>},
    {PK_VALUE, "K", &BindMember<&CElemL::K>},      {PK_IC, "IC1", &BindMember<&CElemL::ICText>},
    {PK_IC, "IC2", &BindMember<&CElemL::IC2Text>}, {},
};

const ModelInfo kInductorModels[] = {
    {.name = "L", .id = MODEL_L_L, .params = kLParams, .extraRows = 1, .traceMask = kTraceAll},
    {.name = "PWL",
     .id = MODEL_TABLE,
     .params = kPwlParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    {.name = "Function",
     .id = MODEL_L_FUNCTION,
     .params = kFunctionParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    {.name = "SubCir", .id = MODEL_SUBCIR, .traceMask = TRACE_V | TRACE_P, .external = 1},
    {},
};
const ModelInfo kCoupledModels[] = {
    {.name = "L", .id = MODEL_L_L, .params = kCoupledParams, .extraRows = 2},
    {},
};
// The table of a custom set is built per instance (CElemL::SetWindingCount).
const ModelInfo kCustomModels[] = {
    {.name = "L", .id = MODEL_L_L},
    {.name = "SubCir", .id = MODEL_SUBCIR, .external = 1},
    {},
};
const ModelInfo kVclModels[] = {
    {.name = "PWL",
     .id = MODEL_TABLE,
     .params = kPwlParams,
     .extraRows = 1,
     .traceMask = kTraceAll},
    {},
};
// The current sense of the control takes a second row.
const ModelInfo kCclModels[] = {
    {.name = "PWL",
     .id = MODEL_TABLE,
     .params = kPwlParams,
     .extraRows = 2,
     .traceMask = kTraceAll},
    {},
};

std::string ICOrEmpty(const std::string& text) { return text.empty() ? std::string("\"\"") : text; }

}  // namespace

const ElemType kTypeL_L = {.tag = "L_L",
                           .pinCount = 2,
                           .factory = &MakeCmp<CElemL>,
                           .models = kInductorModels,
                           .description = "Inductor"};
const ElemType kTypeL_VCL = {.tag = "L_VCL",
                             .pinCount = 4,
                             .factory = &MakeCmp<CElemL>,
                             .models = kVclModels,
                             .description = "Voltage controlled\ninductor"};
const ElemType kTypeL_CCL = {.tag = "L_CCL",
                             .pinCount = 4,
                             .factory = &MakeCmp<CElemL>,
                             .models = kCclModels,
                             .description = "Current controlled\ninductor"};
const ElemType kTypeL_CL = {.tag = "L_CL",
                            .pinCount = 4,
                            .factory = &MakeCmp<CElemL>,
                            .models = kCoupledModels,
                            .description = "Coupled inductors"};
const ElemType kTypeL_CUSTOM = {.tag = "L_CUSTOM",
                                .pinCount = 0,
                                .factory = &MakeCmp<CElemL>,
                                .models = kCustomModels,
                                .description = "Custom coupled\ninductors"};

CElemL::CElemL(const ElemType& elemType) : CCmp(elemType), Zs("s") {
  const bool controlled = IsType("L_VCL") || IsType("L_CCL");
  // A controlled inductor's table lists inductances as they stand; the
  // others hold a flux curve.
  L.Value = controlled ? 0.0 : 1.0;
  L2.Value = 1.0;
  K.Value = 1.0;
  if (!controlled) pwl.Curve = "H(I)";
}

void CElemL::SetWindingCount(int count) {
  if (count < 0) count = 0;
  if (count == windingCount && !customParams.empty()) return;

  // Keep what the items of the old table hold, by name.
  std::vector<CustomParam> oldParams = std::move(customParams);
  std::vector<CFormula> oldValues = std::move(customValues);
  std::vector<std::string> oldIC = std::move(customIC);
  customParams.clear();
  customValues.clear();
  customIC.clear();

  auto addValue = [&](const std::string& itemName, double value) {
    CFormula formula;
    formula.Value = value;
    for (const CustomParam& old : oldParams)
      if (old.Kind == PK_VALUE && old.Name == itemName)
        formula = oldValues[static_cast<size_t>(old.Index)];
    customParams.push_back({PK_VALUE, itemName, static_cast<int>(customValues.size())});
    customValues.push_back(formula);
  };
  for (int i = 1; i <= count; i++) addValue("L" + std::to_string(i), 1.0);
  for (int i = 1; i <= count; i++)
    for (int j = i + 1; j <= count; j++) addValue("K" + std::to_string(i) + std::to_string(j), 0.0);
  for (int i = 1; i <= count; i++) {
    const std::string itemName = "IC" + std::to_string(i);
    std::string text;
    for (const CustomParam& old : oldParams)
      if (old.Kind == PK_IC && old.Name == itemName) text = oldIC[static_cast<size_t>(old.Index)];
    customParams.push_back({PK_IC, itemName, static_cast<int>(customIC.size())});
    customIC.push_back(text);
  }
  windingCount = count;
  customHasValue.assign(static_cast<size_t>(count), 0);
  customCurrent.assign(static_cast<size_t>(count), 0.0);
}

void CElemL::LoadCustom() {
  if (!IsType("L_CUSTOM")) return;
  CCustomElemType& shape = CreateCustomType();
  shape.width = 1;
  shape.height = 2;
  shape.leftCount = 3;
  shape.rightCount = 3;
}

void CElemL::StoreCustom() {
  if (IsType("L_CUSTOM")) SetWindingCount(pinCount > 0 ? pinCount / 2 : 0);
}

bool CElemL::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  const bool custom = IsType("L_CUSTOM");
  if (custom && !archive.storing) StoreCustom();
  // Initial currents are texts, percent-encoded like every other text of
  // a component, so that any text a host sets comes back as it was.
  if (IsType("L_VCL") || IsType("L_CCL")) {
    archive.ArchiveEncodedString("ic", ICText);
  } else if (IsType("L_L") || (custom && windingCount == 1)) {
    archive.ArchiveValue("l", L);
    archive.ArchiveEncodedString("ic", ICText);
    archive.ArchiveEncodedString("fs", Zs);
  } else if (IsType("L_CL")) {
    archive.ArchiveValue("l", L);
    archive.ArchiveValue("l2", L2);
    archive.ArchiveValue("k", K);
    archive.ArchiveEncodedString("ic", ICText);
    archive.ArchiveEncodedString("ic2", IC2Text);
  } else if (custom) {
    for (const CustomParam& item : customParams)
      if (item.Kind == PK_VALUE)
        archive.ArchiveValue(item.Name, customValues[static_cast<size_t>(item.Index)]);
    for (const CustomParam& item : customParams)
      if (item.Kind == PK_IC)
        archive.ArchiveEncodedString(item.Name, customIC[static_cast<size_t>(item.Index)]);
  }
  return true;
}

std::string& CElemL::GetICText(std::string& out) {
  out.clear();
  const int32_t model = ModelId();
  if (model != MODEL_L_L && model != MODEL_TABLE) return out;
  const std::string fullName = GetFullName();
  if (IsType("L_CL")) {
    out = fullName + ".IC1=" + ICOrEmpty(ICText) + ";" + fullName + ".IC2=" + ICOrEmpty(IC2Text);
  } else if (IsType("L_CUSTOM") && windingCount != 1) {
    for (const CustomParam& item : customParams) {
      if (item.Kind != PK_IC) continue;
      if (!out.empty()) out += ";";
      out +=
          fullName + "." + item.Name + "=" + ICOrEmpty(customIC[static_cast<size_t>(item.Index)]);
    }
  } else {
    out = fullName + ".IC=" + ICOrEmpty(ICText);
  }
  return out;
}

CParamTable CElemL::BindParams() {
  if (!IsType("L_CUSTOM") || ModelId() != MODEL_L_L) return CCmp::BindParams();
  CParamTable table;
  if (windingCount == 1) {
    // One winding is a plain inductor, with the plain names.
    for (const ParamDef* def = kLParams; def->Kind != PK_END; ++def)
      table.emplace_back(def->Kind, def->Name, def->Bind(*this));
    return table;
  }
  for (CustomParam& item : customParams) {
    const size_t index = static_cast<size_t>(item.Index);
    if (item.Kind == PK_VALUE)
      table.emplace_back(item.Kind, item.Name.c_str(), ParamTarget(&customValues[index]));
    else
      table.emplace_back(item.Kind, item.Name.c_str(), ParamTarget(&customIC[index]));
  }
  return table;
}

int32_t CElemL::GetExtraRows() {
  if (IsType("L_CUSTOM")) return ModelId() == MODEL_L_L ? windingCount : 0;
  return CCmp::GetExtraRows();
}

bool CElemL::GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) {
  CCmp::GetTraceInfo(kind, nodeA, nodeB, row, value);
  return ModelId() != MODEL_SUBCIR || kind == 0 || kind == 6;
}

}  // namespace tz4
