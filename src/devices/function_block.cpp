#include "devices/function_block.h"

#include <cstring>
#include <utility>

#include "expr/numtext.h"
#include "expr/text.h"
#include "xml/xml_node.h"

namespace tz4 {

namespace {

// Bit 4 of a trace mask marks an output that delivers power, as a source does.
constexpr int32_t kOutputMask = TRACE_V | TRACE_I | TRACE_P | 16;
constexpr int32_t kSubCirMask = TRACE_V | TRACE_P;

const char* const kFormatNames[] = {"Unsigned", "Signed", nullptr};

// --- parameter tables ---

const ParamDef kFunction1Params[] = {
    {PK_FORMULA_TEXT, "F(x)", &BindMember<&CElemF::Func>},
    {PK_FORMULA_TEXT, "F(s)", &BindMember<&CElemF::Fs>},
    {PK_VALUE, "IC", &BindMember<&CElemF::Ic>},
    {},
};
const ParamDef kFunction2Params[] = {
    {PK_FORMULA_TEXT, "F(x,y)", &BindMember<&CElemF::Func>},
    {PK_FORMULA_TEXT, "F(s)", &BindMember<&CElemF::Fs>},
    {PK_VALUE, "IC", &BindMember<&CElemF::Ic>},
    {},
};
const ParamDef kLogicFunctionParams[] = {
    {PK_FORMULA_TEXT, "F(b)", &BindMember<&CElemF::Func>},
    {PK_HIGH_LOW, "IC", &BindMember<&CElemF::LogicIc>},
    {},
};
const ParamDef kBusFunctionParams[] = {
    {PK_ENUM, "Format", &BindMember<&CElemF::Format>},
    {PK_VALUE, "IC", &BindMember<&CElemF::Ic>},
    {},
};
const ParamDef kBusLinearParams[] = {
    {PK_ENUM, "Format", &BindMember<&CElemF::Format>},
    {},
};
const ParamDef kPwr1Params[] = {
    {PK_VALUE, "power", &BindMember<&CElemF::Power>},
    {PK_VALUE, "K", &BindMember<&CElemF::K>},
    {PK_VALUE, "IC", &BindMember<&CElemF::Ic>},
    {},
};
const ParamDef kIntParams[] = {
    {PK_VALUE, "resolution", &BindMember<&CElemF::Resolution>},
    {PK_VALUE, "K", &BindMember<&CElemF::K>},
    {PK_VALUE, "IC", &BindMember<&CElemF::Ic>},
    {},
};
const ParamDef kLimParams[] = {
    {PK_VALUE, "Max", &BindMember<&CElemF::Max>},
    {PK_VALUE, "Min", &BindMember<&CElemF::Min>},
    {PK_VALUE, "IC", &BindMember<&CElemF::Ic>},
    {},
};
const ParamDef kTable1Params[] = {
    {PK_TABLE_1, "Table", &BindMember<&CElemF::Table>},
    {PK_VALUE, "IC", &BindMember<&CElemF::Ic>},
    {},
};
const ParamDef kTable2Params[] = {
    {PK_TEXT, "X", &BindMember<&CElemF::TableX>},
    {PK_TEXT, "Y", &BindMember<&CElemF::TableY>},
    {PK_TABLE_2, "Table", &BindMember<&CElemF::Table>},
    {PK_VALUE, "IC", &BindMember<&CElemF::Ic>},
    {},
};
const ParamDef kCompareParams[] = {
    {PK_VALUE, "IC", &BindMember<&CElemF::Ic>},
    {},
};
// Shared by every arithmetic model with a gain.
const ParamDef kGainParams[] = {
    {PK_VALUE, "K", &BindMember<&CElemF::K>},
    {PK_VALUE, "IC", &BindMember<&CElemF::Ic>},
    {},
};

// --- model tables: name, id, params, editHint, extraRows, traceMask ---

const ModelInfo kF1Models[] = {
    {.name = "Function",
     .id = MODEL_F_FUNCTION,
     .params = kFunction1Params,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {.name = "Pwr",
     .id = MODEL_F_PWR,
     .params = kPwr1Params,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {.name = "Abs",
     .id = MODEL_F_ABS,
     .params = kGainParams,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {.name = "Int",
     .id = MODEL_F_INT,
     .params = kIntParams,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {.name = "Lim",
     .id = MODEL_F_LIM,
     .params = kLimParams,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {.name = "Integral",
     .id = MODEL_F_INTEGRAL,
     .params = kGainParams,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {.name = "Table",
     .id = MODEL_F_TABLE,
     .params = kTable1Params,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {.name = "SubCir", .id = MODEL_SUBCIR, .traceMask = kSubCirMask, .external = 1},
    {},
};
const ModelInfo kF2Models[] = {
    {.name = "Function",
     .id = MODEL_F_FUNCTION,
     .params = kFunction2Params,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {.name = "Mul",
     .id = MODEL_F_MUL,
     .params = kGainParams,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {.name = "Div",
     .id = MODEL_F_DIV,
     .params = kGainParams,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {.name = "Sum",
     .id = MODEL_F_SUM,
     .params = kGainParams,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {.name = "Sub",
     .id = MODEL_F_SUB,
     .params = kGainParams,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {.name = "Max",
     .id = MODEL_F_MAX,
     .params = kGainParams,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {.name = "Min",
     .id = MODEL_F_MIN,
     .params = kGainParams,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {.name = "GT",
     .id = MODEL_F_GT,
     .params = kCompareParams,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {.name = "LT",
     .id = MODEL_F_LT,
     .params = kCompareParams,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {.name = "Pwr",
     .id = MODEL_F_PWR,
     .params = kGainParams,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {.name = "Mag",
     .id = MODEL_F_MAG,
     .params = kGainParams,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {.name = "Phase",
     .id = MODEL_F_PHASE,
     .params = kGainParams,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {.name = "Table",
     .id = MODEL_F_TABLE,
     .params = kTable2Params,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {.name = "SubCir", .id = MODEL_SUBCIR, .traceMask = kSubCirMask, .external = 1},
    {},
};
const ModelInfo kFCustomModels[] = {
    {.name = "Function",
     .id = MODEL_F_FUNCTION,
     .params = kFunction1Params,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {},
};
const ModelInfo kLogicFunctionModels[] = {
    {.name = "Function",
     .id = MODEL_F_FUNCTION,
     .params = kLogicFunctionParams,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {},
};
const ModelInfo kBusModels[] = {
    {.name = "Linear",
     .id = MODEL_F_LINEAR,
     .params = kBusLinearParams,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {.name = "Function",
     .id = MODEL_F_FUNCTION,
     .params = kBusFunctionParams,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {},
};

}  // namespace

const ElemType kTypeF_1 = {.tag = "F_1",
                           .pinCount = 2,
                           .factory = &MakeCmp<CElemF>,
                           .models = kF1Models,
                           .description = "Function"};
const ElemType kTypeF_2 = {.tag = "F_2",
                           .pinCount = 3,
                           .factory = &MakeCmp<CElemF>,
                           .models = kF2Models,
                           .description = "Function-2"};
const ElemType kTypeF_CUSTOM = {.tag = "F_CUSTOM",
                                .pinCount = 0,
                                .factory = &MakeCmp<CElemF>,
                                .models = kFCustomModels,
                                .description = "Custom function"};
const ElemType kTypeY_FUNCTION = {.tag = "Y_FUNCTION",
                                  .pinCount = 0,
                                  .factory = &MakeCmp<CElemF>,
                                  .models = kLogicFunctionModels,
                                  .description = "Logical function"};
const ElemType kTypeY_BUS = {.tag = "Y_BUS",
                             .pinCount = 0,
                             .factory = &MakeCmp<CElemF>,
                             .models = kBusModels,
                             .description = "Bus"};

CElemF::CElemF(const ElemType& elemType) : CCmp(elemType), Format{0, kFormatNames} {
  K.Value = 1.0;
  Resolution.Value = 1.0;
  Power.Value = 1.0;
  Min.Value = -10.0;
  Max.Value = 10.0;
  Table = IsType("F_1") ? "0,0" : "0";
  // Custom types take their input names from their shape; the fixed types
  // read x (and y).
  Variables.Add("t", VT_DOUBLE);
  if (IsType("F_1")) {
    Variables.Add("x", VT_DOUBLE);
  } else if (IsType("F_2")) {
    Variables.Add("x", VT_DOUBLE);
    Variables.Add("y", VT_DOUBLE);
  }
}

void CElemF::LoadCustom() {
  const bool function = IsType("F_CUSTOM");
  const bool logic = IsLogicFunction();
  if (!function && !logic && !IsBus()) return;
  CCustomElemType& shape = CreateCustomType();
  shape.width = 2;
  shape.height = 3;
  shape.leftCount = 7;
  if (function) {
    shape.inNames = "x1,x2,x3";
    Func = "x1";
  } else if (logic) {
    shape.inNames = "b1,b2,b3";
    Func = "b1";
  } else {
    shape.inNames = "2,1,0";  // the bits, most significant first
  }
}

void CElemF::StoreCustom() {
  if (customType == nullptr) return;
  Clocked = customType->flag ? 1 : 0;
  // The bus weighs its inputs by position; it reads no names.
  if (IsBus()) return;
  Variables.Clear();
  Variables.Add("t", VT_DOUBLE);
  TStringList names;
  names.SetCommaText(customType->inNames);
  for (int i = 0; i < names.Count(); i++) Variables.Add(TrimSpaces(names[i]), VT_DOUBLE);
}

bool CElemF::IsLogicFunction() const { return IsType("Y_FUNCTION"); }

bool CElemF::IsBus() const { return IsType("Y_BUS"); }

int CElemF::OutputPin() const {
  const int pin = static_cast<int>(pins.size()) - 1 - (Clocked != 0 ? 1 : 0);
  return pin >= 0 ? pin : -1;
}

bool CElemF::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  if (IsBus()) archive.ArchiveInt("format", Format.Index);
  if (!archive.storing && !archive.HasAttribute("func") && archive.HasAttribute("f")) {
    // Older files name the formula "f" and number the two first inputs the
    // other way round.
    Func = archive.GetEncodedAttribute("f", Func);
    if (pins.size() >= 3) std::swap(pins[0], pins[1]);
  } else {
    archive.ArchiveEncodedString("func", Func);
  }
  archive.ArchiveEncodedString("fs", Fs);
  if (!IsLogicFunction()) archive.ArchiveValue("func_ic", Ic);
  archive.ArchiveValue("k", K);
  archive.ArchiveValue("res", Resolution);
  archive.ArchiveValue("pow", Power);
  archive.ArchiveValue("min", Min);
  archive.ArchiveValue("max", Max);
  archive.ArchiveEncodedString("table", Table);
  archive.ArchiveEncodedString("table_x", TableX);
  archive.ArchiveEncodedString("table_y", TableY);
  if (IsLogicFunction()) archive.ArchiveInt("func_ic", LogicIc);
  return true;
}

std::string& CElemF::GetICText(std::string& out) {
  out.clear();
  const int32_t model = ModelId();
  if (model == 0 || model == MODEL_SUBCIR || model == MODEL_F_LINEAR) return out;
  if (IsLogicFunction())
    out = GetFullName() + ".IC=" + (LogicIc != 0 ? "high" : "low");
  else
    out = GetFullName() + ".IC=" + FormatNumber(Ic.Value);
  return out;
}

// The output drives its node from ground through the extra row.
bool CElemF::GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) {
  const int out = OutputPin();
  nodeA = out >= 0 ? 0 : -1;
  nodeB = out >= 0 ? pins[static_cast<size_t>(out)] : -1;
  row = firstRow;
  value = 0.0;
  if (ModelId() == MODEL_SUBCIR) return kind == 0 || kind == 6;
  return true;
}

}  // namespace tz4
