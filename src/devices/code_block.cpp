#include "devices/code_block.h"

#include <algorithm>

#include "xml/xml_node.h"

namespace tz4 {

namespace {

const ParamDef kCodeParams[] = {
    {PK_CODE, "Code", &BindMember<&CElemCode::Code>},
    {PK_TEXT, "IC", &BindMember<&CElemCode::IC>},
    {},
};
const ParamDef kFileParams[] = {
    {PK_CODE_FILE, "File", &BindMember<&CElemCode::FileName>},
    {PK_TEXT, "IC", &BindMember<&CElemCode::IC>},
    {},
};

// --- model tables: name, id, params, editHint, extraRows, traceMask ---
// The rows are one per output (GetExtraRows). The two first pins are no
// branch of the block, so it offers no V, I or P trace; its variables are
// read by name instead.
const ModelInfo kCodeModels[] = {
    {.name = "C", .id = MODEL_CODE_C, .params = kCodeParams},
    {.name = "File", .id = MODEL_CODE_FILE, .params = kFileParams, .external = 1},
    {},
};

}  // namespace

const ElemType kTypeX_C = {.tag = "X_C",
                           .pinCount = 0,
                           .factory = &MakeCmp<CElemCode>,
                           .models = kCodeModels,
                           .description = "C-code block"};

std::string IcTextFromFile(const std::string& stored) {
  std::string text = stored;
  std::replace(text.begin(), text.end(), ';', ',');
  return text;
}

std::string IcTextToFile(const std::string& working) {
  std::string text = working;
  std::replace(text.begin(), text.end(), ',', ';');
  return text;
}

CElemCode::CElemCode(const ElemType& elemType) : CCmp(elemType) {}

void CElemCode::LoadCustom() {
  CCustomElemType& shape = CreateCustomType();
  shape.inNames = "x1,x2,x3";
  shape.outNames = "y1,y2,y3";
}

void CElemCode::StoreCustom() { Clocked = customType != nullptr && customType->flag; }

bool CElemCode::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  archive.ArchiveEncodedString("c_code", Code);
  std::string ic = IcTextToFile(IC);
  archive.ArchiveEncodedString("ic", ic);
  if (!archive.storing) IC = IcTextFromFile(ic);
  archive.ArchiveEncodedString("file", FileName);
  return true;
}

std::string& CElemCode::GetICText(std::string& out) {
  out = GetFullName() + ".IC=" + (IC.empty() ? std::string("\"\"") : IC);
  return out;
}

bool CElemCode::CheckParams() { return ReportNotSimulated(this); }

}  // namespace tz4
