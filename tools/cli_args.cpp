#include "tools/cli_args.h"

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdlib>

#include "expr/numtext.h"
#include "base/raise.h"
#include "tools/cli_errors.h"

namespace tz4::cli {

namespace {

const OptionInfo* FindOption(const std::vector<OptionInfo>& options, const std::string& name) {
  for (const OptionInfo& request : options) {
    if (request.name == name) return &request;
  }
  return nullptr;
}

std::string Trim(const std::string& text) {
  const auto first = text.find_first_not_of(" \t\r\n");
  if (first == std::string::npos) return "";
  const auto last = text.find_last_not_of(" \t\r\n");
  return text.substr(first, last - first + 1);
}

}  // namespace

std::string ParsedArgs::Value(const std::string& name, const std::string& fallback) const {
  const auto it = options.find(name);
  if (it == options.end() || it->second.empty()) return fallback;
  return it->second.back();
}

std::vector<std::string> ParsedArgs::Values(const std::string& name) const {
  const auto it = options.find(name);
  return it == options.end() ? std::vector<std::string>{} : it->second;
}

ParsedArgs ParseArgs(const std::vector<std::string>& words, const std::vector<OptionInfo>& options) {
  ParsedArgs result;
  bool onlyPositionals = false;
  for (size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (onlyPositionals || word == "-" || word.empty() || word[0] != '-') {
      result.positionals.push_back(word);
      continue;
    }
    if (word == "--") {
      onlyPositionals = true;
      continue;
    }
    std::string name;
    std::string value;
    bool hasInlineValue = false;
    if (word == "-h") {
      name = "help";
    } else if (word.rfind("--", 0) == 0) {
      name = word.substr(2);
      const auto eq = name.find('=');
      if (eq != std::string::npos) {
        value = name.substr(eq + 1);
        name.erase(eq);
        hasInlineValue = true;
      }
    } else {
      throw UsageError("unknown option " + word);
    }
    const OptionInfo* request = FindOption(options, name);
    if (request == nullptr) throw UsageError("unknown option --" + name);
    if (!request->takesValue) {
      if (hasInlineValue) throw UsageError("option --" + name + " takes no value");
      value.clear();
    } else if (!hasInlineValue) {
      if (i + 1 >= words.size()) throw UsageError("option --" + name + " needs a value");
      value = words[++i];
    }
    auto& values = result.options[name];
    if (!values.empty() && !request->repeatable) throw UsageError("option --" + name + " given twice");
    values.push_back(value);
  }
  return result;
}

Assignment ParseAssignment(const std::string& text) {
  const auto eq = text.find('=');
  if (eq == std::string::npos) throw UsageError("expected PATH=VALUE, got '" + text + "'");
  Assignment assignment{Trim(text.substr(0, eq)), text.substr(eq + 1)};
  if (assignment.path.empty()) throw UsageError("no parameter path in '" + text + "'");
  return assignment;
}

double ParseDuration(const std::string& option, const std::string& text) {
  double value = 0.0;
  try {
    value = TextToDouble(text);
  } catch (const RaisedError& error) {
    throw UsageError("option --" + option + ": " + error.Text());
  }
  if (!std::isfinite(value) || value <= 0.0) {
    throw UsageError("option --" + option + ": '" + text + "' is not a time above 0");
  }
  return value;
}

int ParseCount(const std::string& option, const std::string& text) {
  const std::string trimmed = Trim(text);
  char* end = nullptr;
  errno = 0;
  const long value = std::strtol(trimmed.c_str(), &end, 10);
  if (trimmed.empty() || *end != '\0' || errno != 0 || value < 0 || value > INT_MAX) {
    throw UsageError("option --" + option + ": '" + text + "' is not a whole number >= 0");
  }
  return static_cast<int>(value);
}

}  // namespace tz4::cli
