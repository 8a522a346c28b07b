#include "tools/trace_spec.h"

#include <gtest/gtest.h>

#include "tools/cli_errors.h"

namespace tz4::cli {
namespace {

TEST(TraceSpec, ComponentQuantities) {
  TraceRequest r = ParseTraceSpec("V(R1)");
  EXPECT_EQ(r.kind, TraceKind::kVoltage);
  EXPECT_EQ(r.name, "R1");
  r = ParseTraceSpec(" i( Rload ) ");
  EXPECT_EQ(r.kind, TraceKind::kCurrent);
  EXPECT_EQ(r.name, "Rload");
  r = ParseTraceSpec("P(D_1)");
  EXPECT_EQ(r.kind, TraceKind::kPower);
  EXPECT_EQ(r.name, "D_1");
}

TEST(TraceSpec, NamesAndFunctions) {
  EXPECT_EQ(ParseTraceSpec("Vout").kind, TraceKind::kName);
  // Composite texts are functions, also when they start like a quantity.
  EXPECT_EQ(ParseTraceSpec("V(R1)-V(R2)").kind, TraceKind::kFunction);
  EXPECT_EQ(ParseTraceSpec("V(R1)*I(R1)").name, "V(R1)*I(R1)");
  EXPECT_EQ(ParseTraceSpec("V(X1.R3)").kind, TraceKind::kFunction);
  EXPECT_EQ(ParseTraceSpec("X(R1)").kind, TraceKind::kFunction);
  EXPECT_EQ(ParseTraceSpec("t*2").kind, TraceKind::kFunction);
  EXPECT_EQ(ParseTraceSpec("2").kind, TraceKind::kFunction);
  EXPECT_EQ(ParseTraceSpec("R1.R").kind, TraceKind::kFunction);
  EXPECT_THROW(ParseTraceSpec("  "), CliError);
}

}  // namespace
}  // namespace tz4::cli
