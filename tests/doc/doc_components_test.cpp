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

double Number(CDoc& doc, const char* path) {
  CParam param;
  EXPECT_TRUE(doc.FindParam(path, param)) << path;
  return param.Kind == tz4::PK_END ? -1.0 : tz4::GetNumber(param);
}

std::string FullText(CDoc& doc, const char* path) {
  CParam param;
  std::string text;
  EXPECT_TRUE(doc.FindParam(path, param)) << path;
  EXPECT_TRUE(tz4::GetFullText(param, text)) << path;
  return text;
}

TEST(DocComponents, LoadBuildsTheSortedCollection) {
  CDoc doc;
  ASSERT_TRUE(doc.Load(DataFile("values_circuit.tz4")));
  EXPECT_EQ(Names(doc), "C1;D1;I1;P1;R1;R2;RH;V1;IN;OUT;A;");
  EXPECT_EQ(doc.traces.Count(), 2);
  EXPECT_EQ(doc.traces[0]->GetName(), "V(C1)");
  EXPECT_EQ(doc.traces[1]->GetName(), "R1.R*2");
  // Formulas are evaluated once the whole list is there, with the logic
  // levels of this file.
  EXPECT_EQ(Number(doc, "R2.R"), 2000.0);
  EXPECT_EQ(Number(doc, "RH.R"), 3300.0);
  EXPECT_EQ(doc.changeFlags, 0u);
  EXPECT_FALSE(doc.running);
  ASSERT_NE(doc.calc, nullptr);
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

TEST(DocComponents, SaveRewritesTheComponentsInCollectionOrder) {
  TempDir dir("doccmpsave");
  const std::string first = dir.File("first.tz4");
  const std::string second = dir.File("second.tz4");
  {
    CDoc doc;
    ASSERT_TRUE(doc.Load(DataFile("values_circuit.tz4")));
    CParam r1;
    ASSERT_TRUE(doc.FindParam("R1.R", r1));
    ASSERT_EQ(tz4::SetValue(r1, 1500.0, &doc.changeFlags), 0);
    doc.cmps.UpdateFormulas();  // as a run does after a change
    ASSERT_TRUE(doc.Save(first));
    ASSERT_TRUE(doc.Save(second));  // saving twice gives the same file
    CXmlNode* cmps = doc.xml->FindChild("Doc")->FindChild("Cmps");
    ASSERT_EQ(cmps->GetChildCount(), doc.cmps.Count());
    EXPECT_EQ(cmps->GetChild(0)->GetAttribute("name"), "C1");
    EXPECT_EQ(cmps->GetChild(0)->name, "Cmp");
  }
  EXPECT_EQ(ReadFile(first), ReadFile(second));

  CDoc back;
  ASSERT_TRUE(back.Load(first));
  EXPECT_EQ(Names(back), "C1;D1;I1;P1;R1;R2;RH;V1;IN;OUT;A;");
  EXPECT_EQ(Number(back, "R1.R"), 1500.0);
  EXPECT_EQ(FullText(back, "R2.R"), "=R1.R*2");  // the formula, not its value
  EXPECT_EQ(Number(back, "R2.R"), 3000.0);
  EXPECT_EQ(Number(back, "P1.Position"), 0.5);
  EXPECT_EQ(FullText(back, "D1.IC"), "Off");
  EXPECT_EQ(Number(back, "V1.V"), 5.0);
  EXPECT_EQ(Number(back, "A.Value"), 3.0);
  EXPECT_EQ(back.traces.Count(), 2);
  // Saving what was read back gives the same text again.
  const std::string third = dir.File("third.tz4");
  ASSERT_TRUE(back.Save(third));
  EXPECT_EQ(ReadFile(third), ReadFile(first));
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
