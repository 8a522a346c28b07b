// The list of component types and the creation of a component by its tag.
#include "components/cmp.h"
#include "components/elem_type.h"

namespace tz4 {

CElemSet::CElemSet(std::vector<const ElemType*> types, std::vector<const ElemType*> wordTypes)
    : types_(std::move(types)), wordTypes_(std::move(wordTypes)) {}

const ElemType* CElemSet::Find(const std::string& tag) const {
  for (const ElemType* type : types_)
    if (tag == type->tag) return type;
  return nullptr;
}

std::unique_ptr<CCmp> CElemSet::Create(const std::string& tag) const {
  const ElemType* type = Find(tag);
  for (size_t i = 0; type == nullptr && i < wordTypes_.size(); ++i)
    if (tag == wordTypes_[i]->tag) type = wordTypes_[i];
  if (type == nullptr || type->factory == nullptr) return nullptr;
  return type->factory(*type);
}

}  // namespace tz4
