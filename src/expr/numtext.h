// Number text: how numbers are written to and read from users and files.
#pragma once
#include <cstdint>
#include <string>

namespace tz4 {

struct TValue;

// Number to text with engineering exponents in steps of three; 12 digits is
// the precision used everywhere in the system.
std::string FormatNumber(double x, int digits = 12);

// The plain reader of numbers stored in the archive: no suffixes, no
// integer types, stops at the first unexpected character.
double PlainTextToDouble(const std::string& text);

// Text to a tagged value: engineering suffixes ("2.2u", "1k5", "10dB"),
// imaginary numbers ("3j"), "i64" integers and, with allowPrefix, the
// literals "0b101", "0x1F" and "017". Raises a RaisedError on bad text.
void ParseNumber(const std::string& text, TValue& value, bool allowPrefix);

// ParseNumber without prefixes, then the result as a double.
double TextToDouble(const std::string& text);

// Hex digits from the third character on ("0x..."); other characters are
// skipped.
uint64_t ParseHexText(const std::string& text);

// Tolerant comparison: 0 when a and b agree within 1e-12 of the smaller
// magnitude, else -1 when b > a and 1 otherwise (also for a NaN).
int CompareDouble(double a, double b);

// True when x is plus or minus infinity.
bool IsInfinite(double x);

// 0 for +0 and -0, else 1 or -1 by the sign bit (a NaN too).
int SignOfDouble(double x);

}  // namespace tz4
