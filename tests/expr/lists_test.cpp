#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "expr/lists.h"
#include "base/raise.h"
#include "expr/text.h"

namespace tz4 {
namespace {

std::string TempPath(const char* name) { return std::string(TZ4_BINARY_DIR) + "/" + name; }

TEST(TList, OwnsItems) {
  TList<std::string> list;
  EXPECT_EQ(list.Add(std::make_unique<std::string>("a")), 0);
  EXPECT_EQ(list.Add(std::make_unique<std::string>("b")), 1);
  list.Insert(0, std::make_unique<std::string>("z"));
  EXPECT_EQ(*list[0], "z");
  list.Delete(0);
  EXPECT_EQ(list.Count(), 2);
  EXPECT_EQ(*list[1], "b");
  EXPECT_EQ(list.IndexOf(list[1]), 1);
  auto taken = list.Extract(0);
  EXPECT_EQ(*taken, "a");
  EXPECT_EQ(list.Count(), 1);
}

TEST(TStringList, JoinAndSplit) {
  TStringList list;
  list.Add("a");
  list.Add("b");
  list.Add("c");
  EXPECT_EQ(list.GetCommaText(), "a,b,c");
  EXPECT_EQ(list.GetSemicolonText(), "a;b;c;");
  EXPECT_EQ(list.GetText(), "a\nb\nc\n");

  list.SetCommaText("x,,y,");
  ASSERT_EQ(list.Count(), 4);
  EXPECT_EQ(list[1], "");
  EXPECT_EQ(list[3], "");
  list.SetCommaText("");
  EXPECT_EQ(list.Count(), 0);
  list.SetText("l1\r\nl2\rl3");
  ASSERT_EQ(list.Count(), 3);
  EXPECT_EQ(list[0], "l1");
  EXPECT_EQ(list[1], "l2");
  EXPECT_EQ(list[2], "l3");
  list.Insert(1, "mid");
  EXPECT_EQ(list[1], "mid");
  list.Delete(0);
  EXPECT_EQ(list[0], "mid");
}

TEST(TStringList, Files) {
  const std::string path = TempPath("expr_lists_test.txt");
  TStringList out;
  out.Add("first");
  out.Add("");
  out.Add(std::string(5000, 'x'));
  ASSERT_TRUE(out.SaveToFile(path));
  TStringList in;
  in.Add("kept");
  ASSERT_TRUE(in.LoadFromFile(path));
  ASSERT_EQ(in.Count(), 4);
  EXPECT_EQ(in[0], "kept");
  EXPECT_EQ(in[1], "first");
  EXPECT_EQ(in[2], "");
  EXPECT_EQ(in[3], std::string(5000, 'x'));

  {
    std::ofstream f(path, std::ios::binary);
    f << "a\r\n\r\nb\n\nlast";
  }
  TStringList crlf;
  ASSERT_TRUE(crlf.LoadFromFile(path));
  // Line ends are stripped; the unterminated last line is dropped.
  ASSERT_EQ(crlf.Count(), 4);
  EXPECT_EQ(crlf[0], "a");
  EXPECT_EQ(crlf[1], "");
  EXPECT_EQ(crlf[2], "b");
  EXPECT_EQ(crlf[3], "");
  std::remove(path.c_str());
  EXPECT_FALSE(crlf.LoadFromFile(path));
  EXPECT_FALSE(out.SaveToFile(TempPath("no/such/dir/x.txt")));
}

TEST(CVarList, AddFindTruncate) {
  CVarList vars;
  EXPECT_EQ(vars.Add("", VT_INT), nullptr);
  TVariable* outer = vars.Add("x", VT_DOUBLE);
  TVariable* array = vars.Add("arr", VT_INT64, 3);
  TVariable* inner = vars.Add("X", VT_INT);
  EXPECT_EQ(vars.Find("x"), inner);
  EXPECT_EQ(vars.Find("x", 2), inner);
  EXPECT_EQ(vars.Find("ARR"), array);
  EXPECT_EQ(vars.Find("nope"), nullptr);
  EXPECT_EQ(outer->Size, 0);
  EXPECT_EQ(outer->Values.size(), 1u);
  EXPECT_EQ(outer->Type(), VT_DOUBLE);
  ASSERT_EQ(array->Size, 3);
  for (const TValue& v : array->Values) {
    EXPECT_EQ(v.Type, VT_INT64);
    EXPECT_EQ(v.I64, 0);
  }
  // Entries keep their address while the list grows.
  for (int i = 0; i < 50; i++) vars.Add("v" + std::to_string(i), VT_INT);
  EXPECT_EQ(vars.Find("arr"), array);

  vars.Truncate(2);
  EXPECT_EQ(vars.Count(), 2);
  EXPECT_EQ(vars.Find("x"), outer);
  vars.Clear();
  EXPECT_EQ(vars.Count(), 0);
}

TEST(CVarList, Resize) {
  CVarList vars;
  TVariable* a = vars.Add("a", VT_DOUBLE, 2);
  a->Values[1] = TValue::MakeDouble(5);
  EXPECT_TRUE(CVarList::Resize(a, 1));
  EXPECT_EQ(a->Size, 2);
  EXPECT_TRUE(CVarList::Resize(a, 4));
  EXPECT_EQ(a->Size, 4);
  EXPECT_EQ(a->Values[1].Dbl, 5);
  EXPECT_EQ(a->Values[3].Type, VT_DOUBLE);
  EXPECT_EQ(a->Values[3].Dbl, 0);
}

TEST(SplitAssignment, Operators) {
  std::string name, value, index;
  EXPECT_EQ(SplitAssignment("a==b", name, value, index), 0);
  EXPECT_EQ(name, "a==b");
  EXPECT_EQ(SplitAssignment("a<=b", name, value, index), 0);
  EXPECT_EQ(SplitAssignment("a>=b", name, value, index), 0);
  EXPECT_EQ(SplitAssignment("a!=b", name, value, index), 0);
  EXPECT_EQ(SplitAssignment("=b", name, value, index), 0);
  EXPECT_EQ(SplitAssignment("a+b", name, value, index), 0);
  EXPECT_EQ(SplitAssignment("a<<=1", name, value, index), 27);
  EXPECT_EQ(name, "a");
  EXPECT_EQ(value, "1");
  EXPECT_EQ(SplitAssignment("a >>= 2", name, value, index), 26);
  EXPECT_EQ(name, "a");
  EXPECT_EQ(SplitAssignment("x[2] += 1", name, value, index), 28);
  EXPECT_EQ(name, "x");
  EXPECT_EQ(index, "2");
  EXPECT_EQ(value, "1");
  EXPECT_EQ(SplitAssignment("\"a=b\" = 1", name, value, index), 20);
  EXPECT_EQ(name, "\"a=b\"");
  EXPECT_EQ(SplitAssignment("a[] = {1,2}", name, value, index), 20);
  EXPECT_EQ(name, "a");
  EXPECT_EQ(index, "-100");
  EXPECT_EQ(value, "{1,2}");
  EXPECT_EQ(SplitAssignment("y = a == b", name, value, index), 20);
  EXPECT_EQ(value, "a == b");
  EXPECT_EQ(SplitAssignment("b[i+1]", name, value, index), 0);
  EXPECT_EQ(name, "b");
  EXPECT_EQ(index, "i+1");
  const int ops[] = {17, 18, 19, 29, 30, 31, 32};
  const char* texts[] = {"a|=1", "a^=1", "a&=1", "a-=1", "a*=1", "a/=1", "a%=1"};
  for (int i = 0; i < 7; i++) EXPECT_EQ(SplitAssignment(texts[i], name, value, index), ops[i]);
}

TEST(SplitWords, Words) {
  TStringList list;
  SplitWords("  a b, \"c d\" ,f(1,2)\tg<=h x=y ", list);
  ASSERT_EQ(list.Count(), 6);
  EXPECT_EQ(list[0], "a b");
  EXPECT_EQ(list[1], "c d");
  EXPECT_EQ(list[2], "f(1,2)");
  EXPECT_EQ(list[3], "g<=h x");
  EXPECT_EQ(list[4], "=");
  EXPECT_EQ(list[5], "y");
  SplitWords("", list);
  EXPECT_EQ(list.Count(), 0);
}

TEST(TextHelpers, Positions) {
  EXPECT_EQ(SubString("hello", 2, 3), "ell");
  EXPECT_EQ(SubString("hello", 4, 100), "lo");
  EXPECT_EQ(SubString("hello", 6, 1), "");
  EXPECT_THROW(SubString("hello", 7, 1), RaisedError);
  try {
    SubString("abc", 0, 1);
  } catch (const RaisedError& e) {
    EXPECT_EQ(e.Text(), "invalid string position");
  }
  EXPECT_EQ(TrimSpaces("  a b \t "), "a b \t");
  EXPECT_EQ(TrimSpaces("   "), "");
  EXPECT_EQ(SkipQuoted("x\"ab\"c", 2, 6), 6);
  EXPECT_EQ(SkipQuoted("x\"ab\"c", 1, 6), 1);
  EXPECT_EQ(SkipQuoted("\"abc", 1, 4), 5);
  EXPECT_EQ(SkipBlanks("a   b", 2, 5), 5);
  EXPECT_EQ(FirstQuotedOrPlainWord("  name=3"), "name");
  EXPECT_EQ(FirstQuotedOrPlainWord("\"a b\" rest"), "a b");
  EXPECT_EQ(PathOfFile("dir/sub\\f.tz4"), "dir/sub\\");
  EXPECT_EQ(PathOfFile("f.tz4"), "");
  EXPECT_EQ(ExtensionOfFile("dir.x/file.tz4"), ".tz4");
  EXPECT_EQ(ExtensionOfFile("dir.x/file"), "");
  EXPECT_TRUE(SameText("AbC", "aBc"));
}

TEST(TextHelpers, NextStatementAndIdentifier) {
  std::string code = ";a=1; b=\"x;y\";;c";
  int pos = 1;
  EXPECT_EQ(NextStatement(code, pos), "a=1");
  EXPECT_EQ(NextStatement(code, pos), " b=\"x;y\"");
  EXPECT_EQ(NextStatement(code, pos), "c");
  EXPECT_EQ(pos, static_cast<int>(code.size()) + 1);
  EXPECT_EQ(NextStatement(code, pos), "");

  std::string expr = "2*R1.R + sin(x1) - 1e-3*\"A.B\".C+3k";
  pos = 1;
  int start = 0;
  EXPECT_EQ(NextIdentifier(expr, pos, start), "R1.R");
  EXPECT_EQ(start, 3);
  EXPECT_EQ(NextIdentifier(expr, pos, start), "x1");
  EXPECT_EQ(NextIdentifier(expr, pos, start), "\"A.B\".C");
  EXPECT_EQ(NextIdentifier(expr, pos, start), "");
}

}  // namespace
}  // namespace tz4
