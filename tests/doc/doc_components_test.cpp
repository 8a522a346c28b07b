// CDoc with real components: loading the component list, formulas after the
// load, saving the list back, and component errors.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "base/last_error.h"
#include "components/param_ops.h"
#include "doc/doc.h"
#include "results/trace.h"
#include "solver/calc.h"
#include "temp_files.h"

using tz4::CDoc;
using tz4::CParam;
using tz4::CXmlNode;
using tz4_test::DataFile;
using tz4_test::ReadFile;
using tz4_test::TempDir;
using tz4_test::WriteFile;

namespace {

// The component names in collection order, each followed by ";".
std::string Names(const CDoc& doc) {
  std::string names;
  for (int i = 0; i < doc.cmps.Count(); ++i) names += doc.cmps[i]->name + ";";
  return names;
}

TEST(DocComponents, UnknownTypeEndsTheListButNotTheLoad) {
  tz4::SetLastError("");
  CDoc doc;
  ASSERT_TRUE(doc.Load(DataFile("unknown_type.tz4")));
  EXPECT_EQ(Names(doc), "R2;R1;");  // what was read, left unsorted
  EXPECT_EQ(tz4::LastError(), "Component type 'Q_Nothing' not found");
  EXPECT_DOUBLE_EQ(doc.settings.step, 1e-3);  // the rest of "Doc" is read

  // A component with an unknown model stays in the collection.
  TempDir dir("doccmpmodel");
  std::string text = ReadFile(DataFile("unknown_type.tz4"));
  text.replace(text.find("type=\"Q_Nothing\""), std::strlen("type=\"Q_Nothing\""), "type=\"R_R\" model=\"Nope\"");
  WriteFile(dir.File("model.tz4"), text);
  CDoc modelDoc;
  ASSERT_TRUE(modelDoc.Load(dir.File("model.tz4")));
  EXPECT_EQ(Names(modelDoc), "C1;Q1;R1;R2;");
}

TEST(DocComponents, HostNumbersAndErrors) {
  CDoc doc;
  ASSERT_TRUE(doc.Load(DataFile("values_circuit.tz4")));
  tz4::SetLastError("");
  CParam param;
  EXPECT_FALSE(doc.FindParam(nullptr, param));
  EXPECT_FALSE(doc.FindParam("", param));
  EXPECT_FALSE(doc.FindParam("X1.R3.R", param));
  EXPECT_EQ(tz4::LastError(), "NULL pointerno parameter nameparameter X1.R3.R not found");

  ASSERT_TRUE(doc.FindParam("R1.R", param));
  const int number = doc.GetParamNumber(param);
  CParam other;
  ASSERT_TRUE(doc.FindParam("R2.R", other));
  EXPECT_EQ(doc.GetParamNumber(other), number + 1);
  const CParam* found = doc.FindParamByNumber(number);
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(tz4::GetNumber(*found), 1000.0);
  EXPECT_STREQ(found->Name, "R");

  tz4::SetLastError("");
  EXPECT_FALSE(CDoc::ComponentError(doc.cmps.Find("R1"), "Roff <= 0"));
  EXPECT_FALSE(CDoc::ComponentError(doc.cmps.Find("C1"), std::string("C : formula error")));
  EXPECT_FALSE(CDoc::ComponentError(nullptr, "x"));
  EXPECT_EQ(tz4::LastError(), "R1 : Roff <= 0; C1 : C : formula error; pcmp = NULL");
}

}  // namespace
