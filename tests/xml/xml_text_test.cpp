// The text side of CXmlNode: exact writer output, the reader and its quirks,
// file reading, and malformed input.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "xml/xml_node.h"
#include "../doc/temp_files.h"

using tz4::CXmlNode;

namespace {

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
  // A last line without a line end is read as any other.
  EXPECT_EQ(open.LoadFromFile(dir.File("open.tz4")), 0);
  EXPECT_EQ(open.WriteDocument(), text);

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
