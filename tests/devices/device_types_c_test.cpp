#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

#include "components/cmp.h"
#include "devices/device_types.h"

namespace tz4 {
namespace {

// Each type of the group is creatable by its tag, with its pin count, and
// no other group defines the same tag.
TEST(DeviceTypesC, EveryTypeIsCreatableByItsTag) {
  const std::vector<const ElemType*> group = DeviceTypesC();
  EXPECT_EQ(group.size(), 25u);
  for (const ElemType* type : group) {
    ASSERT_NE(type, nullptr);
    ASSERT_NE(type->tag, nullptr);
    EXPECT_NE(type->description, nullptr) << type->tag;
    EXPECT_EQ(CElemSet::Instance().Find(type->tag), type) << type->tag;
    std::unique_ptr<CCmp> cmp = CElemSet::Instance().Create(type->tag);
    ASSERT_NE(cmp, nullptr) << type->tag;
    EXPECT_EQ(cmp->type, type);
    EXPECT_EQ(cmp->pinCount, type->pinCount) << type->tag;
    EXPECT_EQ(cmp->modelIndex, -1);
    ASSERT_NE(type->models, nullptr);
    EXPECT_NE(type->models[0].name, nullptr) << type->tag;
  }
}

TEST(DeviceTypesC, NoTagIsDefinedTwice) {
  std::set<std::string> tags;
  for (auto* group : {DeviceTypesA, DeviceTypesB, DeviceTypesC})
    for (const ElemType* type : group()) EXPECT_TRUE(tags.insert(type->tag).second) << type->tag;
}

// Model names are unique within a type, and the subcircuit rows carry no
// parameters and no rows of their own.
TEST(DeviceTypesC, ModelTablesAreWellFormed) {
  for (const ElemType* type : DeviceTypesC()) {
    std::set<std::string> names;
    for (const ModelInfo* model = type->models; model->name != nullptr; model++) {
      EXPECT_TRUE(names.insert(model->name).second) << type->tag << " " << model->name;
      EXPECT_GT(model->id, 0) << type->tag << " " << model->name;
      if (model->id == MODEL_SUBCIR) {
        EXPECT_STREQ(model->name, "SubCir");
        EXPECT_EQ(model->params, nullptr);
        EXPECT_EQ(model->extraRows, 0);
      }
      if (model->params != nullptr) {
        int count = 0;
        for (const ParamDef* def = model->params; def->Kind != PK_END; def++) {
          EXPECT_NE(def->Name, nullptr);
          EXPECT_NE(def->Bind, nullptr);
          ASSERT_LT(++count, 20) << "unterminated table " << type->tag << " " << model->name;
        }
      }
    }
  }
}

}  // namespace
}  // namespace tz4
