// What a "--trace" argument asks for.
//
//   "V(R1)", "I(R1)", "P(R1)"  voltage, current or power of a component
//   "Vout"                     a bare name: a variable of the circuit if it
//                              is one, else read as a function text
//   anything else              a function text ("V(R1)*I(R1)", "t*2")
//
// The letter may be lower case. Names inside the parentheses are plain
// component names; a dotted or composite one makes the whole text a
// function.
#pragma once
#include <string>

namespace tz4::cli {

enum class TraceKind { kVoltage, kCurrent, kPower, kName, kFunction };

struct TraceRequest {
  TraceKind kind = TraceKind::kFunction;
  std::string name;  // the component or variable name, or the function text
};

// Raises a usage CliError for an empty text.
TraceRequest ParseTraceRequest(const std::string& text);

// A plain component or variable name: no blanks, dots, parentheses,
// operators or quotes, and not beginning with a digit.
bool IsPlainName(const std::string& text);

}  // namespace tz4::cli
