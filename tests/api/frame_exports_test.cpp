// The frame exports through the C interface: the reporting protocol, the
// handles, and opening, saving and closing real files.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "../doc/temp_files.h"
#include "api/documents.h"
#include "base/last_error.h"
#include "tz4.h"

using tz4_test::DataFile;
using tz4_test::ReadFile;
using tz4_test::TempDir;
using tz4_test::WriteFile;

namespace {

std::string Error() { return TZ4_GetError(); }

const std::string kMinimal = DataFile("frame_minimal.tz4");
const std::string kExtras = DataFile("host_extras.tz4");

// Runs in a process of its own, in which nothing has been called before.
TEST(FrameExportsDeathTest, FreshProcessStartsEmptyAndAtHandleZero) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        const bool emptyAtStart = std::string(TZ4_GetError()).empty();
        const int first = TZ4_Open(kMinimal.c_str());
        const int failed = TZ4_Open("no such file.tz4");
        const int second = TZ4_Open(kMinimal.c_str());
        std::_Exit(emptyAtStart && first == 0 && failed == -1 && second == 1 ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

TEST(FrameExports, ReportingProtocol) {
  const int h = TZ4_Open(kMinimal.c_str());
  ASSERT_GE(h, 0) << Error();
  const char* first = TZ4_GetError();
  EXPECT_STREQ(first, "OK");
  EXPECT_EQ(TZ4_GetError(), first);  // reading changes nothing
  EXPECT_STREQ(TZ4_GetError(), "OK");

  EXPECT_EQ(TZ4_Close(-7), -1);
  EXPECT_EQ(Error(), "TZ4_Close: no circuit");
  const char* info = TZ4_GetInfo();  // clobbers the failure
  EXPECT_STREQ(info, "Version 2.72, Date 05/04/2020");
  EXPECT_EQ(info, TZ4_GetError());
  EXPECT_EQ(TZ4_GetLicense(), 0);
  EXPECT_EQ(Error(), "License is not needed");

  tz4::SetLastError("TZ4_X: ");
  EXPECT_EQ(tz4::FindDocument(-1), nullptr);
  EXPECT_EQ(Error(), "TZ4_X: no circuit");
  ASSERT_NE(tz4::FindDocument(h), nullptr);
  EXPECT_EQ(tz4::FindDocument(h)->fileName, kMinimal);
  EXPECT_EQ(tz4::PositiveInfinity, std::numeric_limits<double>::infinity());
  EXPECT_EQ(tz4::NegativeInfinity, -std::numeric_limits<double>::infinity());
  EXPECT_EQ(TZ4_Close(h), 0);
  EXPECT_EQ(Error(), "OK");
}

TEST(FrameExports, OpenFailures) {
  EXPECT_EQ(TZ4_Open(nullptr), -1);
  EXPECT_EQ(Error(), "TZ4_Open: NULL pointer");
  EXPECT_EQ(TZ4_Open(""), -1);
  EXPECT_EQ(Error(), "TZ4_Open: no file name");

  TempDir dir("apiopen");
  const std::string head = "<?xml version=\"1.0\"?>\n";
  const std::pair<std::string, std::string> files[] = {
      {"new.tz4", head + "<TZ4>\n<Version ver=\"3\" />\n<Doc />\n</TZ4>\n"},
      {"nodoc.tz4", head + "<TZ4>\n<Version ver=\"2\" />\n</TZ4>\n"},
      {"cut.tz4", head + "<TZ4>\n<Doc>\n<Calc zero=\"1e-9\" />\n"},
      {"quote.tz4", head + "<TZ4>\n<Doc>\n<Calc zero=\"1e-9 />\n</Doc>\n</TZ4>\n"},
      {"foreign.tz4", head + "<Circuit>\n<Doc />\n</Circuit>\n"},
      {"binary.tz4", std::string("\x7f" "ELF\0<TZ4>\n", 11)},
      {std::string(3000, 'm'), ""},  // missing; long names are copied whole
  };
  for (const auto& [name, content] : files) {
    const std::string path = dir.File(name);
    if (!content.empty()) WriteFile(path, content);
    EXPECT_EQ(TZ4_Open(path.c_str()), -1) << name;
    EXPECT_EQ(Error(), "TZ4_Open: cannot open file " + path);
  }
}

TEST(FrameExports, HandlesAreNeverReusedNorWasted) {
  TempDir dir("apihandles");
  const int h1 = TZ4_Open(kMinimal.c_str());
  EXPECT_EQ(TZ4_Open("missing.tz4"), -1);
  const int h2 = TZ4_Open(kExtras.c_str());
  const int h3 = TZ4_Open(kMinimal.c_str());
  ASSERT_GE(h1, 0);
  EXPECT_EQ(h2, h1 + 1);  // a failed open uses no number
  EXPECT_EQ(h3, h2 + 1);

  EXPECT_EQ(TZ4_Close(h2), 0);
  EXPECT_EQ(TZ4_SaveAs(h2, dir.File("two.tz4").c_str()), -1);
  EXPECT_FALSE(tz4_test::FileExists(dir.File("two.tz4")));

  std::vector<int> order;  // the rest keep their order of opening
  for (const auto& doc : tz4::DocumentList()) {
    if (doc->handle >= h1 && doc->handle <= h3) order.push_back(doc->handle);
  }
  EXPECT_EQ(order, (std::vector<int>{h1, h3}));
  EXPECT_EQ(TZ4_SaveAs(h1, dir.File("one.tz4").c_str()), 0);
  EXPECT_EQ(TZ4_SaveAs(h3, dir.File("three.tz4").c_str()), 0);
  EXPECT_EQ(ReadFile(dir.File("three.tz4")), ReadFile(kMinimal));

  const int h4 = TZ4_Open(kMinimal.c_str());
  EXPECT_EQ(h4, h3 + 1);
  for (int h : {h1, h3, h4}) EXPECT_EQ(TZ4_Close(h), 0);
}

TEST(FrameExports, SaveAsChecksTheHandleBeforeTheName) {
  EXPECT_EQ(TZ4_SaveAs(-3, nullptr), -1);
  EXPECT_EQ(Error(), "TZ4_SaveAs: no circuit");
  const int h = TZ4_Open(kMinimal.c_str());
  ASSERT_GE(h, 0);
  EXPECT_EQ(TZ4_SaveAs(h, nullptr), -1);
  EXPECT_EQ(Error(), "TZ4_SaveAs: NULL pointer");
  EXPECT_EQ(TZ4_SaveAs(h, ""), -1);
  EXPECT_EQ(Error(), "TZ4_SaveAs: no file name");
  EXPECT_EQ(TZ4_Close(h), 0);
}

TEST(FrameExports, SaveAfterSaveAsWritesTheOpenedFile) {
  TempDir dir("apisave");
  const std::string original = dir.File("a.tz4"), other = dir.File("b.tz4");
  WriteFile(original, ReadFile(kExtras));
  const int h = TZ4_Open(original.c_str());
  ASSERT_GE(h, 0) << Error();
  ASSERT_EQ(TZ4_SaveAs(h, other.c_str()), 0) << Error();
  EXPECT_EQ(Error(), "OK");
  EXPECT_EQ(ReadFile(other), ReadFile(kExtras));  // what the library does not know is kept

  std::filesystem::remove(original);
  ASSERT_EQ(TZ4_Save(h), 0) << Error();
  EXPECT_EQ(ReadFile(original), ReadFile(kExtras));
  EXPECT_EQ(TZ4_Close(h), 0);
}

TEST(FrameExports, SaveFailuresKeepTheDocumentOpen) {
  TempDir dir("apifail");
  const std::string sub = dir.File("sub");
  std::filesystem::create_directories(sub);
  const std::string path = sub + "/c.tz4";
  std::string withTail = ReadFile(kMinimal) + std::string("\0\x01\x02\xff", 4);
  WriteFile(path, withTail);
  const int h = TZ4_Open(path.c_str());  // a binary tail does not hinder opening
  ASSERT_GE(h, 0) << Error();

  const std::string nowhere = dir.File("missing_dir/c.tz4");
  EXPECT_EQ(TZ4_SaveAs(h, nowhere.c_str()), -1);
  EXPECT_EQ(Error(), "TZ4_SaveAs: cannot save file " + nowhere);
  std::filesystem::remove_all(sub);
  EXPECT_EQ(TZ4_Save(h), -1);
  EXPECT_EQ(Error(), "TZ4_Save: cannot save file " + path);

  std::filesystem::create_directories(sub);
  EXPECT_EQ(TZ4_Save(h), 0);
  EXPECT_EQ(ReadFile(path), ReadFile(kMinimal));  // no data bit: no tail written
  EXPECT_EQ(TZ4_Close(h), 0);
}

TEST(FrameExports, ExceptionsBecomeMessages) {
  auto report = [](auto&& thrower) {
    tz4::SetLastError("TZ4_Test: ");
    try {
      thrower();
    } catch (...) {
      return tz4::ReportCurrentException();
    }
    return 0;
  };
  EXPECT_EQ(report([] { throw std::bad_alloc(); }), -1);
  EXPECT_EQ(Error(), "TZ4_Test: No enough memory");
  EXPECT_EQ(report([] { throw std::runtime_error("disk on fire"); }), -1);
  EXPECT_EQ(Error(), "TZ4_Test: disk on fire");
  EXPECT_EQ(report([] { throw 42; }), -1);
  EXPECT_EQ(Error(), "TZ4_Test: unknown failure");
}

}  // namespace
