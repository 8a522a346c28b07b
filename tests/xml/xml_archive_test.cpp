// CXmlNode as a tree and as an archive: tree operations, typed attributes,
// the two-way helpers and percent-encoding.
#include <gtest/gtest.h>

#include <string>

#include "xml/xml_node.h"
#include "expr/numtext.h"

using tz4::CXmlNode;
using tz4::PercentDecode;
using tz4::PercentEncode;

namespace {

// Writes `node` inline and reads it back into a fresh node in load direction.
std::unique_ptr<CXmlNode> Reload(const CXmlNode& node) {
  auto copy = std::make_unique<CXmlNode>();
  const std::string text = node.WriteInline();
  EXPECT_EQ(copy->ParseElement(text, 0), text.size()) << text;
  return copy;
}

TEST(XmlPercentEncoding, EncodeAndDecode) {
  EXPECT_EQ(PercentEncode("a b&c"), "a+b%26c");
  EXPECT_EQ(PercentEncode("AZaz09!'()*-._~"), "AZaz09!'()*-._~");
  EXPECT_EQ(PercentEncode(std::string("\"<>/=%+\xe9\x01", 9)), "%22%3c%3e%2f%3d%25%2b%e9%01");
  EXPECT_EQ(PercentDecode("a+b%26c%4A"), "a b&cJ");
  EXPECT_EQ(PercentDecode("x%00yz"), "x");  // the result is a NUL-terminated text
  // A "%" with no hex digit behind it stands for itself; with one digit it
  // is that digit's value.
  const struct {
    const char* file;
    std::string read;
    const char* saved;
  } cases[] = {
      {"100 %", "100 %", "100+%25"},
      {"Q%zz", "Q%zz", "Q%25zz"},
      {"U%4z", std::string("U\x04z", 3), "U%04z"},
      {"%4gX", std::string("\x04gX", 3), "%04gX"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(PercentDecode(c.file), c.read) << c.file;
    EXPECT_EQ(PercentEncode(c.read), c.saved) << c.file;
  }

  std::string all;
  for (int c = 1; c < 256; ++c) all += static_cast<char>(c);
  const std::string encoded = PercentEncode(all);
  EXPECT_EQ(encoded.find_first_of(" \"<>/=&\r\n"), std::string::npos);
  EXPECT_EQ(PercentDecode(encoded), all);
}

TEST(XmlAttributes, AddSetAndLookup) {
  CXmlNode node("N");
  node.AddAttribute("x", "1");
  node.AddAttribute("x", "2");
  node.AddAttribute("y", "");
  EXPECT_EQ(node.GetAttribute("x", "d"), "1");  // first one wins
  EXPECT_EQ(node.GetAttribute("y", "d"), "");
  EXPECT_EQ(node.GetAttribute("z", "d"), "d");
  EXPECT_FALSE(node.HasAttribute("X"));
  node.SetAttribute("x", "3");  // the first pair only
  node.SetAttribute("w", "4");
  EXPECT_EQ(node.WriteInline(), "<N x=\"3\" x=\"2\" y=\"\" w=\"4\" />");
  std::string name = "n", value = "v";
  node.GetAttribute(4, name, value);
  EXPECT_TRUE(name.empty() && value.empty());
}

TEST(XmlArchive, StoreThenLoadGivesTheSameFields) {
  struct Formula {
    std::string Text;
    double Value = 0;
  };
  CXmlNode out("Cmp");
  std::string plain = "R1", encoded = "  a b&c \"q\"", child = "line 1\nline 2";
  Formula r{"=2*k", 1.5e3}, c{"", -0.25};
  int count = 7;
  bool flag = true;
  double number = 0.001;
  out.ArchiveString("plain", plain);
  out.ArchiveEncodedString("enc", encoded);
  out.ArchiveChildString("Attachment", child);
  out.ArchiveValue("r", r);
  out.ArchiveValue("c", c.Text, c.Value);
  out.ArchiveInt("n", count);
  out.ArchiveBool("f", flag);
  out.ArchiveDouble("d", number);
  out.SetEncodedText("x<y");
  EXPECT_EQ(out.WriteInline(),
            "<Cmp plain=\"R1\" enc=\"++a+b%26c+%22q%22\" r_str=\"%3d2*k\" r=\"" + tz4::FormatNumber(1500) +
                "\" c=\"" + tz4::FormatNumber(-0.25) + "\" n=\"7\" f=\"true\" d=\"" + tz4::FormatNumber(0.001) +
                "\"><Attachment v=\"line+1%0aline+2\" /></Cmp>");

  auto in = Reload(out);
  EXPECT_FALSE(in->storing);
  std::string plain2, encoded2, child2;
  Formula r2{"x", 0}, c2{"stale", 0};
  int count2 = 0;
  bool flag2 = false;
  double number2 = 0;
  in->ArchiveString("plain", plain2);
  in->ArchiveEncodedString("enc", encoded2);
  in->ArchiveChildString("Attachment", child2);
  in->ArchiveValue("r", r2);
  in->ArchiveValue("c", c2);
  in->ArchiveInt("n", count2);
  in->ArchiveBool("f", flag2);
  in->ArchiveDouble("d", number2);
  EXPECT_EQ(plain2, plain);
  EXPECT_EQ(encoded2, encoded);  // blanks at the ends survive the encoded form
  EXPECT_EQ(child2, child);
  EXPECT_EQ(r2.Text, r.Text);
  EXPECT_DOUBLE_EQ(r2.Value, r.Value);
  EXPECT_EQ(c2.Text, "");  // a missing "_str" empties the text
  EXPECT_DOUBLE_EQ(c2.Value, c.Value);
  EXPECT_EQ(count2, 7);
  EXPECT_TRUE(flag2);
  EXPECT_DOUBLE_EQ(number2, 0.001);
}

TEST(XmlArchive, RawValuesLoseEndBlanksAndCannotHoldQuotes) {
  CXmlNode out("Cmp");
  std::string padded = "  pad  ";
  out.ArchiveString("raw", padded);
  out.AddAttribute("q", "say \"hi\"");
  auto in = Reload(out);
  EXPECT_EQ(in->GetAttribute("raw", ""), "pad");
  EXPECT_NE(in->GetAttribute("q", ""), "say \"hi\"");
}

}  // namespace
