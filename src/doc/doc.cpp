#include "doc/doc.h"

#include <cstdio>

#include "expr/numtext.h"
#include "expr/text.h"

namespace tz4 {

namespace {

// In the archive direction of `parent`: the existing child when loading
// (null if there is none), a new one when storing.
CXmlNode* ChildByDirection(CXmlNode& parent, const std::string& childName) {
  return parent.storing ? parent.AddChild(childName) : parent.FindChild(childName);
}

// An existing child emptied for rebuilding, or a new one.
CXmlNode* EmptiedChild(CXmlNode& parent, const std::string& childName) {
  CXmlNode* child = parent.FindChild(childName);
  if (child) {
    child->Clear();
    return child;
  }
  return parent.AddChild(childName);
}

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

CDoc::CDoc() = default;

CDoc::~CDoc() = default;

bool CDoc::Load(const std::string& path) {
  xml = std::make_unique<CXmlNode>("TZ4");
  if (xml->LoadFromFile(path) != 0) return false;
  fileName = path;
  directory = PathOfFile(path);

  if (CXmlNode* version = xml->FindChild("Version")) {
    if (version->GetIntAttribute("ver", -1) > 2) return false;
  }
  return Serialize(xml->FindChild("Doc"));
}

bool CDoc::Serialize(CXmlNode* docElement) {
  if (!docElement) return false;

  if (CXmlNode* calc = ChildByDirection(*docElement, "Calc")) settings.SerializeCalc(*calc);

  if (CXmlNode* tran = ChildByDirection(*docElement, "Tran")) {
    if (CXmlNode* stepElement = ChildByDirection(*tran, "Settings")) settings.SerializeStep(*stepElement);
  }

  if (CXmlNode* cmps = ChildByDirection(*docElement, "Cmps")) {
    // The licence stamp ("Key") is kept as read and admits every file, so
    // "Options" is always taken over.
    if (cmps->storing) {
      if (options != 0) cmps->AddIntAttribute("Options", static_cast<int>(options));
    } else {
      options = static_cast<uint32_t>(cmps->GetIntAttribute("Options", 0));
    }
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

  if (CXmlNode* cmps = doc->FindChild("Cmps")) {
    if (options != 0) cmps->SetAttribute("Options", std::to_string(static_cast<int32_t>(options)));
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

  if (saveData && tran) {
    // Sample counts of the recorded traces, in list order; empty while the
    // document holds no trace list.
    const std::vector<int> sampleCounts;
    PrepareDataLists(*tran, sampleCounts);
  }

  if (!xml->SaveToFile(path)) return false;
  if (!saveData) return true;
  return AppendDataTail(path);
}

bool CDoc::AppendDataTail(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "ab");
  if (!file) return false;
  const bool written = std::fputc(0, file) != EOF;
  const bool closed = std::fclose(file) == 0;
  return written && closed;
}

}  // namespace tz4
