// CCmps: the ordered collection of a circuit's components, nested for
// subcircuits, and the resolver of dotted names ("R1.R", "X1.R3.R").
//
// The collection order is fixed by Sort after loading and is the order in
// which the solver walks the components. Names compare without regard to
// case; the first match wins. Formulas of the components resolve names
// through this collection, which is why it is an evaluation context; the
// logic levels come from `document` when one is set.
#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "components/cmp.h"
#include "expr/context.h"
#include "expr/value.h"

namespace tz4 {

class CXmlNode;
class CVarList;
struct TVariable;

class CCmps : public CEvalContext {
 public:
  CCmps() = default;
  ~CCmps() override;
  CCmps(const CCmps&) = delete;
  CCmps& operator=(const CCmps&) = delete;

  // Both directions of the "Cmps" element. Loading appends one component per
  // child, made by `types` from its "type" word, stops at the first unknown type with "Component type '...' not
  // found" appended to the last error (false; what was read stays, unsorted),
  // and sorts at the end. Storing adds one "Cmp" child per component. A null
  // element gives false.
  bool Serialize(CXmlNode* element, const CElemSet& types);

  // Stable exchange sort into collection order.
  void Sort();
  // Variables last, labels before them, other components by first character
  // (case-sensitive), then by the number behind it, then by name.
  static int Compare(const CCmp* a, const CCmp* b);

  // By component name in this collection only; null for an empty name.
  CCmp* Find(const std::string& name) const;
  // The component at a dotted path, walking into subcircuits.
  CCmp* FindByPath(std::string path) const;
  // The parameter at a dotted path, bound to its component; a bare component
  // name (or "R1.") gives its first parameter. A subcircuit's own table is
  // searched first, other names go on into its inner collection.
  bool FindParam(std::string path, CParam& out) const;
  // A readable value at a dotted path: a code-block variable (its own value
  // is returned, so the caller sees it change) or a parameter's number
  // stored in *out (out is returned). Null when nothing is there. An invalid
  // formula raises "Invalid value".
  TValue* FindValue(std::string path, TValue* out) const;
  // A code block's variable at a dotted path; null for anything else.
  TVariable* FindVariable(std::string path) const;

  // Reads (empty value) or sets a model, a code-block variable or a
  // parameter by path and text, as subcircuit commands do. result receives
  // the new or current value, or the message with ok false. digits rounds a
  // numeric value through its text (20 keeps it); locals are the variables
  // that value texts may use (null: none); number, when given, receives the
  // numeric value. Returns the component, null when the path names none.
  CCmp* Assign(int digits, std::string path, const std::string& value, std::string& result, bool& ok,
               CVarList* locals = nullptr, double* number = nullptr);

  // Brings all formula parameters up to date by repeated passes until one
  // changes nothing. A formula that depends on itself ("Circular reference")
  // or fails otherwise keeps its invalid flag. The passes are bounded by the
  // number of formulas + 2 besides. True when anything changed.
  bool UpdateFormulas();

  // CCmp::CheckParams on every connected component (no pins, or at least one
  // pin at a node 0 or above), all of them even after a failure.
  bool CheckParams();

  // Adds offset to every positive node number; the largest node number that
  // results (0 when there is none).
  int OffsetNodes(int offset);
  // All pins' node numbers, component after component.
  std::vector<int32_t> SaveNodes() const;
  // Writes such an array back; a null array does nothing.
  void RestoreNodes(const int32_t* nodes);

  // Ownership and order of the components.
  int Count() const { return static_cast<int>(list.size()); }
  CCmp* operator[](int index) const { return list[static_cast<size_t>(index)].get(); }
  void Add(std::unique_ptr<CCmp> component);

  // --- name resolution for formulas ---
  double LogicHigh() const override;
  double LogicLow() const override;
  double LogicThreshold() const override;
  bool FindValue(const std::string& path, TValue& out) override;
  TVariable* FindArray(const std::string& path) override;
  CFormula* FindFormula(const std::string& path) override;
  CCmp* FindComponent(const std::string& name) override;

  // The components, in collection order.
  std::vector<std::unique_ptr<CCmp>> list;
  // Where formulas take the logic levels from; null: the defaults.
  const CEvalContext* document = nullptr;
  // The types this collection was loaded with, and the folder of the file
  // it came from (with its separator): subcircuits load theirs from there.
  const CElemSet* types = nullptr;
  std::string folder;
};

}  // namespace tz4
