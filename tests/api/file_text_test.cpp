// Circuit files as people write them, through the exports: a last line with
// no line end, and names with a "%" that is no escape.
#include <fstream>
#include <sstream>

#include "circuit_run.h"

namespace tz4_test {
namespace {

class FileText : public CircuitRun {
 protected:
  std::string SavedText() {
    const std::string saved = dir.File("saved.tz4");
    EXPECT_EQ(TZ4_SaveAs(h, saved.c_str()), 0) << Error();
    std::ifstream in(saved, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
  }
};

TEST_F(FileText, ALastLineWithoutLineEndOpens) {
  std::string text = CircuitFile(Element("R_R", "R1", "R", {1, 0}, "r=\"1000\""));
  ASSERT_EQ(text.back(), '\n');
  text.pop_back();
  OpenText(text);
  double r = 0;
  EXPECT_EQ(TZ4_GetValue(h, "R1.R", &r), 0) << Error();
  EXPECT_EQ(r, 1000.0);
}

// "Q%zz" stands for itself and saves as "Q%25zz"; "U%4z" holds byte 4 and
// saves as "U%04z".
TEST_F(FileText, PercentWithoutHexDigitsStandsForItself) {
  Open(Element("R_R", "Q%zz", "R", {1, 0}, "r=\"1000\"") +
       Element("R_R", "U%4z", "R", {1, 0}, "r=\"2000\""));
  double r = 0;
  EXPECT_EQ(TZ4_GetValue(h, "Q%zz.R", &r), 0) << Error();
  EXPECT_EQ(r, 1000.0);
  EXPECT_EQ(TZ4_GetValue(h, "U\x04z.R", &r), 0) << Error();
  EXPECT_EQ(r, 2000.0);
  const std::string saved = SavedText();
  EXPECT_NE(saved.find("name=\"Q%25zz\""), std::string::npos);
  EXPECT_NE(saved.find("name=\"U%04z\""), std::string::npos);
}

}  // namespace
}  // namespace tz4_test
