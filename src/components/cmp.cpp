// The component base: identity, pins, model lookup, parameter binding and the
// common part of a component's file element.
#include "components/cmp.h"

#include <cstdio>

#include "api/last_error.h"
#include "doc/xml_node.h"
#include "expr/text.h"

namespace tz4 {

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

std::string CCmp::GetFullName() const { return path.empty() ? name : path + "." + name; }

CParamTable CCmp::BindParams() {
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

namespace {

// A child element kept as inline XML text, and written back from it.
void KeepChild(CXmlNode& archive, const std::string& childName, std::string& kept) {
  if (archive.storing) {
    if (kept.empty()) return;
    CXmlNode* child = archive.AddChild("");
    if (child->ParseElement(kept, 0) == std::string::npos) archive.DeleteChild(archive.GetChildCount() - 1);
    return;
  }
  CXmlNode* child = archive.FindChild(childName);
  if (child != nullptr) kept = child->WriteInline();
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
    KeepChild(archive, "Custom", keptCustomXml);
    archive.ArchiveInt("id", id);
    archive.ArchiveEncodedString("name", name);
    archive.ArchiveEncodedString("file_name", fileName);
    archive.ArchiveInt("view", view);
    if (!storing || !group.empty()) archive.ArchiveEncodedString("group", group);
    // A type whose pins come from its custom shape, while that shape is not
    // read, takes the pins that the element lists, so that none is lost.
    if (!storing && pinCount <= 0 && type != nullptr && type->pinCount == 0)
      SetPinCount(CountNodeAttributes(archive));
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
  KeepChild(archive, "SubCir", keptSubCirXml);

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

bool ReportNotSimulated(const CCmp* component) {
  const char* tag = component != nullptr && component->type != nullptr ? component->type->tag : nullptr;
  return ComponentError(component, std::string("type ") + (tag != nullptr ? tag : "") + " cannot be simulated yet");
}

}  // namespace tz4
