#include "tools/trace_request.h"

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

TraceRequest ParseTraceRequest(const std::string& text) {
  const std::string request = Trim(text);
  if (request.empty()) throw UsageError("empty trace");
  if (request.size() > 3 && request[1] == '(' && request.back() == ')') {
    const std::string inner = Trim(request.substr(2, request.size() - 3));
    if (IsPlainName(inner)) {
      switch (std::toupper(static_cast<unsigned char>(request[0]))) {
        case 'V': return {TraceKind::kVoltage, inner};
        case 'I': return {TraceKind::kCurrent, inner};
        case 'P': return {TraceKind::kPower, inner};
        default: break;
      }
    }
  }
  if (IsPlainName(request)) return {TraceKind::kName, request};
  return {TraceKind::kFunction, request};
}

}  // namespace tz4::cli
