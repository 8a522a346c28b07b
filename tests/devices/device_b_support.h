// Shared helpers of the device tests: creating components by tag, loading
// their file elements, selecting a model and checking a model's parameter
// table.
#pragma once
#include <gtest/gtest.h>

#include <cctype>
#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "devices/registry.h"
#include "components/cmp.h"
#include "components/elem_type.h"
#include "components/cmps.h"
#include "xml/xml_node.h"
#include "expr/formula.h"

namespace tz4::devtest {

// A component of `tag` from the global type list.
inline std::unique_ptr<CCmp> Create(const std::string& tag) {
  std::unique_ptr<CCmp> cmp = ComponentTypes().Create(tag);
  EXPECT_NE(cmp, nullptr) << tag;
  return cmp;
}

// A component of `tag` of the derived class T.
template <class T>
std::unique_ptr<T> CreateAs(const std::string& tag) {
  std::unique_ptr<CCmp> cmp = Create(tag);
  T* typed = dynamic_cast<T*>(cmp.get());
  EXPECT_NE(typed, nullptr) << tag << " is not of the expected class";
  if (typed == nullptr) return nullptr;
  cmp.release();
  return std::unique_ptr<T>(typed);
}

// Loads the element text into a new component of `tag`.
template <class T>
std::unique_ptr<T> Load(const std::string& tag, const std::string& element, bool* ok = nullptr) {
  auto cmp = CreateAs<T>(tag);
  if (cmp == nullptr) return nullptr;
  CXmlNode node("Cmp");
  EXPECT_EQ(node.LoadFromText(element), 0) << element;
  const bool result = cmp->Serialize(node, false);
  if (ok != nullptr)
    *ok = result;
  else
    EXPECT_TRUE(result) << element;
  return cmp;
}

// Selects the model row of that name; false when the type has none.
inline bool SelectModel(CCmp& cmp, const std::string& model) {
  for (int i = 0; cmp.models != nullptr && cmp.models[i].name != nullptr; i++) {
    if (model == cmp.models[i].name) {
      cmp.modelIndex = i;
      return true;
    }
  }
  return false;
}

// Whether the bound target has the storage that the kind needs.
inline bool TargetFitsKind(const CParam& param) {
  switch (param.Kind) {
    case PK_VALUE:
      return std::holds_alternative<CFormula*>(param.Value) && std::get<CFormula*>(param.Value);
    case PK_ENUM:
      return std::holds_alternative<CEnumValue*>(param.Value) &&
             std::get<CEnumValue*>(param.Value) && std::get<CEnumValue*>(param.Value)->Names;
    case PK_ON_OFF:
    case PK_YES_NO:
    case PK_HIGH_LOW:
      return std::holds_alternative<int32_t*>(param.Value) && std::get<int32_t*>(param.Value);
    case PK_PWL:
      return std::holds_alternative<CPWL*>(param.Value) && std::get<CPWL*>(param.Value);
    default:
      return param.Kind >= PK_NAME && param.Kind <= PK_CODE &&
             std::holds_alternative<std::string*>(param.Value) &&
             std::get<std::string*>(param.Value);
  }
}

struct ParamRow {
  const char* name;
  uint32_t kind;
};

// The model's bound table holds exactly these parameters in this order, each
// bound to storage of its kind, and each found by FindParam in any case.
inline void ExpectParams(CCmp& cmp, const std::string& model, const std::vector<ParamRow>& rows) {
  SCOPED_TRACE(std::string(cmp.type->tag) + " " + model);
  ASSERT_TRUE(SelectModel(cmp, model));
  const CParamTable table = cmp.BindParams();
  ASSERT_EQ(table.size(), rows.size());
  for (size_t i = 0; i < rows.size(); i++) {
    EXPECT_STREQ(table[i].Name, rows[i].name);
    EXPECT_EQ(table[i].Kind, rows[i].kind) << rows[i].name;
    EXPECT_TRUE(TargetFitsKind(table[i])) << rows[i].name;
    std::string lower = rows[i].name, upper = rows[i].name;
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    CParam found;
    ASSERT_TRUE(cmp.FindParam(lower, found)) << lower;
    EXPECT_EQ(found.Value, table[i].Value) << lower;
    ASSERT_TRUE(cmp.FindParam(upper, found)) << upper;
  }
}

}  // namespace tz4::devtest
