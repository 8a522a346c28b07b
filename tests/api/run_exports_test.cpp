// The run-control exports through the C interface, on real circuit files: a
// pulse source into a resistive divider, run in one call, in intervals and
// step by step, with failures, restarts and changes in the middle of a run.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "api/documents.h"
#include "circuit_run.h"
#include "doc/doc.h"
#include "solver/calc.h"

namespace {

using namespace tz4_test;

// A pulse of 0 to 10 V, period 1 ms, width 0.5 ms, sharp edges, into R1 and
// R2 in series; V(R2) is recorded. `r2` holds the value attributes of R2.
std::string DividerFile(const std::string& r2 = "r=\"1000\"", double step = 1e-4) {
  return CircuitFile(
      "      <Cmp type=\"V_V\" id=\"1\" name=\"V1\" node0=\"0\" node1=\"1\" model=\"Pulse\" v=\"10\">\n"
      "        <Signal u0=\"0\" u1=\"10\" p=\"1e-3\" w=\"500e-6\" s=\"0\" r=\"0\" f=\"0\" d=\"0\" ph=\"0\" />\n"
      "      </Cmp>\n"
      "      <Cmp type=\"R_R\" id=\"2\" name=\"R1\" node0=\"1\" node1=\"2\" model=\"R\" r=\"1000\" />\n"
      "      <Cmp type=\"R_R\" id=\"3\" name=\"R2\" node0=\"0\" node1=\"2\" model=\"R\" " + r2 + " />\n",
      step, "        <Trace type=\"0\" id=\"3\" tracename=\"V(R2)\" expr=\"V(R2)\" />\n");
}

class RunExports : public CircuitRun {
 protected:
  void SetUp() override { OpenDivider(DividerFile()); }

  void OpenDivider(const std::string& text) {
    OpenText(text);
    trace = TZ4_GetTrace(h, "V(R2)");
    ASSERT_GE(trace, 0) << Error();
  }

  double SimulationTime() {
    double t = -1.0;
    EXPECT_EQ(TZ4_GetSimulationTime(h, &t), 0) << Error();
    return t;
  }
  double At(double t) {
    double v = -99.0;
    EXPECT_EQ(TZ4_GetData(h, trace, t, &v), 0) << t << ": " << Error();
    return v;
  }
  double LastTime() {
    double t = -1.0;
    Last(trace, &t);
    return t;
  }
  bool HasSampleAt(double time) { return CircuitRun::HasSampleAt(trace, time); }

  int trace = -1;
};

TEST_F(RunExports, ArgumentsAndIdleDocuments) {
  EXPECT_EQ(TZ4_GetSimulationTime(h, nullptr), -1);
  EXPECT_EQ(Error(), "TZ4_GetSimulationTime: t = NULL");
  // The interval is checked before the document.
  for (double interval : {-1.0, -1e-9, std::nan("")}) {
    EXPECT_EQ(TZ4_Simulate(-3, interval), -1);
    EXPECT_EQ(Error(), "TZ4_Simulate: interval < 0");
    EXPECT_EQ(TZ4_SimulateInterval(h, interval), -1);
    EXPECT_EQ(Error(), "TZ4_SimulateInterval: interval < 0");
  }
  EXPECT_EQ(TZ4_SaveIC(h), -1);
  EXPECT_EQ(Error(), "TZ4_SaveIC: simulation not running");
  // Nothing stored yet: nothing to drop, and no failure.
  EXPECT_EQ(TZ4_DeleteOldData(h), 0);
  EXPECT_EQ(Error(), "OK");
  EXPECT_EQ(TZ4_GetDataSize(h, trace), 0);
  EXPECT_EQ(SimulationTime(), 0.0);
  EXPECT_FALSE(tz4::FindDocument(h)->running);
}

TEST_F(RunExports, SimulationTimeIsTheTimeAskedFor) {
  ASSERT_EQ(TZ4_Start(h), 0) << Error();
  EXPECT_EQ(Error(), "OK");
  EXPECT_EQ(SimulationTime(), 0.0);
  EXPECT_EQ(TZ4_GetDataSize(h, trace), 1);  // the point at 0

  ASSERT_EQ(TZ4_Simulate(h, 0.5), 0) << Error();
  EXPECT_EQ(Error(), "OK");
  EXPECT_EQ(SimulationTime(), 0.5);
  EXPECT_GE(tz4::FindDocument(h)->time, 0.5);
  // Intervals add up.
  ASSERT_EQ(TZ4_Simulate(h, 0.25e-3), 0) << Error();
  EXPECT_EQ(SimulationTime(), 0.5 + 0.25e-3);

  // A new start throws the run away.
  ASSERT_EQ(TZ4_Start(h), 0) << Error();
  EXPECT_EQ(SimulationTime(), 0.0);
  EXPECT_EQ(TZ4_GetDataSize(h, trace), 1);
}

TEST_F(RunExports, StepByStep) {
  // The first step starts the idle document.
  ASSERT_EQ(TZ4_SimulateStep(h), 0) << Error();
  EXPECT_EQ(Error(), "OK");
  const double first = SimulationTime();
  EXPECT_NEAR(first, 1e-6, 1e-18);  // kmin * step: the crossing of the start
  EXPECT_EQ(LastTime(), first);
  double previous = first;
  for (int i = 0; i < 20; ++i) {
    ASSERT_EQ(TZ4_SimulateStep(h), 0) << Error();
    const double now = SimulationTime();
    EXPECT_GT(now, previous);
    EXPECT_LE(now - previous, 100e-6 * (1 + 1e-9));
    EXPECT_EQ(LastTime(), now);
    previous = now;
  }
  // The edge at 0.5 ms is landed on exactly.
  EXPECT_TRUE(HasSampleAt(500e-6));
}

TEST_F(RunExports, ZeroIntervalOnAnIdleDocumentGivesTheInitialValues) {
  ASSERT_EQ(TZ4_Simulate(h, 0.0), 0) << Error();
  EXPECT_EQ(SimulationTime(), 0.0);
  double t = -1, v = -1;
  ASSERT_EQ(TZ4_GetDataAt(h, trace, 0, &t, &v), 0) << Error();
  EXPECT_EQ(t, 0.0);
  EXPECT_EQ(v, 0.0);  // the pulse starts at its low level
  ASSERT_GE(TZ4_GetDataSize(h, trace), 1);
}

TEST_F(RunExports, PulseIntoADividerAtKnownTimes) {
  ASSERT_EQ(TZ4_SimulateInterval(h, 3e-3), 0) << Error();
  EXPECT_EQ(LastTime(), 3e-3);
  for (double t : {0.1e-3, 0.25e-3, 0.49e-3, 1.2e-3, 2.05e-3, 2.45e-3})
    EXPECT_NEAR(At(t), 5.0, 1e-9) << t;
  for (double t : {0.51e-3, 0.75e-3, 0.99e-3, 1.6e-3, 2.9e-3}) EXPECT_NEAR(At(t), 0.0, 1e-9) << t;
  // Every corner is a stored point.
  for (double t : {0.5e-3, 1e-3, 1.5e-3, 2e-3, 2.5e-3}) EXPECT_TRUE(HasSampleAt(t)) << t;
  // Past the end there is nothing.
  double v = 1.0;
  EXPECT_EQ(TZ4_GetData(h, trace, 3.1e-3, &v), -1);
}

TEST_F(RunExports, SimulateStopsPastTheTargetAndIntervalLandsOnIt) {
  ASSERT_EQ(TZ4_Simulate(h, 0.25e-3), 0) << Error();
  const double reached = LastTime();
  EXPECT_GE(reached, 0.25e-3);
  EXPECT_LT(reached, 0.35e-3 + 1e-9);
  EXPECT_FALSE(HasSampleAt(0.25e-3));

  ASSERT_EQ(TZ4_SimulateInterval(h, 0.45e-3), 0) << Error();
  EXPECT_EQ(SimulationTime(), 0.25e-3 + 0.45e-3);
  EXPECT_NEAR(LastTime(), 0.7e-3, 1e-15);
}

TEST_F(RunExports, DeleteOldDataKeepsMemoryBoundedAndTheTargetReadable) {
  ASSERT_EQ(TZ4_SimulateInterval(h, 2.25e-3), 0) << Error();
  const int before = TZ4_GetDataSize(h, trace);
  ASSERT_EQ(TZ4_DeleteOldData(h), 0) << Error();
  EXPECT_EQ(Error(), "OK");
  const int after = TZ4_GetDataSize(h, trace);
  EXPECT_LT(after, before);
  EXPECT_GE(after, 1);
  double t = 0, v = 0;
  ASSERT_EQ(TZ4_GetDataAt(h, trace, 0, &t, &v), 0);
  EXPECT_LE(t, 2.25e-3);
  EXPECT_NEAR(At(2.25e-3), 5.0, 1e-9);
  // The run goes on behind the dropped data.
  ASSERT_EQ(TZ4_SimulateInterval(h, 0.5e-3), 0) << Error();
  EXPECT_NEAR(At(2.6e-3), 0.0, 1e-9);
}

TEST_F(RunExports, AParameterChangeInTheMiddleOfARun) {
  ASSERT_EQ(TZ4_SimulateInterval(h, 1.25e-3), 0) << Error();
  ASSERT_EQ(TZ4_SetValue(h, "R2.R", 3000.0), 0) << Error();
  ASSERT_EQ(TZ4_SimulateInterval(h, 1e-3), 0) << Error();
  EXPECT_NEAR(SimulationTime(), 2.25e-3, 1e-18);
  EXPECT_NEAR(At(0.25e-3), 5.0, 1e-9);  // before the change
  EXPECT_NEAR(At(1.1e-3), 5.0, 1e-9);
  EXPECT_NEAR(At(1.3e-3), 7.5, 1e-9);   // after it, high
  EXPECT_NEAR(At(1.75e-3), 0.0, 1e-9);  // and low
  EXPECT_NEAR(At(2.2e-3), 7.5, 1e-9);
}

TEST_F(RunExports, AFailureEndsTheRunWithItsTimeAndTheNextCallStartsAgain) {
  ASSERT_EQ(TZ4_SimulateInterval(h, 1e-3), 0) << Error();
  // A function that cannot be evaluated fails the first point it is asked
  // for, behind the restart that adding it causes.
  const int bad = TZ4_AddFuncTrace(h, "nosuchname*2");
  ASSERT_GE(bad, 0) << Error();
  EXPECT_EQ(TZ4_SimulateInterval(h, 1e-3), -1);
  const std::string failure = Error();
  EXPECT_EQ(
      failure.rfind(
          "TZ4_SimulateInterval: Transient error at t=1.001e-3 : Syntax error: nosuchname", 0),
      0u)
      << failure;
  EXPECT_FALSE(tz4::FindDocument(h)->running);
  // The time asked for stays, and the results of the run stay readable.
  EXPECT_EQ(SimulationTime(), 2e-3);
  EXPECT_NEAR(At(0.75e-3), 0.0, 1e-9);

  // Without the faulty trace, the next call runs again from 0.
  ASSERT_EQ(TZ4_DeleteTrace(h, bad), 0) << Error();
  ASSERT_EQ(TZ4_SimulateInterval(h, 0.75e-3), 0) << Error();
  EXPECT_EQ(SimulationTime(), 0.75e-3);
  double t = -1, v = 0;
  ASSERT_EQ(TZ4_GetDataAt(h, trace, 0, &t, &v), 0);
  EXPECT_EQ(t, 0.0);
  EXPECT_EQ(LastTime(), 0.75e-3);
}

TEST_F(RunExports, AFailedStartAppendsTheReasons) {
  // Two sources of different value on one node.
  std::string text = DividerFile();
  text.insert(text.find("    </Cmps>"),
              "<Cmp type=\"V_V\" id=\"4\" name=\"V2\" node0=\"0\" node1=\"2\" model=\"V\" v=\"3\" />\n"
              "<Cmp type=\"V_V\" id=\"5\" name=\"V3\" node0=\"0\" node1=\"2\" model=\"V\" v=\"4\" />\n");
  OpenDivider(text);
  EXPECT_EQ(TZ4_Start(h), -1);
  const std::string failure = Error();
  EXPECT_EQ(failure.rfind("TZ4_Start: Transient error at t=0 : Infinity at node ", 0), 0u)
      << failure;
  EXPECT_FALSE(tz4::FindDocument(h)->running);

  // A stored step that could never advance the run.
  OpenDivider(DividerFile("r=\"1000\"", 0.0));
  EXPECT_EQ(TZ4_Start(h), -1);
  EXPECT_EQ(Error(), "TZ4_Start: step <= 0");

  // A component's check is reported in its own words, and the run refused.
  OpenDivider(DividerFile("r=\"1\" r_str=\"%3dnosuchname\""));
  EXPECT_EQ(TZ4_Simulate(h, 1e-3), -1);
  EXPECT_EQ(Error(), "TZ4_Simulate: R2 : R : formula error; ");
  EXPECT_FALSE(tz4::FindDocument(h)->running);
  EXPECT_EQ(SimulationTime(), 0.0);
}

}  // namespace
