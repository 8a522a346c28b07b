// The component collection: loading and storing, collection order, and the
// resolution of dotted names into components, parameters and variables.
#include "components/cmps.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdlib>
#include <exception>

#include "base/last_error.h"
#include "components/param_ops.h"
#include "components/subcir.h"
#include "xml/xml_node.h"
#include "expr/evaluate.h"
#include "expr/formula.h"
#include "expr/lists.h"
#include "expr/numtext.h"
#include "expr/text.h"

namespace tz4 {

namespace {

// The inner collection of a subcircuit component, loaded when a path first
// walks into it (with its commands applied, as a run would), null when it
// cannot be. A failure here reports nothing: the run reports it.
CCmps* InnerCollection(const CCmps& outer, CCmp* component) {
  if (component->ModelId() != MODEL_SUBCIR || outer.types == nullptr) return nullptr;
  if (component->subCir == nullptr) {
    component->subCir = std::make_shared<CSubCir>();
    component->subCir->SetPinCount(component->pinCount);
  }
  CSubCir& sub = *component->subCir;
  if (sub.cmps == nullptr) {
    const std::string saved = LastError();
    sub.Open(*component, outer.folder, *outer.types, false);
    SetLastError(saved);
  }
  return sub.cmps.get();
}

// The command text of a subcircuit component, null while it has no
// subcircuit part.
std::string* SubCircuitCommands(CCmp* component) {
  return component->subCir != nullptr ? &component->subCir->cmd : nullptr;
}

bool IsSubCircuit(const CCmp* component) { return component->ModelId() == MODEL_SUBCIR; }

bool IsCodeBlock(const CCmp* component) { return component->IsType("X_C"); }

// The character of a name at index, or 0 behind its end (as in a C text).
signed char CharAt(const std::string& text, size_t index) {
  return index < text.size() ? static_cast<signed char>(text[index]) : 0;
}

// Case-insensitive comparison of whole names, by their lower-case bytes.
int CompareText(const std::string& a, const std::string& b) {
  const size_t n = std::min(a.size(), b.size());
  for (size_t i = 0; i < n; i++) {
    const int ca = std::tolower(static_cast<unsigned char>(a[i]));
    const int cb = std::tolower(static_cast<unsigned char>(b[i]));
    if (ca != cb) return ca - cb;
  }
  if (a.size() == b.size()) return 0;
  return a.size() < b.size() ? -1 : 1;
}

// The number that stands behind the first character, read as "%d" reads
// it; values beyond the int range are clamped.
long ReadNumberBehindFirst(const std::string& name) {
  long n = std::strtol(name.c_str() + 1, nullptr, 10);
  return std::clamp(n, static_cast<long>(INT_MIN), static_cast<long>(INT_MAX));
}

bool IsDigit(signed char c) { return c >= '0' && c <= '9'; }

// Whether a path has a point behind its component name (which may be
// quoted and hold points itself).
bool HasPoint(const std::string& path) {
  std::string text = TrimSpaces(path);
  size_t start = 0;
  if (!text.empty() && text[0] == '"') {
    const size_t close = text.find('"', 1);
    if (close == std::string::npos) return false;
    start = close + 1;
  }
  return text.find('.', start) != std::string::npos;
}

// A connected component takes part in checks and runs: one without pins
// always, one with pins when any of them is at a node 0 or above.
bool IsConnected(const CCmp* component) {
  if (component->pinCount == 0) return true;
  if (component->pinCount < 0) return false;
  for (int32_t node : component->pins)
    if (node >= 0) return true;
  return false;
}

// Replaces the command for `target` in a ";"-separated command text, or
// appends one.
void RecordCommand(std::string& commands, const std::string& target, const std::string& value) {
  TStringList items;
  items.SetSemicolonText(commands);
  const std::string item = target + "=" + value;
  bool replaced = false;
  for (int i = 0; i < items.Count(); i++) {
    const size_t equal = items[i].find('=');
    const std::string left = TrimSpaces(items[i].substr(0, equal));
    if (equal != std::string::npos && SameText(left, target)) {
      items[i] = item;
      replaced = true;
      break;
    }
  }
  if (!replaced) items.Add(item);
  std::string joined;
  for (int i = 0; i < items.Count(); i++) {
    if (i > 0) joined += ';';
    joined += items[i];
  }
  commands = joined;
}

}  // namespace

CCmps::~CCmps() {
  for (auto& component : list) component.reset();
}

void CCmps::Add(std::unique_ptr<CCmp> component) {
  if (component != nullptr) list.push_back(std::move(component));
}

bool CCmps::Serialize(CXmlNode* element, const CElemSet& types) {
  if (element == nullptr) return false;
  this->types = &types;
  if (element->storing) {
    for (auto& component : list) {
      CXmlNode* child = element->AddChild("Cmp");
      component->Serialize(*child, false);
    }
    return true;
  }
  for (int i = 0; i < element->GetChildCount(); i++) {
    CXmlNode* child = element->FindChild("", i);  // carries the direction down
    if (child == nullptr) break;
    const std::string word = child->GetAttribute("type", "");
    std::unique_ptr<CCmp> component = types.Create(word);
    if (component == nullptr) {
      AppendError("Component type '" + word + "' not found");
      return false;
    }
    // A component that reports a bad model still joins the collection.
    component->Serialize(*child, false);
    list.push_back(std::move(component));
  }
  Sort();
  return true;
}

int CCmps::Compare(const CCmp* a, const CCmp* b) {
  const bool variableA = a->IsVariable();
  const bool variableB = b->IsVariable();
  if (variableA != variableB) return variableA ? 1 : -1;
  if (variableA) return CompareText(a->name, b->name);
  const bool labelA = a->IsLabel();
  const bool labelB = b->IsLabel();
  if (labelA != labelB) return labelA ? 1 : -1;
  if (labelA) return CompareText(a->name, b->name);

  const signed char firstA = CharAt(a->name, 0);
  const signed char firstB = CharAt(b->name, 0);
  if (firstA != firstB) return firstA < firstB ? -1 : 1;
  if (a->name.size() < 2 || b->name.size() < 2) return 0;
  if (IsDigit(CharAt(a->name, 1)) && IsDigit(CharAt(b->name, 1))) {
    const long numberA = ReadNumberBehindFirst(a->name);
    const long numberB = ReadNumberBehindFirst(b->name);
    if (numberA == numberB) return 0;
    return numberA < numberB ? -1 : 1;
  }
  return CompareText(a->name, b->name);
}

void CCmps::Sort() {
  const int n = Count() - 1;
  for (int pass = 0; pass < n; pass++) {
    bool exchanged = false;
    for (int j = n; j > pass; j--) {
      if (Compare(list[static_cast<size_t>(j)].get(), list[static_cast<size_t>(j - 1)].get()) < 0) {
        std::swap(list[static_cast<size_t>(j)], list[static_cast<size_t>(j - 1)]);
        exchanged = true;
      }
    }
    if (!exchanged) break;
  }
}

CCmp* CCmps::Find(const std::string& name) const {
  if (name.empty()) return nullptr;
  for (const auto& component : list)
    if (SameText(component->name, name)) return component.get();
  return nullptr;
}

CCmp* CCmps::FindByPath(std::string path) const {
  if (path.empty()) return nullptr;
  std::string first, rest;
  SplitName(path, first, rest);
  if (first.empty()) return nullptr;
  CCmp* component = Find(first);
  if (component == nullptr || rest.empty()) return component;
  if (!IsSubCircuit(component)) return nullptr;
  CCmps* inner = InnerCollection(*this, component);
  return inner != nullptr ? inner->FindByPath(rest) : nullptr;
}

bool CCmps::FindParam(std::string path, CParam& out) const {
  if (path.empty()) return false;
  std::string first, rest;
  SplitName(path, first, rest);
  CCmp* component = Find(first);
  if (component == nullptr) return false;
  if (component->FindParam(rest, out)) return true;
  if (!IsSubCircuit(component)) return false;
  CCmps* inner = InnerCollection(*this, component);
  return inner != nullptr && inner->FindParam(rest, out);
}

TValue* CCmps::FindValue(std::string path, TValue* out) const {
  if (path.empty() || out == nullptr) return nullptr;
  std::string first, rest;
  SplitName(path, first, rest);
  CCmp* component = Find(first);
  if (component == nullptr) return nullptr;
  if (IsSubCircuit(component)) {
    CCmps* inner = InnerCollection(*this, component);
    return inner != nullptr ? inner->FindValue(rest, out) : nullptr;
  }
  if (IsCodeBlock(component)) {
    CVarList* variables = component->Variables();
    TVariable* variable = variables != nullptr ? variables->Find(rest) : nullptr;
    if (variable == nullptr || variable->Values.empty()) return nullptr;
    *out = variable->Values[0];
    return &variable->Values[0];
  }
  CParam param;
  if (!component->FindParam(rest, param)) return nullptr;
  *out = TValue::MakeDouble(GetNumber(param));
  return out;
}

TVariable* CCmps::FindVariable(std::string path) const {
  if (path.empty()) return nullptr;
  std::string first, rest;
  SplitName(path, first, rest);
  CCmp* component = Find(first);
  if (component == nullptr) return nullptr;
  if (IsSubCircuit(component)) {
    CCmps* inner = InnerCollection(*this, component);
    return inner != nullptr ? inner->FindVariable(rest) : nullptr;
  }
  if (!IsCodeBlock(component)) return nullptr;
  CVarList* variables = component->Variables();
  return variables != nullptr ? variables->Find(rest) : nullptr;
}

CCmp* CCmps::Assign(int digits, std::string path, const std::string& value, std::string& result, bool& ok,
                    CVarList* locals, double* number) {
  ok = true;
  std::string first, rest;
  SplitName(path, first, rest);
  CCmp* component = first.empty() ? nullptr : Find(first);
  if (component == nullptr) {
    ok = false;
    result = path + " not found";
    return nullptr;
  }

  if (SameText(rest, "model")) {
    if (value.empty()) {
      const ModelInfo* model = component->GetModel();
      result = model != nullptr && model->name != nullptr ? model->name : "";
      return component;
    }
    if (component->models != nullptr) {
      for (int i = 0; component->models[i].name != nullptr; i++) {
        if (SameText(component->models[i].name, value)) {
          component->modelIndex = i;
          result = component->models[i].name;
          return component;
        }
      }
    }
    ok = false;
    result = value + " not found";
    return component;
  }

  const int roundDigits = std::clamp(digits, 1, 20);
  try {
    if (IsCodeBlock(component)) {
      CParam ic;
      if (rest == "IC" && component->FindParam("IC", ic) && std::holds_alternative<std::string*>(ic.Value)) {
        *std::get<std::string*>(ic.Value) = value;
        result = value;
        return component;
      }
      CVarList* variables = component->Variables();
      TVariable* variable = variables != nullptr ? variables->Find(rest) : nullptr;
      if (variable == nullptr || variable->Values.empty()) {
        ok = false;
        result = rest + " not found";
        return component;
      }
      if (!value.empty()) {
        TValue assigned;
        EvaluateExpression(value, this, locals, nullptr, &assigned, false);
        if (assigned.Type == VT_DOUBLE) assigned.Dbl = TextToDouble(FormatNumber(assigned.Dbl, roundDigits));
        AssignValue(variable->Values[0], assigned);
      }
      result = ValueToText(variable->Values[0]);
      if (number != nullptr) *number = ValueToDouble(variable->Values[0]);
      return component;
    }

    CParam param;
    if (!component->FindParam(rest, param)) {
      if (!IsSubCircuit(component)) {
        ok = false;
        result = rest + " not found";
        return component;
      }
      CCmps* inner = InnerCollection(*this, component);
      if (value.empty()) {
        if (inner == nullptr) {
          ok = false;
          result = rest + " not found";
          return component;
        }
        return inner->Assign(digits, rest, value, result, ok, locals, number);
      }
      std::string* commands = SubCircuitCommands(component);
      if (commands == nullptr) {
        ok = false;
        result = rest + " not found";
        return component;
      }
      RecordCommand(*commands, rest, value);
      if (inner != nullptr) return inner->Assign(digits, rest, value, result, ok, locals, number);
      result = value;
      return component;
    }

    if (value.empty()) {
      result = GetDisplayText(param);
      if (number != nullptr) *number = GetNumber(param);
      return component;
    }
    std::string text = value;
    if (param.Kind == PK_VALUE) {
      const double evaluated = EvaluateExpression(value, this, locals, nullptr, nullptr, false);
      text = FormatNumber(evaluated, roundDigits);
      if (text.empty()) text = value;  // a NaN has no number text
    }
    std::string error;
    SetFromExpression(param, error, text, this, locals, ok);
    if (!ok) {
      result = error;
      return component;
    }
    if (number != nullptr && param.Kind == PK_VALUE) *number = GetNumber(param);
    result = GetDisplayText(param);
  } catch (const std::exception& e) {
    ok = false;
    result = std::string("Error : ") + e.what();
  }
  return component;
}

bool CCmps::UpdateFormulas() {
  // A chain of n formulas settles in n + 1 passes; more passes than that
  // mean formulas that feed each other in a ring.
  size_t formulas = 0;
  for (auto& component : list)
    for (const CParam& param : component->BindParams())
      if (param.Kind == PK_VALUE) formulas++;
  const size_t maxPasses = formulas + 2;

  bool anyChange = false;
  for (size_t pass = 0; pass < maxPasses; pass++) {
    bool changed = false;
    for (auto& component : list) {
      const CParamTable table = component->BindParams();
      for (const CParam& param : table) {
        if (param.Kind != PK_VALUE) continue;
        auto* const* bound = std::get_if<CFormula*>(&param.Value);
        CFormula* formula = bound != nullptr ? *bound : nullptr;
        if (formula == nullptr) continue;
        const bool wasInvalid = formula->Invalid;
        try {
          // A formula that depends on itself is cut off as invalid.
          if (!formula->Text.empty() && formula->Text[0] == '=') ResolveCircularity(formula, formula->Text, this);
          const bool valueChanged = formula->Update(this);
          if (wasInvalid) {
            formula->Invalid = false;
            changed = true;
          } else if (valueChanged) {
            changed = true;
          }
        } catch (const std::exception&) {
          formula->Invalid = true;  // shown as "#VAL" until it evaluates
        }
      }
    }
    if (!changed) break;
    anyChange = true;
  }
  return anyChange;
}

bool CCmps::CheckParams() {
  bool ok = true;
  for (auto& component : list) {
    if (!IsConnected(component.get())) continue;
    try {
      if (!component->CheckParams()) ok = false;
    } catch (const std::exception& e) {
      ok = ComponentError(component.get(), e.what());
    }
  }
  return ok;
}

int CCmps::OffsetNodes(int offset) {
  int largest = 0;
  for (auto& component : list) {
    for (int32_t& node : component->pins) {
      if (node > 0) node += offset;
      largest = std::max(largest, static_cast<int>(node));
    }
  }
  return largest;
}

std::vector<int32_t> CCmps::SaveNodes() const {
  std::vector<int32_t> nodes;
  for (const auto& component : list) nodes.insert(nodes.end(), component->pins.begin(), component->pins.end());
  return nodes;
}

void CCmps::RestoreNodes(const int32_t* nodes) {
  if (nodes == nullptr) return;
  for (auto& component : list)
    for (int32_t& node : component->pins) node = *nodes++;
}

double CCmps::LogicHigh() const { return document != nullptr ? document->LogicHigh() : CEvalContext::LogicHigh(); }
double CCmps::LogicLow() const { return document != nullptr ? document->LogicLow() : CEvalContext::LogicLow(); }
double CCmps::LogicThreshold() const {
  return document != nullptr ? document->LogicThreshold() : CEvalContext::LogicThreshold();
}

bool CCmps::FindValue(const std::string& path, TValue& out) {
  // A formula name must have a point: "R1" alone is no parameter there.
  if (!HasPoint(path)) return false;
  std::string first, rest;
  SplitName(path, first, rest);
  CCmp* component = Find(first);
  if (component == nullptr) return false;
  if (IsSubCircuit(component)) {
    CCmps* inner = InnerCollection(*this, component);
    return inner != nullptr && inner->FindValue(rest, out);
  }
  if (IsCodeBlock(component)) {
    CVarList* variables = component->Variables();
    TVariable* variable = variables != nullptr ? variables->Find(rest) : nullptr;
    if (variable == nullptr || variable->Values.empty()) return false;
    out = variable->Values[0];
    return true;
  }
  CParam param;
  if (rest.empty() || !component->FindParam(rest, param)) return false;
  out = TValue::MakeDouble(GetNumber(param));
  return true;
}

TVariable* CCmps::FindArray(const std::string& path) { return FindVariable(path); }

CFormula* CCmps::FindFormula(const std::string& path) {
  CParam param;
  if (!FindParam(path, param) || param.Kind != PK_VALUE) return nullptr;
  auto* const* bound = std::get_if<CFormula*>(&param.Value);
  return bound != nullptr ? *bound : nullptr;
}

CCmp* CCmps::FindComponent(const std::string& name) { return FindByPath(name); }

}  // namespace tz4
