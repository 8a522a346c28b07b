#include "devices/transformer.h"

#include <cmath>
#include <cstring>

#include "solver/calc.h"
#include "xml/xml_node.h"

namespace tz4 {

namespace {

constexpr int32_t kWindingMask = TRACE_V | TRACE_I | TRACE_P;
// The first extra row of a transformer is its core, not a winding current:
// only the voltage across the first pins is a meaningful trace.
constexpr int32_t kTransformerMask = TRACE_V;
constexpr int32_t kSubCirMask = TRACE_V | TRACE_P;

const ParamDef kWindingParams[] = {
    {PK_VALUE, "n", &BindMember<&CElemW::N1>},
    {},
};
const ParamDef kTransformerParams[] = {
    {PK_VALUE, "n1", &BindMember<&CElemW::N1>},
    {PK_VALUE, "n2", &BindMember<&CElemW::N2>},
    {},
};

// --- model tables: name, id, params, editHint, extraRows, traceMask ---

const ModelInfo kWindingModels[] = {
    {.name = "Winding",
     .id = MODEL_W_TRANSFORMER,
     .params = kWindingParams,
     .extraRows = 1,
     .traceMask = kWindingMask},
    {},
};
const ModelInfo kT2Models[] = {
    {.name = "Transformer",
     .id = MODEL_W_TRANSFORMER,
     .params = kTransformerParams,
     .extraRows = 3,
     .traceMask = kTransformerMask},
    {.name = "SubCir", .id = MODEL_SUBCIR, .traceMask = kSubCirMask, .external = 1},
    {},
};
const ModelInfo kT3Models[] = {
    {.name = "Transformer",
     .id = MODEL_W_TRANSFORMER,
     .params = kTransformerParams,
     .extraRows = 4,
     .traceMask = kTransformerMask},
    {.name = "SubCir", .id = MODEL_SUBCIR, .traceMask = kSubCirMask, .external = 1},
    {},
};
// The table and the row count of W_CUSTOM depend on its windings.
const ModelInfo kCustomModels[] = {
    {.name = "Transformer", .id = MODEL_W_TRANSFORMER, .traceMask = kTransformerMask},
    {.name = "SubCir", .id = MODEL_SUBCIR, .traceMask = kSubCirMask, .external = 1},
    {},
};

}  // namespace

const ElemType kTypeW_W = {.tag = "W_W",
                           .pinCount = 3,
                           .factory = &MakeCmp<CElemW>,
                           .models = kWindingModels,
                           .description = "Winding"};
const ElemType kTypeW_T2 = {.tag = "W_T2",
                            .pinCount = 4,
                            .factory = &MakeCmp<CElemW>,
                            .models = kT2Models,
                            .description = "Transformer"};
const ElemType kTypeW_T3 = {.tag = "W_T3",
                            .pinCount = 5,
                            .factory = &MakeCmp<CElemW>,
                            .models = kT3Models,
                            .description = "Differential\ntransformer"};
const ElemType kTypeW_CUSTOM = {.tag = "W_CUSTOM",
                                .pinCount = 0,
                                .factory = &MakeCmp<CElemW>,
                                .models = kCustomModels,
                                .description = "Custom\ntransformer"};

CElemW::CElemW(const ElemType& elemType) : CCmp(elemType) {
  N1.Value = 1.0;
  N2.Value = 1.0;
}

bool CElemW::IsCustom() const { return IsType("W_CUSTOM"); }

void CElemW::SetWindingCount(int32_t count) {
  if (count < 0) count = 0;
  if (count == WindingCount && CustomTurns.size() == static_cast<size_t>(count)) return;
  WindingCount = count;
  CustomNames.clear();
  CustomTurns.clear();
  CustomTurns.resize(static_cast<size_t>(count));
  for (CFormula& turns : CustomTurns) turns.Value = 1.0;
  for (int32_t k = 0; k < count; k++) CustomNames.push_back("n" + std::to_string(k + 1));
}

void CElemW::LoadCustom() {
  if (!IsCustom()) return;
  CCustomElemType& shape = CreateCustomType();
  shape.width = 1;
  shape.height = 2;
  shape.leftCount = 3;
  shape.rightCount = 3;
}

void CElemW::StoreCustom() {
  if (IsCustom()) SetWindingCount(pinCount > 0 ? pinCount / 2 : 0);
}

bool CElemW::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  // The windings follow the pins, also when the element has no shape.
  if (!archive.storing) StoreCustom();
  archive.ArchiveValue("w", N1);
  archive.ArchiveValue("w1", N2);
  if (IsCustom()) {
    for (size_t k = 0; k < CustomTurns.size(); k++)
      archive.ArchiveValue(CustomNames[k], CustomTurns[k]);
  }
  return true;
}

bool CElemW::CheckParams() {
  if (ModelId() == MODEL_SUBCIR) return true;
  auto turns = [this](const CFormula& value, const std::string& name) {
    if (!CheckValid(this, value, name)) return false;
    return !std::isinf(value.Value) ||
           ComponentError(this, name + (IsCustom() ? " : infinite" : " = infinite"));
  };
  if (IsType("W_W")) return turns(N1, "n");
  if (!IsCustom()) return turns(N1, "n1") & turns(N2, "n2");
  bool ok = true;
  for (size_t k = 0; k < CustomTurns.size(); ++k) ok &= turns(CustomTurns[k], CustomNames[k]);
  return ok;
}

// Each winding is a voltage row whose voltage is its turns times the
// volts per turn of the core row; the core row sums the ampere-turns.
int CElemW::Stamp(CCalc& calc, int phase, double /*t*/) {
  if (phase != STAMP_MATRIX || calc.pass != 0 || ModelId() == MODEL_SUBCIR) return 0;
  const int r = firstRow;
  auto winding = [&calc](int a, int b, int row, int core, double n) {
    calc.StampVSource(a, b, row, 0.0);
    calc.AddCoupling(core, row, n);
    calc.AddCoupling(row, core, -n);
  };
  if (IsType("W_W")) {
    winding(Pin(0), Pin(1), r, Pin(2), N1.Value);
  } else if (IsType("W_T2")) {
    winding(Pin(0), Pin(1), r + 1, r, N1.Value);
    winding(Pin(2), Pin(3), r + 2, r, N2.Value);
  } else if (IsType("W_T3")) {
    winding(Pin(0), Pin(1), r + 1, r, N1.Value);
    winding(Pin(2), Pin(4), r + 2, r, N2.Value);
    winding(Pin(4), Pin(3), r + 3, r, N2.Value);
  } else {
    const int32_t dots = customType != nullptr ? customType->leftDots : 0;
    const int core = r + WindingCount;
    for (int32_t k = 0; k < WindingCount && static_cast<size_t>(k) < CustomTurns.size(); ++k) {
      int a = Pin(static_cast<size_t>(2 * k)), b = Pin(static_cast<size_t>(2 * k + 1));
      if ((dots >> k) & 1) std::swap(a, b);
      winding(a, b, r + k, core, CustomTurns[static_cast<size_t>(k)].Value);
    }
  }
  return 0;
}

CParamTable CElemW::BindParams() {
  if (!IsCustom() || ModelId() != MODEL_W_TRANSFORMER) return CCmp::BindParams();
  CParamTable table;
  for (size_t k = 0; k < CustomTurns.size(); k++)
    table.emplace_back(PK_VALUE, CustomNames[k].c_str(), ParamTarget(&CustomTurns[k]));
  return table;
}

int32_t CElemW::GetExtraRows() {
  if (IsCustom() && ModelId() == MODEL_W_TRANSFORMER) return WindingCount + 1;
  return CCmp::GetExtraRows();
}

}  // namespace tz4
