// CDoc: loading the frame of a circuit file, and saving from the kept tree.
#include <gtest/gtest.h>

#include <string>

#include "doc/doc.h"
#include "expr/numtext.h"
#include "temp_files.h"

using tz4::CDoc;
using tz4::CXmlNode;
using tz4_test::DataFile;
using tz4_test::ReadFile;
using tz4_test::TempDir;
using tz4_test::WriteFile;

namespace {

// A file with the given body between "<TZ4>" and "</TZ4>".
std::string Circuit(const std::string& body) {
  return "<?xml version=\"1.0\"?>\n<TZ4>\n" + body + "</TZ4>\n";
}

bool LoadText(CDoc& doc, const TempDir& dir, const std::string& content) {
  const std::string path = dir.File("in.tz4");
  WriteFile(path, content);
  return doc.Load(path);
}

TEST(DocSave, PatchesOnlyStepTimeoutAndOptions) {
  TempDir dir("docpatch");
  CDoc doc;
  ASSERT_TRUE(doc.Load(DataFile("host_extras.tz4")));
  doc.settings.step = 2e-3;
  doc.settings.timeout = 12;
  doc.settings.zero = 1.0;  // not written by a save
  doc.settings.nsr = true;
  doc.options = 9;
  const std::string path = dir.File("patched.tz4");
  ASSERT_TRUE(doc.Save(path));
  std::string expected = ReadFile(DataFile("host_extras.tz4"));
  for (const auto& [from, to] : {std::pair<std::string, std::string>{"step=\"1e-6\"", "step=\"" + tz4::FormatNumber(2e-3) + "\""},
                                 {"timeout=\"30\"", "timeout=\"12\""},
                                 {"Options=\"5\"", "Options=\"9\""}}) {
    const std::size_t at = expected.find(from);
    ASSERT_NE(at, std::string::npos);
    expected.replace(at, from.size(), to);
  }
  EXPECT_EQ(ReadFile(path), expected);

  // Missing attributes are added, missing elements are not created.
  CDoc sparse;
  ASSERT_TRUE(LoadText(sparse, dir, Circuit("<Doc>\n<Calc />\n<Tran>\n<Settings />\n</Tran>\n<Cmps />\n</Doc>\n")));
  sparse.options = 3;
  ASSERT_TRUE(sparse.Save(path));
  EXPECT_EQ(ReadFile(path), Circuit("  <Doc>\n    <Calc timeout=\"0\" />\n    <Tran>\n      <Settings step=\"" +
                                    tz4::FormatNumber(0.001) + "\" />\n    </Tran>\n    <Cmps Options=\"3\" />\n  </Doc>\n"));
  CDoc bare;
  ASSERT_TRUE(LoadText(bare, dir, Circuit("<Doc>\n<Other />\n<Cmps />\n</Doc>\n")));
  ASSERT_TRUE(bare.Save(path));
  EXPECT_EQ(ReadFile(path), Circuit("  <Doc>\n    <Other />\n    <Cmps />\n  </Doc>\n"));
}

TEST(DocSave, DataBitRebuildsStorageListAndAddsTheZeroByte) {
  TempDir dir("docdata");
  CDoc doc;
  ASSERT_TRUE(LoadText(doc, dir,
                       Circuit("<Doc save=\"2\">\n<Tran>\n<Traces>\n<Trace type=\"4\" id=\"0\" tracename=\"t\" expr=\"t\">\n"
                               "<DataList>\n<Data id=\"0\" size=\"4\" type=\"0\" />\n</DataList>\n</Trace>\n"
                               "</Traces>\n<StorageList>\n<Storage name=\"Old\" id=\"3\" />\n<Storage />\n"
                               "</StorageList>\n</Tran>\n<Cmps />\n</Doc>\n")));
  const std::string path = dir.File("out.tz4");
  ASSERT_TRUE(doc.Save(path));
  const std::string saved = ReadFile(path);
  ASSERT_FALSE(saved.empty());
  EXPECT_EQ(saved.back(), '\0');
  EXPECT_NE(saved.find("      <StorageList>\n        <Storage name=\"Run\" id=\"0\" />\n      </StorageList>\n"),
            std::string::npos);
  EXPECT_EQ(saved.find("Old"), std::string::npos);
  EXPECT_NE(saved.find("<Data id=\"0\" size=\"4\" type=\"0\" />"), std::string::npos);  // no samples: kept

  CDoc back;  // the file with its tail opens and saves alike
  ASSERT_TRUE(back.Load(path));
  ASSERT_TRUE(back.Save(path));
  EXPECT_EQ(ReadFile(path), saved);

  CDoc viaProperties;  // bit from "Properties"; "StorageList" added under "Tran"
  ASSERT_TRUE(LoadText(viaProperties, dir, Circuit("<Doc>\n<Properties save=\"2\" />\n<Tran />\n<Cmps />\n</Doc>\n")));
  ASSERT_TRUE(viaProperties.Save(path));
  EXPECT_EQ(ReadFile(path), Circuit("  <Doc>\n    <Properties save=\"2\" />\n    <Tran>\n      <StorageList>\n"
                                    "        <Storage name=\"Run\" id=\"0\" />\n      </StorageList>\n    </Tran>\n"
                                    "    <Cmps />\n  </Doc>\n") + std::string(1, '\0'));
}

TEST(DocSave, SaveFlagsAndDataLists) {
  auto flags = [](const std::string& body) {
    CXmlNode doc;
    doc.ParseElement(body, 0);
    return CDoc::SaveFlags(doc);
  };
  EXPECT_EQ(flags("<Doc save=\"2\" />"), 2);
  EXPECT_EQ(flags("<Doc><Properties save=\"3\" /></Doc>"), 3);
  EXPECT_EQ(flags("<Doc save=\"0\"><Properties save=\"2\" /></Doc>"), 0);  // "Doc" wins
  EXPECT_EQ(flags("<Doc save=\"\"><Properties save=\"2\" /></Doc>"), 0);
  EXPECT_EQ(flags("<Doc><Other save=\"2\" /></Doc>"), 0);

  CXmlNode tran("Tran");
  CXmlNode* traces = tran.AddChild("Traces");
  CXmlNode* first = traces->AddChild("Trace");
  CXmlNode* dataList = first->AddChild("DataList");
  dataList->AddAttribute("kind", "kept");
  dataList->AddChild("Data")->AddAttribute("size", "99");
  traces->AddChild("Trace");
  traces->AddChild("Other");
  tran.AddChild("StorageList")->AddAttribute("note", "kept too");
  // The walk ends at the first trace without samples; emptied lists keep
  // their own attributes.
  CDoc::PrepareDataLists(tran, {5, 0, 3});
  EXPECT_EQ(tran.WriteInline(),
            "<Tran><Traces><Trace><DataList kind=\"kept\"><Data id=\"0\" size=\"5\" type=\"0\" />"
            "</DataList></Trace><Trace /><Other /></Traces><StorageList note=\"kept too\">"
            "<Storage name=\"Run\" id=\"0\" /></StorageList></Tran>");
}

TEST(DocSave, FailuresLeaveTheDocumentUsable) {
  TempDir dir("docfail");
  CDoc never;
  EXPECT_FALSE(never.Save(dir.File("never.tz4")));
  EXPECT_FALSE(tz4_test::FileExists(dir.File("never.tz4")));

  CDoc doc;
  ASSERT_TRUE(LoadText(doc, dir, ReadFile(DataFile("frame_minimal.tz4"))));
  EXPECT_FALSE(doc.Save(dir.File("no_dir/x.tz4")));
  WriteFile(doc.fileName, std::string(2000, '.'));
  ASSERT_TRUE(doc.Save(doc.fileName));  // truncates and rewrites its own file
  EXPECT_EQ(ReadFile(doc.fileName), ReadFile(DataFile("frame_minimal.tz4")));
}

TEST(DocSerialize, BothDirections) {
  CDoc doc;
  EXPECT_FALSE(doc.Serialize(nullptr));
  doc.settings.step = 1e-5;
  doc.settings.os = true;
  doc.settings.timeout = 4;
  doc.options = 6;
  CXmlNode out("Doc");
  ASSERT_TRUE(doc.Serialize(&out));
  const std::string text = out.WriteInline();
  EXPECT_EQ(text, "<Doc><Calc zero=\"" + tz4::FormatNumber(1e-11) + "\" kmin=\"" + tz4::FormatNumber(0.01) +
                      "\" nsr=\"false\" os=\"true\" low=\"0\" high=\"5\" thr=\"2.5\" timeout=\"4\" />"
                      "<Tran><Settings step=\"" + tz4::FormatNumber(1e-5) + "\" /><Traces /></Tran><Cmps Options=\"6\" /></Doc>");
  CXmlNode in;
  ASSERT_EQ(in.ParseElement(text, 0), text.size());
  CDoc back;
  ASSERT_TRUE(back.Serialize(&in));
  EXPECT_DOUBLE_EQ(back.settings.step, 1e-5);
  EXPECT_TRUE(back.settings.os);
  EXPECT_EQ(back.settings.timeout, 4);
  EXPECT_EQ(back.options, 6u);
}

}  // namespace
