#include "tools/trace_request.h"

#include <gtest/gtest.h>

#include "tools/cli_errors.h"

namespace tz4::cli {
namespace {

TEST(TraceRequest, ComponentQuantities) {
  TraceRequest r = ParseTraceRequest("V(R1)");
  EXPECT_EQ(r.kind, TraceKind::kVoltage);
  EXPECT_EQ(r.name, "R1");
  r = ParseTraceRequest(" i( Rload ) ");
  EXPECT_EQ(r.kind, TraceKind::kCurrent);
  EXPECT_EQ(r.name, "Rload");
  r = ParseTraceRequest("P(D_1)");
  EXPECT_EQ(r.kind, TraceKind::kPower);
  EXPECT_EQ(r.name, "D_1");
}

TEST(TraceRequest, NamesAndFunctions) {
  EXPECT_EQ(ParseTraceRequest("Vout").kind, TraceKind::kName);
  // Composite texts are functions, also when they start like a quantity.
  EXPECT_EQ(ParseTraceRequest("V(R1)-V(R2)").kind, TraceKind::kFunction);
  EXPECT_EQ(ParseTraceRequest("V(R1)*I(R1)").name, "V(R1)*I(R1)");
  EXPECT_EQ(ParseTraceRequest("V(X1.R3)").kind, TraceKind::kFunction);
  EXPECT_EQ(ParseTraceRequest("X(R1)").kind, TraceKind::kFunction);
  EXPECT_EQ(ParseTraceRequest("t*2").kind, TraceKind::kFunction);
  EXPECT_EQ(ParseTraceRequest("2").kind, TraceKind::kFunction);
  EXPECT_EQ(ParseTraceRequest("R1.R").kind, TraceKind::kFunction);
  EXPECT_THROW(ParseTraceRequest("  "), CliError);
}

}  // namespace
}  // namespace tz4::cli
