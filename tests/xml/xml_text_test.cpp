// The text side of CXmlNode: exact writer output, the reader and its quirks,
// file reading, and malformed input.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "xml/xml_node.h"
#include "../doc/temp_files.h"

using tz4::CXmlNode;

namespace {

int Load(const std::string& text, const std::string& rootName = "TZ4", std::unique_ptr<CXmlNode>* out = nullptr) {
  auto root = std::make_unique<CXmlNode>(rootName);
  const int result = root->LoadFromText(text);
  if (out) *out = std::move(root);
  return result;
}

CXmlNode SampleTree() {
  CXmlNode root("TZ4");
  root.AddChild("Version")->AddIntAttribute("ver", 2);
  CXmlNode* doc = root.AddChild("Doc");
  doc->AddAttribute("save", "");
  CXmlNode* cmp = doc->AddChild("Cmps")->AddChild("Cmp");
  cmp->AddAttribute("v", "x<y&z");
  cmp->AddChild("Attachment")->text = "a & b > c";
  doc->AddChild("Empty");
  return root;
}

const char kSampleText[] =
    "<?xml version=\"1.0\"?>\n"
    "<TZ4>\n"
    "  <Version ver=\"2\" />\n"
    "  <Doc save=\"\">\n"
    "    <Cmps>\n"
    "      <Cmp v=\"x<y&z\">\n"
    "        <Attachment>a & b > c</Attachment>\n"
    "      </Cmp>\n"
    "    </Cmps>\n"
    "    <Empty />\n"
    "  </Doc>\n"
    "</TZ4>\n";

TEST(XmlWriter, ExactTextAndReadBack) {
  const CXmlNode tree = SampleTree();
  EXPECT_EQ(tree.WriteDocument(), kSampleText);
  EXPECT_EQ(tree.WriteInline(),
            "<TZ4><Version ver=\"2\" /><Doc save=\"\"><Cmps><Cmp v=\"x<y&z\"><Attachment>a & b > c</Attachment>"
            "</Cmp></Cmps><Empty /></Doc></TZ4>");

  std::unique_ptr<CXmlNode> back;
  ASSERT_EQ(Load(kSampleText, "TZ4", &back), 0);
  EXPECT_FALSE(back->storing);
  EXPECT_FALSE(back->GetChild(1)->GetChild(1)->storing);
  EXPECT_EQ(back->WriteDocument(), kSampleText);

  CXmlNode mixed("a");  // the text of an element with children is not written
  mixed.text = "lost";
  mixed.AddChild("b");
  EXPECT_EQ(mixed.WriteInline(), "<a><b /></a>");
}

TEST(XmlReader, RootSearch) {
  std::unique_ptr<CXmlNode> root;
  EXPECT_EQ(Load("junk <!-- x --> <TZ4 a=\"1\"><b /></TZ4> trailing <", "TZ4", &root), 0);
  EXPECT_EQ(root->GetAttribute("a", ""), "1");  // found by "<TZ4 "
  EXPECT_EQ(root->GetChildCount(), 1);
  EXPECT_EQ(Load("<TZ4x><b /></TZ4x>"), -2);
  EXPECT_EQ(Load("<Other />"), -2);
  EXPECT_EQ(Load("<TZ4><Doc><Cmps><Cmp /></Cmps></Doc></TZ4>", "Cmps", &root), 0);  // any root name
  EXPECT_EQ(root->GetChildCount(), 1);
}

TEST(XmlReader, Quirks) {
  CXmlNode slash;  // "/" is no delimiter of the name: "<a/>" is an open element "a/"
  std::string text = "<a/><b /></a>";
  EXPECT_EQ(slash.ParseElement(text, 0), text.size());
  EXPECT_EQ(slash.name, "a/");
  EXPECT_EQ(slash.GetChildCount(), 1);

  CXmlNode attrs;
  text = "<c  x=\"  a  \" x=\"second\" v=\"p>q/r\" e=\"\"\ty=\"1\" z='2\" k= \"v\" w=\"3\" />";
  EXPECT_EQ(attrs.ParseElement(text, 0), text.size());
  EXPECT_EQ(attrs.GetAttribute("x", ""), "a");      // trimmed; the first one wins
  EXPECT_EQ(attrs.GetAttribute("v", ""), "p>q/r");  // ">" and "/" may stand in a value
  EXPECT_EQ(attrs.GetAttribute("\ty", ""), "1");    // only blanks separate attributes
  EXPECT_EQ(attrs.GetAttribute("z", ""), "2");      // the opening quote is not looked at
  EXPECT_EQ(attrs.GetAttribute("k", "d"), "");      // the blank was taken for the quote
  EXPECT_EQ(attrs.GetAttribute("v\" w", ""), "3");

  std::unique_ptr<CXmlNode> root;
  ASSERT_EQ(Load("<TZ4><t>a &amp; b</t><n>\nlost</n><c>x<i />y</wrong><!-- note --></x></TZ4>", "TZ4", &root), 0);
  ASSERT_EQ(root->GetChildCount(), 4);
  EXPECT_EQ(root->GetChild(0)->text, "a &amp; b");  // no entities decoded
  EXPECT_EQ(root->GetChild(1)->text, "");            // no text behind a line end
  EXPECT_EQ(root->GetChild(2)->text, "x");           // only the text before the first child
  EXPECT_EQ(root->GetChild(2)->GetChildCount(), 1);  // closing name not compared
  EXPECT_EQ(root->GetChild(3)->name, "!--");         // a comment is an element
}

TEST(XmlReader, MalformedTextIsRefusedWithoutReadingPastTheEnd) {
  const char* bad[] = {
      "<TZ4>", "<TZ4><a>", "<TZ4><a x=\"1\"", "<TZ4><a x=\"1 /></TZ4>", "<TZ4><a x=", "<TZ4><a x=\"",
      "<TZ4><a /", "<TZ4></TZ4", "<TZ4><", "<TZ4 ", "<TZ4>text without end",
  };
  for (const char* text : bad) EXPECT_EQ(Load(text), -1) << text;
  EXPECT_EQ(Load(std::string("<TZ4>\0</TZ4>", 12)), -1);  // a zero byte ends the text
  CXmlNode node;
  EXPECT_EQ(node.ParseElement("<a />", 10), std::string::npos);

  // Every prefix of a valid document, and random text behind a root tag.
  const std::string sample = kSampleText;
  for (std::size_t length = 0; length + 1 < sample.size(); ++length) {
    EXPECT_NE(Load(sample.substr(0, length)), 0) << length;
  }
  const char alphabet[] = "<>/= \"\n\rTZ4ab\t";
  std::uint32_t seed = 12345;
  for (int round = 0; round < 3000; ++round) {
    std::string text = round % 2 ? "<TZ4 " : "<TZ4>";
    for (int i = 0; i < round % 97; ++i) {
      seed = seed * 1664525u + 1013904223u;
      text += alphabet[(seed >> 16) % (sizeof alphabet - 1)];
    }
    std::unique_ptr<CXmlNode> root;
    const int result = Load(text, "TZ4", &root);
    EXPECT_TRUE(result == 0 || result == -1) << text;
    root->WriteDocument();
  }
}

TEST(XmlReader, NestingDepthIsBounded) {
  auto nested = [](int depth) {
    std::string text = "<TZ4>";
    for (int i = 0; i < depth; ++i) text += "<a>";
    for (int i = 0; i < depth; ++i) text += "</a>";
    return text + "</TZ4>";
  };
  EXPECT_EQ(Load(nested(CXmlNode::kMaxDepth)), 0);
  EXPECT_EQ(Load(nested(CXmlNode::kMaxDepth + 1)), -1);
  EXPECT_EQ(Load(nested(200000)), -1);  // refused, no stack overflow
}

TEST(XmlFile, SaveAndLoad) {
  tz4_test::TempDir dir("xmlfile");
  const std::string path = dir.File("out.tz4");
  ASSERT_TRUE(SampleTree().SaveToFile(path));
  EXPECT_EQ(tz4_test::ReadFile(path), kSampleText);
  EXPECT_FALSE(SampleTree().SaveToFile(dir.File("no_such_dir/out.tz4")));
  EXPECT_FALSE(SampleTree().SaveToFile(dir.File("")));

  CXmlNode node("TZ4");
  EXPECT_EQ(node.LoadFromFile(dir.File("missing.tz4")), -1);
  EXPECT_FALSE(node.storing);
  EXPECT_EQ(node.LoadFromFile(dir.File("")), -1);  // a directory cannot be read
  tz4_test::WriteFile(dir.File("empty.tz4"), "");
  EXPECT_EQ(node.LoadFromFile(dir.File("empty.tz4")), -2);
}

TEST(XmlFile, LineEndsLongLinesAndBinaryTail) {
  tz4_test::TempDir dir("xmllines");
  const std::string text = kSampleText;
  std::string windows;
  for (char c : text) windows += c == '\n' ? std::string("\r\n") : std::string(1, c);
  tz4_test::WriteFile(dir.File("crlf.tz4"), windows);
  tz4_test::WriteFile(dir.File("open.tz4"), text.substr(0, text.size() - 1));
  CXmlNode crlf("TZ4"), open("TZ4");
  EXPECT_EQ(crlf.LoadFromFile(dir.File("crlf.tz4")), 0);
  EXPECT_EQ(crlf.WriteDocument(), text);
  // A last line without a line end is dropped, which leaves the root open.
  EXPECT_EQ(open.LoadFromFile(dir.File("open.tz4")), -1);

  const std::string longValue(7000, 'v');  // longer than one piece of the line reader
  CXmlNode tree("TZ4");
  tree.AddChild("Doc")->AddAttribute("long", longValue);
  std::string content = tree.WriteDocument();
  const char tail[] = "\0<TZ4><Doc long=\"tail\" /></TZ4>\n\xff\x00\x01";
  content.append(tail, sizeof tail - 1);
  tz4_test::WriteFile(dir.File("tail.tz4"), content);
  CXmlNode back("TZ4");
  ASSERT_EQ(back.LoadFromFile(dir.File("tail.tz4")), 0);
  ASSERT_EQ(back.GetChildCount(), 1);
  EXPECT_EQ(back.GetChild(0)->GetAttribute("long", ""), longValue);
}

}  // namespace
