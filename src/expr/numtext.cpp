// Number text: engineering formatting, the full number reader with
// suffixes and integer literals, the plain archive reader, and the tolerant
// comparison of doubles.
#include "expr/numtext.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

#include "base/error_scratch.h"
#include "base/raise.h"
#include "expr/text.h"
#include "expr/value.h"

namespace tz4 {

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// Reads a decimal integer the way "%d" does: optional blanks, an optional
// sign, digits. Values beyond the int range are clamped, which keeps the
// later powering finite in time. False when no digit stands there.
bool ReadExponent(const std::string& text, size_t pos, int& exponent) {
  while (pos < text.size() && (text[pos] == ' ' || text[pos] == '\t' || text[pos] == '\n' ||
                               text[pos] == '\r' || text[pos] == '\v' || text[pos] == '\f'))
    pos++;
  bool negative = false;
  if (pos < text.size() && (text[pos] == '+' || text[pos] == '-')) {
    negative = text[pos] == '-';
    pos++;
  }
  if (pos >= text.size() || !IsDigit(text[pos])) return false;
  long long n = 0;
  while (pos < text.size() && IsDigit(text[pos])) {
    if (n < 10000000000LL) n = n * 10 + (text[pos] - '0');
    pos++;
  }
  if (negative) n = -n;
  if (n > std::numeric_limits<int>::max()) n = std::numeric_limits<int>::max();
  if (n < std::numeric_limits<int>::min()) n = std::numeric_limits<int>::min();
  exponent = static_cast<int>(n);
  return true;
}

// 10 to a non-negative power by binary powering.
double PowerOfTen(unsigned exponent) {
  double result = 1.0;
  double base = 10.0;
  while (exponent != 0) {
    if (exponent & 1u) result *= base;
    exponent >>= 1;
    if (exponent != 0) base *= base;
  }
  return result;
}

std::string PrintScaled(double m, int digits) {
  char buffer[128];
  if (digits > 40) digits = 40;
  std::snprintf(buffer, sizeof buffer, "%-.*g", digits, m);
  return buffer;
}

[[noreturn]] void RaiseSyntax(const std::string& text) {
  ErrorScratch() = "Syntax error: ";
  ErrorScratch() += text;
  Raise(ErrorScratch());
}

// Stores an integer result by the rules for sign and width: positive values
// that fit in 32 bits are ints (so 4294967295 is the int -1), negative ones
// are int64 only when their low 32 bits are zero.
void StoreInteger(TValue& value, uint64_t magnitude, bool negative, bool forceInt64) {
  if (magnitude == 0) {
    value = forceInt64 ? TValue::MakeInt64(0) : TValue::MakeInt(0);
    return;
  }
  if (!negative) {
    if (forceInt64 || (magnitude >> 32) != 0)
      value = TValue::MakeInt64(static_cast<int64_t>(magnitude));
    else
      value = TValue::MakeInt(static_cast<int32_t>(static_cast<uint32_t>(magnitude)));
    return;
  }
  uint64_t negated = 0 - magnitude;
  if (forceInt64 || (negated & 0xFFFFFFFFull) == 0)
    value = TValue::MakeInt64(static_cast<int64_t>(negated));
  else
    value = TValue::MakeInt(static_cast<int32_t>(static_cast<uint32_t>(negated & 0xFFFFFFFFull)));
}

}  // namespace

std::string FormatNumber(double x, int digits) {
  if (std::isnan(x)) return "";
  if (std::isinf(x)) return x > 0 ? "inf" : "-inf";
  double m = x;
  int e = 0;
  if (x != 0) {
    while (std::fabs(m) < 1) {
      m *= 1000;
      e -= 3;
    }
    while (std::fabs(m) >= 1000) {
      m /= 1000;
      e += 3;
    }
  }
  std::string text = PrintScaled(m, digits);
  // Rounding may have carried the mantissa up to 1000: rescale.
  size_t sign = (!text.empty() && text[0] == '-') ? 1 : 0;
  if (text.size() == 4 + sign && std::memchr(text.data() + sign, '.', 4) == nullptr) {
    m /= 1000;
    e += 3;
    text = PrintScaled(m, digits);
  }
  if (e != 0) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "e%-+d", e);
    text += buffer;
  }
  return text;
}

double PlainTextToDouble(const std::string& input) {
  std::string text = TrimSpaces(input);
  size_t pos = 0;
  bool negative = false;
  if (pos < text.size() && (text[pos] == '+' || text[pos] == '-')) {
    negative = text[pos] == '-';
    pos++;
  }
  if (pos < text.size() && text[pos] == 'i')
    return negative ? -std::numeric_limits<double>::infinity()
                    : std::numeric_limits<double>::infinity();
  double m = 0;
  double s = 1;
  bool fraction = false;
  int exponent = 0;
  while (pos < text.size()) {
    char c = text[pos];
    if (IsDigit(c)) {
      if (fraction) {
        s *= 0.1;
        m += (c - '0') * s;
      } else {
        m = m * 10 + (c - '0');
      }
    } else if (c == '.' && !fraction) {
      fraction = true;
    } else if (c == 'e' || c == 'E') {
      if (!ReadExponent(text, pos + 1, exponent)) exponent = 0;
      break;
    } else {
      break;
    }
    pos++;
  }
  // One step at a time, as the stored texts were written; the loop stops
  // early once the value can no longer change (0 and infinity stay as they
  // are), so that a huge exponent costs no time.
  if (exponent < 0) {
    for (int i = 0; i > exponent && m != 0 && !std::isinf(m); i--) m *= 0.1;
  } else {
    for (int i = 0; i < exponent && !std::isinf(m) && m != 0; i++) m *= 10.0;
  }
  return negative ? -m : m;
}

uint64_t ParseHexText(const std::string& text) {
  uint64_t result = 0;
  for (size_t i = 2; i < text.size(); i++) {
    char c = text[i];
    if (IsDigit(c))
      result = (result << 4) | static_cast<uint64_t>(c - '0');
    else if (c >= 'a' && c <= 'f')
      result = (result << 4) | static_cast<uint64_t>(c - 'a' + 10);
    else if (c >= 'A' && c <= 'F')
      result = (result << 4) | static_cast<uint64_t>(c - 'A' + 10);
  }
  return result;
}

void ParseNumber(const std::string& input, TValue& value, bool allowPrefix) {
  value = TValue::MakeInt(0);
  if (input.size() > 127) Raise("Syntax error: number string is too long");
  std::string text = TrimSpaces(input);
  bool negative = false;
  if (!text.empty() && (text[0] == '+' || text[0] == '-')) {
    negative = text[0] == '-';
    text.erase(0, 1);
  }
  bool forceInt64 = false;
  if (text.size() >= 4 && text.compare(text.size() - 3, 3, "i64") == 0) {
    text.resize(text.size() - 3);
    forceInt64 = true;
  }

  if (allowPrefix && text.size() >= 2 && text[0] == '0') {
    char second = text[1];
    uint64_t magnitude = 0;
    if (second == 'b' || second == 'B') {
      for (size_t i = 2; i < text.size(); i++) {
        if (text[i] != '0' && text[i] != '1') {
          ErrorScratch() = "Syntax error: '";
          ErrorScratch() += input;
          ErrorScratch() += "' is not a valid binary value";
          Raise(ErrorScratch());
        }
        magnitude = (magnitude << 1) | static_cast<uint64_t>(text[i] - '0');
      }
      StoreInteger(value, magnitude, negative, forceInt64);
      return;
    }
    if (second == 'x' || second == 'X') {
      StoreInteger(value, ParseHexText(text), negative, forceInt64);
      return;
    }
    if (IsDigit(second)) {
      for (size_t i = 1; i < text.size(); i++) {
        if (text[i] < '0' || text[i] > '7') {
          ErrorScratch() = "Syntax error: '";
          ErrorScratch() += input;
          ErrorScratch() += "' is not a valid octal value";
          Raise(ErrorScratch());
        }
        magnitude = (magnitude << 3) | static_cast<uint64_t>(text[i] - '0');
      }
      StoreInteger(value, magnitude, negative, forceInt64);
      return;
    }
  }

  bool isDouble = false;
  bool imaginary = false;
  if (!text.empty() && text.back() == 'j') {
    text.pop_back();
    imaginary = true;
    isDouble = true;
  }
  if (!text.empty() && text[0] == 'i' && text.size() == 3 && (text[1] == 'n' || text[1] == 'N') &&
      (text[2] == 'f' || text[2] == 'F')) {
    double inf = std::numeric_limits<double>::infinity();
    value = TValue::MakeDouble(negative ? -inf : inf);
    return;
  }

  double m = 0;
  double s = 1;
  uint64_t n = 0;
  bool fractionPass = false;
  bool anyDigit = false;
  bool decibel = false;
  int exponent = 0;
  size_t pos = 0;
  const size_t size = text.size();
  while (pos < size) {
    char c = text[pos];
    if (IsDigit(c)) {
      int d = c - '0';
      if (fractionPass) {
        s *= 0.1;
        m += d * s;
      } else {
        m = m * 10 + d;
        n = n * 10 + static_cast<uint64_t>(d);
      }
      anyDigit = true;
      pos++;
      continue;
    }
    if (c == '.') {
      if (fractionPass) RaiseSyntax(input);
      isDouble = true;
      fractionPass = true;
      pos++;
      continue;
    }
    if (c == 'e' || c == 'E') {
      // A readable exponent replaces any suffix; an unreadable one leaves
      // the exponent as it stands.
      isDouble = true;
      ReadExponent(text, pos + 1, exponent);
      break;
    }
    if (!IsLetter(c)) RaiseSyntax(input);

    // A suffix, a decibel mark or a unit letter.
    char next = pos + 1 < size ? text[pos + 1] : '\0';
    bool suffix = true;
    if ((c == 'D' || c == 'd') && (next == 'B' || next == 'b')) {
      decibel = true;
      pos++;
    } else if (c == 'T') {
      exponent = 12;
    } else if (c == 'G') {
      exponent = 9;
    } else if (c == 'M') {
      exponent = 6;
    } else if (c == 'm' && next == 'g') {
      exponent = 6;
    } else if (c == 'm' && next == 'k') {
      exponent = -6;
    } else if (c == 'm') {
      exponent = -3;
    } else if (c == 'K' || c == 'k') {
      exponent = 3;
    } else if (c == 'u') {
      exponent = -6;
    } else if (c == 'n') {
      exponent = -9;
    } else if (c == 'p') {
      exponent = -12;
    } else if (c == 'f') {
      exponent = -15;
    } else {
      suffix = false;
    }
    if (!suffix && !anyDigit) RaiseSyntax(input);
    isDouble = true;
    pos++;
    while (pos < size && IsLetter(text[pos])) pos++;
    if (fractionPass) break;
    fractionPass = true;
  }

  if (!anyDigit) RaiseSyntax(input);

  if (!isDouble) {
    StoreInteger(value, n, negative, forceInt64);
    return;
  }
  if (exponent > -100) {
    if (exponent >= 0)
      m *= PowerOfTen(static_cast<unsigned>(exponent));
    else
      m *= 1.0 / PowerOfTen(static_cast<unsigned>(-static_cast<long long>(exponent)));
  } else {
    m = 0;
  }
  if (negative) m = -m;
  if (imaginary)
    value = TValue::MakeComplex(0.0, m);
  else if (decibel)
    value = TValue::MakeDouble(std::pow(10.0, m / 20));
  else
    value = TValue::MakeDouble(m);
}

double TextToDouble(const std::string& text) {
  TValue value;
  ParseNumber(text, value, false);
  return ValueToDouble(value);
}

int CompareDouble(double a, double b) {
  if (std::fabs(a - b) <= 1e-12 * std::fmin(std::fabs(a), std::fabs(b))) return 0;
  return b > a ? -1 : 1;
}

bool IsInfinite(double x) {
  uint64_t bits;
  std::memcpy(&bits, &x, sizeof bits);
  return (bits & 0x7FFFFFFFFFFFFFFFull) == 0x7FF0000000000000ull;
}

int SignOfDouble(double x) {
  uint64_t bits;
  std::memcpy(&bits, &x, sizeof bits);
  if ((bits & 0x7FFFFFFFFFFFFFFFull) == 0) return 0;
  return (bits >> 63) ? -1 : 1;
}

}  // namespace tz4
