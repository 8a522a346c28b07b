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
  OP_CAST_INT = 63,      // "(int)"     and int()
  OP_CAST_INT64 = 64,    // "(int64)"   and int64()
  OP_CAST_DOUBLE = 65,   // "(double)"  and double()
  OP_CAST_FLOAT = 66,    // float(); "(float)" is pushed as OP_CAST_DOUBLE
  OP_CAST_COMPLEX = 67,  // "(complex)" and complex()
  OP_CAST_BOOL = 68,     // "(bool)"    and bool()
  OP_LAST_FUNCTION = 79,
  OP_INDEX = 80,         // array index
  OP_NOP = 81,           // replaces any operator while skipping
};

// Assignment operators of the C-code language use the codes above:
// 20 "=", 17 "|=", 18 "^=", 19 "&=", 26 ">>=", 27 "<<=", 28 "+=", 29 "-=",
// 30 "*=", 31 "/=", 32 "%="; 0 means no assignment.

}  // namespace tz4
