#include "results/traces.h"

#include <bit>
#include <cstring>
#include <string>

#include "base/handles.h"
#include "base/last_error.h"
#include "components/cmp.h"
#include "components/cmps.h"
#include "xml/xml_node.h"
#include "base/raise.h"
#include "expr/text.h"
#include "solver/calc.h"

namespace tz4 {

namespace {

// The child in the direction of `parent`: found when loading, added when
// storing. A loaded tree that lacks the child gets one, so that a trace
// added to it is not lost from the file.
CXmlNode* ChildByDirection(CXmlNode& parent, const std::string& childName) {
  if (parent.storing) return parent.AddChild(childName);
  if (CXmlNode* child = parent.FindChild(childName)) return child;
  return parent.AddChild(childName);
}

// The first child of that name, read without touching any direction flag.
CXmlNode* FirstChildNamed(const CXmlNode& parent, const std::string& childName) {
  for (const auto& child : parent.children)
    if (child && child->name == childName) return child.get();
  return nullptr;
}

// The "Traces" element of a tree as it was read: the first "Doc", its first
// "Tran", and that one's first "Traces"; null when any is missing.
CXmlNode* LoadedTracesElement(const CXmlNode& root) {
  CXmlNode* doc = FirstChildNamed(root, "Doc");
  CXmlNode* tran = doc ? FirstChildNamed(*doc, "Tran") : nullptr;
  return tran ? FirstChildNamed(*tran, "Traces") : nullptr;
}

// Writes n samples as little-endian doubles.
bool WriteSamples(std::FILE* file, const CData::Sample* samples, int n) {
  if (n <= 0) return true;
  if constexpr (std::endian::native == std::endian::little) {
    return std::fwrite(samples, CData::recordSize, static_cast<std::size_t>(n), file) ==
           static_cast<std::size_t>(n);
  } else {
    for (int i = 0; i < n; ++i) {
      unsigned char record[CData::recordSize];
      const double pair[2] = {samples[i].t, samples[i].v};
      for (int k = 0; k < 2; ++k) {
        unsigned char bytes[sizeof(double)];
        std::memcpy(bytes, &pair[k], sizeof(double));
        for (std::size_t b = 0; b < sizeof(double); ++b)
          record[k * sizeof(double) + b] = bytes[sizeof(double) - 1 - b];
      }
      if (std::fwrite(record, sizeof record, 1, file) != 1) return false;
    }
    return true;
  }
}

}  // namespace

CTraces::~CTraces() = default;

bool CTraces::Serialize(CXmlNode* traces) {
  if (!traces) return false;
  if (traces->storing) {
    for (const auto& trace : list) {
      CXmlNode* element = traces->AddChild("Trace");
      trace->Serialize(element);
    }
    return true;
  }
  for (int index = 0; index < traces->GetChildCount(); ++index) {
    CXmlNode* element = traces->GetChild(index);
    element->storing = traces->storing;
    auto trace = std::make_unique<CTrace>();
    trace->Serialize(element);
    list.Add(std::move(trace));
  }
  return true;
}

CTrace* CTraces::Add(int type, const char* name, CCmps& components, CXmlNode* root) {
  if (!name) {
    AppendError("NULL pointer");
    return nullptr;
  }
  const std::string given = name;
  CCmp* component = nullptr;
  std::string text;

  switch (type) {
    case TRACE_TYPE_VOLTAGE:
    case TRACE_TYPE_CURRENT:
    case TRACE_TYPE_POWER: {
      component = components.FindByPath(given);
      if (!component) {
        AppendError("component " + given + " not found");
        return nullptr;
      }
      const ModelInfo* model = component->GetModel();
      if (!model) {
        AppendError("component model not found");
        return nullptr;
      }
      static const char* const kLetters[] = {"V", "I", "P"};
      const char* letter = kLetters[type];
      if ((model->traceMask & (1 << type)) == 0) {
        AppendError(std::string(letter) + " trace not allowed for component " + given);
        return nullptr;
      }
      text = std::string(letter) + "(" + given + ")";
      break;
    }
    case TRACE_TYPE_VARIABLE:
      component = components.FindByPath(given);
      if (!component) {
        AppendError("variable " + given + " not found");
        return nullptr;
      }
      text = given;
      break;
    case TRACE_TYPE_FUNCTION:
      text = given;
      break;
    default:
      AppendError("wrong trace type");
      return nullptr;
  }

  auto created = std::make_unique<CTrace>();
  created->type = type;
  created->cmp = component;
  created->named = component;
  // A component inside a subcircuit is bound by itself, not by an id of
  // the document's collection.
  created->id = component != nullptr && component->path.empty() && given.find('.') == std::string::npos
                    ? component->id
                    : 0;
  created->name = text;
  created->expr = text;
  CTrace* trace = created.get();

  if (root) {
    // Each step follows the direction of the element in hand: after a save
    // the tree stays in store direction and a fresh chain is added.
    CXmlNode* doc = ChildByDirection(*root, "Doc");
    CXmlNode* tran = ChildByDirection(*doc, "Tran");
    CXmlNode* traces = ChildByDirection(*tran, "Traces");
    CXmlNode* element = traces->AddChild("Trace");
    element->storing = true;
    trace->Serialize(element);
    element->storing = traces->storing;
  }
  list.Add(std::move(created));
  return trace;
}

int CTraces::Find(const char* name) const {
  if (!name) {
    AppendError("NULL pointer");
    return -1;
  }
  const std::string wanted = name;
  if (wanted.empty()) {
    AppendError("no trace name");
    return -1;
  }
  for (int index = 0; index < list.Count(); ++index)
    if (SameText(list[index]->GetName(), wanted)) return index;
  AppendError("trace " + wanted + " not found");
  return -1;
}

CTrace* CTraces::FindByHandle(int handle) const {
  if (handle < 0) return nullptr;
  for (const auto& trace : list)
    if (trace->handle == handle) return trace.get();
  AppendError("no trace");
  return nullptr;
}

int32_t CTraces::AssignHandle(CTrace& trace, HandleAllocator next) {
  if (trace.handle < 0) trace.handle = next();
  return trace.handle;
}

int32_t CTraces::AssignHandle(CTrace& trace) { return AssignHandle(trace, &TakeNextHandle); }

void CTraces::Delete(CTrace* trace, CXmlNode* root) {
  const int index = list.IndexOf(trace);
  if (index < 0) return;
  if (root) {
    if (CXmlNode* traces = LoadedTracesElement(*root)) traces->DeleteChild(index);
  }
  list.Delete(index);
}

std::unique_ptr<CTrace> CTraces::Remove(CTrace* trace) {
  const int index = list.IndexOf(trace);
  if (index < 0) return nullptr;
  return list.Extract(index);
}

bool CTraces::Bind(CCalc& calc, CCmps& components) {
  bool ok = true;
  for (const auto& trace : list) {
    CCmp* component = nullptr;
    if (trace->id != 0) {
      for (const auto& candidate : components.list) {
        if (candidate && candidate->id == trace->id) {
          component = candidate.get();
          break;
        }
      }
    } else {
      // Components without an "id" in the file all have 0; a trace the host
      // added for one of them keeps measuring that component. A trace of
      // the file without an id names its component in its expression, as
      // in "V(X1.C1)" for a component inside a subcircuit.
      component = trace->named;
      const std::string& expr = trace->expr;
      if (component == nullptr && trace->type <= TRACE_TYPE_POWER && expr.size() > 3 &&
          expr[1] == '(' && expr.back() == ')')
        component = trace->named = components.FindByPath(expr.substr(2, expr.size() - 3));
    }
    try {
      trace->Bind(components, component);
    } catch (const RaisedError& failure) {
      if (calc.error.empty()) calc.error = failure.Text();
      ok = false;
    }
  }
  return ok;
}

bool CTraces::Sample(CCalc& calc, CCmps& components, double t) {
  for (const auto& trace : list) {
    try {
      trace->Sample(calc, components, t);
    } catch (const RaisedError& failure) {
      calc.error = failure.Text();
      return false;
    }
  }
  return true;
}

void CTraces::Clear() {
  for (const auto& trace : list) trace->data.Clear();
}

void CTraces::DeleteOld(double t) {
  for (const auto& trace : list) trace->data.DeleteOld(t);
}

std::vector<int> CTraces::SampleCounts() const {
  std::vector<int> counts;
  counts.reserve(static_cast<std::size_t>(list.Count()));
  for (const auto& trace : list) counts.push_back(trace->data.Count());
  return counts;
}

bool CTraces::WriteData(std::FILE* file) const {
  if (!file) return false;
  for (const auto& trace : list) {
    const CData& data = trace->data;
    for (int block = 0; block < data.BlockCount(); ++block) {
      const int n = data.SamplesInBlock(block);
      if (n <= 0) break;
      if (!WriteSamples(file, data.BlockData(block), n)) return false;
    }
  }
  return true;
}

}  // namespace tz4
