// Building a run: the run list, node merging and numbering, allocation, and
// the loops that send one phase to every component.
#include <gtest/gtest.h>

#include <memory>

#include "components/cmps.h"
#include "calc_internals.h"
#include "fake_cmp.h"

namespace tz4 {
namespace {

using solvertest::Circuit;
using solvertest::FakeCmp;

FakeCmp* AddTo(CCmps& collection, const std::string& name, std::vector<int32_t> pins,
               int32_t rows = 0) {
  auto part = std::make_unique<FakeCmp>(name, std::move(pins), rows);
  FakeCmp* raw = part.get();
  collection.Add(std::move(part));
  return raw;
}

TEST(CalcBuild, RunListOffsetsNodesAndResetsOnlyOnAModelChange) {
  CCmps top;
  FakeCmp* a = AddTo(top, "A", {1, 2});
  FakeCmp* loose = AddTo(top, "B", {-1, -2});
  FakeCmp* g = AddTo(top, "G", {0, -1});
  FakeCmp* nopins = AddTo(top, "P", {});
  CCalc calc;
  calc.nodeBase = 3;
  EXPECT_EQ(calc.AddComponents(top), 0);
  ASSERT_EQ(calc.cmps.size(), 3u);
  EXPECT_EQ(calc.cmps[0], a);
  EXPECT_EQ(calc.cmps[1], g);
  EXPECT_EQ(calc.cmps[2], nopins);
  EXPECT_EQ(a->pins, (std::vector<int32_t>{4, 5}));
  EXPECT_EQ(g->pins, (std::vector<int32_t>{0, -1}));
  EXPECT_EQ(calc.nodeBase, 5);
  EXPECT_EQ(a->owner, &top);
  EXPECT_TRUE(loose->phases.empty());
  EXPECT_EQ(a->phases, (std::vector<int>{STAMP_RESET, STAMP_INIT}));
  EXPECT_EQ(a->prevModelId, 90);

  calc.ClearRunList();
  EXPECT_EQ(calc.nodeBase, 0);
  a->phases.clear();
  EXPECT_EQ(calc.AddComponents(top), 0);
  EXPECT_EQ(a->phases, (std::vector<int>{STAMP_INIT}));

  calc.ClearRunList();
  a->phases.clear();
  a->modelIndex = 1;  // another model of the type
  calc.AddComponents(top);
  EXPECT_EQ(a->phases, (std::vector<int>{STAMP_RESET, STAMP_INIT}));
  EXPECT_EQ(a->prevModelId, 91);
}

TEST(CalcBuild, InitCodesAreKeptAndMinusTwoStopsTheWalk) {
  CCmps top;
  FakeCmp* first = AddTo(top, "A", {1});
  first->onStamp = [](CCalc&, int phase, double) { return phase == STAMP_INIT ? 5 : 0; };
  FakeCmp* second = AddTo(top, "B", {1});
  second->onStamp = [](CCalc&, int phase, double) { return phase == STAMP_INIT ? -2 : 0; };
  FakeCmp* third = AddTo(top, "C", {1});
  CCalc calc;
  EXPECT_EQ(calc.AddComponents(top), -2);
  EXPECT_EQ(calc.cmps.size(), 2u);
  EXPECT_TRUE(third->phases.empty());
  EXPECT_EQ(first->prevModelId, 90);
  EXPECT_EQ(second->prevModelId, 0);
}

TEST(CalcBuild, SubcircuitThatCannotBeFlattenedFailsTheBuild) {
  CCmps top;
  FakeCmp* sub = AddTo(top, "X1", {1, 2});
  sub->modelIndex = 2;
  AddTo(top, "R1", {1, 2});
  CCalc calc;
  EXPECT_EQ(calc.AddComponents(top), -2);
  EXPECT_FALSE(calc.error.empty());
  EXPECT_EQ(calc.cmps.size(), 1u);
}

TEST(CalcBuild, MergeKeepsTheSmallerNumberAndSeesEarlierMerges) {
  Circuit circuit;
  FakeCmp& a = circuit.Add("A", {7, 1});
  FakeCmp& b = circuit.Add("B", {3, 9});
  FakeCmp& c = circuit.Add("C", {5, 9});
  CCalc& calc = circuit.calc;
  calc.merges = {{7, 3}, {5, 2}, {5, 9}, {4, 4}};
  calc.MergeNodes();
  EXPECT_TRUE(calc.merges.empty());
  EXPECT_EQ(a.pins, (std::vector<int32_t>{3, 1}));
  EXPECT_EQ(b.pins, (std::vector<int32_t>{3, 2}));  // 9 joined 5, which had joined 2
  EXPECT_EQ(c.pins, (std::vector<int32_t>{2, 2}));
}

TEST(CalcBuild, TooBigASystemIsRefused) {
  Circuit circuit;
  circuit.Add("Huge", {}, 11180);
  circuit.calc.NumberNodes();
  ASSERT_EQ(circuit.calc.dim, 11181);
  EXPECT_FALSE(circuit.calc.AllocateSystem());
  // The allocations are made before the size test; should they fail on a
  // small machine, the refusal is the memory's.
  EXPECT_TRUE(circuit.calc.error == "schematic too big" ||
              circuit.calc.error == "no enough memory")
      << circuit.calc.error;
  EXPECT_EQ(circuit.calc.dim, 0);
  EXPECT_TRUE(circuit.calc.x.empty());
}

}  // namespace
}  // namespace tz4
