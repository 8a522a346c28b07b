// Delay blocks and lossless lines in a run, through the exports: a step
// down a matched line arrives after its delay with no reflection, an open
// end doubles it and a short inverts it; a zero-delay line is an ideal 1:1
// transformer; a delay block's output is its input t0 ago.
#include <cmath>

#include "circuit_run.h"

namespace tz4_test {
namespace {

class LineRun : public CircuitRun {
 protected:
  // A 1 V step at 0.5 us through 50 Ohm into a 1 us, 50 Ohm line whose far
  // end has `load`; V(RS end) and V(far end) at the given times.
  void Run(const std::string& load, const std::string& line = "t=\"1e-6\" z=\"50\"") {
    Open(Element("V_V", "V1", "Step", {0, 1}, "", "<Signal u0=\"0\" u1=\"1\" d=\"0.5e-6\" />") +
             Element("R_R", "RS", "R", {1, 2}, "r=\"50\"") +
             Element("X_Line", "TL", "Line", {2, 0, 3, 0}, line) +
             Element("label", "IN", "Label", {2}, "") + Element("label", "FAR", "Label", {3}, "") +
             load,
         2e-8);
    in_ = Trace("IN");
    far_ = Trace("FAR");
    ASSERT_EQ(TZ4_Simulate(h, 4e-6), 0) << Error();
  }
  double At(int trace, double t) {
    double v = 0;
    EXPECT_EQ(TZ4_GetData(h, trace, t, &v), 0) << Error();
    return v;
  }
  int in_ = -1, far_ = -1;
};

TEST_F(LineRun, MatchedOpenAndShortedEnds) {
  Run(Element("R_R", "RL", "R", {0, 3}, "r=\"50\""));
  EXPECT_NEAR(At(in_, 1.0e-6), 0.5, 1e-6);
  EXPECT_NEAR(At(far_, 1.4e-6), 0.0, 1e-6);  // not there before 1.5 us
  EXPECT_NEAR(At(far_, 1.6e-6), 0.5, 1e-6);
  EXPECT_NEAR(At(in_, 3.0e-6), 0.5, 1e-6);  // no reflection

  Run(Element("R_R", "RL", "R", {0, 3}, "r=\"1e12\""));  // open
  EXPECT_NEAR(At(far_, 1.6e-6), 1.0, 1e-6);
  EXPECT_NEAR(At(in_, 2.4e-6), 0.5, 1e-6);
  EXPECT_NEAR(At(in_, 2.6e-6), 1.0, 1e-6);  // the reflection is back

  Run(Element("R_R", "RL", "R", {0, 3}, "r=\"1e-12\""));  // shorted
  EXPECT_NEAR(At(far_, 1.6e-6), 0.0, 1e-6);
  EXPECT_NEAR(At(in_, 2.4e-6), 0.5, 1e-6);
  EXPECT_NEAR(At(in_, 2.6e-6), 0.0, 1e-6);  // inverted reflection
}

// t0 = 0: V(far) = V(in), and the power taken in is given out.
TEST_F(LineRun, ZeroDelayIsAnIdealTransformer) {
  Run(Element("R_R", "RL", "R", {0, 3}, "r=\"150\""), "t=\"0\" z=\"50\"");
  EXPECT_NEAR(At(far_, 2e-6), At(in_, 2e-6), 1e-12);
  EXPECT_NEAR(At(far_, 2e-6), 0.75, 1e-9);  // 150 / (50 + 150)
}

TEST_F(LineRun, DelayBlockGivesItsInputT0Later) {
  Open(Element("V_V", "V1", "Sin", {0, 1}, "", "<Signal u0=\"0\" u1=\"1\" p=\"1e-3\" d=\"0\" />") +
           Element("X_Delay", "D1", "Delay", {1, 2}, "t=\"0.25e-3\" ic=\"0\""),
       1e-6);
  const int out = Trace("D1");
  ASSERT_EQ(TZ4_Simulate(h, 2e-3), 0) << Error();
  for (double t : {0.1e-3, 0.5e-3, 0.9e-3, 1.7e-3})
    EXPECT_NEAR(At(out, t), t < 0.25e-3 ? 0.0 : std::sin(2 * kPi * (t - 0.25e-3) / 1e-3), 2e-3)
        << t;
}

// A lossy line without losses is the pure delay; with 10 Ohm of series
// resistance in all (0.01 Ohm per ns over 1 us) the step arrives attenuated
// by exp(-R / 2 z0) and settles at the divider 50 / (50 + 10 + 50).
TEST_F(LineRun, LossyLineDelaysAndAttenuates) {
  Run(Element("R_R", "RL", "R", {0, 3}, "r=\"50\""),
      "t=\"1e-6\" z=\"50\" r=\"0\" g=\"0\" rf=\"1\" gf=\"inf\"");
  EXPECT_NEAR(At(far_, 1.4e-6), 0.0, 1e-6);
  EXPECT_NEAR(At(far_, 1.7e-6), 0.5, 1e-6);

  Open(Element("V_V", "V1", "Step", {0, 1}, "", "<Signal u0=\"0\" u1=\"1\" d=\"0.5e-6\" />") +
           Element("R_R", "RS", "R", {1, 2}, "r=\"50\"") +
           Element("X_Line", "TL", "Lossy", {2, 0, 3, 0},
                   "t=\"1e-6\" z=\"50\" r=\"0.01\" g=\"0\" rf=\"inf\" gf=\"inf\"") +
           Element("R_R", "RL", "R", {0, 3}, "r=\"50\"") +
           Element("label", "FAR", "Label", {3}, ""),
       2e-8);
  far_ = Trace("FAR");
  ASSERT_EQ(TZ4_Simulate(h, 40e-6), 0) << Error();
  EXPECT_NEAR(At(far_, 1.7e-6), 0.5 * std::exp(-10.0 / 100.0), 0.01);
  EXPECT_NEAR(At(far_, 40e-6), 50.0 / 110.0, 0.005);
}

TEST_F(LineRun, Checks) {
  const struct {
    std::string element;
    const char* message;
  } cases[] = {
      {Element("X_Line", "TL", "Line", {1, 0, 2, 0}, "t=\"-1\" z=\"-50\""),
       "TZ4_Start: TL : t < 0; TL : z0 < 0; "},
      {Element("X_Delay", "TL", "Delay", {1, 2}, "t=\"-1\""), "TZ4_Start: TL : t < 0; "},
      {Element("X_Line", "TL", "Lossy", {1, 0, 2, 0},
               "t=\"0\" z=\"50\" r=\"-1\" g=\"-1\" rf=\"0\" gf=\"0\""),
       "TZ4_Start: TL : t <= 0; TL : r < 0; TL : fr <= 0; TL : G < 0; TL : fG <= 0; "},
  };
  for (const auto& c : cases) {
    Open(Element("V_V", "V1", "V", {0, 1}, "v=\"1\"") + c.element +
         Element("R_R", "RL", "R", {0, 2}, "r=\"50\""));
    EXPECT_EQ(TZ4_Start(h), -1);
    EXPECT_EQ(Error(), c.message);
  }
}

}  // namespace
}  // namespace tz4_test
