// CSignal: checks, start-up, values, events, logic level, time shift and the
// "Signal" element, on the signal of a voltage source.
#include "components/signal.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>

#include "../doc/temp_files.h"
#include "base/last_error.h"
#include "devices/registry.h"
#include "devices/source.h"
#include "xml/xml_node.h"

namespace tz4 {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kPi = 3.14159265358;
const double kAny = std::nan("");
constexpr int kAnyStage = -1000;

class SignalTest : public ::testing::Test {
 protected:
  void SetUp() override {
    source_ = ComponentTypes().Create("V_V");
    ASSERT_NE(source_, nullptr);
    source_->name = "V1";
    s_ = &static_cast<CElemV&>(*source_).Signal;
    env_.integrating = true;
    SetLastError("");
  }

  bool Start(int kind, double t) { return s_->Start(kind, t, source_.get(), env_); }

  SignalValue At(double t) {
    SignalValue out;
    std::string error;
    EXPECT_TRUE(s_->Value(t, env_, out, error)) << error;
    return out;
  }

  // NextEvent with the presets of the solver: no event, a large step.
  void Event(double t, double& next, double& step) {
    next = 1e99;
    step = 1e9;
    s_->NextEvent(t, next, step);
  }

  // NextEvent at t, then the stage, the next event and the step it leaves;
  // kAnyStage and kAny skip a check.
  void ExpectEvent(double t, int stage, double next, double step = kAny) {
    SCOPED_TRACE(t);
    double n, h;
    Event(t, n, h);
    if (stage != kAnyStage) {
      EXPECT_EQ(s_->State, stage);
    }
    if (!std::isnan(next)) {
      EXPECT_EQ(n, next);
    }
    if (!std::isnan(step)) {
      EXPECT_EQ(h, step);
    }
  }

  std::unique_ptr<CCmp> source_;
  CSignal* s_ = nullptr;
  SignalEnv env_;
};

// ---- checks ----

TEST_F(SignalTest, PulseChecksListEveryFault) {
  s_->U1.Invalid = true;
  s_->U0.Value = kInf;
  s_->Period.Value = 0;
  s_->Width.Value = -1;
  s_->Rise.Value = kInf;
  s_->Fall.Value = -1e-9;
  s_->Delay.Invalid = true;
  EXPECT_FALSE(s_->CheckParams(SIGNAL_PULSE, source_.get(), "V"));
  EXPECT_EQ(LastError(),
            "V1 : V1 : formula error; V1 : V0 = infinite; V1 : Period <= 0; V1 : Width < 0; "
            "V1 : Rise = infinite; V1 : Fall < 0; V1 : Delay : formula error; ");
}

TEST_F(SignalTest, ChecksPerModel) {
  // An infinite period is a single pulse, but no sine.
  s_->Period.Value = kInf;
  EXPECT_TRUE(s_->CheckParams(SIGNAL_PULSE, source_.get(), "I"));
  EXPECT_FALSE(s_->CheckParams(SIGNAL_SIN, source_.get(), "I"));
  EXPECT_EQ(LastError(), "V1 : Period = infinite; ");

  SetLastError("");
  s_->Period.Value = 1;
  s_->Phase.Invalid = true;
  s_->U1.Value = -kInf;
  EXPECT_FALSE(s_->CheckParams(SIGNAL_SIN, source_.get(), "I"));
  EXPECT_EQ(LastError(), "V1 : I1 = infinite; V1 : Phase : formula error; ");

  SetLastError("");
  s_->Rise.Value = -1;
  EXPECT_FALSE(s_->CheckParams(SIGNAL_STEP, source_.get(), "V"));
  EXPECT_EQ(LastError(), "V1 : V1 = infinite; V1 : Rise < 0; ");

  // Tables look at the delay only; a function at nothing.
  SetLastError("");
  EXPECT_TRUE(s_->CheckParams(SIGNAL_PWL, source_.get(), "V"));
  EXPECT_TRUE(s_->CheckParams(SIGNAL_FUNCTION, source_.get(), "V"));
  s_->Delay.Invalid = true;
  EXPECT_FALSE(s_->CheckParams(SIGNAL_FILE, source_.get(), "V"));
  EXPECT_EQ(LastError(), "V1 : Delay : formula error; ");

  SetLastError("");
  EXPECT_FALSE(s_->CheckParams(SIGNAL_TRACE, source_.get(), "V"));
  EXPECT_EQ(LastError(), "V1 : Trace model not supported; ");
}

// ---- pulse ----

TEST_F(SignalTest, PulseStartedInsideACycleFindsItsStage) {
  s_->Period.Value = 1;
  s_->Width.Value = 0.5;
  s_->Rise.Value = 0.1;
  s_->Fall.Value = 0.1;
  s_->Delay.Value = 0.2;
  ASSERT_TRUE(Start(SIGNAL_PULSE, 2.25));  // 0.05 into the third cycle's rise
  EXPECT_EQ(s_->State, STAGE_RISING);
  EXPECT_DOUBLE_EQ(s_->CycleStart, 2.2);
  ASSERT_TRUE(Start(SIGNAL_PULSE, 2.75));
  EXPECT_EQ(s_->State, STAGE_FALLING);
  ASSERT_TRUE(Start(SIGNAL_PULSE, 3.0));
  EXPECT_EQ(s_->State, STAGE_LOW);
  s_->Width.Value = kInf;
  ASSERT_TRUE(Start(SIGNAL_PULSE, 3.0));
  EXPECT_EQ(s_->State, STAGE_HIGH);
  s_->Delay.Value = kInf;
  ASSERT_TRUE(Start(SIGNAL_PULSE, 3.0));
  EXPECT_EQ(s_->State, STAGE_IDLE);
  ExpectEvent(3.0, kAnyStage, 1e99);
}

// ---- step ----

// ---- sine ----

// ---- tables ----

TEST_F(SignalTest, CyclingListRepeatsWithItsLength) {
  s_->PwlText = "0,0,1,1";
  s_->Cycle = 1;
  ASSERT_TRUE(Start(SIGNAL_PWL, 0));
  ASSERT_EQ(s_->PointCount, 2);
  EXPECT_EQ(s_->PointIndex, 0);
  double next, step;
  ExpectEvent(0, kAnyStage, 1.0, 0.25);
  SignalValue v = At(0.25);
  EXPECT_DOUBLE_EQ(v.value, 0.25);
  EXPECT_DOUBLE_EQ(v.derivative, 1);
  for (int k = 1; k <= 3; k++) {
    Event(k, next, step);
    EXPECT_EQ(s_->CycleStart, k);
    EXPECT_EQ(next, k + 1.0);
    EXPECT_DOUBLE_EQ(At(k + 0.5).value, 0.5);
  }
  // A restart in the middle of a later cycle finds its place.
  ASSERT_TRUE(Start(SIGNAL_PWL, 7.25));
  EXPECT_DOUBLE_EQ(s_->CycleStart, 7.0);
  EXPECT_DOUBLE_EQ(At(7.25).value, 0.25);
}

TEST_F(SignalTest, EqualTimesMakeAJumpAndTheEndHolds) {
  s_->PwlText = "0,0, 1,0, 1,5, 2,5";
  ASSERT_TRUE(Start(SIGNAL_PWL, 0));
  ASSERT_EQ(s_->PointCount, 4);
  double next, step;
  ExpectEvent(0, kAnyStage, 1.0);
  Event(1 - 1e-15, next, step);  // one rounding step short counts as at it
  EXPECT_EQ(s_->PointIndex, 2);
  EXPECT_EQ(next, 2.0);
  SignalValue v = At(1.5);
  EXPECT_EQ(v.value, 5);
  EXPECT_EQ(v.derivative, 0);
  EXPECT_TRUE(s_->IsHigh());

  // At a jump itself the slope is 0.
  s_->PointIndex = 1;
  v = At(1);
  EXPECT_EQ(v.value, 0);
  EXPECT_EQ(v.derivative, 0);

  s_->PointIndex = 2;
  Event(2, next, step);
  EXPECT_EQ(s_->PointIndex, 3);
  EXPECT_EQ(next, 1e99);
  EXPECT_EQ(At(9).value, 5);
  Event(9, next, step);  // finished: nothing more to say
  EXPECT_EQ(next, 1e99);
}

TEST_F(SignalTest, TableDelayAndStartPastTheEnd) {
  s_->PwlText = "1,2,3,4";
  s_->Delay.Value = 1;
  ASSERT_TRUE(Start(SIGNAL_PWL, 0));
  EXPECT_EQ(s_->PointIndex, -1);
  EXPECT_EQ(At(0).value, 2);  // the first value before the first point
  EXPECT_FALSE(s_->IsHigh());
  double next, step;
  ExpectEvent(0, kAnyStage, 2.0);  // first time plus the delay
  Event(2, next, step);
  EXPECT_EQ(s_->PointIndex, 0);
  EXPECT_EQ(next, 4.0);
  EXPECT_EQ(step, 0.5);
  EXPECT_DOUBLE_EQ(At(3).value, 3);

  ASSERT_TRUE(Start(SIGNAL_PWL, 10));
  EXPECT_EQ(s_->PointIndex, s_->PointCount);
  EXPECT_EQ(At(10).value, 4);
}

TEST_F(SignalTest, CycleOfLengthZeroStopsTheTable) {
  s_->PwlText = "1,2,1,3";
  s_->Cycle = 1;
  ASSERT_TRUE(Start(SIGNAL_PWL, 0));
  double next, step;
  ExpectEvent(0, kAnyStage, 1.0);
  Event(1, next, step);
  EXPECT_EQ(s_->PointIndex, s_->PointCount);
  EXPECT_EQ(At(5).value, 3);
}

TEST_F(SignalTest, ListFieldsAreExpressionsAndAnOddFieldIsDropped) {
  // Blanks stay inside a field, and so do commas inside parentheses.
  s_->PwlText = "0, 2 * 3, 1m, max(0.1, 0.05), 7";
  ASSERT_TRUE(Start(SIGNAL_PWL, 0));
  ASSERT_EQ(s_->PointCount, 2);
  EXPECT_EQ(s_->Points[0].Y, 6);
  EXPECT_DOUBLE_EQ(s_->Points[1].X, 1e-3);
  EXPECT_DOUBLE_EQ(s_->Points[1].Y, 0.1);

  s_->PwlText = "0,0,1,nothing";
  EXPECT_FALSE(Start(SIGNAL_PWL, 0));
  EXPECT_EQ(LastError().rfind("V1 : Error: ", 0), 0u) << LastError();
  EXPECT_EQ(s_->PointCount, 0);
  EXPECT_EQ(s_->ActiveModel, SIGNAL_PWL);
  EXPECT_EQ(At(0).value, 0);

  s_->PwlText = "3,7";  // one point holds its value
  ASSERT_TRUE(Start(SIGNAL_PWL, 0));
  EXPECT_EQ(s_->PointIndex, 0);
  EXPECT_EQ(At(5).value, 7);
  EXPECT_TRUE(s_->IsHigh());
}

// ---- data files ----

TEST_F(SignalTest, DataFileFieldsSplitAtBlanksTabsCommasAndSemicolons) {
  tz4_test::TempDir dir("signal");
  env_.folder = dir.File("");
  tz4_test::WriteFile(dir.File("mixed.txt"),
                      "0 1\n1m\t2\n2m,3\n3m;4\n4m  ;  5\nlonely\n5m max(6, 7)\n6m 0\n");
  s_->FileName = "mixed.txt";
  ASSERT_TRUE(Start(SIGNAL_FILE, 0)) << LastError();
  ASSERT_EQ(s_->PointCount, 7);  // the one-field line is skipped
  EXPECT_EQ(At(0).value, 1);
  EXPECT_EQ(At(1e-3).value, 2);
  EXPECT_EQ(At(2e-3).value, 3);
  EXPECT_EQ(At(3e-3).value, 4);
  EXPECT_EQ(At(4e-3).value, 5);
  EXPECT_EQ(s_->Points[5].Y, 7);
}

TEST_F(SignalTest, DataFileFailures) {
  tz4_test::TempDir dir("signal");
  env_.folder = dir.File("");
  EXPECT_FALSE(Start(SIGNAL_FILE, 0));
  EXPECT_EQ(LastError(), "V1 : No file name; ");
  EXPECT_EQ(s_->ActiveModel, SIGNAL_NONE);

  SetLastError("");
  s_->FileName = "missing.txt";
  EXPECT_FALSE(Start(SIGNAL_FILE, 0));
  EXPECT_EQ(LastError(), "V1 : Can't open file \"" + dir.File("missing.txt") + "\"; ");
  EXPECT_EQ(s_->ActiveModel, SIGNAL_FILE);

  // Both fields of a line are expressions: a header of two fields fails.
  SetLastError("");
  tz4_test::WriteFile(dir.File("head.txt"), "time\tvalue\n0\t1\n");
  s_->FileName = "head.txt";
  EXPECT_FALSE(Start(SIGNAL_FILE, 0));
  EXPECT_EQ(LastError().rfind("V1 : Error: ", 0), 0u) << LastError();
  EXPECT_EQ(s_->PointCount, 0);

  SetLastError("");
  tz4_test::WriteFile(dir.File("one.txt"), "1\n2\n");
  s_->FileName = dir.File("one.txt");  // a name with a folder stands as it is
  EXPECT_FALSE(Start(SIGNAL_FILE, 0));
  EXPECT_EQ(LastError(), "V1 : Empty file \"" + dir.File("one.txt") + "\"; ");

  // An attachment takes the place of the file, and has its own message.
  SetLastError("");
  source_->attachment = "1\r\n2\r\n";
  EXPECT_FALSE(Start(SIGNAL_FILE, 0));
  EXPECT_EQ(LastError(), "V1 : Attachment is empty; ");

  SetLastError("");
  source_->attachment = "0,0\r\n2,4";
  s_->FileName.clear();
  ASSERT_TRUE(Start(SIGNAL_FILE, 0));
  EXPECT_EQ(s_->PointCount, 2);
  EXPECT_DOUBLE_EQ(At(1).value, 2);
}

// ---- function ----

// ---- time shift ----

TEST_F(SignalTest, ShiftTimeMovesTheOrigin) {
  s_->Period.Value = 1;
  s_->Delay.Value = 0.3;
  s_->Delay.Text = "=d0";
  ASSERT_TRUE(Start(SIGNAL_PULSE, 0));
  s_->ShiftTime(1.25, false, 1e-9);
  EXPECT_NEAR(s_->Delay.Value, -0.95, 1e-12);
  EXPECT_EQ(s_->Delay.Text, "");

  s_->Delay.Value = 2;
  s_->ShiftTime(0.5, false, 1e-9);
  EXPECT_EQ(s_->Delay.Value, 1.5);

  s_->Delay.Value = 0.25;
  s_->ShiftTime(3.25, false, 1e-9);  // the delay ends in [-period, 0)
  EXPECT_EQ(s_->Delay.Value, -1.0);

  s_->Delay.Value = 0.25;
  s_->ShiftTime(3.25 + 1e-12, false, 1e-9);  // within the tolerance: exactly 0
  EXPECT_EQ(s_->Delay.Value, 0.0);

  s_->ShiftTime(5, true, 1e-9);  // the no-shift flag
  EXPECT_EQ(s_->Delay.Value, 0.0);

  s_->Delay.Value = 0.5;
  ASSERT_TRUE(Start(SIGNAL_STEP, 0));
  s_->ShiftTime(2, false, 1e-9);
  EXPECT_EQ(s_->Delay.Value, -1.5);

  // A pulse with an infinite or no period moves its delay as a step does,
  // and never gives a NaN.
  for (double period : {kInf, 0.0, -1.0}) {
    ASSERT_TRUE(Start(SIGNAL_PULSE, 0));
    s_->Period.Value = period;
    s_->Delay.Value = 0.5;
    s_->ShiftTime(2, false, 1e-9);
    EXPECT_EQ(s_->Delay.Value, -1.5) << period;
  }
}

// ---- archive ----

}  // namespace
}  // namespace tz4
