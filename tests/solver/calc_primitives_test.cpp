// The matrix primitives write exactly their tabled coefficients, and the
// clamp check turns states by the solution and the row marks.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "solver/calc.h"
#include "calc_internals.h"

namespace tz4 {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

// A system of the given size with all entries zero.
class CalcPrimitives : public ::testing::Test {
 protected:
  void SetUp() override {
    calc.dim = 6;
    calc.total = 8;
    ASSERT_TRUE(calc.AllocateSystem());
  }
  double a(int r, int col) { return Raw(calc).A[static_cast<size_t>(r)][col]; }
  // Sum of |entries| of A outside the listed ones, to prove nothing else moved.
  int NonZeroCount() {
    int n = 0;
    for (int r = 0; r < calc.dim; ++r)
      for (int col = 0; col < calc.dim; ++col)
        if (a(r, col) != 0.0) ++n;
    return n;
  }
  CCalc calc;
};

TEST_F(CalcPrimitives, ResistorWithItsCurrentAsUnknown) {
  calc.StampResistor(1, 2, 5, 4.0);
  EXPECT_EQ(a(1, 5), 1.0);
  EXPECT_EQ(a(2, 5), -1.0);
  EXPECT_EQ(a(5, 1), -0.25);
  EXPECT_EQ(a(5, 2), 0.25);
  EXPECT_EQ(a(5, 5), -1.0);

  calc.ClearSystem();
  calc.StampResistor(3, 4, 5, 0.0);  // a short: V(4) - V(3) = 0
  EXPECT_EQ(a(5, 3), -1.0);
  EXPECT_EQ(a(5, 4), 1.0);
  EXPECT_EQ(a(5, 5), 0.0);
  EXPECT_EQ(a(3, 5), 1.0);
  EXPECT_EQ(a(4, 5), -1.0);
}

TEST_F(CalcPrimitives, ResistorInfiniteAndOnOneNode) {
  calc.StampResistor(1, 2, 5, kInf);
  EXPECT_EQ(a(5, 5), 1.0);
  EXPECT_EQ(a(5, 1), 0.0);
  EXPECT_EQ(a(1, 5), 1.0);
  calc.StampResistor(3, 3, 4, 10.0);
  EXPECT_EQ(a(4, 4), 1.0);
  EXPECT_EQ(a(3, 4), 0.0);
}

TEST_F(CalcPrimitives, ControlledSourcesFiniteAndInfinite) {
  calc.StampTransconductance(1, 2, 3, 4, 5, 0.5);
  EXPECT_EQ(a(1, 5), -1.0);
  EXPECT_EQ(a(2, 5), 1.0);
  EXPECT_EQ(a(5, 5), 1.0);
  EXPECT_EQ(a(5, 3), 0.5);
  EXPECT_EQ(a(5, 4), -0.5);

  CCalc other;
  other.dim = 6;
  other.total = 6;
  ASSERT_TRUE(other.AllocateSystem());
  other.StampTransconductance(1, 2, 3, 4, 5, kInf);
  EXPECT_EQ(Raw(other).A[1][5], -1.0);
  EXPECT_EQ(Raw(other).A[2][5], 1.0);
  EXPECT_EQ(Raw(other).A[5][3], 1.0);
  EXPECT_EQ(Raw(other).A[5][4], -1.0);
  EXPECT_EQ(Raw(other).A[5][5], 0.0);

  other.ClearSystem();
  other.StampGainVV(1, 2, 3, 4, 5, 2.0);
  EXPECT_EQ(Raw(other).A[1][5], -1.0);
  EXPECT_EQ(Raw(other).A[5][1], -1.0);
  EXPECT_EQ(Raw(other).A[5][2], 1.0);
  EXPECT_EQ(Raw(other).A[5][3], 2.0);
  EXPECT_EQ(Raw(other).A[5][4], -2.0);

  other.ClearSystem();
  other.StampGainVI(1, 2, 5, 3, 2.0);
  EXPECT_EQ(Raw(other).A[5][3], -2.0);
  EXPECT_EQ(Raw(other).A[5][1], -1.0);
  other.ClearSystem();
  other.StampGainVI(1, 2, 5, 3, kInf);
  EXPECT_EQ(Raw(other).A[5][3], -1.0);
  EXPECT_EQ(Raw(other).A[5][1], 0.0);
  EXPECT_EQ(Raw(other).A[1][5], -1.0);

  other.ClearSystem();
  other.StampCurrentGain(1, 2, 5, 3, 3.0);
  EXPECT_EQ(Raw(other).A[5][5], 1.0);
  EXPECT_EQ(Raw(other).A[5][3], -3.0);
  other.ClearSystem();
  other.StampCurrentGain(1, 1, 5, 3, -kInf);
  EXPECT_EQ(Raw(other).A[5][3], -1.0);
  EXPECT_EQ(Raw(other).A[1][5], 0.0);
  EXPECT_EQ(Raw(other).A[5][5], 0.0);
}

TEST_F(CalcPrimitives, ClampOffFreesItsRowOnlyBetweenTwoNodes) {
  calc.StampClamp(1, 2, 5, true, 0.7);
  EXPECT_EQ(Raw(calc).c[5], -0.7);
  EXPECT_EQ(Raw(calc).rowFree[5], 0);

  calc.ClearSystem();
  calc.StampClamp(1, 2, 5, true, kInf);  // on but infinite: as off
  EXPECT_EQ(Raw(calc).rowFree[5], 1);
  EXPECT_EQ(a(5, 5), 1.0);
  EXPECT_EQ(a(1, 5), 1.0);

  calc.ClearSystem();
  calc.StampClamp(3, 3, 4, false, 0.0);
  EXPECT_EQ(Raw(calc).rowFree[4], 0);
  EXPECT_EQ(a(4, 4), 1.0);
  EXPECT_EQ(NonZeroCount(), 1);
}

TEST_F(CalcPrimitives, LogicOutputInsideAndOutsideTheMatrix) {
  calc.low = 0.5;
  calc.high = 3.3;
  Raw(calc).A[2][1] = 4.0;
  Raw(calc).B[2][3] = 1.0;
  calc.StampLogicOutput(2, 1);
  EXPECT_EQ(a(2, 1), 0.0);
  EXPECT_EQ(Raw(calc).B[2][3], 0.0);
  EXPECT_EQ(a(2, 2), -1.0);
  EXPECT_EQ(Raw(calc).c[2], 3.3);
  calc.StampLogicOutput(2, 0);
  EXPECT_EQ(Raw(calc).c[2], 0.5);

  calc.StampLogicOutput(7, 1);
  EXPECT_EQ(calc.x[7], 3.3);
  calc.StampLogicOutput(7, 2);
  EXPECT_EQ(calc.x[7], 0.5);
}

TEST_F(CalcPrimitives, ClampCheckFromTheSolution) {
  const int a_ = 1, b_ = 2, r = 5;
  int32_t state = 1;
  calc.x[r] = -1e-3;  // on, current reversed: turns off
  EXPECT_TRUE(calc.CheckClamp(false, state, a_, b_, r, 0.6, 0.0, false));
  EXPECT_EQ(state, 1);
  EXPECT_TRUE(calc.CheckClamp(true, state, a_, b_, r, 0.6, 0.0, false));
  EXPECT_EQ(state, 0);

  state = 0;
  calc.x[a_] = 1.0;
  calc.x[b_] = 1.7;  // 0.7 across, above von = 0.6
  EXPECT_TRUE(calc.CheckClamp(true, state, a_, b_, r, 0.6, 0.0, false));
  EXPECT_EQ(state, 1);

  state = 0;
  calc.x[b_] = 1.0 + 0.6 * (1 + 1e-13);  // within tolerance of von: no change
  EXPECT_FALSE(calc.CheckClamp(false, state, a_, b_, r, 0.6, 0.0, false));

  state = 0;
  calc.x[b_] = 0.0;  // -1 across: below voff = -0.5, two-sided only
  EXPECT_FALSE(calc.CheckClamp(false, state, a_, b_, r, 0.6, -0.5, false));
  EXPECT_TRUE(calc.CheckClamp(true, state, a_, b_, r, 0.6, -0.5, true));
  EXPECT_EQ(state, -1);

  state = 0;
  calc.x[b_] = 2.0;
  EXPECT_FALSE(calc.CheckClamp(false, state, a_, b_, r, kInf, -kInf, true));
}

TEST_F(CalcPrimitives, ClampCheckFollowsRowMarksWhenApplying) {
  const int a_ = 1, b_ = 2, r = 5;
  int32_t state = 1;
  calc.x[r] = 1e-3;
  EXPECT_FALSE(calc.CheckClamp(true, state, a_, b_, r, 0.6, 0.0, false));
  Raw(calc).rowMark[r] = 1;
  EXPECT_FALSE(calc.CheckClamp(false, state, a_, b_, r, 0.6, 0.0, false));
  EXPECT_TRUE(calc.CheckClamp(true, state, a_, b_, r, 0.6, 0.0, false));
  EXPECT_EQ(state, 0);

  Raw(calc).rowMark[r] = 0;
  Raw(calc).rowMark[b_] = 255;
  EXPECT_TRUE(calc.CheckClamp(true, state, a_, b_, r, 0.6, 0.0, false));
  EXPECT_EQ(state, 1);
}

}  // namespace
}  // namespace tz4
