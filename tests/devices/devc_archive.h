// Helpers of the tests of function blocks, delays and lines, transformers,
// meters and blocks, labels and variables and the code blocks: circuit text
// through the archive into components and back, and checks of parameter
// tables.
#pragma once
#include <gtest/gtest.h>

#include <cctype>
#include <memory>
#include <set>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "devices/registry.h"
#include "components/cmp.h"
#include "components/elem_type.h"
#include "devices/label.h"
#include "xml/xml_node.h"
#include "device_b_support.h"

namespace tz4::devc_test {

using devtest::SelectModel;
using devtest::TargetFitsKind;

using CmpList = std::vector<std::unique_ptr<CCmp>>;

// A component for the type word of a file, as the collection creates it.
inline std::unique_ptr<CCmp> CreateByWord(const std::string& word) {
  if (word == "label") return CreateLabel();
  if (word == "var") return CreateVariable();
  return ComponentTypes().Create(word);
}

// Loads every "Cmp" of the "Cmps" element in `text`, in file order. A type
// that cannot be created or a component that does not load fails the test.
inline CmpList LoadCmps(const std::string& text) {
  CmpList list;
  CXmlNode root("Cmps");
  EXPECT_EQ(root.LoadFromText(text), 0);
  for (int i = 0; i < root.GetChildCount(); i++) {
    CXmlNode* child = root.GetChild(i);
    child->storing = false;
    const std::string word = child->GetAttribute("type", "");
    std::unique_ptr<CCmp> cmp = CreateByWord(word);
    EXPECT_NE(cmp, nullptr) << word;
    if (cmp == nullptr) continue;
    EXPECT_TRUE(cmp->Serialize(*child, false)) << word;
    list.push_back(std::move(cmp));
  }
  return list;
}

// Stores the components into a fresh "Cmps" element and gives its text.
inline std::string StoreCmps(const CmpList& list) {
  CXmlNode root("Cmps");
  root.storing = true;
  for (const auto& cmp : list) cmp->Serialize(*root.AddChild("Cmp"), false);
  return root.WriteInline();
}

// One component element: loaded (null when it cannot be created), stored.
inline std::unique_ptr<CCmp> LoadOne(const std::string& cmpText) {
  CmpList list = LoadCmps("<Cmps>" + cmpText + "</Cmps>");
  return list.empty() ? nullptr : std::move(list.front());
}
inline std::string StoreOne(CCmp& cmp) {
  CXmlNode node("Cmp");
  node.storing = true;
  cmp.Serialize(node, false);
  return node.WriteInline();
}

inline const void* TargetAddress(const CParam& param) {
  return std::visit(
      [](const auto& target) -> const void* {
        using Target = std::decay_t<decltype(target)>;
        if constexpr (std::is_same_v<Target, std::monostate>) {
          return nullptr;
        } else {
          return static_cast<const void*>(target);
        }
      },
      param.Value);
}

// For every model of the component's type: each parameter is found by its
// name in any case, is bound to a member of its kind, and no two parameters
// of one model share a member. Gives the number of parameters seen.
inline int ExpectParamsReachable(CCmp& cmp) {
  int seen = 0;
  for (int m = 0; cmp.models[m].name != nullptr; m++) {
    cmp.modelIndex = m;
    const std::string model = cmp.models[m].name;
    const CParamTable table = cmp.BindParams();
    std::set<const void*> targets;
    for (const CParam& param : table) {
      seen++;
      const std::string name = param.Name;
      EXPECT_TRUE(TargetFitsKind(param)) << cmp.type->tag << " " << model << " " << name;
      EXPECT_TRUE(targets.insert(TargetAddress(param)).second) << cmp.type->tag << " " << model << " " << name;
      std::string lower = name, upper = name;
      for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
      for (const std::string& asked : {lower, upper}) {
        CParam found;
        const bool known = cmp.FindParam(asked, found);
        EXPECT_TRUE(known) << cmp.type->tag << " " << model << " " << asked;
        if (known) {
          EXPECT_EQ(TargetAddress(found), TargetAddress(param)) << cmp.type->tag << " " << model << " " << asked;
        }
      }
    }
  }
  return seen;
}

// The names of the present model's parameters, in table order.
inline std::vector<std::string> ParamNames(CCmp& cmp) {
  std::vector<std::string> names;
  for (const CParam& param : cmp.BindParams()) names.push_back(param.Name);
  return names;
}

}  // namespace tz4::devc_test
