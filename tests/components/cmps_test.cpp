// The component collection: order, lookups by dotted path, formulas that
// refer to one another, the reader and writer by text, checks and nodes.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "devices/registry.h"
#include "../components/test_cmp.h"
#include "base/last_error.h"
#include "components/param_ops.h"
#include "components/cmps.h"
#include "xml/xml_node.h"
#include "expr/evaluate.h"
#include "base/raise.h"

namespace tz4 {
namespace {

using testing::CTestCmp;
using testing::kTestType;
using testing::MakeTestCmp;

// Labels, variables and components that count how they are asked.
class CCountingCmp : public CTestCmp {
 public:
  CCountingCmp(bool label, bool variable, bool checkResult = true)
      : CTestCmp(kTestType), label_(label), variable_(variable), checkResult_(checkResult) {
    modelIndex = 0;
  }
  bool IsLabel() const override { return label_; }
  bool IsVariable() const override {
    questions++;
    return variable_;
  }
  bool CheckParams() override {
    checks++;
    if (!checkResult_) ComponentError(this, "bad");
    return checkResult_;
  }
  mutable int questions = 0;
  int checks = 0;

 private:
  bool label_;
  bool variable_;
  bool checkResult_;
};

std::unique_ptr<CCmp> Named(const std::string& name, bool label = false, bool variable = false) {
  auto cmp = std::make_unique<CCountingCmp>(label, variable);
  cmp->name = name;
  return cmp;
}

void AddSorted(CCmps& cmps, const std::vector<std::string>& names) {
  for (const std::string& name : names) cmps.Add(Named(name));
  cmps.Sort();
}

TEST(CmpsFind, NamesIgnoreCaseAndFirstMatchWins) {
  CCmps cmps;
  AddSorted(cmps, {"r1", "R1"});
  ASSERT_EQ(cmps.Count(), 2);
  EXPECT_EQ(cmps.Find("r1"), cmps[0]);
  EXPECT_EQ(cmps[0]->name, "R1");
  EXPECT_EQ(cmps.Find(""), nullptr);
  EXPECT_EQ(cmps.Find("R2"), nullptr);
  EXPECT_EQ(cmps.FindByPath("R1"), cmps[0]);
  EXPECT_EQ(cmps.FindByPath(" R1 "), cmps[0]);
  EXPECT_EQ(cmps.FindByPath("R1.R"), nullptr);  // not a subcircuit
  EXPECT_EQ(cmps.FindByPath(""), nullptr);
  EXPECT_EQ(cmps.FindByPath(".R"), nullptr);
}

TEST(CmpsFind, ParametersByPath) {
  CCmps cmps;
  cmps.Add(MakeTestCmp("R1"));
  cmps.Add(MakeTestCmp("X1", "SubCir"));
  CParam p;
  ASSERT_TRUE(cmps.FindParam("R1", p));
  EXPECT_STREQ(p.Name, "R");
  ASSERT_TRUE(cmps.FindParam("R1.", p));
  EXPECT_STREQ(p.Name, "R");
  ASSERT_TRUE(cmps.FindParam("r1.ic", p));
  EXPECT_STREQ(p.Name, "IC");
  EXPECT_EQ(std::get<std::string*>(p.Value), &static_cast<CTestCmp*>(cmps[0])->Ic);
  EXPECT_FALSE(cmps.FindParam("R1.nonsense", p));
  EXPECT_FALSE(cmps.FindParam("X1.R1.R", p));  // no inner collection
  EXPECT_FALSE(cmps.FindParam("", p));
  EXPECT_FALSE(cmps.FindParam("R9.R", p));
  ASSERT_NE(cmps.FindFormula("R1.K"), nullptr);
  EXPECT_EQ(cmps.FindFormula("R1.K"), &static_cast<CTestCmp*>(cmps[0])->K);
  EXPECT_EQ(cmps.FindFormula("R1.IC"), nullptr);
  EXPECT_EQ(cmps.FindComponent("R1"), cmps[0]);
  EXPECT_EQ(cmps.FindVariable("R1.R"), nullptr);
}

TEST(CmpsFind, ValuesByPath) {
  CCmps cmps;
  cmps.Add(MakeTestCmp("R1"));
  auto* r1 = static_cast<CTestCmp*>(cmps[0]);
  r1->R.Value = 4.7;
  TValue out;
  EXPECT_EQ(cmps.FindValue(std::string("R1.R"), &out), &out);
  EXPECT_EQ(out.Type, VT_DOUBLE);
  EXPECT_EQ(out.Dbl, 4.7);
  EXPECT_EQ(cmps.FindValue(std::string("R1"), &out), &out);  // the first parameter
  EXPECT_EQ(cmps.FindValue(std::string("R1.x"), &out), nullptr);
  EXPECT_EQ(cmps.FindValue(std::string(""), &out), nullptr);
  // For formulas a name needs its point.
  TValue value;
  EXPECT_FALSE(cmps.FindValue("R1", value));
  EXPECT_TRUE(cmps.FindValue("R1.R", value));
  EXPECT_EQ(value.Dbl, 4.7);
  EXPECT_FALSE(cmps.FindValue("R1.", value));
  r1->R.Invalid = true;
  EXPECT_THROW(cmps.FindValue(std::string("R1.R"), &out), RaisedError);
  EXPECT_THROW(cmps.FindValue("R1.R", value), RaisedError);
}

TEST(CmpsFormulas, InvalidFormulasAreRetriedAndStayInvalidOnFailure) {
  CCmps cmps;
  cmps.Add(MakeTestCmp("A"));
  auto* a = static_cast<CTestCmp*>(cmps[0]);
  a->K.Text = "=nothing.R";
  a->R.Text = "=5";
  a->R.Value = 5.0;
  a->R.Invalid = true;
  EXPECT_TRUE(cmps.UpdateFormulas());  // the invalid flag cleared counts as a change
  EXPECT_FALSE(a->R.Invalid);
  EXPECT_TRUE(a->K.Invalid);
  CParam k;
  ASSERT_TRUE(a->FindParam("K", k));
  EXPECT_EQ(GetDisplayText(k), "#VAL");
}

TEST(CmpsFormulas, RingsOfFormulasAreCutOff) {
  CCmps cmps;
  cmps.Add(MakeTestCmp("A"));
  cmps.Add(MakeTestCmp("B"));
  cmps.Add(MakeTestCmp("C"));
  auto* a = static_cast<CTestCmp*>(cmps[0]);
  auto* b = static_cast<CTestCmp*>(cmps[1]);
  auto* c = static_cast<CTestCmp*>(cmps[2]);
  a->R.Text = "=B.R+1";
  b->R.Text = "=A.R+1";
  c->R.Text = "=C.K*2";
  EXPECT_TRUE(cmps.UpdateFormulas());
  EXPECT_TRUE(a->R.Invalid);
  EXPECT_TRUE(b->R.Invalid);
  EXPECT_FALSE(c->R.Invalid);
  EXPECT_EQ(c->R.Value, 4.0);
  // A self-reference entered by text is refused.
  CParam r;
  ASSERT_TRUE(c->FindParam("R", r));
  SetLastError("");
  EXPECT_EQ(SetText(r, "=C.R+1", &cmps, nullptr), -1);
  EXPECT_EQ(LastError(), "Circular reference");
  std::string error;
  bool ok = true;
  SetFromExpression(r, error, "=2*c.r", &cmps, nullptr, ok);
  EXPECT_FALSE(ok);
  EXPECT_EQ(error, "Error : Circular reference");
}

TEST(CmpsAssign, ReadsAndSetsByText) {
  CCmps cmps;
  cmps.Add(MakeTestCmp("R1"));
  auto* r1 = static_cast<CTestCmp*>(cmps[0]);
  std::string result;
  bool ok = false;
  double number = 0;
  EXPECT_EQ(cmps.Assign(20, "R1.model", "", result, ok), r1);
  EXPECT_TRUE(ok);
  EXPECT_EQ(result, "Linear");
  cmps.Assign(20, "R1.MODEL", "pwl", result, ok);
  EXPECT_TRUE(ok);
  EXPECT_EQ(result, "PWL");
  EXPECT_EQ(r1->modelIndex, 1);
  cmps.Assign(20, "R1.model", "none", result, ok);
  EXPECT_FALSE(ok);
  EXPECT_EQ(result, "none not found");
  r1->modelIndex = 0;

  cmps.Assign(20, "R1.r", "2*3", result, ok, nullptr, &number);
  EXPECT_TRUE(ok) << result;
  EXPECT_EQ(result, "6");
  EXPECT_EQ(number, 6.0);
  EXPECT_EQ(r1->R.Value, 6.0);
  cmps.Assign(3, "R1.R", "1/3", result, ok, nullptr, &number);
  EXPECT_TRUE(ok);
  EXPECT_DOUBLE_EQ(r1->R.Value, 0.333);
  cmps.Assign(20, "R1.R", "", result, ok, nullptr, &number);
  EXPECT_TRUE(ok);
  EXPECT_EQ(result, "333e-3");
  EXPECT_DOUBLE_EQ(number, 0.333);
  cmps.Assign(20, "R1", "", result, ok);  // the first parameter
  EXPECT_EQ(result, "333e-3");
  cmps.Assign(20, "R1.Mode", "slow", result, ok);
  EXPECT_TRUE(ok);
  EXPECT_EQ(result, "Slow");
  cmps.Assign(20, "R1.R", "R1.K*10", result, ok);
  EXPECT_TRUE(ok) << result;
  EXPECT_EQ(r1->R.Value, 20.0);
}

TEST(CmpsAssign, Failures) {
  CCmps cmps;
  cmps.Add(MakeTestCmp("R1"));
  struct Case {
    const char* path;
    const char* text;
    bool found;          // the component is returned
    const char* result;  // the whole text, or its start
  };
  const Case cases[] = {
      {"Q1.R", "1", false, "Q1.R not found"}, {".R", "1", false, ".R not found"},
      {"R1.Q", "1", true, "Q not found"},     {"R1.R", "1+nothing", true, "Error : "},
      {"R1.Active", "maybe", true, "Error : "},
  };
  for (const Case& c : cases) {
    std::string result;
    bool ok = true;
    EXPECT_EQ(cmps.Assign(20, c.path, c.text, result, ok) != nullptr, c.found) << c.path;
    EXPECT_FALSE(ok) << c.path;
    EXPECT_EQ(result.rfind(c.result, 0), 0u) << result;
    if (std::string(c.result) != "Error : ") {
      EXPECT_EQ(result, c.result);
    }
  }
}

TEST(CmpsCheck, OnlyConnectedComponentsAreCheckedAndAllOfThem) {
  CCmps cmps;
  auto add = [&](const std::string& name, std::vector<int32_t> pins, bool result) {
    auto cmp = std::make_unique<CCountingCmp>(false, false, result);
    cmp->name = name;
    cmp->SetPinCount(static_cast<int>(pins.size()));
    cmp->pins = pins;
    CCountingCmp* raw = cmp.get();
    cmps.Add(std::move(cmp));
    return raw;
  };
  CCountingCmp* open = add("A1", {-1, -1}, false);
  CCountingCmp* bad1 = add("A2", {0, -1}, false);
  CCountingCmp* good = add("A3", {1, 2}, true);
  CCountingCmp* bad2 = add("A4", {3, -5}, false);
  CCountingCmp* pinless = add("A5", {}, true);
  CCountingCmp* unset = add("A6", {}, false);
  unset->pinCount = -1;
  SetLastError("");
  EXPECT_FALSE(cmps.CheckParams());
  EXPECT_EQ(open->checks, 0);
  EXPECT_EQ(bad1->checks, 1);
  EXPECT_EQ(good->checks, 1);
  EXPECT_EQ(bad2->checks, 1);
  EXPECT_EQ(pinless->checks, 1);
  EXPECT_EQ(unset->checks, 0);
  EXPECT_EQ(LastError(), "A2 : bad; A4 : bad; ");
}

}  // namespace
}  // namespace tz4
