#include "devices/delay_line.h"

#include <limits>
#include <new>

#include "xml/xml_node.h"

namespace tz4 {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Bit 4 of a trace mask marks an output that delivers power, as a source does.
constexpr int32_t kOutputMask = TRACE_V | TRACE_I | TRACE_P | 16;
constexpr int32_t kSubCirMask = TRACE_V | TRACE_P;

// --- parameter tables ---

const ParamDef kDelayParams[] = {
    {PK_VALUE, "t0", &BindMember<&CElemDelay::T0>},
    {PK_IC, "IC", &BindMember<&CElemDelay::IcText>},
    {},
};
const ParamDef kLineParams[] = {
    {PK_VALUE, "t0", &BindMember<&CElemLine::T0>},
    {PK_VALUE, "z0", &BindMember<&CElemLine::Z0>},
    {PK_IC, "VIC", &BindMember<&CElemLine::VIC>},
    {PK_IC, "IIC", &BindMember<&CElemLine::IIC>},
    {},
};
const ParamDef kLossyParams[] = {
    {PK_VALUE, "t0", &BindMember<&CElemLine::T0>},
    {PK_VALUE, "z0", &BindMember<&CElemLine::Z0>},
    {PK_VALUE, "r", &BindMember<&CElemLine::R>},
    {PK_VALUE, "G", &BindMember<&CElemLine::G>},
    {PK_VALUE, "fr", &BindMember<&CElemLine::Fr>},
    {PK_VALUE, "fG", &BindMember<&CElemLine::Fg>},
    {PK_IC, "VIC", &BindMember<&CElemLine::VIC>},
    {PK_IC, "IIC", &BindMember<&CElemLine::IIC>},
    {},
};

// --- model tables: name, id, params, editHint, extraRows, traceMask ---

const ModelInfo kDelayModels[] = {
    {.name = "Delay",
     .id = MODEL_X_DELAY,
     .params = kDelayParams,
     .extraRows = 1,
     .traceMask = kOutputMask},
    {.name = "SubCir", .id = MODEL_SUBCIR, .traceMask = kSubCirMask, .external = 1},
    {},
};
// A line's rows hold waves in a time step, so only its port voltage is a
// meaningful trace.
const ModelInfo kLineModels[] = {
    {.name = "Line",
     .id = MODEL_X_LINE,
     .params = kLineParams,
     .extraRows = 2,
     .traceMask = TRACE_V},
    {.name = "Lossy",
     .id = MODEL_X_LOSSY,
     .params = kLossyParams,
     .extraRows = 2,
     .traceMask = TRACE_V},
    {},
};

}  // namespace

const ElemType kTypeX_Delay = {.tag = "X_Delay",
                               .pinCount = 2,
                               .factory = &MakeCmp<CElemDelay>,
                               .models = kDelayModels,
                               .description = "Delay"};
const ElemType kTypeX_Line = {.tag = "X_Line",
                              .pinCount = 4,
                              .factory = &MakeCmp<CElemLine>,
                              .models = kLineModels,
                              .description = "Transmission line"};

// ---------------------------------------------------------------- CDelay

const CDelay::Record& CDelay::At(int32_t index) const {
  return Blocks[static_cast<size_t>(index / kBlockRecords)][index % kBlockRecords];
}

bool CDelay::Append(double time, double a, double b) {
  if (Count % kBlockRecords == 0) {
    // Every block is full: take the spare or a new one.
    try {
      Block block = std::move(Spare);
      if (!block) block.reset(new (std::nothrow) Record[kBlockRecords]);
      if (!block) return false;
      Blocks.push_back(std::move(block));
    } catch (const std::bad_alloc&) {
      return false;
    }
  }
  Record& record = Blocks.back()[Count % kBlockRecords];
  record = Record{time, a, b};
  Count++;
  return true;
}

void CDelay::DropFirstBlock() {
  if (!Spare) Spare = std::move(Blocks.front());
  Blocks.erase(Blocks.begin());
  Count -= kBlockRecords;
  ReadIndex -= kBlockRecords;
}

void CDelay::Read(double time, double& a, double& b) {
  if (Count <= 0) {
    a = 0.0;
    b = 0.0;
    return;
  }
  a = At(ReadIndex).a;
  b = At(ReadIndex).b;
  while (ReadIndex + 1 < Count) {
    const Record& present = At(ReadIndex);
    if (present.time >= time) return;
    const Record& next = At(ReadIndex + 1);
    if (next.time > time) {
      const double f = (time - present.time) / (next.time - present.time);
      a = present.a + (next.a - present.a) * f;
      b = present.b + (next.b - present.b) * f;
      return;
    }
    ReadIndex++;
    a = next.a;
    b = next.b;
    if (ReadIndex >= kBlockRecords) DropFirstBlock();
  }
}

void CDelay::Clear() {
  if (!Spare && !Blocks.empty()) Spare = std::move(Blocks.front());
  Blocks.clear();
  Count = 0;
  ReadIndex = 0;
}

// ------------------------------------------------------------ CElemDelay

CElemDelay::CElemDelay(const ElemType& elemType) : CCmp(elemType) {}

bool CElemDelay::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  archive.ArchiveValue("t", T0);
  archive.ArchiveEncodedString("ic", IcText);
  return true;
}

std::string& CElemDelay::GetICText(std::string& out) {
  out.clear();
  if (ModelId() != MODEL_X_DELAY) return out;
  out = GetFullName() + ".IC=" + (IcText.empty() ? std::string("\"\"") : IcText);
  return out;
}


// The output drives its node from ground through the extra row.
bool CElemDelay::GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) {
  nodeA = pins.size() > 1 ? 0 : -1;
  nodeB = pins.size() > 1 ? pins[1] : -1;
  row = firstRow;
  value = 0.0;
  if (ModelId() == MODEL_SUBCIR) return kind == 0 || kind == 6;
  return true;
}

// ------------------------------------------------------------- CElemLine

CElemLine::CElemLine(const ElemType& elemType) : CCmp(elemType) {
  T0.Value = 1e-06;
  Z0.Value = 50.0;
  Fr.Value = 1.0;
  Fg.Value = kInfinity;
}

bool CElemLine::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  archive.ArchiveValue("t", T0);
  archive.ArchiveValue("z", Z0);
  archive.ArchiveValue("r", R);
  archive.ArchiveValue("g", G);
  archive.ArchiveValue("rf", Fr);
  archive.ArchiveValue("gf", Fg);
  archive.ArchiveEncodedString("vic", VIC);
  archive.ArchiveEncodedString("iic", IIC);
  return true;
}


}  // namespace tz4
