#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "expr/opcodes.h"
#include "base/raise.h"
#include "expr/value.h"

namespace tz4 {
namespace {

std::string AssignError(int op, TValue target, const TValue& source) {
  try {
    ApplyAssignOperator(op, target, source);
  } catch (const RaisedError& e) {
    return e.Text();
  }
  return "<no error>";
}

TEST(ConvertValue, Table) {
  TValue v = TValue::MakeComplex(2.7, 1.0);
  ConvertValue(v, VT_DOUBLE);
  EXPECT_EQ(v.Type, VT_DOUBLE);
  EXPECT_EQ(v.Dbl, 2.7);

  v = TValue::MakeDouble(-2.7);
  ConvertValue(v, VT_INT);
  EXPECT_EQ(v.I32, -2);
  v = TValue::MakeDouble(-2.7);
  ConvertValue(v, VT_INT64);
  EXPECT_EQ(v.I64, -2);

  v = TValue::MakeInt(-5);
  ConvertValue(v, VT_INT64);
  EXPECT_EQ(v.I64, -5);

  v = TValue::MakeInt64(0x100000005LL);
  ConvertValue(v, VT_INT);
  EXPECT_EQ(v.I32, 5);

  v = TValue::MakeBool(true);
  ConvertValue(v, VT_COMPLEX);
  EXPECT_EQ(v.Dbl, 1.0);
  EXPECT_EQ(v.Im, 0.0);

  v = TValue::MakeComplex(0.0, 1.0);
  ConvertValue(v, VT_BOOL);
  EXPECT_TRUE(v.B);
  v = TValue::MakeDouble(0.0);
  ConvertValue(v, VT_BOOL);
  EXPECT_FALSE(v.B);
  v = TValue::MakeDouble(std::nan(""));
  ConvertValue(v, VT_BOOL);
  EXPECT_TRUE(v.B);

  ConvertValue(nullptr, VT_INT);  // does nothing

  // Out of range and NaN give the processor's indefinite integer.
  v = TValue::MakeDouble(1e30);
  ConvertValue(v, VT_INT);
  EXPECT_EQ(v.I32, std::numeric_limits<int32_t>::min());
  v = TValue::MakeDouble(std::nan(""));
  ConvertValue(v, VT_INT64);
  EXPECT_EQ(v.I64, std::numeric_limits<int64_t>::min());
}

TEST(ApplyAssignOperator, MixedKinds) {
  TValue t = TValue::MakeInt(7);
  ApplyAssignOperator(OP_ADD, t, TValue::MakeDouble(0.9));
  EXPECT_EQ(t.Type, VT_INT);
  EXPECT_EQ(t.I32, 7);  // 7.9 computed in double, truncated on store

  t = TValue::MakeInt(7);
  ApplyAssignOperator(OP_DIV, t, TValue::MakeInt(2));
  EXPECT_EQ(t.I32, 3);

  t = TValue::MakeDouble(7);
  ApplyAssignOperator(OP_MOD, t, TValue::MakeInt(4));
  EXPECT_EQ(t.Dbl, 3.0);

  t = TValue::MakeDouble(1.0);
  ApplyAssignOperator(OP_SUB, t, TValue::MakeDouble(1.0 + 1e-14));
  EXPECT_EQ(t.Dbl, 0.0);  // cancellation snaps to zero
  t = TValue::MakeDouble(1.0);
  ApplyAssignOperator(OP_ADD, t, TValue::MakeDouble(-1.0 - 1e-14));
  EXPECT_EQ(t.Dbl, 0.0);

  t = TValue::MakeInt(std::numeric_limits<int32_t>::max());
  ApplyAssignOperator(OP_ADD, t, TValue::MakeInt(1));
  EXPECT_EQ(t.I32, std::numeric_limits<int32_t>::min());  // wraps

  t = TValue::MakeInt(1);
  ApplyAssignOperator(OP_SHL, t, TValue::MakeInt(33));
  EXPECT_EQ(t.I32, 2);  // count masked with 31
  t = TValue::MakeInt64(1);
  ApplyAssignOperator(OP_SHL, t, TValue::MakeInt(40));
  EXPECT_EQ(t.I64, 1LL << 40);
  t = TValue::MakeInt(-8);
  ApplyAssignOperator(OP_SHR, t, TValue::MakeInt(1));
  EXPECT_EQ(t.I32, -4);
  t = TValue::MakeInt(6);
  ApplyAssignOperator(OP_XOR, t, TValue::MakeBool(true));
  EXPECT_EQ(t.I32, 7);

  t = TValue::MakeInt(5);
  ApplyAssignOperator(OP_EQ, t, TValue::MakeDouble(9.99));
  EXPECT_EQ(t.Type, VT_INT);
  EXPECT_EQ(t.I32, 9);
}

TEST(ApplyAssignOperator, Complex) {
  TValue t = TValue::MakeComplex(1, 2);
  ApplyAssignOperator(OP_MUL, t, TValue::MakeComplex(3, 4));
  EXPECT_EQ(t.Dbl, -5);
  EXPECT_EQ(t.Im, 10);
  ApplyAssignOperator(OP_DIV, t, TValue::MakeComplex(3, 4));
  EXPECT_NEAR(t.Dbl, 1, 1e-15);
  EXPECT_NEAR(t.Im, 2, 1e-15);
  t = TValue::MakeComplex(1, 0);
  ApplyAssignOperator(OP_ADD, t, TValue::MakeInt(2));
  EXPECT_EQ(t.Dbl, 3);
  TValue d = TValue::MakeDouble(1);
  ApplyAssignOperator(OP_ADD, d, TValue::MakeComplex(1, 5));
  EXPECT_EQ(d.Type, VT_DOUBLE);  // computed as complex, stored as double
  EXPECT_EQ(d.Dbl, 2);
}

TEST(ApplyAssignOperator, Messages) {
  EXPECT_EQ(AssignError(OP_OR, TValue::MakeDouble(1), TValue::MakeInt(1)),
            "Operator '|=' : floating point arguments not allowed");
  EXPECT_EQ(AssignError(OP_AND, TValue::MakeInt(1), TValue::MakeComplex(1, 1)),
            "Operator '&=' : complex arguments not allowed");
  EXPECT_EQ(AssignError(OP_SHR, TValue::MakeInt(1), TValue::MakeDouble(1)),
            "Operator '>>=' : floating point arguments not allowed");
  EXPECT_EQ(AssignError(OP_SHL, TValue::MakeInt(1), TValue::MakeDouble(1)),
            "Operator '<<=' : floating point arguments not allowed");
  EXPECT_EQ(AssignError(OP_XOR, TValue::MakeComplex(1, 0), TValue::MakeInt(1)),
            "Operator '^=' : complex arguments not allowed");
  EXPECT_EQ(AssignError(OP_MOD, TValue::MakeComplex(1, 0), TValue::MakeInt(1)),
            "Operator '<<=' : complex arguments not allowed");
  EXPECT_EQ(AssignError(OP_DIV, TValue::MakeInt(1), TValue::MakeInt(0)), "Division by zero");
  EXPECT_EQ(AssignError(OP_MOD, TValue::MakeInt64(1), TValue::MakeInt(0)), "Division by zero");
  EXPECT_EQ(AssignError(OP_DIV, TValue::MakeInt(std::numeric_limits<int32_t>::min()),
                        TValue::MakeInt(-1)),
            "Division by zero");
  EXPECT_EQ(AssignError(OP_MOD, TValue::MakeInt64(std::numeric_limits<int64_t>::min()),
                        TValue::MakeInt64(-1)),
            "Division by zero");
}

TEST(ApplyAssignOperator, DoubleDivisionByZeroIsInfinite) {
  TValue t = TValue::MakeDouble(-1);
  ApplyAssignOperator(OP_DIV, t, TValue::MakeInt(0));
  EXPECT_EQ(t.Dbl, -std::numeric_limits<double>::infinity());
}

TEST(ApplyIncDec, Modes) {
  TValue v = TValue::MakeInt(5), out;
  ApplyIncDec(INCDEC_PRE_INC, &out, v);
  EXPECT_EQ(v.I32, 6);
  EXPECT_EQ(out.I32, 6);
  ApplyIncDec(INCDEC_POST_DEC, &out, v);
  EXPECT_EQ(v.I32, 5);
  EXPECT_EQ(out.I32, 6);
  ApplyIncDec(INCDEC_NONE, &out, v);
  EXPECT_EQ(out.I32, 5);

  TValue c = TValue::MakeComplex(1, 2);
  ApplyIncDec(INCDEC_PRE_DEC, &out, c);
  EXPECT_EQ(c.Dbl, 0);
  EXPECT_EQ(c.Im, 2);

  TValue b = TValue::MakeBool(false);
  ApplyIncDec(INCDEC_POST_DEC, &out, b);
  EXPECT_TRUE(b.B);
  EXPECT_FALSE(out.B);
  ApplyIncDec(INCDEC_PRE_INC, nullptr, b);
  EXPECT_FALSE(b.B);

  TValue big = TValue::MakeInt64(std::numeric_limits<int64_t>::max());
  ApplyIncDec(INCDEC_PRE_INC, &out, big);
  EXPECT_EQ(big.I64, std::numeric_limits<int64_t>::min());
}

TEST(ValueToText, AllTypes) {
  EXPECT_EQ(ValueToText(TValue::MakeDouble(1500)), "1.5e+3");
  EXPECT_EQ(ValueToText(TValue::MakeInt64(-9000000000LL)), "-9000000000");
  EXPECT_EQ(ValueToText(TValue::MakeInt(-3)), "-3");
  EXPECT_EQ(ValueToText(TValue::MakeBool(true)), "true");
  EXPECT_EQ(ValueToText(TValue::MakeBool(false)), "false");
  EXPECT_EQ(ValueToText(TValue::MakeComplex(1, 2)), "1+2j");
  EXPECT_EQ(ValueToText(TValue::MakeComplex(1, -0.5)), "1-500e-3j");
  EXPECT_EQ(ValueToText(TValue::MakeComplex(1, 0)), "1");
  EXPECT_EQ(ValueToText(TValue::MakeComplex(0, 0)), "0");
  EXPECT_EQ(ValueToText(TValue::MakeComplex(1, std::nan(""))), "1");
}

}  // namespace
}  // namespace tz4
