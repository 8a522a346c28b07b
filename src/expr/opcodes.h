// Operator codes shared by the formula evaluator, the assignment operators
// and the C-code language. The numbers are fixed: callers store and compare
// them.
#pragma once

namespace tz4 {

enum OpCode : int {
  OP_END = -1,           // end of text
  OP_COMMA = 10,         // ","
  OP_QUESTION = 11,      // "?"
  OP_SKIPPED_QUESTION = 13,  // a "?" met while skipping an untaken branch
  OP_COLON = 14,         // ":"
  OP_OROR = 15,          // "||"
  OP_ANDAND = 16,        // "&&"
  OP_OR = 17,            // "|"   and "|="
  OP_XOR = 18,           // "^"   and "^="
  OP_AND = 19,           // "&"   and "&="
  OP_EQ = 20,            // "=="  and the plain assignment "="
  OP_NE = 21,            // "!="
  OP_LE = 22,            // "<="
  OP_LT = 23,            // "<"
  OP_GE = 24,            // ">="
  OP_GT = 25,            // ">"
  OP_SHR = 26,           // ">>"  and ">>="
  OP_SHL = 27,           // "<<"  and "<<="
  OP_ADD = 28,           // "+"   and "+="
  OP_SUB = 29,           // "-"   and "-="
  OP_MUL = 30,           // "*"   and "*="
  OP_DIV = 31,           // "/"   and "/="
  OP_MOD = 32,           // "%"   and "%="
  OP_NOT = 33,           // unary "!"
  OP_INV = 34,           // unary "~"
  OP_NEG = 35,           // unary "-"
  OP_FIRST_FUNCTION = 36,
  // The functions of the formula language.
  FN_FLOOR = 36,
  FN_CEIL = 37,
  FN_ROUND = 38,
  FN_SIN = 39,
  FN_COS = 40,
  FN_TAN = 41,
  FN_ASIN = 42,
  FN_ACOS = 43,
  FN_ATAN = 44,
  FN_ATAN2 = 45,
  FN_PHASE = 46,
  FN_SQRT = 47,
  FN_SQR = 48,           // signed square root
  FN_SQ = 49,            // square
  FN_EXP = 50,
  FN_LOG = 51,
  FN_LOG10 = 52,
  FN_LOG2 = 53,
  FN_POW = 54,
  FN_PWR = 55,           // signed power
  FN_ABS = 56,
  FN_SIGN = 57,
  FN_DB = 58,
  FN_MIN = 59,
  FN_MAX = 60,
  FN_MEAN = 61,
  FN_SUM = 62,
  OP_CAST_INT = 63,      // "(int)"     and int()
  OP_CAST_INT64 = 64,    // "(int64)"   and int64()
  OP_CAST_DOUBLE = 65,   // "(double)"  and double()
  OP_CAST_FLOAT = 66,    // float(); "(float)" is pushed as OP_CAST_DOUBLE
  OP_CAST_COMPLEX = 67,  // "(complex)" and complex()
  OP_CAST_BOOL = 68,     // "(bool)"    and bool()
  FN_V = 69,
  FN_I = 70,
  FN_P = 71,
  FN_RE = 72,
  FN_IM = 73,
  FN_RANDOM = 74,
  FN_GAUSS = 75,
  FN_PAR = 76,           // parallel combination
  FN_LIMIT = 77,
  FN_ISLOW = 78,
  FN_ISHIGH = 79,
  OP_LAST_FUNCTION = 79,
  OP_INDEX = 80,         // array index
  OP_NOP = 81,           // replaces any operator while skipping
};

// Assignment operators of the C-code language use the codes above:
// 20 "=", 17 "|=", 18 "^=", 19 "&=", 26 ">>=", 27 "<<=", 28 "+=", 29 "-=",
// 30 "*=", 31 "/=", 32 "%="; 0 means no assignment.

}  // namespace tz4
