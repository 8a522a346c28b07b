#include "components/subcir.h"

#include "components/cmp.h"
#include "components/cmps.h"
#include "components/elem_type.h"
#include "expr/formula.h"
#include "expr/lists.h"
#include "expr/text.h"
#include "xml/xml_node.h"

namespace tz4 {

namespace {

// A file named without a folder is looked for in `folder`; one without an
// extension gets ".tz4".
std::string FileName(const std::string& file, const std::string& folder) {
  std::string name = file;
  if (name.find('/') == std::string::npos && name.find('\\') == std::string::npos)
    name = folder + name;
  const size_t slash = name.find_last_of("/\\");
  const size_t dot = name.find_last_of('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) name += ".tz4";
  return name;
}

std::string StoreCollection(CCmps& cmps, const CElemSet& types) {
  CXmlNode root("Cmps");
  root.storing = true;
  cmps.Serialize(&root, types);
  return root.WriteInline();
}

}  // namespace

CSubCir::CSubCir() = default;
CSubCir::~CSubCir() = default;

void CSubCir::SetPinCount(int count) {
  Clear();
  if (count == pinCount) return;
  pinCount = count;
  labels.resize(static_cast<size_t>(count > 0 ? count : 0));
}

void CSubCir::Clear() {
  cmps.reset();
  snapshot.clear();
  loadedFile.clear();
}

void CSubCir::Serialize(CXmlNode& element) {
  CXmlNode* child = element.storing ? element.AddChild("SubCir") : element.FindChild("SubCir");
  if (child == nullptr) return;
  modified = true;
  // The file format keeps these texts as they stand, not percent-encoded.
  child->ArchiveString("file", file);
  for (size_t k = 0; k < labels.size(); ++k)
    child->ArchiveString("label" + std::to_string(k + 1), labels[k]);
  child->ArchiveString("cmd", cmd);
  child->ArchiveString("ic", ic);
}

CParamTable CSubCir::BindParams() {
  CParamTable table;
  table.emplace_back(PK_TEXT, "File", ParamTarget(&file));
  static const char* const kPinNames[] = {"Pin1",  "Pin2",  "Pin3",  "Pin4",  "Pin5",  "Pin6",
                                          "Pin7",  "Pin8",  "Pin9",  "Pin10", "Pin11", "Pin12",
                                          "Pin13", "Pin14", "Pin15", "Pin16"};
  for (size_t k = 0; k < labels.size() && k < std::size(kPinNames); ++k)
    table.emplace_back(PK_TEXT, kPinNames[k], ParamTarget(&labels[k]));
  return table;
}

bool CSubCir::Load(const std::string& name, CCmp& owner, const CElemSet& types) {
  auto root = std::make_unique<CXmlNode>("TZ4");
  CXmlNode* list = nullptr;
  if (!owner.attachment.empty()) {
    if (root->LoadFromText(owner.attachment) != 0) return false;
  } else if (root->LoadFromFile(name) != 0) {
    return false;
  }
  CXmlNode* doc = root->FindChild("Doc");
  list = doc != nullptr ? doc->FindChild("Cmps") : nullptr;
  if (list == nullptr) return false;
  list->storing = false;
  cmps = std::make_unique<CCmps>();
  cmps->Serialize(list, types);
  if (owner.owner != nullptr) cmps->document = owner.owner->document;
  snapshot = StoreCollection(*cmps, types);
  return true;
}

void CSubCir::Restore() {
  CXmlNode root("Cmps");
  if (root.LoadFromText(snapshot) != 0) return;
  for (int i = 0; i < root.GetChildCount() && i < cmps->Count(); ++i) {
    CXmlNode* child = root.GetChild(i);
    child->storing = false;
    CCmp& inner = *(*cmps)[i];
    // A component a host feeds keeps the model and the value it was given.
    int modelIndex = 0;
    CFormula* input = inner.hostInput ? inner.HostInput(modelIndex) : nullptr;
    const double value = input != nullptr ? input->Value : 0.0;
    inner.Serialize(*child, false);
    if (input != nullptr) {
      inner.modelIndex = modelIndex;
      input->Text.clear();
      input->Invalid = false;
      input->Value = value;
    }
  }
}

bool CSubCir::ApplyCommands(CCmp& owner) {
  const std::string commands = ic.empty() ? cmd : ic + ";" + cmd;
  TStringList fields;
  fields.SetText(commands, ';');
  for (int i = 0; i < fields.Count(); ++i) {
    const std::string& field = fields[i];
    if (TrimSpaces(field).empty()) break;  // an empty field ends the list
    const size_t equals = field.find('=');
    if (equals == std::string::npos) continue;
    std::string result;
    bool ok = true;
    cmps->Assign(20, TrimSpaces(field.substr(0, equals)), TrimSpaces(field.substr(equals + 1)),
                 result, ok);
    if (!ok) return ComponentError(&owner, result);
  }
  return true;
}

bool CSubCir::Open(CCmp& owner, const std::string& folder, const CElemSet& types, bool check) {
  if (cmps != nullptr && file == loadedFile) {
    Restore();
  } else {
    Clear();
    if (owner.attachment.empty() && file.empty()) return ComponentError(&owner, "No file name");
    // Beside the circuit that names it, then beside the document.
    const std::string outer = owner.owner != nullptr ? owner.owner->folder : std::string();
    std::string name = FileName(file, outer.empty() ? folder : outer);
    if (!Load(name, owner, types)) {
      const std::string second = FileName(file, folder);
      if (second == name || !Load(second, owner, types))
        return ComponentError(&owner, "Can't open file \"" + name + "\"");
      name = second;
    }
    const size_t slash = name.find_last_of("/\\");
    cmps->folder = slash == std::string::npos ? std::string() : name.substr(0, slash + 1);
    loadedFile = file;
  }
  for (const auto& inner : cmps->list) inner->prevModelId = 0;
  modified = true;
  if (!ApplyCommands(owner)) return false;
  cmps->UpdateFormulas();
  for (const auto& inner : cmps->list) inner->path = owner.GetFullName();
  return !check || cmps->CheckParams();
}

std::string CSubCir::GetICText() const {
  std::string out;
  if (cmps == nullptr) return out;
  auto append = [&out](const std::string& item) {
    if (item.empty()) return;
    if (!out.empty()) out += ";";
    out += item;
  };
  for (const auto& inner : cmps->list) {
    if (inner->ModelId() == MODEL_SUBCIR && inner->subCir != nullptr) {
      TStringList items;
      items.SetText(inner->subCir->GetICText(), ';');
      for (int i = 0; i < items.Count(); ++i) append(inner->name + "." + items[i]);
      continue;
    }
    std::string text;
    inner->GetICText(text);
    // Texts name their component by its full name; inside a subcircuit the
    // name is taken from here on.
    const std::string prefix = inner->GetFullName();
    TStringList items;
    items.SetText(text, ';');
    for (int i = 0; i < items.Count(); ++i) {
      std::string item = items[i];
      if (item.compare(0, prefix.size(), prefix) == 0)
        item = inner->name + item.substr(prefix.size());
      append(item);
    }
  }
  return out;
}

}  // namespace tz4
