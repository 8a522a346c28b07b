// The component base: identity, pins, model lookup, parameter binding and the
// common part of a component's file element.
#include "components/cmp.h"

#include "components/subcir.h"

#include <algorithm>
#include <cstdio>
#include <cmath>
#include <cstring>
#include <initializer_list>
#include <iterator>

#include "base/last_error.h"
#include "xml/xml_node.h"
#include "expr/formula.h"
#include "expr/text.h"

namespace tz4 {

// ------------------------------------------------------------ CCustomElemType

CCustomElemType::CCustomElemType(const ElemType& base) : elemType(base) {}

namespace {

bool TagIn(const ElemType& type, std::initializer_list<const char*> tags) {
  if (type.tag == nullptr) return false;
  for (const char* tag : tags)
    if (std::strcmp(type.tag, tag) == 0) return true;
  return false;
}

// A count or position that is written only when it is not 0, and read with
// its present value as the default.
void ArchiveNonZero(CXmlNode& archive, const std::string& attrName, int32_t& value) {
  if (archive.storing) {
    if (value != 0) archive.AddIntAttribute(attrName, value);
  } else {
    value = archive.GetIntAttribute(attrName, value);
  }
}

// One name list: on store a child `listName` with one child `itemName` per
// comma-separated name in its attribute "name"; on load the names of those
// children joined by commas (none when the list is absent).
void ArchiveNameList(CXmlNode& archive, const char* listName, const char* itemName, std::string& names) {
  if (archive.storing) {
    CXmlNode* list = archive.AddChild(listName);
    if (names.empty()) return;
    size_t start = 0;
    for (;;) {
      const size_t comma = names.find(',', start);
      list->AddChild(itemName)->AddAttribute("name", names.substr(start, comma - start));
      if (comma == std::string::npos) break;
      start = comma + 1;
    }
    return;
  }
  names.clear();
  CXmlNode* list = archive.FindChild(listName);
  if (list == nullptr) return;
  for (int i = 0; CXmlNode* item = list->FindChild("", i); i = list->searchIndex + 1) {
    if (!names.empty() || i > 0) names += ',';
    names += item->GetAttribute("name", "");
  }
}

}  // namespace

bool CCustomElemType::HasNameLists() const { return TagIn(elemType, {"X_C", "X_TZ4", "Y_FUNCTION", "F_CUSTOM"}); }

bool CCustomElemType::HasDots() const { return TagIn(elemType, {"L_CUSTOM", "W_CUSTOM"}); }

void CCustomElemType::Serialize(CXmlNode& archive) {
  archive.ArchiveInt("w", width);
  archive.ArchiveInt("h", height);
  if (!archive.storing) {
    // Counts and positions that the element leaves out are 0, since 0 is
    // what a store leaves out.
    leftCount = bottom = rightCount = top = 0;
    std::fill(std::begin(left), std::end(left), 0);
    std::fill(std::begin(right), std::end(right), 0);
  }
  char attrName[8];
  ArchiveNonZero(archive, "l", leftCount);
  for (int k = 0; k < 7; k++) {
    std::snprintf(attrName, sizeof attrName, "l%d", k + 1);
    ArchiveNonZero(archive, attrName, left[k]);
  }
  archive.ArchiveInt("b", bottom);
  ArchiveNonZero(archive, "r", rightCount);
  for (int k = 0; k < 7; k++) {
    std::snprintf(attrName, sizeof attrName, "r%d", k + 1);
    ArchiveNonZero(archive, attrName, right[k]);
  }
  archive.ArchiveInt("t", top);
  if (HasDots()) {
    archive.ArchiveInt("ldot", leftDots);
    archive.ArchiveInt("rdot", rightDots);
  }
  if (HasNameLists()) {
    ArchiveNameList(archive, "Ins", "In", inNames);
    ArchiveNameList(archive, "Outs", "Out", outNames);
    ArchiveNameList(archive, "Vars", "Var", varNames);
  }
  archive.ArchiveBool("d", flag);
  // The older form of the names is not read, only kept for the host.
  if (archive.storing) {
    if (!olderNames.empty()) archive.AddAttribute("n", olderNames);
  } else {
    olderNames = archive.GetAttribute("n", "");
  }
}

// ------------------------------------------------------------------- CCmp

CCmp::CCmp(const ElemType& elemType) : type(&elemType), models(elemType.models) {
  SetPinCount(static_cast<int>(elemType.pinCount));
}

CCmp::~CCmp() = default;

void CCmp::SetPinCount(int n) {
  if (n == pinCount) return;
  pins.assign(n > 0 ? static_cast<size_t>(n) : 0, 0);
  pinCount = n;
}

const ModelInfo* CCmp::GetModel() const {
  if (models == nullptr || modelIndex < 0) return nullptr;
  return &models[modelIndex];
}

int32_t CCmp::ModelId() const {
  const ModelInfo* model = GetModel();
  return model != nullptr ? model->id : 0;
}

bool CCmp::IsType(const char* tag) const {
  return type != nullptr && type->tag != nullptr && std::strcmp(type->tag, tag) == 0;
}

bool CCmp::IsTypeIn(std::initializer_list<const char*> tags) const {
  for (const char* tag : tags)
    if (IsType(tag)) return true;
  return false;
}

std::string CCmp::GetFullName() const { return path.empty() ? name : path + "." + name; }

CSubCir& CCmp::SubCircuit() {
  if (subCir == nullptr) subCir = std::make_shared<CSubCir>();
  if (subCir->pinCount != pinCount) subCir->SetPinCount(pinCount);
  return *subCir;
}

CParamTable CCmp::BindParams() {
  if (ModelId() == MODEL_SUBCIR) return SubCircuit().BindParams();
  CParamTable table;
  const ModelInfo* model = GetModel();
  if (model == nullptr || model->params == nullptr) return table;
  for (const ParamDef* def = model->params; def->Kind != PK_END && def->Name != nullptr; ++def)
    table.emplace_back(def->Kind, def->Name, def->Bind != nullptr ? def->Bind(*this) : ParamTarget());
  return table;
}

int CCmp::FindParamIndex(const std::string& paramName) {
  const CParamTable table = BindParams();
  if (table.empty()) return -1;
  if (paramName.empty()) return 0;
  for (size_t i = 0; i < table.size(); i++)
    if (SameText(table[i].Name, paramName)) return static_cast<int>(i);
  return -1;
}

bool CCmp::FindParam(const std::string& paramName, CParam& out) {
  const CParamTable table = BindParams();
  if (table.empty()) return false;
  if (paramName.empty()) {
    out = table[0];
    return true;
  }
  for (const CParam& param : table) {
    if (SameText(param.Name, paramName)) {
      out = param;
      return true;
    }
  }
  return false;
}

int32_t CCmp::GetExtraRows() {
  const ModelInfo* model = GetModel();
  return model != nullptr ? model->extraRows : 0;
}

bool CCmp::GetTraceInfo(int /*kind*/, int& nodeA, int& nodeB, int& row, double& value) {
  nodeA = !pins.empty() ? pins[0] : -1;
  nodeB = pins.size() > 1 ? pins[1] : -1;
  row = firstRow;
  value = 0.0;
  return true;
}

bool CCmp::Serialize(CXmlNode& archive, bool customFlag) { return SerializeBase(archive, customFlag); }

CCustomElemType& CCmp::CreateCustomType() {
  auto shape = std::make_shared<CCustomElemType>(*type);
  shape->elemType.models = models;
  customType = std::move(shape);
  type = &customType->elemType;
  return *customType;
}

namespace {

// The "SubCir" child: read whenever the element has one; written for a
// subcircuit, or for any component whose subcircuit part was read or used.
void SerializeSubCircuit(CCmp& cmp, CXmlNode& archive, int32_t modelId) {
  if (!archive.storing) {
    if (archive.FindChild("SubCir") == nullptr) return;
  } else if (modelId != MODEL_SUBCIR && (cmp.subCir == nullptr || !cmp.subCir->modified)) {
    return;
  }
  CSubCir& sub = cmp.SubCircuit();
  sub.Serialize(archive);
}

// The "Custom" child: the component's shape when its class has one, else the
// element as it was read.
void SerializeCustom(CCmp& cmp, CXmlNode& archive) {
  if (archive.storing) {
    if (cmp.customType != nullptr) {
      cmp.customType->Serialize(*archive.AddChild("Custom"));
    } else if (!cmp.keptCustomXml.empty()) {
      CXmlNode* child = archive.AddChild("");
      if (child->ParseElement(cmp.keptCustomXml, 0) == std::string::npos)
        archive.DeleteChild(archive.GetChildCount() - 1);
    }
    return;
  }
  CXmlNode* child = archive.FindChild("Custom");
  if (child == nullptr) return;
  cmp.LoadCustom();
  if (cmp.customType == nullptr) {
    cmp.keptCustomXml = child->WriteInline();
    return;
  }
  cmp.keptCustomXml.clear();
  cmp.customType->Serialize(*child);
  cmp.StoreCustom();
}

// The number of consecutive "node%d" attributes from "node0" on.
int CountNodeAttributes(const CXmlNode& archive) {
  int count = 0;
  char attrName[32];
  for (;;) {
    std::snprintf(attrName, sizeof attrName, "node%d", count);
    if (!archive.HasAttribute(attrName)) return count;
    count++;
  }
}

void SerializeAttachment(CXmlNode& archive, bool subcircuit, std::string& attachment) {
  if (archive.storing) {
    if (attachment.empty()) return;
    CXmlNode* child = archive.AddChild("Attachment");
    if (!subcircuit) {
      child->SetEncodedText(attachment);
      return;
    }
    // The text is a whole document: parse it back into a nameless child.
    CXmlNode* inner = child->AddChild("");
    if (inner->ParseElement(attachment, 0) == std::string::npos) child->DeleteChild(0);
    return;
  }
  CXmlNode* child = archive.FindChild("Attachment");
  if (child == nullptr) return;
  if (!subcircuit) {
    attachment = child->GetEncodedText();
    return;
  }
  CXmlNode* inner = child->GetChild(0);
  attachment = inner != nullptr ? inner->WriteInline() : std::string();
}

}  // namespace

bool CCmp::SerializeBase(CXmlNode& archive, bool customFlag) {
  const bool storing = archive.storing;
  if (!customFlag) {
    if (storing && type != nullptr && type->tag != nullptr) archive.AddAttribute("type", type->tag);
    // A type with pins per instance has the pins that its element lists, so
    // that none is lost; its shape is read with the pin count known.
    if (!storing && type != nullptr && type->pinCount == 0) SetPinCount(CountNodeAttributes(archive));
    SerializeCustom(*this, archive);
    archive.ArchiveInt("id", id);
    archive.ArchiveEncodedString("name", name);
    archive.ArchiveEncodedString("file_name", fileName);
    archive.ArchiveInt("view", view);
    if (!storing || !group.empty()) archive.ArchiveEncodedString("group", group);
    char attrName[32];
    for (size_t i = 0; i < pins.size(); i++) {
      std::snprintf(attrName, sizeof attrName, "node%zu", i);
      int node = pins[i];
      archive.ArchiveInt(attrName, node);
      pins[i] = node;
    }
  }

  if (storing) {
    const ModelInfo* model = GetModel();
    archive.AddEncodedAttribute("model", model != nullptr && model->name != nullptr ? model->name : "");
  } else {
    const ModelInfo* current = GetModel();
    std::string text = archive.GetEncodedAttribute(
        "model", current != nullptr && current->name != nullptr ? current->name : "");
    if (text == "Bus") text = "Linear";
    modelIndex = -1;
    if (models != nullptr) {
      for (int i = 0; models[i].name != nullptr; i++) {
        if (text == models[i].name) {
          modelIndex = i;
          break;
        }
      }
    }
    if (modelIndex < 0) {
      AppendError("Model '" + text + "' not found for " + name);
      return false;
    }
  }

  const int32_t modelId = ModelId();
  SerializeSubCircuit(*this, archive, modelId);

  if (!storing || modelId == MODEL_TABLE || pwl.Changed) {
    archive.ArchiveString("pwl", pwl.Text);
    archive.ArchiveEncodedString("pwlf", pwl.FormulaText);
    archive.ArchiveInt("pwlm", pwl.Mode);
    if (!storing) pwl.Text = RewriteUnmirroredTable(pwl.Text);
  }

  SerializeAttachment(archive, modelId == MODEL_SUBCIR, attachment);
  return true;
}

bool ComponentError(const CCmp* component, const std::string& text) {
  if (component == nullptr) {
    AppendError("pcmp = NULL");
    return false;
  }
  AppendError(component->GetFullName() + " : " + text + "; ");
  return false;
}

bool CheckValid(CCmp* component, const CFormula& value, const std::string& name) {
  return !value.Invalid || ComponentError(component, name + " : formula error");
}

bool CheckFinite(CCmp* component, const CFormula& value, const std::string& name) {
  if (!CheckValid(component, value, name)) return false;
  return !std::isinf(value.Value) || ComponentError(component, name + " = infinite");
}

bool CheckNonNegative(CCmp* component, const CFormula& value, const std::string& name) {
  if (!CheckFinite(component, value, name)) return false;
  return !(value.Value < 0) || ComponentError(component, name + " < 0");
}

bool ReportNotSimulated(const CCmp* component) {
  // A component in its subcircuit model runs as its contents.
  if (component != nullptr && component->ModelId() == MODEL_SUBCIR) return true;
  const char* tag = component != nullptr && component->type != nullptr ? component->type->tag : nullptr;
  return ComponentError(component, std::string("type ") + (tag != nullptr ? tag : "") + " cannot be simulated yet");
}

}  // namespace tz4
