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

TEST(CalcBuild, NumberingPutsLogicNodesBehindTheMatrix) {
  Circuit circuit;
  FakeCmp& logic = circuit.Add("L1", {5, 9});
  logic.logicPins = {0, 1};
  FakeCmp& x = circuit.Add("X", {9, 2}, 2);
  FakeCmp& y = circuit.Add("Y", {7, 0}, 1);
  FakeCmp& none = circuit.Add("Z", {0}, 0);
  circuit.calc.NumberNodes();
  CCalc& calc = circuit.calc;
  // Matrix nodes 2, 7, 9 become 1, 2, 3 in the order of their numbers; the
  // node that only logic pins touch goes behind the three extra rows.
  EXPECT_EQ(x.pins, (std::vector<int32_t>{3, 1}));
  EXPECT_EQ(y.pins, (std::vector<int32_t>{2, 0}));
  EXPECT_EQ(logic.pins, (std::vector<int32_t>{7, 3}));
  EXPECT_EQ(calc.dim, 7);
  EXPECT_EQ(calc.total, 8);
  EXPECT_EQ(logic.firstRow, 0);
  EXPECT_EQ(x.firstRow, 4);
  EXPECT_EQ(y.firstRow, 6);
  EXPECT_EQ(none.firstRow, 0);
}

TEST(CalcBuild, NoNodesAndNoRowsGiveDimensionOne) {
  Circuit circuit;
  circuit.Add("G", {0, 0});
  ASSERT_TRUE(circuit.Build());
  EXPECT_EQ(circuit.calc.dim, 1);
  EXPECT_EQ(circuit.calc.total, 1);
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

TEST(CalcBuild, ClearSystemKeepsTheSolution) {
  Circuit circuit;
  circuit.Resistor("R1", 1, 0, 1.0);
  ASSERT_TRUE(circuit.Build());
  CCalc& calc = circuit.calc;
  calc.x[1] = 2.0;
  calc.xPrev[1] = 3.0;
  Raw(calc).sPrev[1] = 4.0;
  Raw(calc).A[1][1] = Raw(calc).B[1][1] = Raw(calc).c[1] = Raw(calc).s[1] = Raw(calc).sB[1] = 1.0;
  Raw(calc).rowMark[1] = Raw(calc).rowFree[1] = Raw(calc).maskA[1][1] = Raw(calc).maskB[1][1] = 1;
  calc.ClearSystem();
  EXPECT_EQ(calc.x[1], 2.0);
  EXPECT_EQ(calc.xPrev[1], 3.0);
  EXPECT_EQ(Raw(calc).sPrev[1], 4.0);
  EXPECT_EQ(Raw(calc).A[1][1] + Raw(calc).B[1][1] + Raw(calc).c[1] + Raw(calc).s[1] + Raw(calc).sB[1], 0.0);
  EXPECT_EQ(Raw(calc).rowMark[1] + Raw(calc).rowFree[1] + Raw(calc).maskA[1][1] + Raw(calc).maskB[1][1], 0);
}

TEST(CalcBuild, MatrixStampRunsTwoPassesAndBuildsTheMasks) {
  Circuit circuit;
  FakeCmp& part = circuit.Add("P", {1, 2});
  std::vector<int> passes;
  part.onStamp = [&passes](CCalc& calc, int phase, double) {
    if (phase != STAMP_MATRIX) return 0;
    passes.push_back(calc.pass);
    if (calc.pass == 1) {
      Raw(calc).A[1][2] = 1.0;
      Raw(calc).B[2][1] = 2.0;
    }
    return 0;
  };
  ASSERT_TRUE(circuit.Build());
  CCalc& calc = circuit.calc;
  ASSERT_TRUE(calc.StampMatrices(0.0));
  EXPECT_EQ(passes, (std::vector<int>{0, 1}));
  EXPECT_EQ(Raw(calc).maskA[1][2], 1);
  EXPECT_EQ(Raw(calc).maskA[1][0], 1);
  EXPECT_EQ(Raw(calc).maskA[1][1], 0);
  EXPECT_EQ(Raw(calc).maskA[2][0], 0);
  EXPECT_EQ(Raw(calc).maskB[2][1], 1);
  EXPECT_EQ(Raw(calc).maskB[2][0], 1);
  EXPECT_EQ(Raw(calc).maskB[1][0], 0);

  part.onStamp = [](CCalc&, int phase, double) { return phase == STAMP_MATRIX ? 3 : 0; };
  EXPECT_FALSE(calc.StampMatrices(0.0));
}

TEST(CalcBuild, ComponentLoopsSkipSubcircuitsAndFoldTheirAnswers) {
  Circuit circuit;
  FakeCmp& a = circuit.Add("A", {1});
  FakeCmp& b = circuit.Add("B", {1});
  FakeCmp& sub = circuit.Add("X", {1});
  sub.modelIndex = 2;
  ASSERT_TRUE(circuit.Build());
  CCalc& calc = circuit.calc;
  calc.step = 1e-3;
  a.onEvent = [](CCalc&, double, double& next, double& maxStep) {
    next = 0.5;
    maxStep = -1.0;  // not above 0: ignored
  };
  b.onEvent = [](CCalc&, double, double& next, double& maxStep) {
    next = 0.7;
    maxStep = 1e-4;
  };
  sub.onEvent = [](CCalc&, double, double& next, double& maxStep) {
    next = 0.1;
    maxStep = 1e-9;
  };
  double next = 0, maxStep = 0;
  calc.NextEvent(0.0, next, maxStep);
  EXPECT_EQ(next, 0.5);
  EXPECT_EQ(maxStep, 1e-4);

  a.onEvent = nullptr;
  b.onEvent = nullptr;
  calc.NextEvent(0.0, next, maxStep);
  EXPECT_EQ(next, 1e99);
  EXPECT_EQ(maxStep, 1e-3);

  a.onStamp = [](CCalc&, int phase, double) { return phase == STAMP_IC_ADJUST ? 1 : 0; };
  EXPECT_EQ(calc.AdjustIC(), 1);
  EXPECT_EQ(b.Count(STAMP_IC_ADJUST), 1);  // all are asked

  a.onStamp = [](CCalc&, int phase, double) { return phase == STAMP_SAMPLE ? -1 : 0; };
  EXPECT_FALSE(calc.SampleAll(0.0));
  EXPECT_EQ(b.Count(STAMP_SAMPLE), 0);  // stopped at once
  a.onStamp = [](CCalc&, int phase, double) { return phase == STAMP_SAMPLE ? 1 : 0; };
  EXPECT_TRUE(calc.SampleAll(0.0));

  calc.AcceptAll();
  calc.lastTime = 0.25;
  calc.SaveIC();
  EXPECT_TRUE(calc.icSaved);
  EXPECT_EQ(b.Count(STAMP_ACCEPT), 1);
  EXPECT_EQ(b.Count(STAMP_SAVE_IC), 1);
  EXPECT_TRUE(sub.phases.empty());
}

}  // namespace
}  // namespace tz4
