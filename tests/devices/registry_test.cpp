// The one registry of component types: every type creatable by its tag, no
// tag twice, well-formed model tables, and no run that silently ignores a
// device whose behaviour is not there yet.
#include "devices/registry.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "base/last_error.h"
#include "components/cmp.h"

namespace tz4 {
namespace {

TEST(Registry, EveryTypeIsCreatedByItsTagOnce) {
  std::set<std::string> tags;
  for (const ElemType* type : ComponentTypes().Types()) {
    ASSERT_NE(type->tag, nullptr);
    EXPECT_TRUE(tags.insert(type->tag).second) << type->tag;
    EXPECT_NE(type->description, nullptr) << type->tag;
    std::unique_ptr<CCmp> cmp = ComponentTypes().Create(type->tag);
    ASSERT_NE(cmp, nullptr) << type->tag;
    EXPECT_EQ(cmp->type, type);
    EXPECT_EQ(cmp->pinCount, type->pinCount) << type->tag;
    EXPECT_EQ(cmp->modelIndex, -1);
  }
  EXPECT_EQ(tags.size(), 76u);
  // Labels and variables are made by their words, outside the list.
  EXPECT_EQ(ComponentTypes().Find("label"), nullptr);
  ASSERT_NE(ComponentTypes().Create("label"), nullptr);
  EXPECT_TRUE(ComponentTypes().Create("label")->IsLabel());
  EXPECT_TRUE(ComponentTypes().Create("var")->IsVariable());
}

// Model names are unique within a type, ids positive, parameter tables
// ended, and the subcircuit rows carry no parameters and no rows.
TEST(Registry, ModelTablesAreWellFormed) {
  for (const ElemType* type : ComponentTypes().Types()) {
    ASSERT_NE(type->models, nullptr) << type->tag;
    ASSERT_NE(type->models[0].name, nullptr) << type->tag;
    std::set<std::string> names;
    for (const ModelInfo* model = type->models; model->name != nullptr; model++) {
      EXPECT_TRUE(names.insert(model->name).second) << type->tag << " " << model->name;
      EXPECT_GT(model->id, 0) << type->tag << " " << model->name;
      if (model->id == MODEL_SUBCIR) {
        EXPECT_STREQ(model->name, "SubCir");
        EXPECT_EQ(model->params, nullptr);
        EXPECT_EQ(model->extraRows, 0);
      }
      int count = 0;
      for (const ParamDef* def = model->params; def != nullptr && def->Kind != PK_END; def++) {
        EXPECT_NE(def->Name, nullptr);
        EXPECT_NE(def->Bind, nullptr);
        ASSERT_LT(++count, 40) << "unterminated table " << type->tag << " " << model->name;
      }
    }
  }
}

TEST(Registry, RunsAreRefusedUntilSimulated) {
  for (const char* tag : {"T_NFET", "T_TNPN", "T_PFET"}) {
    std::unique_ptr<CCmp> cmp = ComponentTypes().Create(tag);
    ASSERT_NE(cmp, nullptr) << tag;
    cmp->name = "U1";
    SetLastError("");
    EXPECT_FALSE(cmp->CheckParams()) << tag;
    EXPECT_EQ(LastError(), std::string("U1 : type ") + tag + " cannot be simulated yet; ");
  }
}

}  // namespace
}  // namespace tz4
