// Command-line words to options and positional arguments.
//
// Options are long ("--time 5m" or "--time=5m"); "-h" stands for "--help".
// A lone "-" is a positional argument (standard output), and every word
// after "--" is positional too. Mistakes raise a usage CliError whose text
// names the word at fault.
#pragma once
#include <map>
#include <string>
#include <vector>

namespace tz4::cli {

struct OptionInfo {
  std::string name;         // without the leading "--"
  bool takesValue = false;  // false: a flag such as "--help"
  bool repeatable = false;  // may be given more than once ("--set", "--trace")
};

class ParsedArgs {
 public:
  bool Has(const std::string& name) const { return options.count(name) != 0; }
  // The value of an option given once, or `fallback` when it is absent.
  std::string Value(const std::string& name, const std::string& fallback = "") const;
  // Every value of a repeatable option, in command-line order.
  std::vector<std::string> Values(const std::string& name) const;

  std::vector<std::string> positionals;
  std::map<std::string, std::vector<std::string>> options;
};

ParsedArgs ParseArgs(const std::vector<std::string>& words, const std::vector<OptionInfo>& options);

// "R1.R=2k2" split at the first "=": the path is trimmed and must not be
// empty; the value is kept as written (it may be empty or start with "=",
// as a formula does).
struct Assignment {
  std::string path;
  std::string value;
};
Assignment ParseAssignment(const std::string& text);

// A time in seconds as the circuit file writes numbers ("5m", "20u",
// "1.5e-3", "2ms"): finite and above zero, else a usage error naming
// `option`.
double ParseDuration(const std::string& option, const std::string& text);

// A whole number >= 0 ("--timeout 10"), else a usage error naming `option`.
int ParseCount(const std::string& option, const std::string& text);

}  // namespace tz4::cli
