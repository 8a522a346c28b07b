#include "tools/trace_spec.h"

#include <cctype>
#include <string_view>

#include "tools/cli_errors.h"

namespace tz4::cli {

namespace {

std::string Trim(const std::string& text) {
  const auto first = text.find_first_not_of(" \t");
  if (first == std::string::npos) return "";
  const auto last = text.find_last_not_of(" \t");
  return text.substr(first, last - first + 1);
}

}  // namespace

bool IsPlainName(const std::string& text) {
  if (text.empty() || std::isdigit(static_cast<unsigned char>(text[0]))) return false;
  for (char c : text) {
    const unsigned char u = static_cast<unsigned char>(c);
    if (std::isspace(u) || std::iscntrl(u)) return false;
    if (std::string_view("().,;+-*/^<>=!&|%?:\"'[]{}").find(c) != std::string_view::npos) return false;
  }
  return true;
}

TraceRequest ParseTraceSpec(const std::string& text) {
  const std::string spec = Trim(text);
  if (spec.empty()) throw UsageError("empty trace");
  if (spec.size() > 3 && spec[1] == '(' && spec.back() == ')') {
    const std::string inner = Trim(spec.substr(2, spec.size() - 3));
    if (IsPlainName(inner)) {
      switch (std::toupper(static_cast<unsigned char>(spec[0]))) {
        case 'V': return {TraceKind::kVoltage, inner};
        case 'I': return {TraceKind::kCurrent, inner};
        case 'P': return {TraceKind::kPower, inner};
        default: break;
      }
    }
  }
  if (IsPlainName(spec)) return {TraceKind::kName, spec};
  return {TraceKind::kFunction, spec};
}

}  // namespace tz4::cli
