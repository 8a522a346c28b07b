// Shared checks for the tests of the switch, transistor, amplifier,
// controlled-source and logic families: creating components by tag, loading
// and storing their file elements, and walking their model and parameter
// tables.
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

// The component's element, written on one line.
inline std::string Store(CCmp& cmp) {
  CXmlNode node("Cmp");
  EXPECT_TRUE(cmp.Serialize(node, false));
  return node.WriteInline();
}

// The element loads and stores back to the very same text.
template <class T>
void ExpectRoundTrip(const std::string& tag, const std::string& element) {
  auto cmp = Load<T>(tag, element);
  ASSERT_NE(cmp, nullptr);
  EXPECT_EQ(Store(*cmp), element);
}

// A circuit's "Cmps" element loads through the component collection and
// stores back to the very same text. The text must list its components in
// collection order, since the collection sorts what it loads.
inline void ExpectCircuitRoundTrip(const std::string& cmpsElement) {
  CXmlNode root("Cmps");
  ASSERT_EQ(root.LoadFromText(cmpsElement), 0);
  CCmps circuit;
  ASSERT_TRUE(circuit.Serialize(&root, ComponentTypes()));
  CXmlNode out("Cmps");
  out.storing = true;
  ASSERT_TRUE(circuit.Serialize(&out, ComponentTypes()));
  EXPECT_EQ(out.WriteInline(), cmpsElement);
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

struct ModelRow {
  const char* name;
  int32_t id;
  int32_t extraRows;
  int32_t traceMask;
};

// The type's description, pin count and model table, row by row.
inline void ExpectType(const std::string& tag, int64_t pinCount, const char* description,
                       const std::vector<ModelRow>& rows) {
  const ElemType* type = ComponentTypes().Find(tag);
  ASSERT_NE(type, nullptr) << tag;
  EXPECT_EQ(type->pinCount, pinCount) << tag;
  EXPECT_STREQ(type->description, description) << tag;
  ASSERT_NE(type->models, nullptr);
  size_t count = 0;
  while (type->models[count].name != nullptr) count++;
  ASSERT_EQ(count, rows.size()) << tag;
  for (size_t i = 0; i < rows.size(); i++) {
    const ModelInfo& model = type->models[i];
    SCOPED_TRACE(tag + " " + rows[i].name);
    EXPECT_STREQ(model.name, rows[i].name);
    EXPECT_EQ(model.id, rows[i].id);
    EXPECT_EQ(model.extraRows, rows[i].extraRows);
    EXPECT_EQ(model.traceMask, rows[i].traceMask);
    EXPECT_EQ(model.params == nullptr, model.id == MODEL_SUBCIR);
  }
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
