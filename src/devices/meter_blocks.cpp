#include "devices/meter_blocks.h"

#include <cstring>

#include "xml/xml_node.h"
#include "expr/numtext.h"

namespace tz4 {

namespace {

// Bit 5 of a trace mask marks a meter, which takes no part in the power sum
// of a subcircuit; bit 4 an output that delivers power, as a source does.
constexpr int32_t kMeterBit = 32;
constexpr int32_t kOutputMask = TRACE_V | TRACE_I | TRACE_P | 16;
constexpr int32_t kSubCirMask = TRACE_V | TRACE_P;

const ParamDef kCouplerParams[] = {
    {PK_VALUE, "z0", &BindMember<&CElemDC::Z0>},
    {PK_VALUE, "CF", &BindMember<&CElemDC::Cf>},
    {},
};
const ParamDef kSampleHoldParams[] = {
    {PK_VALUE, "IC", &BindMember<&CElemSH::Ic>},
    {},
};

// --- model tables: name, id, params, editHint, extraRows, traceMask ---

const ModelInfo kAmperemeterModels[] = {
    {"Amperemeter", MODEL_A_AMPEREMETER, nullptr, 0, 1, TRACE_V | TRACE_I | kMeterBit},
    {},
};
const ModelInfo kVoltmeterModels[] = {
    {"Voltmeter", MODEL_A_VOLTMETER, nullptr, 0, 0, TRACE_V | kMeterBit},
    {},
};
const ModelInfo kWattmeterModels[] = {
    {"Wattmeter", MODEL_A_WATTMETER, nullptr, 0, 1, TRACE_V | TRACE_I | TRACE_P | kMeterBit},
    {},
};
const ModelInfo kCouplerModels[] = {
    {"Coupler", MODEL_X_COUPLER, kCouplerParams, 0, 3, TRACE_V | TRACE_I | TRACE_P},
    {},
};
const ModelInfo kSampleHoldModels[] = {
    {"SH", MODEL_X_SH, kSampleHoldParams, 0, 1, kOutputMask},
    {"SubCir", MODEL_SUBCIR, nullptr, 0, 0, kSubCirMask, 0, 1},
    {},
};
// A block shows no trace itself; its power is that of its contents.
const ModelInfo kBlockModels[] = {
    {"SubCir", MODEL_SUBCIR, nullptr, 0, 0, TRACE_P, 0, 1},
    {},
};

}  // namespace

const ElemType kTypeA_A = {"A_A", 2, &MakeCmp<CElemA>, kAmperemeterModels, 0, "Amperemeter"};
const ElemType kTypeV_VM = {"V_VM", 2, &MakeCmp<CElemA>, kVoltmeterModels, 0, "Voltmeter"};
const ElemType kTypeW_WM = {"W_WM", 3, &MakeCmp<CElemA>, kWattmeterModels, 0, "Wattmeter"};
const ElemType kTypeX_DC = {"X_DC", 4, &MakeCmp<CElemDC>, kCouplerModels, 0, "Directional coupler"};
const ElemType kTypeX_SH = {"X_SH", 3, &MakeCmp<CElemSH>, kSampleHoldModels, 0, "Sample/hold"};
const ElemType kTypeX_B2 = {"X_B2", 2, &MakeCmp<CElemX>, kBlockModels, 0, "Block-2"};
const ElemType kTypeX_B3 = {"X_B3", 3, &MakeCmp<CElemX>, kBlockModels, 0, "Block-3"};
const ElemType kTypeX_B4 = {"X_B4", 4, &MakeCmp<CElemX>, kBlockModels, 0, "Block-4"};
const ElemType kTypeX_B6 = {"X_B6", 6, &MakeCmp<CElemX>, kBlockModels, 0, "Block-6"};
const ElemType kTypeX_B8 = {"X_B8", 8, &MakeCmp<CElemX>, kBlockModels, 0, "Block-8"};
const ElemType kTypeX_CUSTOM = {"X_CUSTOM", 0, &MakeCmp<CElemX>, kBlockModels, 0, "Custom block"};
const ElemType kTypeX_TZ4 = {"X_TZ4", 0, &MakeCmp<CElemX>, kBlockModels, 0, "TZ4 circuit"};

// ---------------------------------------------------------------- CElemA

CElemA::CElemA(const ElemType& elemType) : CCmp(elemType) {}

// A meter has only the attributes of the base.
bool CElemA::Serialize(CXmlNode& archive, bool customFlag) { return SerializeBase(archive, customFlag); }

bool CElemA::CheckParams() {
  // The voltmeter has no effect on the circuit: a trace reads the node
  // voltages. The other meters carry a current row.
  if (IsType("V_VM")) return true;
  return ReportNotSimulated(this);
}

bool CElemA::GetTraceInfo(int /*kind*/, int& nodeA, int& nodeB, int& row, double& value) {
  const int first = !pins.empty() ? pins[0] : -1;
  const int second = pins.size() > 1 ? pins[1] : -1;
  value = 0.0;
  if (IsType("A_A")) {
    nodeA = second >= 0 ? 0 : -1;
    nodeB = second;
    row = firstRow;
  } else if (IsType("V_VM")) {
    nodeA = first;
    nodeB = second;
    row = 0;
  } else {
    nodeA = first;
    nodeB = second;
    row = firstRow;
  }
  return true;
}

// --------------------------------------------------------------- CElemDC

CElemDC::CElemDC(const ElemType& elemType) : CCmp(elemType) { Z0.Value = 50.0; }

bool CElemDC::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  archive.ArchiveValue("z", Z0);
  archive.ArchiveValue("cf", Cf);
  return true;
}

bool CElemDC::CheckParams() { return ReportNotSimulated(this); }

// The output from ground, with the current of the main path.
bool CElemDC::GetTraceInfo(int /*kind*/, int& nodeA, int& nodeB, int& row, double& value) {
  nodeA = pins.size() > 1 ? 0 : -1;
  nodeB = pins.size() > 1 ? pins[1] : -1;
  row = firstRow;
  value = 0.0;
  return true;
}

// --------------------------------------------------------------- CElemSH

CElemSH::CElemSH(const ElemType& elemType) : CCmp(elemType) {}

bool CElemSH::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  archive.ArchiveValue("ic", Ic);
  return true;
}

std::string& CElemSH::GetICText(std::string& out) {
  out.clear();
  if (ModelId() != MODEL_X_SH) return out;
  out = GetFullName() + ".IC=" + FormatNumber(Ic.Value);
  return out;
}

bool CElemSH::CheckParams() {
  // A subcircuit is replaced by its contents; the device itself does nothing.
  if (ModelId() == MODEL_SUBCIR) return true;
  return ReportNotSimulated(this);
}

// The clock is a logic input.
int CElemSH::IsMatrixPin(int pin) { return pin == kClockPin && ModelId() == MODEL_X_SH ? 0 : 1; }

// The output drives its node from ground through the extra row.
bool CElemSH::GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) {
  nodeA = pins.size() > 1 ? 0 : -1;
  nodeB = pins.size() > 1 ? pins[1] : -1;
  row = firstRow;
  value = 0.0;
  if (ModelId() == MODEL_SUBCIR) return kind == 0 || kind == 6;
  return true;
}

// ---------------------------------------------------------------- CElemX

CElemX::CElemX(const ElemType& elemType) : CCmp(elemType) {}

// A block has only the attributes of the base; what it holds is in the
// "SubCir" part that the base archives.
bool CElemX::Serialize(CXmlNode& archive, bool customFlag) { return SerializeBase(archive, customFlag); }

void CElemX::LoadCustom() {
  const bool circuit = IsType("X_TZ4");
  if (!circuit && !IsType("X_CUSTOM")) return;
  CCustomElemType& shape = CreateCustomType();
  if (!circuit) return;
  shape.width = 2;
  shape.height = 3;
  shape.leftCount = 7;
  shape.rightCount = 7;
  shape.inNames = "x1,x2,x3";
  shape.outNames = "y1,y2,y3";
}

bool CElemX::GetTraceInfo(int /*kind*/, int& nodeA, int& nodeB, int& row, double& value) {
  nodeA = -1;
  nodeB = -1;
  row = 0;
  value = 0.0;
  return false;
}

}  // namespace tz4
