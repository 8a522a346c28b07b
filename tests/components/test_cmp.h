// A small component class for tests, with its own type, model and parameter
// tables: one parameter of every kind group.
#pragma once
#include <memory>
#include <string>

#include "components/cmp.h"
#include "xml/xml_node.h"
#include "expr/formula.h"

namespace tz4::testing {

inline const char* const kTestModeNames[] = {"Fast", "Slow", "Off", nullptr};

class CTestCmp : public CCmp {
 public:
  explicit CTestCmp(const ElemType& elemType) : CCmp(elemType) {
    Mode.Names = kTestModeNames;
    R.Value = 1.0;
    K.Value = 2.0;
  }

  bool Serialize(CXmlNode& archive, bool customFlag) override {
    if (!SerializeBase(archive, customFlag)) return false;
    archive.ArchiveValue("r", R);
    archive.ArchiveValue("k", K);
    archive.ArchiveString("ic", Ic);
    return true;
  }

  CFormula R;
  CFormula K;
  std::string Ic;
  std::string File;
  CEnumValue Mode;
  int32_t Active = 0;
  int32_t Cycle = 0;
  int32_t Level = 0;
  std::string Code;
};

inline const ParamDef kTestParams[] = {
    {PK_VALUE, "R", &BindMember<&CTestCmp::R>},
    {PK_VALUE, "K", &BindMember<&CTestCmp::K>},
    {PK_IC, "IC", &BindMember<&CTestCmp::Ic>},
    {PK_DATA_FILE, "File", &BindMember<&CTestCmp::File>},
    {PK_ENUM, "Mode", &BindMember<&CTestCmp::Mode>},
    {PK_ON_OFF, "Active", &BindMember<&CTestCmp::Active>},
    {PK_YES_NO, "Cycle", &BindMember<&CTestCmp::Cycle>},
    {PK_HIGH_LOW, "Out", &BindMember<&CTestCmp::Level>},
    {PK_PWL, "pwl", &BindMember<&CTestCmp::pwl>},
    {PK_CODE, "Code", &BindMember<&CTestCmp::Code>},
    {},
};

inline const ParamDef kTestTableParams[] = {
    {PK_PWL, "pwl", &BindMember<&CTestCmp::pwl>},
    {},
};

inline const ModelInfo kTestModels[] = {
    {"Linear", 15, kTestParams, 0, 2, TRACE_V | TRACE_I},
    {"PWL", 8, kTestTableParams, 0, 1, TRACE_V},
    {"Plain", 9, nullptr, 0, 0, TRACE_V},
    {"SubCir", 7, nullptr, 0, 0, TRACE_V, 0, 1},
    {},
};

inline const ElemType kTestType{"T_TEST", 2, &MakeCmp<CTestCmp>, kTestModels, 1, "Test\ncomponent"};
// A type whose pins come from the file.
inline const ElemType kTestCustomType{"T_TESTCUSTOM", 0, &MakeCmp<CTestCmp>, kTestModels, 1, "Custom\ntest"};

inline std::unique_ptr<CTestCmp> MakeTestCmp(const std::string& name, const std::string& model = "Linear") {
  auto cmp = std::make_unique<CTestCmp>(kTestType);
  cmp->name = name;
  for (int i = 0; kTestModels[i].name != nullptr; i++)
    if (model == kTestModels[i].name) cmp->modelIndex = i;
  return cmp;
}

}  // namespace tz4::testing
