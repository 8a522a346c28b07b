#include "devices/dll_block.h"

#include <cstdio>

#include "devices/code_block.h"
#include "xml/xml_node.h"

namespace tz4 {

namespace {

const ParamDef kDllParams[] = {
    {PK_LIBRARY_FILE, "DLL", &BindMember<&CElemDll::Dll>},
    {PK_NAME, "Init", &BindMember<&CElemDll::Init>},
    {PK_NAME, "Main", &BindMember<&CElemDll::Main>},
    {PK_TEXT, "IC", &BindMember<&CElemDll::IC>},
    {},
};

// --- model table: name, id, params, editHint, extraRows, traceMask ---
// The rows are one per output (GetExtraRows); the block offers no V, I or P
// trace of its own.
const ModelInfo kDllModels[] = {
    {.name = "DLL", .id = MODEL_CODE_DLL, .params = kDllParams, .external = 1},
    {},
};

}  // namespace

const ElemType kTypeX_DLL = {.tag = "X_DLL",
                             .pinCount = 0,
                             .factory = &MakeCmp<CElemDll>,
                             .models = kDllModels,
                             .description = "DLL block"};

CElemDll::CElemDll(const ElemType& elemType) : CCmp(elemType) {}

CElemDll::~CElemDll() {
  if (!TempPath.empty()) std::remove(TempPath.c_str());
}

void CElemDll::LoadCustom() {
  CCustomElemType& shape = CreateCustomType();
  shape.inNames = "x1,x2,x3";
  shape.outNames = "y1,y2,y3";
}

void CElemDll::StoreCustom() { Clocked = customType != nullptr && customType->flag; }

bool CElemDll::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  archive.ArchiveEncodedString("dll", Dll);
  archive.ArchiveEncodedString("dll_init", Init);
  // The main entry's attribute is named "dll_code" in every circuit file.
  archive.ArchiveEncodedString("dll_code", Main);
  std::string ic = IcTextToFile(IC);
  archive.ArchiveEncodedString("ic", ic);
  if (!archive.storing) IC = IcTextFromFile(ic);
  return true;
}

bool CElemDll::CheckParams() { return ReportNotSimulated(this); }

}  // namespace tz4
