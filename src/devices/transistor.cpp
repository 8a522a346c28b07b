#include "devices/transistor.h"

#include <cstring>
#include <limits>

#include "xml/xml_node.h"

namespace tz4 {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

const char* const kFetIcNames[] = {"Off", "R", "Plus", "Minus", nullptr};
const char* const kFetDIcNames[] = {"Off", "R", "Plus", "Minus", "Diode", nullptr};

// --- parameter tables ---

const ParamDef kBipolarLinearParams[] = {
    {PK_VALUE, "B", &BindMember<&CElemT::K>},
    {PK_VALUE, "f1", &BindMember<&CElemT::F1>},
    {PK_IC, "IC", &BindMember<&CElemT::ICText>},
    {},
};
const ParamDef kBipolarSwitchParams[] = {
    {PK_VALUE, "Vbe", &BindMember<&CElemT::Vbe>},
    {PK_ON_OFF, "IC", &BindMember<&CElemT::SwitchIc>},
    {},
};
const ParamDef kTransistorParams[] = {
    {PK_VALUE, "B", &BindMember<&CElemT::K>},
    {PK_VALUE, "f1", &BindMember<&CElemT::F1>},
    {PK_VALUE, "Vbe", &BindMember<&CElemT::Vbe>},
    {PK_VALUE, "Vsat", &BindMember<&CElemT::Vsat>},
    {PK_IC, "IC", &BindMember<&CElemT::ICText>},
    {PK_ON_OFF, "ICbe", &BindMember<&CElemT::IcBe>},
    {PK_ON_OFF, "ICbc", &BindMember<&CElemT::IcBc>},
    {},
};
const ParamDef kFetLinearParams[] = {
    {PK_VALUE, "S", &BindMember<&CElemT::K>},
    {PK_VALUE, "f1", &BindMember<&CElemT::F1>},
    {PK_IC, "IC", &BindMember<&CElemT::ICText>},
    {},
};
const ParamDef kFetSwitchParams[] = {
    {PK_VALUE, "Vth", &BindMember<&CElemT::Vbe>},
    {PK_ON_OFF, "IC", &BindMember<&CElemT::SwitchIc>},
    {},
};
const ParamDef kFetParams[] = {
    {PK_VALUE, "S", &BindMember<&CElemT::K>},
    {PK_VALUE, "Vth", &BindMember<&CElemT::Vbe>},
    {PK_VALUE, "Rdson", &BindMember<&CElemT::Rdson>},
    {PK_ENUM, "IC", &BindMember<&CElemT::FetIc>},
    {},
};
const ParamDef kFetDParams[] = {
    {PK_VALUE, "S", &BindMember<&CElemT::K>},         {PK_VALUE, "Vth", &BindMember<&CElemT::Vbe>},
    {PK_VALUE, "Rdson", &BindMember<&CElemT::Rdson>}, {PK_VALUE, "Vd", &BindMember<&CElemT::Vd>},
    {PK_ENUM, "IC", &BindMember<&CElemT::FetDIc>},    {},
};

// --- model tables: name, id, params, editHint, extraRows, traceMask ---

const ModelInfo kBipolarModels[] = {
    {.name = "Linear",
     .id = MODEL_T_LINEAR,
     .params = kBipolarLinearParams,
     .extraRows = 2,
     .traceMask = TRACE_V | TRACE_I | TRACE_P},
    {.name = "Switch",
     .id = MODEL_T_SWITCH,
     .params = kBipolarSwitchParams,
     .extraRows = 2,
     .traceMask = TRACE_V | TRACE_I | TRACE_P},
    {.name = "Transistor",
     .id = MODEL_T_TRANSISTOR,
     .params = kTransistorParams,
     .extraRows = 3,
     .traceMask = TRACE_V | TRACE_I | TRACE_P},
    {.name = "SubCir", .id = MODEL_SUBCIR, .traceMask = TRACE_V | TRACE_P, .external = 1},
    {},
};
const ModelInfo kFetModels[] = {
    {.name = "Linear",
     .id = MODEL_T_LINEAR,
     .params = kFetLinearParams,
     .extraRows = 1,
     .traceMask = TRACE_V | TRACE_I | TRACE_P},
    {.name = "Switch",
     .id = MODEL_T_SWITCH,
     .params = kFetSwitchParams,
     .extraRows = 1,
     .traceMask = TRACE_V | TRACE_I | TRACE_P},
    {.name = "FET",
     .id = MODEL_T_FET,
     .params = kFetParams,
     .extraRows = 1,
     .traceMask = TRACE_V | TRACE_I | TRACE_P},
    {.name = "FET-D",
     .id = MODEL_T_FETD,
     .params = kFetDParams,
     .extraRows = 1,
     .traceMask = TRACE_V | TRACE_I | TRACE_P},
    {.name = "SubCir", .id = MODEL_SUBCIR, .traceMask = TRACE_V | TRACE_P, .external = 1},
    {},
};

const char* OnOff(int32_t flag) { return flag != 0 ? "on" : "off"; }

const char* EnumName(const CEnumValue& value) {
  if (value.Names == nullptr || value.Index < 0) return "";
  for (int32_t i = 0; value.Names[i] != nullptr; i++)
    if (i == value.Index) return value.Names[i];
  return "";
}

}  // namespace

const ElemType kTypeT_TNPN = {.tag = "T_TNPN",
                              .pinCount = 3,
                              .factory = &MakeCmp<CElemT>,
                              .models = kBipolarModels,
                              .description = "NPN transistor"};
const ElemType kTypeT_TPNP = {.tag = "T_TPNP",
                              .pinCount = 3,
                              .factory = &MakeCmp<CElemT>,
                              .models = kBipolarModels,
                              .description = "PNP transistor"};
const ElemType kTypeT_NFET = {.tag = "T_NFET",
                              .pinCount = 3,
                              .factory = &MakeCmp<CElemT>,
                              .models = kFetModels,
                              .description = "N-FET"};
const ElemType kTypeT_PFET = {.tag = "T_PFET",
                              .pinCount = 3,
                              .factory = &MakeCmp<CElemT>,
                              .models = kFetModels,
                              .description = "P-FET"};

CElemT::CElemT(const ElemType& elemType)
    : CCmp(elemType),
      K(1.0),
      F1(kInfinity),
      Vbe(0.7),
      Vsat(0.0),
      Rdson(1.0),
      Vd(0.7),
      FetIc{0, kFetIcNames},
      FetDIc{0, kFetDIcNames} {
  if (!IsBipolar()) Vbe.Value = 0.0;
}

bool CElemT::IsBipolar() const { return IsTypeIn({"T_TNPN", "T_TPNP"}); }

bool CElemT::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  archive.ArchiveValue("k", K);
  archive.ArchiveValue("f1", F1);
  archive.ArchiveValue("vbe", Vbe);
  archive.ArchiveEncodedString("ic", ICText);
  archive.ArchiveInt("s_ic", SwitchIc);
  if (IsBipolar()) {
    archive.ArchiveValue("vsat", Vsat);
    archive.ArchiveInt("be_ic", IcBe);
    archive.ArchiveInt("bc_ic", IcBc);
  } else {
    archive.ArchiveValue("rdson", Rdson);
    archive.ArchiveValue("vd", Vd);
    archive.ArchiveInt("fet_ic", FetIc.Index);
    archive.ArchiveInt("fetd_ic", FetDIc.Index);
  }
  return true;
}

std::string& CElemT::GetICText(std::string& out) {
  out.clear();
  const std::string n = GetFullName();
  auto icText = [&]() { return ICText.empty() ? std::string("\"\"") : ICText; };
  switch (ModelId()) {
    case MODEL_T_SWITCH:
      out = n + ".IC=" + OnOff(SwitchState == 1);
      break;
    case MODEL_T_LINEAR:
      out = n + ".IC=" + icText();
      break;
    case MODEL_T_TRANSISTOR:
      out = n + ".IC=" + icText() + ";" + n + ".ICBE=" + OnOff(IcBe) + ";" + n +
            ".ICBC=" + OnOff(IcBc);
      break;
    case MODEL_T_FET:
      out = n + ".IC=" + EnumName(FetIc);
      break;
    case MODEL_T_FETD:
      out = n + ".IC=" + EnumName(FetDIc);
      break;
    default:
      break;
  }
  return out;
}

bool CElemT::CheckParams() { return ReportNotSimulated(this); }

// Traces run between emitter (source) and collector (drain) with the first
// extra row. Currents and powers that the branch rows alone do not give are
// refused here and left to GetTraceValue.
bool CElemT::GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) {
  nodeA = pinCount > 1 ? pins[1] : 0;
  nodeB = pinCount > 2 ? pins[2] : 0;
  row = firstRow;
  value = 0.0;
  const int32_t model = ModelId();
  if (model == MODEL_SUBCIR) return kind == 0 || kind == 6;
  if (IsBipolar()) {
    if ((model == MODEL_T_SWITCH || model == MODEL_T_LINEAR) && kind == 2) return false;
    if (model == MODEL_T_TRANSISTOR && (kind == 1 || kind == 2 || kind == 7)) return false;
  }
  return true;
}

}  // namespace tz4
