#include "devices/registry.h"
#include "expr/formula.h"
#include "doc/doc.h"

#include <cstdio>

#include "base/last_error.h"
#include "components/cmp.h"
#include "expr/numtext.h"
#include "expr/text.h"
#include "solver/calc.h"

namespace tz4 {

namespace {

// In the archive direction of `parent`: the existing child when loading
// (null if there is none), a new one when storing.
CXmlNode* ChildByDirection(CXmlNode& parent, const std::string& childName) {
  return parent.storing ? parent.AddChild(childName) : parent.FindChild(childName);
}

// An existing child with its children removed for rebuilding (its own
// attributes stay), or a new one.
CXmlNode* EmptiedChild(CXmlNode& parent, const std::string& childName) {
  CXmlNode* child = parent.FindChild(childName);
  if (child) {
    while (child->GetChildCount() > 0) child->DeleteChild(0);
    return child;
  }
  return parent.AddChild(childName);
}

// Puts the file's node numbers into the pins for as long as it lives, and
// the numbers that stood there before back when it ends, also on a throw.
class FileNodesInPins {
 public:
  explicit FileNodesInPins(CDoc& doc) : cmps_(doc.cmps), present_(doc.cmps.SaveNodes()) {
    if (doc.fileNodes.size() == present_.size()) cmps_.RestoreNodes(doc.fileNodes.data());
  }
  ~FileNodesInPins() { cmps_.RestoreNodes(present_.data()); }
  FileNodesInPins(const FileNodesInPins&) = delete;
  FileNodesInPins& operator=(const FileNodesInPins&) = delete;

 private:
  CCmps& cmps_;
  std::vector<int32_t> present_;
};

}  // namespace

void CDocSettings::SerializeCalc(CXmlNode& calc) {
  calc.ArchiveDouble("zero", zero);
  calc.ArchiveDouble("kmin", kmin);
  calc.ArchiveBool("nsr", nsr);
  calc.ArchiveBool("os", os);
  calc.ArchiveDouble("low", low);
  calc.ArchiveDouble("high", high);
  calc.ArchiveDouble("thr", thr);
  calc.ArchiveInt("timeout", timeout);
}

void CDocSettings::SerializeStep(CXmlNode& element) { element.ArchiveDouble("step", step); }

CDoc::CDoc() : calc(std::make_unique<CCalc>()) { cmps.document = &levels_; }

// Members go in reverse order of declaration: the number lists, the solver
// and the traces (both point into the collection), then the components.
// Ends any run first, so that every component drops its run state while the
// solver that points into them still exists.
CDoc::~CDoc() {
  try {
    Reset();
  } catch (...) {
  }
}

bool CDoc::Load(const std::string& path) {
  xml = std::make_unique<CXmlNode>("TZ4");
  if (xml->LoadFromFile(path) != 0) return false;
  fileName = path;
  directory = PathOfFile(path);

  if (CXmlNode* version = xml->FindChild("Version")) {
    if (version->GetIntAttribute("ver", -1) > 2) return false;
  }
  if (!Serialize(xml->FindChild("Doc"))) return false;
  cmps.folder = directory;
  fileNodes = cmps.SaveNodes();
  // Formulas may refer to one another in any order; all of them have a value
  // before the host sees the document.
  cmps.UpdateFormulas();
  return true;
}

bool CDoc::Serialize(CXmlNode* docElement) {
  if (!docElement) return false;

  if (CXmlNode* calc = ChildByDirection(*docElement, "Calc")) settings.SerializeCalc(*calc);

  if (CXmlNode* tran = ChildByDirection(*docElement, "Tran")) {
    if (CXmlNode* stepElement = ChildByDirection(*tran, "Settings")) settings.SerializeStep(*stepElement);
    if (CXmlNode* tracesElement = ChildByDirection(*tran, "Traces")) traces.Serialize(tracesElement);
  }

  if (CXmlNode* cmpsElement = ChildByDirection(*docElement, "Cmps")) {
    // The licence stamp ("Key") is kept as read and admits every file, so
    // "Options" is always taken over.
    if (cmpsElement->storing) {
      if (options != 0) cmpsElement->AddIntAttribute("Options", static_cast<int>(options));
    } else {
      options = static_cast<uint32_t>(cmpsElement->GetIntAttribute("Options", 0));
    }
    // An unknown component type ends the list with its message in the last
    // error, but never the load: the document opens with what was read.
    cmps.Serialize(cmpsElement, ComponentTypes());
  }
  return true;
}

int CDoc::SaveFlags(CXmlNode& docElement) {
  if (docElement.HasAttribute("save")) return docElement.GetIntAttribute("save", 0);
  if (CXmlNode* properties = docElement.FindChild("Properties")) {
    return properties->GetIntAttribute("save", 0);
  }
  return 0;
}

void CDoc::PrepareDataLists(CXmlNode& tran, const std::vector<int>& sampleCounts) {
  CXmlNode* storageList = EmptiedChild(tran, "StorageList");
  CXmlNode* storage = storageList->AddChild("Storage");
  storage->AddAttribute("name", "Run");
  storage->AddIntAttribute("id", 0);

  CXmlNode* traces = tran.FindChild("Traces");
  if (!traces) return;
  for (int index = 0; index < traces->GetChildCount(); ++index) {
    if (static_cast<std::size_t>(index) >= sampleCounts.size()) break;
    const int count = sampleCounts[static_cast<std::size_t>(index)];
    if (count <= 0) break;
    CXmlNode* dataList = EmptiedChild(*traces->GetChild(index), "DataList");
    CXmlNode* data = dataList->AddChild("Data");
    data->AddIntAttribute("id", 0);
    data->AddIntAttribute("size", count);
    data->AddIntAttribute("type", 0);
  }
}

bool CDoc::Save(const std::string& path) {
  if (!xml) return false;
  xml->storing = true;

  CXmlNode* doc = xml->FindChild("Doc");
  if (!doc) return false;
  const bool saveData = (SaveFlags(*doc) & kSaveData) != 0;

  if (CXmlNode* cmpsElement = doc->FindChild("Cmps")) {
    while (cmpsElement->GetChildCount() > 0) cmpsElement->DeleteChild(0);
    // The file keeps its own node numbers, also while a run holds the
    // solver's numbering in the pins; that numbering is back afterwards.
    FileNodesInPins fileNumbering(*this);
    if (!cmps.Serialize(cmpsElement, ComponentTypes())) return false;
    if (options != 0) cmpsElement->SetAttribute("Options", std::to_string(static_cast<int32_t>(options)));
  }

  CXmlNode* tran = doc->FindChild("Tran");
  if (tran) {
    if (CXmlNode* stepElement = tran->FindChild("Settings")) {
      stepElement->SetAttribute("step", FormatNumber(settings.step, 12));
    }
  }

  if (CXmlNode* calc = doc->FindChild("Calc")) {
    calc->SetAttribute("timeout", std::to_string(settings.timeout));
  }

  if (saveData && tran) PrepareDataLists(*tran, traces.SampleCounts());

  if (!xml->SaveToFile(path)) return false;
  if (!saveData) return true;
  return AppendDataTail(path);
}

bool CDoc::AppendDataTail(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "ab");
  if (!file) return false;
  const bool written = std::fputc(0, file) != EOF && traces.WriteData(file);
  const bool closed = std::fclose(file) == 0;
  return written && closed;
}

bool CDoc::ComponentError(const CCmp* cmp, const std::string& message) {
  return tz4::ComponentError(cmp, message);
}

bool CDoc::ComponentError(const CCmp* cmp, const char* message) {
  return tz4::ComponentError(cmp, std::string(message ? message : ""));
}

// ---------------------------------------------------------------- node numbers

void CDoc::RestoreFileNodes() {
  if (fileNodes.size() == cmps.SaveNodes().size())
    cmps.RestoreNodes(fileNodes.data());
  else
    cmps.folder = directory;
  fileNodes = cmps.SaveNodes();
}

// ---------------------------------------------------------------- host numbers

bool CDoc::FindParam(const char* name, CParam& out) {
  if (!name) {
    AppendError("NULL pointer");
    return false;
  }
  if (!*name) {
    AppendError("no parameter name");
    return false;
  }
  if (!cmps.FindParam(name, out)) {
    AppendError(std::string("parameter ") + name + " not found");
    return false;
  }
  return true;
}

int CDoc::GetParamNumber(const CParam& param) {
  for (std::size_t i = 0; i < paramRefs.size(); ++i) {
    if (paramRefs[i].second == param.Value) return static_cast<int>(i);
  }
  paramRefs.emplace_back(param, param.Value);
  return static_cast<int>(paramRefs.size()) - 1;
}

const CParam* CDoc::FindParamByNumber(int number) {
  if (number < 0 || static_cast<std::size_t>(number) >= paramRefs.size()) {
    AppendError("wrong param number");
    return nullptr;
  }
  auto& [param, address] = paramRefs[static_cast<std::size_t>(number)];
  if (param.Kind == PK_END || std::holds_alternative<std::monostate>(address)) {
    AppendError("no parameter");
    return nullptr;
  }
  param.Value = address;
  return &param;
}

namespace {

// Puts the component into the model that takes a host's value and gives the
// address of that value; null for a component that cannot be an input. A
// component already in that model keeps its present value; one switched to
// it starts from 0, and `switched` tells so.
double* InputValueOf(CCmp& component, bool& switched) {
  switched = false;
  int modelIndex = 0;
  CFormula* value = component.HostInput(modelIndex);
  if (value == nullptr) return nullptr;
  if (component.modelIndex != modelIndex) {
    switched = true;
    component.modelIndex = modelIndex;
    // The host owns the value from now on: a formula would overwrite it.
    value->Text.clear();
    value->Invalid = false;
    value->Value = 0.0;
  }
  return &value->Value;
}

}  // namespace

int CDoc::AddInput(const char* name) {
  if (!name) {
    AppendError("NULL pointer");
    return -1;
  }
  if (!*name) {
    AppendError("no input name");
    return -1;
  }
  CCmp* component = cmps.FindByPath(name);
  if (!component) {
    AppendError(std::string("component ") + name + " not found");
    return -1;
  }
  inputs.reserve(inputs.size() + 1);  // so that the append after a model switch cannot fail
  bool switched = false;
  double* value = InputValueOf(*component, switched);
  if (!value) {
    AppendError(std::string("component ") + name + " cannot be an input");
    return -1;
  }
  // A new model has other rows and nodes: a run in progress must rebuild
  // its system before its next step instead of stamping the new model into
  // the old one.
  if (switched) changeFlags |= CHANGE_PARAMS;
  component->hostInput = true;
  inputs.push_back(value);
  return static_cast<int>(inputs.size()) - 1;
}

int CDoc::AddOutput(const char* name) {
  if (!name) {
    AppendError("NULL pointer");
    return -1;
  }
  if (!*name) {
    AppendError("no label name");
    return -1;
  }
  CCmp* component = cmps.FindByPath(name);
  if (!component) {
    AppendError(std::string("label ") + name + " not found");
    return -1;
  }
  if (!component->IsType("label")) {
    AppendError(std::string("component ") + name + " is not a label");
    return -1;
  }
  outputs.push_back(component);
  return static_cast<int>(outputs.size()) - 1;
}

// ---------------------------------------------------------------- traces

int CDoc::FindTrace(const char* name) { return traces.Find(name); }

CTrace* CDoc::FindTraceByHandle(int traceHandle) { return traces.FindByHandle(traceHandle); }

CTrace* CDoc::AddTrace(int type, const char* name) { return traces.Add(type, name, cmps, xml.get()); }

void CDoc::DeleteTrace(CTrace* trace) { traces.Delete(trace, xml.get()); }

// ---------------------------------------------------------------- the run

void CDoc::Reset() {
  running = false;
  for (const auto& owned : cmps.list) {
    CCmp* component = owned.get();
    component->prevModelId = 0;
    component->pwl.Clear();
    component->Stamp(*calc, STAMP_RESET, 0.0);
  }
  traces.Clear();
}

void CDoc::DeleteOldData() { traces.DeleteOld(targetTime); }

}  // namespace tz4
