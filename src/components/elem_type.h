// Static descriptions of component types and their models.
#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "components/param.h"

namespace tz4 {

class CCmp;
struct ElemType;

// Trace mask bits of a model.
enum : int32_t {
  TRACE_V = 1,
  TRACE_I = 2,
  TRACE_P = 4,
};

// One row of a type's model table; a row with a null name ends the table.
struct ModelInfo {
  const char* name = nullptr;
  int32_t id = 0;
  const ParamDef* params = nullptr;  // ended by a row of Kind PK_END; null: no parameters
  int32_t editHint = 0;
  int32_t extraRows = 0;
  int32_t traceMask = 0;
  int32_t helpId = 0;
  int32_t external = 0;
};

struct ElemType {
  const char* tag = nullptr;
  int64_t pinCount = 0;  // 0: set per instance
  std::unique_ptr<CCmp> (*factory)(const ElemType&) = nullptr;
  const ModelInfo* models = nullptr;
  int64_t drawFlag = 0;
  const char* description = nullptr;
};

// The list of every type, in its fixed order, and the types made by a word
// of their own rather than by a tag of the list (labels and variables). The
// device floor builds the one instance (ComponentTypes).
class CElemSet {
 public:
  CElemSet(std::vector<const ElemType*> types, std::vector<const ElemType*> wordTypes);
  // Exact (case-sensitive) match of a tag of the list or of a word type;
  // null when no type has it.
  std::unique_ptr<CCmp> Create(const std::string& tag) const;
  // A type of the list by its exact tag; null when none has it.
  const ElemType* Find(const std::string& tag) const;
  const std::vector<const ElemType*>& Types() const { return types_; }

 private:
  std::vector<const ElemType*> types_;
  std::vector<const ElemType*> wordTypes_;
};

// Factory helper: {"R_R", 2, &MakeCmp<CElemR>, ...}
template <class T>
std::unique_ptr<CCmp> MakeCmp(const ElemType& type) {
  return std::make_unique<T>(type);
}

}  // namespace tz4
