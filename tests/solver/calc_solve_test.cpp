// The solvers on small systems with known answers: regular, singular and
// contradictory systems, the cancellation rule at its edge, the integration
// set-ups against closed forms, the kept factorisation against the full
// trapezoidal solve, and the pair solve of the initial conditions.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "fake_cmp.h"
#include "calc_internals.h"

namespace tz4 {
namespace {

using solvertest::Circuit;
using solvertest::FakeCmp;

// Stamps at t = 0, puts the constant term in x and solves; the solver's own
// result, which the set-ups do not return.
int SolveNow(CCalc& calc) {
  EXPECT_TRUE(calc.StampMatrices(0.0));
  EXPECT_TRUE(calc.StampSources(0.0));
  for (int i = 1; i < calc.dim; ++i) {
    const size_t ii = static_cast<size_t>(i);
    calc.x[ii] = Raw(calc).rowFree[ii] ? 0.0 : Raw(calc).c[ii] + Raw(calc).s[ii];
  }
  return calc.Solve();
}

// A component that writes a dense block of A and c on rows of its own.
FakeCmp& Named(Circuit& circuit, const std::string& name) {
  for (auto& part : circuit.parts)
    if (part->name == name) return *part;
  ADD_FAILURE() << "no component " << name;
  return *circuit.parts.front();
}

FakeCmp& Block(Circuit& circuit, std::vector<std::vector<double>> a, std::vector<double> c) {
  FakeCmp& block = circuit.Add("M", {}, static_cast<int32_t>(c.size()));
  block.onStamp = [&block, a, c](CCalc& calc, int phase, double) {
    if (phase != STAMP_MATRIX || calc.pass != 0) return 0;
    const int r0 = block.firstRow;
    for (size_t i = 0; i < c.size(); ++i) {
      for (size_t j = 0; j < c.size(); ++j)
        Raw(calc).A[static_cast<size_t>(r0) + i][r0 + static_cast<int>(j)] = a[i][j];
      Raw(calc).c[static_cast<size_t>(r0) + i] = c[i];
    }
    return 0;
  };
  return block;
}

// 1 - (1 - 1e-12) is noise for zero = 1e-11 and a value for zero = 1e-13.
TEST(CalcSolve, CancellationRuleAtItsEdge) {
  const std::vector<std::vector<double>> a = {{1.0, 1.0}, {1.0, 1.0 - 1e-12}};
  const std::vector<double> c = {-1.0, -(1.0 - 1e-12)};
  {
    Circuit circuit;
    circuit.calc.settings.zero = 1e-11;
    Block(circuit, a, c);
    ASSERT_TRUE(circuit.Build());
    EXPECT_EQ(SolveNow(circuit.calc), 1);
    EXPECT_EQ(Raw(circuit.calc).rowMark[2], 1);
    EXPECT_EQ(circuit.calc.x[2], 0.0);
    EXPECT_EQ(circuit.calc.x[1], 1.0);
  }
  {
    Circuit circuit;
    circuit.calc.settings.zero = 1e-13;
    Block(circuit, a, c);
    ASSERT_TRUE(circuit.Build());
    EXPECT_EQ(SolveNow(circuit.calc), 0);
    EXPECT_NEAR(circuit.calc.x[2], 1.0, 1e-3);
    EXPECT_NEAR(circuit.calc.x[1], 0.0, 1e-3);
  }
}

TEST(CalcSolve, FreeRowIsZeroWhateverItsCoefficients) {
  Circuit circuit;
  circuit.Source("V1", 0, 1, 5.0);
  circuit.Resistor("R1", 1, 0, 1000.0);
  FakeCmp& d = circuit.Diode("D1", 1, 0);
  ASSERT_TRUE(circuit.Build());
  const int r = d.firstRow;
  FakeCmp& noise = circuit.Add("N", {});
  noise.onStamp = [r](CCalc& calc, int phase, double) {
    if (phase == STAMP_MATRIX && calc.pass == 1) {
      Raw(calc).A[static_cast<size_t>(r)][1] = 3.0;
      Raw(calc).c[static_cast<size_t>(r)] = 7.0;
    }
    return 0;
  };
  CCalc& calc = circuit.calc;
  EXPECT_EQ(SolveNow(calc), 0);
  EXPECT_EQ(Raw(calc).rowFree[static_cast<size_t>(r)], 1);
  EXPECT_EQ(calc.x[static_cast<size_t>(r)], 0.0);
  EXPECT_NEAR(calc.x[1], 5.0, 1e-12);
}

// Backward Euler on an RC discharge: V(n+1) = V(n) / (1 + h/RC).
TEST(CalcSolve, EulerStepsDischargeAnRcCircuit) {
  Circuit circuit;
  circuit.Capacitor("C1", 0, 1, 1e-6, 1.0);
  circuit.Resistor("R1", 1, 0, 1000.0);
  ASSERT_TRUE(circuit.Build());
  CCalc& calc = circuit.calc;
  ASSERT_EQ(calc.SolveInitial(0.0, false, true), 0);
  EXPECT_NEAR(calc.x[1], 1.0, 1e-15);
  EXPECT_EQ(calc.lineUpdate, 0);
  const double h = 1e-4, tau = 1e-3;
  double expected = 1.0;
  for (int n = 0; n < 10; ++n) {
    calc.xPrev = calc.x;
    ASSERT_TRUE(calc.StepEuler(n * h, h));
    EXPECT_EQ(calc.lineUpdate, 1);
    expected /= 1.0 + h / tau;
    EXPECT_NEAR(calc.x[1], expected, 1e-13);
  }
  // The capacitor's current row: i = C dV/dt.
  EXPECT_NEAR(calc.x[2], -expected / 1000.0, 1e-15);
}

// A sine driving an RC low-pass: the trapezoidal solve follows the closed
// form, and the kept factorisation gives the same points step by step.
TEST(CalcSolve, FactoredStepsMatchTheFullTrapezoidalSolve) {
  const double pi = 3.14159265358, w = 2 * pi * 1000.0, tau = 1e-3, h = 1e-6;
  auto run = [&](bool factored) {
    Circuit circuit;
    circuit.VaryingSource("V1", 0, 1, [w](double t) { return std::sin(w * t); });
    circuit.Resistor("R1", 1, 2, 1000.0);
    circuit.Capacitor("C1", 0, 2, 1e-6, 0.0);
    EXPECT_TRUE(circuit.Build());
    CCalc& calc = circuit.calc;
    EXPECT_EQ(calc.SolveInitial(0.0, false, true), 0);
    std::vector<double> points;
    for (int n = 0; n < 1000; ++n) {
      calc.xPrev = calc.x;
      Raw(calc).sPrev = Raw(calc).s;
      const double t = n * h;
      if (factored) {
        if (n == 0) {
          EXPECT_TRUE(calc.FactorTrapezoid(t, h));
        }
        EXPECT_TRUE(calc.StepFactored(t + h));
      } else {
        EXPECT_TRUE(calc.StepTrapezoid(t, h));
      }
      points.push_back(calc.x[2]);
      EXPECT_NEAR(calc.x[1], std::sin(w * (t + h)), 1e-12);
    }
    return points;
  };
  const std::vector<double> full = run(false);
  const std::vector<double> kept = run(true);
  ASSERT_EQ(full.size(), kept.size());
  const double wt = w * tau;
  for (size_t n = 0; n < full.size(); ++n) {
    const double t = static_cast<double>(n + 1) * h;
    const double exact =
        (std::sin(w * t) - wt * std::cos(w * t) + wt * std::exp(-t / tau)) / (1 + wt * wt);
    EXPECT_NEAR(full[n], exact, 1e-6) << "step " << n;
    EXPECT_NEAR(kept[n], full[n], 1e-12) << "step " << n;
  }
}

// A dense system of its own rows, with every entry of A and B in use, and an
// RC ladder whose factorised B is non-zero in some columns only: the steady
// step gives the full trapezoidal solve's points in both.
TEST(CalcSolve, FactoredStepsMatchOnDenseAndLadderSystems) {
  auto compare = [](auto build, int steps, double h) {
    auto run = [&](bool factored) {
      Circuit circuit;
      build(circuit);
      EXPECT_TRUE(circuit.Build());
      CCalc& calc = circuit.calc;
      std::vector<std::vector<double>> points;
      for (int n = 0; n < steps; ++n) {
        calc.xPrev = calc.x;
        Raw(calc).sPrev = Raw(calc).s;
        if (!factored) {
          EXPECT_TRUE(calc.StepTrapezoid(n * h, h));
        } else {
          if (n == 0) {
            EXPECT_TRUE(calc.FactorTrapezoid(n * h, h));
          }
          EXPECT_TRUE(calc.StepFactored((n + 1) * h));
        }
        points.push_back(calc.x);
      }
      return points;
    };
    const auto full = run(false);
    const auto kept = run(true);
    for (size_t n = 0; n < full.size(); ++n)
      for (size_t i = 1; i < full[n].size(); ++i)
        EXPECT_NEAR(kept[n][i], full[n][i], 1e-9 * (1.0 + std::fabs(full[n][i])))
            << "step " << n << " unknown " << i;
  };

  compare(
      [](Circuit& circuit) {
        FakeCmp& block = circuit.Add("M", {}, 6);
        block.onStamp = [&block](CCalc& calc, int phase, double t) {
          const int r0 = block.firstRow;
          if (phase == STAMP_SOURCE) Raw(calc).s[static_cast<size_t>(r0)] = std::sin(1000.0 * t);
          if (phase != STAMP_MATRIX || calc.pass != 0) return 0;
          for (int i = 0; i < 6; ++i) {
            for (int j = 0; j < 6; ++j) {
              const double a = std::sin(1.0 + i * 7 + j * 3);
              Raw(calc).A[static_cast<size_t>(r0 + i)][r0 + j] = a + (i == j ? -8.0 : 0.0);
              // The varying row's own column of B stays empty.
              if (j > 0)
                Raw(calc).B[static_cast<size_t>(r0 + i)][r0 + j] = 1e-3 * std::cos(2.0 + i * 5 + j);
            }
            Raw(calc).c[static_cast<size_t>(r0 + i)] = std::cos(1.0 * i);
          }
          Raw(calc).rowMark[static_cast<size_t>(r0)] = 1;
          return 0;
        };
      },
      50, 1e-4);

  compare(
      [](Circuit& circuit) {
        circuit.VaryingSource("V1", 0, 1, [](double t) { return std::sin(6283.0 * t); });
        for (int k = 1; k <= 6; ++k) {
          circuit.Resistor("R" + std::to_string(k), k, k + 1, 100.0 * k);
          circuit.Capacitor("C" + std::to_string(k), 0, k + 1, 1e-7 * k, 0.0);
        }
      },
      200, 1e-6);
}

TEST(CalcSolve, ChargedCapacitorAgainstAVoltageSourceIsAnImpulse) {
  // 1 V stored against a 2 V source: the node takes the source's voltage at
  // once, so both the capacitor's current and the source's carry an impulse
  // of C * 1 V, whichever of the two has the lower row.
  for (bool capacitorFirst : {true, false}) {
    SCOPED_TRACE(capacitorFirst ? "capacitor first" : "source first");
    auto make = [capacitorFirst](Circuit& circuit) {
      if (capacitorFirst) circuit.Capacitor("C1", 0, 1, 1e-6, 1.0);
      circuit.Source("V1", 0, 1, 2.0);
      if (!capacitorFirst) circuit.Capacitor("C1", 0, 1, 1e-6, 1.0);
      circuit.Resistor("R1", 1, 2, 10.0);
      circuit.Resistor("R2", 2, 0, 10.0);
    };
    {
      Circuit circuit;
      make(circuit);
      ASSERT_TRUE(circuit.Build());
      CCalc& calc = circuit.calc;
      const size_t rc = static_cast<size_t>(Named(circuit, "C1").firstRow);
      const size_t rv = static_cast<size_t>(Named(circuit, "V1").firstRow);
      EXPECT_EQ(calc.SolveInitial(0.0, false, false), 1);
      EXPECT_EQ(calc.error, std::string("Infinity at node 4 : ") + (capacitorFirst ? "V1" : "C1"));
      EXPECT_EQ(Raw(calc).rowMark[rc], 1);
      EXPECT_EQ(Raw(calc).rowMark[rv], 1);
      EXPECT_EQ(Raw(calc).rowMark[1], 0);
      EXPECT_NEAR(Raw(calc).A[rc][0], 1e-6, 1e-18);   // the charge that moves
      EXPECT_NEAR(Raw(calc).A[rv][0], -1e-6, 1e-18);  // comes through the source
      EXPECT_NEAR(calc.x[1], 2.0, 1e-12);        // the value after the impulse
      EXPECT_NEAR(calc.x[2], 1.0, 1e-12);
      // After the step the source feeds the divider; a constant source
      // leaves the capacitor's current at 0.
      EXPECT_EQ(calc.x[rc], 0.0);
      EXPECT_NEAR(calc.x[rv], -0.1, 1e-15);
      for (const auto& part : circuit.parts) EXPECT_FALSE(part->forceIC);
    }
    {
      Circuit circuit;
      make(circuit);
      ASSERT_TRUE(circuit.Build());
      EXPECT_EQ(circuit.calc.SolveInitial(0.0, true, false), 99);
      // Each of the two named marks the components on its nodes.
      EXPECT_TRUE(Named(circuit, "C1").forceIC);
      EXPECT_TRUE(Named(circuit, "V1").forceIC);
      EXPECT_TRUE(Named(circuit, "R1").forceIC);
      EXPECT_FALSE(Named(circuit, "R2").forceIC);  // not on node 1
    }
  }
}

TEST(CalcSolve, RowSubtractWritesNewEntriesAndCancelsNoise) {
  Circuit circuit;
  Block(circuit, {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}}, {0, 0, 0});
  ASSERT_TRUE(circuit.Build());
  CCalc& calc = circuit.calc;
  Raw(calc).B[1][1] = 2.0;
  Raw(calc).B[1][3] = 1.0;
  Raw(calc).maskB[1][1] = Raw(calc).maskB[1][3] = 1;
  Raw(calc).B[2][3] = 0.5;
  Raw(calc).maskB[2][3] = 1;
  calc.RowSubtract(Raw(calc).B, Raw(calc).maskB, 1, 2, 0.5);
  EXPECT_EQ(Raw(calc).B[2][1], -1.0);
  EXPECT_EQ(Raw(calc).maskB[2][1], 1);
  EXPECT_EQ(Raw(calc).B[2][3], 0.0);  // 0.5 - 0.5
  EXPECT_EQ(Raw(calc).maskB[2][3], 0);
  EXPECT_EQ(Raw(calc).maskB[2][0], 1);
}

}  // namespace
}  // namespace tz4
